#pragma once

#include "app/centavos.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVector>

// Reply parsing and money arithmetic of the two sales reports. Nothing here touches a widget:
// the dialogs only move these figures into their tables.

// Amount field of a reply: a plain decimal with "."; anything that does not parse (or is not a
// finite number) counts as 0.
double montoDeTexto(const QString &texto);

// Money is exact to the cent: every amount of the reports is kept rounded to cents, and sums and
// differences are worked in whole cents, so that rows add up to their totals and no
// floating-point residue turns a break-even line into a red "-0.00".
// a + b and a - b, each exact to the cent.
inline double sumarMontos(double a, double b)
{
    return deCentavos(aCentavos(a) + aCentavos(b));
}
inline double restarMontos(double a, double b)
{
    return deCentavos(aCentavos(a) - aCentavos(b));
}

// Lines of a reply: split at "\n", a trailing "\r" dropped, empty lines skipped.
QStringList lineasDeTexto(const QString &texto);

// ---------------------------------------------------------------------------------------------
// Sales by banca ("ventabancas2.php": one line per agency).

struct FilaAgencia {
    QString banca;   // "key-name"
    QString agencia; // "key-name"
    double ventaBruta = 0.0;
    double otroMonto = 0.0; // field 6 of the line (prizes); read, never shown
    double comision = 0.0;
    QTime horaUltimaVenta; // invalid when the field does not read as a time
};

struct FilaBanca {
    QString clave;
    QString nombre;
    int agencias = 0;
    double ventaBruta = 0.0;
    double comision = 0.0;
};

struct ReporteVentasBancas {
    QVector<FilaAgencia> agencias; // reply order
    QVector<FilaBanca> bancas;     // order of first appearance in the reply
    double totalVenta = 0.0;
    double totalComision = 0.0;
};

// Parses the whole reply. Lines shorter than nine fields are read with the missing fields
// empty (amounts 0, no time).
ReporteVentasBancas calcularVentasBancas(const QString &respuesta);

// Text of the "Hora ult. Venta" cell: "h:mm ap", empty for an invalid time.
QString textoHoraVenta(const QTime &hora);

// ---------------------------------------------------------------------------------------------
// Super-banca report ("reportex.php": games, commission table, sale lines, split by "_FIN_").

// Section `numero` (1, 2 or 3) of the reply: the text before the first "_FIN_", between the
// first and the second, after the second. A missing section is empty.
QString seccionReporte(const QString &respuesta, int numero);

// The seven figures of one row of the report, each exact to the cent. Net, utility and balance
// follow from the other four, so that a row and a sum of rows are computed the same way.
struct CifrasReporte {
    double ventaBruta = 0.0;
    double comision = 0.0;
    double premios = 0.0;
    double participacion = 0.0;

    double ventaNeta() const { return restarMontos(ventaBruta, comision); }
    double utilidad() const { return restarMontos(ventaNeta(), premios); }
    double saldo() const { return restarMontos(utilidad(), participacion); }

    void sumar(const CifrasReporte &otra)
    {
        ventaBruta = sumarMontos(ventaBruta, otra.ventaBruta);
        comision = sumarMontos(comision, otra.comision);
        premios = sumarMontos(premios, otra.premios);
        participacion = sumarMontos(participacion, otra.participacion);
    }
};

// Figures of one sale line of gross `bruta` and prizes `premios`, with commission percent
// `pComision` and participation percent `pParticipacion`; commission and participation are
// rounded to the cent.
CifrasReporte cifrasLinea(double bruta, double premios, double pComision, double pParticipacion);

class ReporteSuperBanca {
public:
    // Reads all three sections, replacing everything read before.
    void cargar(const QString &respuesta);

    // True when the sales section held no line at all (the report then shows nothing).
    bool sinVentas() const { return m_lineasVenta == 0; }

    // [commission percent, participation percent] of banca `cban` and game `cjue`; [0, 0]
    // when the table has no such row. With several rows for the pair the last one applies.
    QList<double> pcomision(const QString &cban, const QString &cjue) const;

    // Name that the games section gives to a game key ("" when none; the last one wins).
    QString nombreJuego(const QString &codigo) const;

    // Game names.
    QStringList juegoCodigos;
    QStringList juegoNombres;

    // Commission table, in reply order.
    QStringList comBancas;
    QStringList comJuegos;
    QVector<double> comPorcentajes;
    QVector<double> parPorcentajes;

    // Counted sale lines (those with a positive commission), in reply order.
    QStringList ventaBancas;
    QStringList ventaNombresBanca;
    QStringList ventaJuegos;
    QVector<double> ventaBrutas;
    QVector<double> ventaPremios;
    QVector<double> ventaComisiones;
    QVector<double> ventaParticipaciones;

    // Per-banca totals in first-seen order.
    QStringList bancaClaves;
    QStringList bancaNombres;
    QVector<double> bancaBrutas;
    QVector<double> bancaComisiones;
    QVector<double> bancaPremios;
    QVector<double> bancaParticipaciones;

    CifrasReporte cifrasBanca(int fila) const;
    CifrasReporte cifrasVenta(int linea) const;
    CifrasReporte totales() const;

    // Indexes of the counted sale lines of one banca, in reply order.
    QVector<int> lineasDeBanca(const QString &clave) const;

private:
    void limpiar();

    int m_lineasVenta = 0;
    QHash<QString, int> m_indiceComision; // "banca\njuego" → last row of the pair
    QHash<QString, int> m_indiceJuego;    // game key → last row
    QHash<QString, int> m_indiceBanca;    // banca key → row of the per-banca totals
};
