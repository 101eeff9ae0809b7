#pragma once

#include "monitor/ventasmonitor.h"

#include <QString>

#include <cstdint>
#include <vector>

// What each number sold would cost the draw if it came out, against the draw's net sale.
// Computed from the plays already read; amounts in cents.
struct FilaRiesgo {
    QString numero;
    QString nombre;
    std::int64_t jugado = 0;    // plays that are not deleted
    std::int64_t premio = 0;    // what it pays if it comes out
    std::int64_t resultado = 0; // net sale - premio
    bool sobreLimite = false;
    bool ganador = false; // it is the draw's published result
};

struct Riesgo {
    std::vector<FilaRiesgo> filas; // by prize, largest first; ties in the order first played
    std::int64_t ventaNeta = 0;
    double limite = 100;     // percent of the net sale
    double factor = 0;       // prize factor of the draw
    double jugadoLimite = 0; // amount played (cents) whose prize equals the limit
    int sobreLimite = 0;     // rows over the limit

    // Prize of a row as a percentage of the net sale; false when there is no net sale.
    bool porcentaje(const FilaRiesgo &f, double &valor) const;
    // "3 números sobre el límite · peor: 26-Vaca paga 80,550.00 (151 % de la venta neta)";
    // empty when nothing was sold.
    QString resumen(int decimales) const;
};

// `factor` is the draw's prize factor, `limite` the share of the net sale (percent) that a
// prize may reach.
Riesgo calcularRiesgo(const DatosVentas &d, double factor, double limite);
