#pragma once

// Random server replies for the sales monitor: duplicated keys in every list, deleted and paid
// plays, plays of agencies and bancas that the lists do not know, odd amounts and times.

#include <QByteArray>
#include <QRandomGenerator>
#include <QString>

struct RepliesAleatorias {
    QByteArray sorteos, bancas, agencias, resultados, ventas;
};

inline RepliesAleatorias generarReplies(quint32 semilla, int jugadas)
{
    QRandomGenerator g(semilla);
    RepliesAleatorias r;
    const QStringList numeros = {"0", "00", "1", "2", "3", "10", "11", "36", "7"};
    // Draws: two games, the first one twice; animal codes with a duplicate.
    r.sorteos = "J1-1;Sorteo Uno;1;1;30;0,00,1,2,3,10,11,36,1;Delfin,Ballena,Carnero,Toro,"
                "Ciempies,Tigre,Gato,Culebra,CarneroBis;1;9:00 AM\n"
                "J1-1;Sorteo Uno tarde;1;2;75;0,1;X,Y;2;3:00 PM\n"
                "J2-1;Sorteo Dos;0;1;30;0;Z;3;4:00 PM\n";
    // Bancas with a duplicated code.
    for (int b = 1; b <= 6; ++b)
        r.bancas += QByteArray::number(b) + ",Banca " + QByteArray::number(b) + "\n";
    r.bancas += "2,Banca Dos Repetida\n";
    // Agencies: several per banca, some repeated with other names and commissions, some for
    // another game.
    for (int b = 1; b <= 5; ++b) {
        for (int a = 0; a < 12; ++a) {
            const QByteArray p = QByteArray::number(b) + "," + QByteArray::number(a % 3) + ",0," +
                                 QByteArray::number(a);
            const QByteArray com = QByteArray::number(g.bounded(0, 21));
            r.agencias += p + ",Agencia " + QByteArray::number(b * 100 + a) + ",J1-1," + com + "\n";
            if (g.bounded(4) == 0)
                r.agencias += p + ",Otra " + QByteArray::number(b * 100 + a) + ",J1-1," +
                              QByteArray::number(g.bounded(0, 21)) + "." +
                              QByteArray::number(g.bounded(10)) + "\n";
            if (g.bounded(3) == 0)
                r.agencias += p + ",Juego dos,J2-1,50\n";
        }
    }
    r.resultados = "cjuego,csorteo,resultado\nJ1-1,1,3\nJ1-1,1," +
                   numeros.at(g.bounded(numeros.size())).toLatin1() + "\nJ2-1,3,0\n";
    const QByteArray montos[] = {"10",    "5.50", "0.25",  "100.00", "3.333", "1e2",
                                 "-2.00", "abc",  "007.5", "12.345", "",      "0.1"};
    for (int i = 0; i < jugadas; ++i) {
        const int b = g.bounded(1, 8); // 6 and 7 have no agencies, 7 is no banca either
        const int a = g.bounded(0, 14);
        QByteArray hora = QByteArray::number(g.bounded(24)).rightJustified(2, '0') + ":" +
                          QByteArray::number(g.bounded(60)).rightJustified(2, '0') + ":" +
                          QByteArray::number(g.bounded(60)).rightJustified(2, '0');
        if (g.bounded(50) == 0)
            hora = g.bounded(2) ? "25:00:00" : "9:5:1";
        QByteArray monto = g.bounded(5) == 0
                               ? montos[g.bounded(12)]
                               : QByteArray::number(g.bounded(1, 2000)) + "." +
                                     QByteArray::number(g.bounded(100)).rightJustified(2, '0');
        const QByteArray numero = numeros.at(g.bounded(numeros.size())).toLatin1();
        QByteArray linea = QByteArray::number(b) + "," + hora + "," + QByteArray::number(a % 3) +
                           ",0," + QByteArray::number(a) + "," +
                           QByteArray::number(5000 + g.bounded(900)) + ",d" +
                           QByteArray::number(i) + "," + numero + "," + monto + ",0," +
                           (g.bounded(8) == 0 ? "E" : "") + "," + (g.bounded(6) == 0 ? "X" : "");
        if (g.bounded(200) == 0)
            linea = linea.left(g.bounded(linea.size())); // cut short
        r.ventas += linea + "\n";
        if (g.bounded(100) == 0)
            r.ventas += "\n";
    }
    return r;
}
