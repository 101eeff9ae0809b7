#pragma once

// The network the sales-monitor benchmarks generate: 38 animal numbers, 30 bancas and 3,000
// agencies with the commissions of 5 games, as the monitor's draw, banca and agency replies.

#include <QByteArray>
#include <QString>

namespace red_monitor {

inline constexpr int kAgencias = 3000;
inline constexpr int kBancas = 30;
inline const char *const kJuegos[] = {"LA-1", "GR-1", "LT-1", "RU-1", "TR-1"};

inline QByteArray numeroAnimal(int i)
{
    return i == 37 ? QByteArray("00") : QByteArray::number(i);
}

// "monitorsorteos2.php": one draw of each game, factor 30.
inline QByteArray sorteos()
{
    QByteArray codigos, nombres;
    for (int i = 0; i < 38; ++i) {
        codigos += (i ? "," : "") + numeroAnimal(i);
        nombres += (i ? "," : "") + QByteArray("Animal") + numeroAnimal(i);
    }
    QByteArray r;
    for (const char *j : kJuegos)
        r +=
            QByteArray(j) + ";Sorteo " + j + ";1;1;30;" + codigos + ";" + nombres + ";1;10:00 AM\n";
    return r;
}

// "bancasactivas.php".
inline QByteArray bancas()
{
    QByteArray r;
    for (int b = 1; b <= kBancas; ++b)
        r += QByteArray::number(b) + ",Banca " + QByteArray::number(b) + "\n";
    return r;
}

// The four code parts of agency `a`: banca, group chief, office, agency.
inline QByteArray partes(int a)
{
    return QByteArray::number(a % kBancas + 1) + "," + QByteArray::number(a / 100) + ",0," +
           QByteArray::number(a);
}

// "monitoragencias.php": every agency once per game, with its commission.
inline QByteArray agencias()
{
    QByteArray r;
    for (int a = 0; a < kAgencias; ++a)
        for (int j = 0; j < 5; ++j)
            r += partes(a) + ",Agencia " + QByteArray::number(a) + "," + kJuegos[j] + "," +
                 QByteArray::number(5 + (a + j) % 11) + "\n";
    return r;
}

} // namespace red_monitor
