#pragma once

// A direct, literal computation of what the sales monitor shows: parallel string lists,
// linear scans where the last match wins, one QStringList per line, a running summary that
// is written to text and read back, and stable sorts of the cell texts. The tests compare the
// dialog's fast path with it.

#include "app/formato.h"

#include <QStringList>
#include <QTime>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace literal {

struct Listas {
    QStringList codigosJuego, nombresSorteo, codigosSorteo;
    QList<double> factoresSorteo;
    QStringList codigosBanca, nombresBanca, indiceBancas;
    QStringList clavesAgencia, nombresAgencia, juegosComision, comisiones;
    QStringList clavesAnimal, nombresAnimal;
    QStringList juegosResultado, sorteosResultado, resultados;

    static QStringList lineas(const QString &t) { return t.split('\n', Qt::SkipEmptyParts); }

    void sorteos(const QString &t)
    {
        clavesAnimal.clear();
        nombresAnimal.clear();
        for (const QString &l : lineas(t)) {
            const QStringList f = l.split(';');
            if (f.value(2) != "1")
                continue;
            bool nuevo = true;
            for (const QString &c : codigosJuego)
                if (c == f.value(0))
                    nuevo = false;
            codigosJuego << f.value(0);
            nombresSorteo << f.value(1);
            factoresSorteo << f.value(4).toDouble() / f.value(3).toDouble();
            codigosSorteo << f.value(7);
            if (nuevo) {
                const QStringList c = f.value(5).split(','), n = f.value(6).split(',');
                for (int j = 0; j < c.size(); ++j) {
                    clavesAnimal << f.value(0) + c[j];
                    nombresAnimal << n.value(j);
                }
            }
        }
    }
    void bancas(const QString &t)
    {
        for (const QString &l : lineas(t)) {
            const QStringList f = l.split(',');
            codigosBanca << f.value(0);
            indiceBancas << f.value(0);
            nombresBanca << f.value(1);
        }
    }
    void agencias(const QString &t)
    {
        for (const QString &l : lineas(t)) {
            const QStringList f = l.split(',');
            clavesAgencia << f.value(0) + f.value(1) + f.value(2) + f.value(3);
            nombresAgencia << f.value(4);
            juegosComision << f.value(5);
            comisiones << f.value(6);
        }
    }
    void resultadosDe(const QString &t)
    {
        const QStringList ls = lineas(t);
        for (int i = 1; i < ls.size(); ++i) {
            const QStringList f = ls[i].split(',');
            juegosResultado << f.value(0);
            sorteosResultado << f.value(1);
            resultados << f.value(2);
        }
    }

    QString banca(const QString &c) const
    {
        QString r;
        for (int i = 0; i < codigosBanca.size(); ++i)
            if (codigosBanca[i] == c)
                r = nombresBanca[i];
        return r;
    }
    QString agencia(const QString &c) const
    {
        QString r;
        for (int i = 0; i < clavesAgencia.size(); ++i)
            if (clavesAgencia[i] == c)
                r = nombresAgencia[i];
        return r;
    }
    QString animal(const QString &j, const QString &a) const
    {
        QString r;
        for (int i = 0; i < clavesAnimal.size(); ++i)
            if (clavesAnimal[i] == j + a)
                r = nombresAnimal[i];
        return r;
    }
    bool hayResultado(const QString &j, const QString &s) const
    {
        for (int i = 0; i < juegosResultado.size(); ++i)
            if (juegosResultado[i] == j && sorteosResultado[i] == s)
                return true;
        return false;
    }
    QString resultado(const QString &j, const QString &s) const
    {
        QString r;
        for (int i = 0; i < juegosResultado.size(); ++i)
            if (juegosResultado[i] == j && sorteosResultado[i] == s)
                r = resultados[i];
        return r;
    }
    QString comisionAgencia(const QString &a, const QString &j) const
    {
        QString r;
        for (int i = 0; i < clavesAgencia.size(); ++i)
            if (clavesAgencia[i] == a && juegosComision[i] == j)
                r = comisiones[i];
        return r;
    }
    int indiceBanca(const QString &c) const
    {
        int r = -1;
        for (int i = 0; i < indiceBancas.size(); ++i)
            if (indiceBancas[i] == c)
                r = i;
        return r;
    }
};

using Tabla = QVector<QStringList>;

struct Vista {
    Tabla jugadas;                  // plays table, 10 texts a row, sorted
    QVector<double> montos;         // amount of each row of jugadas
    Tabla resumen;                  // per-number table, sorted
    Tabla agencias;                 // per-agency table, sorted (5 texts)
    QVector<bool> agenciaReescrita; // row written more than once (alignment of the rewrite)
    Tabla tbancas;                  // banca totals, 6 texts
    QVector<bool> utilidadRoja;
    QStringList totales;        // jugadas, monto, vbruta, comision, vneta, premios, utilidad
    QVector<int> seleccionadas; // rows of the plays table whose cells 0-7 are selected
    QString animal;             // lineEdit_animal
};

// Money is summed in whole cents: each figure (amount, commission, prize of a play) is rounded
// to the nearest cent, halves away from zero, before it is added; no reasonable amount is
// counted as 0.
inline qint64 redondear(double centavos)
{
    return std::fabs(centavos) < 1e14 ? std::llround(centavos) : 0;
}
inline qint64 cts(double monto)
{
    return redondear(monto * 100.0);
}
inline QString enTexto(qint64 centavos, int dec)
{
    return formatoMonto(double(centavos) / 100.0, dec);
}

