#pragma once

#include "app/centavos.h"
#include "monitor/tablaplana.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <cstdint>
#include <memory>
#include <vector>

class ListasMonitor;

// One play of the sales reply ("monitorventas.php"), kept in 32 bytes: texts that repeat
// (banca, agency, number) are indexes into DatosVentas' tables of distinct values; the ticket,
// the free datum and the second amount live in DatosVentas::textos, each behind its length (the
// reply itself is not kept). A ticket or datum longer than 65,535 bytes, or a second amount
// longer than 255, is cut there.
struct JugadaVenta {
    enum Estado : std::uint8_t { Ninguno = 0, Eliminado = 1, Pagado = 2 };

    double monto = 0;         // field 8
    std::int32_t banca = 0;   // DatosVentas::bancas
    std::int32_t agencia = 0; // DatosVentas::agencias
    std::int32_t numero = 0;  // DatosVentas::numeros
    std::uint32_t ticket = 0; // field 5: offset of its length in DatosVentas::textos
    std::uint32_t dato = 0;   // field 6, followed there by field 9 (the second amount)
    std::int16_t minuto = -1; // minute of the day of field 1; -1 when it is no valid time
    std::uint8_t estado = Ninguno;
};

// Everything the monitor shows of one sales reply: the plays, the per-number summary, the
// per-agency rows, the money totals and the banca totals. Built in one pass over the bytes.
struct DatosVentas {
    struct Banca {
        QString codigo;  // field 0
        QString nombre;  // banca(field 0)
        int indiceBanca; // indiceBanca(field 0), -1 when unknown
    };
    struct Agencia {
        QString clave;   // field 0 + 2 + 3 + 4
        QString nombre;  // agencia(clave)
        double comision; // comisionAgencia(clave, cjuego) / 100
    };
    struct Numero {
        QString texto;  // field 7
        QString nombre; // animal(cjuego, field 7)
        // Over the plays of the number that are not deleted: count, amount and the prize it
        // would pay, in cents.
        int jugadas = 0;
        std::int64_t centavos = 0;
        std::int64_t premio = 0;
    };
    // A row of the per-number summary, in the order numbers were first seen.
    struct FilaResumen {
        int numero;
        QString monto; // sum as the summary writes it (two decimals)
        int jugadas;
    };
    // A row of the per-agency table, in the order agencies were first seen.
    struct FilaAgencia {
        int agencia;
        int banca; // banca of the first play of the agency
        int jugadas;
        std::int64_t centavos;
    };

    TablaPlana<char> textos;         // tickets, data and second amounts of the plays
    TablaPlana<JugadaVenta> jugadas; // reply order
    std::vector<Banca> bancas;
    std::vector<Agencia> agencias;
    std::vector<Numero> numeros;
    std::vector<FilaResumen> resumen;
    std::vector<FilaAgencia> filasAgencia;

    // Money is summed in whole cents: every figure of a play (its amount, its commission, its
    // prize) is rounded to the cent first, so sums are exact and a sign is a real one.
    int cantidad = 0;            // plays that are not deleted
    std::int64_t ventaBruta = 0; // over the plays that are not deleted
    std::int64_t comision = 0;
    std::int64_t ventaBrutaResultado = 0; // same sums, gathered only when the draw has a result
    std::int64_t comisionResultado = 0;
    std::int64_t premios = 0;
    // Banca totals, one entry per entry of indiceBancas.
    QVector<std::int64_t> ventaBrutaBanca, comisionBanca, ventaNetaBanca, premiosBanca,
        utilidadBanca;

    bool hayResultado = false;
    QString resultado;
    int numeroGanador = -1; // index in numeros of the result, -1 when nobody played it

    std::int64_t ventaNeta() const { return ventaBruta - comision; }
    std::int64_t utilidad() const { return ventaNeta() - premios; }

    QString ticket(const JugadaVenta &j) const;
    QString dato(const JugadaVenta &j) const;
    QString segundoMonto(const JugadaVenta &j) const; // field 9 as sent
};

// Reads a sales reply piece by piece while it arrives, so that little is left to do when its
// last byte is in and the reply itself never has to be held whole. Lines are separated by "\n"
// and empty lines are skipped; fields by ","; missing fields count as empty; nothing from the
// first NUL on is read. The lines are only split and stored here: names, commissions and sums
// are worked out by terminar() with the lists as they stand then.
class LectorVentas {
public:
    LectorVentas();
    ~LectorVentas();
    LectorVentas(const LectorVentas &) = delete;
    LectorVentas &operator=(const LectorVentas &) = delete;

    // The next bytes of the reply, in order; a line cut between two pieces waits for its rest.
    void agregar(const char *p, qint64 n);
    void agregar(const QByteArray &bytes) { agregar(bytes.constData(), bytes.size()); }
    // True while no byte came before the first NUL: the server sent nothing.
    bool vacio() const;
    // Reads the last line (when the reply did not end in "\n") and builds everything the monitor
    // shows. `cjuego` and `csorteo` name the draw; `factor` is its prize factor. The reader is
    // spent afterwards.
    DatosVentas terminar(const ListasMonitor &listas, const QString &cjuego, const QString &csorteo,
                         double factor);

private:
    struct Estado;
    std::unique_ptr<Estado> m;
};

// The whole reply at once (raw bytes, Latin-1), as LectorVentas reads it.
DatosVentas analizarVentas(const QByteArray &bruto, const ListasMonitor &listas,
                           const QString &cjuego, const QString &csorteo, double factor);

static_assert(sizeof(JugadaVenta) == 32, "a play is meant to take 32 bytes");

// Display helpers shared by the table model and the checks.
QString textoHora(int segundos);          // "h:mm ap", "" for -1
QString textoEstado(std::uint8_t estado); // "Eliminado", "Pagado" or ""
// Fast exact reading of a decimal amount, same value as QString::toDouble(); `centavos` gets
// the amount in hundredths when it has at most two decimals (else `exacto` is false).
double leerMonto(const char *p, int n, bool *exacto = nullptr, std::int64_t *centavos = nullptr);
// Seconds since midnight of a "hh:mm:ss" text, -1 when QTime would not read it.
int leerHora(const char *p, int n);