// A stable sort of the rows by the text of one column, as a table of text items sorts.
inline void ordenar(Tabla &t, int col, QVector<bool> *par = nullptr, bool descendente = false)
{
    QVector<int> idx(t.size());
    for (int i = 0; i < idx.size(); ++i)
        idx[i] = i;
    std::stable_sort(idx.begin(), idx.end(), [&](int a, int b) {
        return descendente ? t[b][col].localeAwareCompare(t[a][col]) < 0
                           : t[a][col].localeAwareCompare(t[b][col]) < 0;
    });
    Tabla r;
    QVector<bool> p;
    for (int i : idx) {
        r << t[i];
        if (par)
            p << (*par)[i];
    }
    t = r;
    if (par)
        *par = p;
}

inline Vista calcular(const QString &reply, const Listas &L, const QString &cjuego,
                      const QString &csorteo, double factor, int dec)
{
    Vista v;
    const QStringList lineas = Listas::lineas(reply);
    QStringList pa0, pa2, pa3, pa4;
    QList<int> cuentaAg;
    QList<qint64> sumaAg;
    QVector<qint64> vb(L.indiceBancas.size()), co(L.indiceBancas.size()), vn(L.indiceBancas.size()),
        pr(L.indiceBancas.size()), ut(L.indiceBancas.size());
    qint64 bruta = 0, comision = 0, premios = 0;
    int cantidad = 0;
    const bool hay = L.hayResultado(cjuego, csorteo);
    const QString res = L.resultado(cjuego, csorteo);
    if (lineas.isEmpty())
        return v;
    // (rows keep their exact amount as an 11th text until sorted)
    for (const QString &l : lineas) {
        const QStringList f = l.split(',');
        const QString larga = f.value(0) + f.value(2) + f.value(3) + f.value(4);
        const double m = f.value(8).toDouble();
        QString estado;
        if (f.value(10) == "E")
            estado = "Eliminado";
        else if (f.value(11) == "X")
            estado = "Pagado";
        v.jugadas << QStringList{L.banca(f.value(0)),
                                 L.agencia(larga),
                                 f.value(5),
                                 textoConsola(QTime::fromString(f.value(1), "hh:mm:ss"), "h:mm ap"),
                                 f.value(7),
                                 L.animal(cjuego, f.value(7)),
                                 formatoMonto(m, dec),
                                 estado,
                                 QString::number(m, 'g', 6),
                                 larga,
                                 QString::number(m, 'g', 17)};
        if (f.value(10) == "E")
            continue;
        // per number
        int fila = -1;
        for (int r = 0; r < v.resumen.size(); ++r)
            if (v.resumen[r][0] == f.value(7))
                fila = r;
        if (fila >= 0) {
            v.resumen[fila][2] = QString::number(
                double(cts(v.resumen[fila][2].toDouble()) + cts(m)) / 100.0, 'f', 2);
            v.resumen[fila][3] = QString::number(v.resumen[fila][3].toInt() + 1);
        } else {
            v.resumen << QStringList{f.value(7), L.animal(cjuego, f.value(7)),
                                     QString::number(double(cts(m)) / 100.0, 'f', 2), "1"};
        }
        // per agency
        int a = -1;
        for (int i = 0; i < pa0.size(); ++i)
            if (pa0[i] + pa2[i] + pa3[i] + pa4[i] == larga)
                a = i;
        if (a >= 0) {
            cuentaAg[a] += 1;
            sumaAg[a] += cts(m);
            v.agencias[a][1] = QString::number(cuentaAg[a]);
            v.agencias[a][2] = enTexto(sumaAg[a], dec);
            v.agenciaReescrita[a] = true;
        } else {
            v.agencias << QStringList{L.agencia(larga), "1", enTexto(cts(m), dec),
                                      L.banca(f.value(0)), larga};
            v.agenciaReescrita << false;
            pa0 << f.value(0);
            pa2 << f.value(2);
            pa3 << f.value(3);
            pa4 << f.value(4);
            cuentaAg << 1;
            sumaAg << cts(m);
        }
        const qint64 c = redondear(L.comisionAgencia(larga, cjuego).toDouble() / 100 * cts(m));
        bruta += cts(m);
        comision += c;
        ++cantidad;
        if (hay) {
            const qint64 premio = f.value(7) == res ? redondear(factor * cts(m)) : 0;
            premios += premio;
            const int ib = L.indiceBanca(f.value(0));
            if (ib >= 0) {
                vb[ib] += cts(m);
                co[ib] += c;
                vn[ib] += cts(m) - c;
                pr[ib] += premio;
                ut[ib] += cts(m) - c - premio;
            }
        }
    }
    const qint64 neta = bruta - comision, util = neta - premios;
    v.totales = QStringList{QString::number(cantidad), enTexto(bruta, dec), enTexto(bruta, dec),
                            enTexto(comision, dec),    enTexto(neta, dec),  enTexto(premios, dec),
                            enTexto(util, dec)};
    for (int b = 0; b < L.indiceBancas.size(); ++b) {
        v.tbancas << QStringList{L.nombresBanca.value(b), enTexto(vb[b], dec), enTexto(co[b], dec),
                                 enTexto(vn[b], dec),     enTexto(pr[b], dec), enTexto(ut[b], dec)};
        v.utilidadRoja << (ut[b] < 0);
    }
    ordenar(v.jugadas, 4);
    for (QStringList &fila : v.jugadas)
        v.montos << fila.takeLast().toDouble();
    ordenar(v.resumen, 0);
    ordenar(v.agencias, 4, &v.agenciaReescrita);
    if (hay) {
        v.animal = L.animal(cjuego, res);
        for (int r = 0; r < v.jugadas.size(); ++r)
            if (v.jugadas[r][4] == res)
                v.seleccionadas << r;
    }
    return v;
}

} // namespace literal
