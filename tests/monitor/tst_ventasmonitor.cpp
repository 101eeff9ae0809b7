#include "app/formato.h"
#include "monitor/listasmonitor.h"
#include "monitor/modelojugadas.h"
#include "monitor/riesgo.h"
#include "monitor/ventasmonitor.h"

#include <QRandomGenerator>
#include <QTest>
#include <QTime>

#include <cstring>

// The sales monitor's plain units: amount and time readers, the sales parser on bad input and
// the plays model's sorting.
class TstVentasMonitor : public QObject {
    Q_OBJECT

    static bool mismoDouble(double a, double b)
    {
        return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
    }

    // Everything a reply gave, as text, to compare two readings of it.
    static QStringList volcado(const DatosVentas &d)
    {
        QStringList r;
        for (const JugadaVenta &j : d.jugadas) {
            quint64 bits;
            std::memcpy(&bits, &j.monto, sizeof bits);
            r << QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8|%9")
                     .arg(j.banca)
                     .arg(j.agencia)
                     .arg(j.numero)
                     .arg(d.ticket(j), d.dato(j), d.segundoMonto(j))
                     .arg(j.minuto)
                     .arg(bits)
                     .arg(j.estado);
        }
        for (const auto &b : d.bancas)
            r << b.codigo + '|' + b.nombre + '|' + QString::number(b.indiceBanca);
        for (const auto &a : d.agencias)
            r << a.clave + '|' + a.nombre + '|' + QString::number(a.comision, 'g', 17);
        for (const auto &n : d.numeros)
            r << QStringLiteral("%1|%2|%3|%4|%5")
                     .arg(n.texto, n.nombre)
                     .arg(n.jugadas)
                     .arg(n.centavos)
                     .arg(n.premio);
        for (const auto &f : d.resumen)
            r << QStringLiteral("R%1|%2|%3").arg(f.numero).arg(f.monto).arg(f.jugadas);
        for (const auto &f : d.filasAgencia)
            r << QStringLiteral("A%1|%2|%3|%4")
                     .arg(f.agencia)
                     .arg(f.banca)
                     .arg(f.jugadas)
                     .arg(f.centavos);
        r << QStringLiteral("T%1|%2|%3|%4|%5|%6|%7|%8")
                 .arg(d.cantidad)
                 .arg(d.ventaBruta)
                 .arg(d.comision)
                 .arg(d.ventaBrutaResultado)
                 .arg(d.comisionResultado)
                 .arg(d.premios)
                 .arg(d.numeroGanador)
                 .arg(d.resultado);
        for (int b = 0; b < d.ventaBrutaBanca.size(); ++b)
            r << QStringLiteral("B%1|%2|%3|%4|%5")
                     .arg(d.ventaBrutaBanca[b])
                     .arg(d.comisionBanca[b])
                     .arg(d.ventaNetaBanca[b])
                     .arg(d.premiosBanca[b])
                     .arg(d.utilidadBanca[b]);
        return r;
    }

    // A reply with every kind of line: deleted and paid plays, tickets shared by consecutive
    // plays, amounts that are not whole cents, empty lines, short and long lines, CR endings.
    static QByteArray respuestaVariada(QRandomGenerator &g, int lineas)
    {
        static const char *const montos[] = {"1", "2.50", "0.29", "1.005", "-3", "1e2", "x", ""};
        static const char *const horas[] = {"10:00:00", "23:59:59", "9:5:1", "", "24:00:00"};
        QByteArray r;
        int ticket = 0;
        for (int i = 0; i < lineas; ++i) {
            switch (g.bounded(12)) {
            case 0:
                r += "\n";
                continue;
            case 1:
                r += QByteArray::number(g.bounded(3)) + ",10:00:00\r\n";
                continue;
            default:
                break;
            }
            if (g.bounded(3) == 0)
                ++ticket;
            r += QByteArray::number(g.bounded(1, 4)) + ',' + horas[g.bounded(5)] + ',' +
                 QByteArray::number(g.bounded(2)) + ",0," + QByteArray::number(g.bounded(5)) +
                 ",T" + QByteArray::number(ticket) + ",d" + QByteArray::number(g.bounded(3)) + ',' +
                 QByteArray::number(g.bounded(6)) + ',' + montos[g.bounded(8)] + ",0," +
                 (g.bounded(6) == 0 ? "E" : "") + ',' + (g.bounded(5) == 0 ? "X" : "") +
                 (g.bounded(8) == 0 ? ",sobra,mas" : "") + '\n';
        }
        if (g.bounded(2) == 0)
            r += "2,11:00:00,0,0,1,Tfin,d,3,4.25,0,,"; // a last line with no line break
        return r;
    }

    static ListasMonitor listasVariadas()
    {
        ListasMonitor L;
        L.cargarSorteos("J;Sorteo J;1;1;30;1,2,3;Uno,Dos,Tres;S;10:00 AM\n");
        L.cargarBancas("1,Uno\n2,Dos\n");
        L.cargarAgencias("1,0,0,0,Ag A,J,10\n1,1,0,1,Ag B,J,7.5\n2,0,0,2,Ag C,J,12\n");
        L.cargarResultados("cjuego,csorteo,resultado\nJ,S,3\n");
        return L;
    }

private slots:
    void montosComoToDouble()
    {
        QStringList casos = {"0",
                             "00",
                             "-0",
                             "-0.00",
                             "1",
                             "10.5",
                             "10.50",
                             "0.1",
                             "0.01",
                             "0.001",
                             "12.345",
                             "999999999999999",
                             "1234567890123456",
                             "1.",
                             ".5",
                             "+3",
                             " 4",
                             "4 ",
                             "1e2",
                             "abc",
                             "",
                             "-",
                             "1,5",
                             "5.5.5",
                             "007.25",
                             "-12.34",
                             "3.333333333333333"};
        QRandomGenerator g(11);
        for (int i = 0; i < 20000; ++i) {
            QString s = QString::number(g.bounded(0, 100000000));
            if (g.bounded(2))
                s += "." + QString::number(g.bounded(0, 1000000)).left(g.bounded(1, 7));
            if (g.bounded(5) == 0)
                s.prepend('-');
            casos << s;
        }
        for (const QString &c : casos) {
            const QByteArray b = c.toLatin1();
            bool exacto = false;
            std::int64_t centavos = 0;
            const double v = leerMonto(b.constData(), b.size(), &exacto, &centavos);
            QVERIFY2(mismoDouble(v, c.toDouble()), qPrintable(c));
            if (exacto)
                QVERIFY2(QString::number(double(centavos) / 100.0, 'f', 2) ==
                             QString::number(c.toDouble(), 'f', 2),
                         qPrintable(c));
        }
        bool exacto = true;
        leerMonto("-0.00", 5, &exacto);
        QVERIFY(!exacto);
        leerMonto("1.234", 5, &exacto);
        QVERIFY(!exacto);
        leerMonto("12.3", 4, &exacto);
        QVERIFY(exacto);
    }

    void horasComoQTime()
    {
        const QStringList casos = {"00:00:00", "23:59:59", "24:00:00", "12:60:00",  "9:05:01",
                                   "09:05",    "",         "ab:cd:ef", "10:00:00 ", "07:30:15"};
        for (const QString &c : casos) {
            const QByteArray b = c.toLatin1();
            const QTime t = QTime::fromString(c, "hh:mm:ss");
            QCOMPARE(leerHora(b.constData(), b.size()),
                     t.isValid() ? t.msecsSinceStartOfDay() / 1000 : -1);
            QCOMPARE(textoHora(leerHora(b.constData(), b.size())), textoConsola(t, "h:mm ap"));
        }
    }

    void lineasIncompletasYVacias()
    {
        ListasMonitor L;
        L.cargarBancas("1,Uno\n");
        const QByteArray bruto(
            "\n\n1\n1,10:00:00,0,0,1,55\n,,,,,,,,,,,,,,,\n2,x,a,b,c,t,d,7,5,1,E,X,sobra\n"
            "1,10:00:00,0,0,1,55,d,7,2.5,0,,X\r\n",
            104);
        const DatosVentas d = analizarVentas(bruto, L, "J", "S", 30);
        QCOMPARE(int(d.jugadas.size()), 5);
        QCOMPARE(d.jugadas[0].estado, std::uint8_t(JugadaVenta::Ninguno));
        QCOMPARE(d.ticket(d.jugadas[1]), QStringLiteral("55"));
        QCOMPARE(d.jugadas[3].estado, std::uint8_t(JugadaVenta::Eliminado));
        // "X\r" is not "X".
        QCOMPARE(d.jugadas[4].estado, std::uint8_t(JugadaVenta::Ninguno));
        QCOMPARE(d.cantidad, 4);
        QCOMPARE(d.ventaBruta, std::int64_t(250));
        QCOMPARE(d.bancas[std::size_t(d.jugadas[0].banca)].nombre, QStringLiteral("Uno"));
        QCOMPARE(d.agencias[std::size_t(d.jugadas[1].agencia)].clave, QStringLiteral("1001"));
        QVERIFY(!d.hayResultado);
        QCOMPARE(d.numeroGanador, -1);
        const DatosVentas vacio = analizarVentas(QByteArray(), L, "J", "S", 30);
        QVERIFY(vacio.jugadas.empty());
        QCOMPARE(vacio.ventaBrutaBanca.size(), 1);
    }

    void riesgoCalculadoAMano()
    {
        // Factor 30, net sale 77.00 - 11.50 = 65.50. "00" is played twice, a play of "1" is
        // deleted, "00" is the published result.
        ListasMonitor L;
        L.cargarSorteos("J;Sorteo;1;1;30;0,00,1,2;Delfin,Ballena,Carnero,Toro;S;1 PM\n");
        L.cargarBancas("1,Uno\n2,Dos\n3,Tres\n");
        L.cargarAgencias("1,0,0,1,A,J,10\n2,0,0,1,C,J,0\n3,0,0,9,V,J,25\n");
        L.cargarResultados("cabecera\nJ,S,00\n");
        const QByteArray v = "1,10:00:00,0,0,1,t1,s,00,10,0,,\n"
                             "1,10:01:00,0,0,1,t2,s,00,5,0,,\n"
                             "2,10:02:00,0,0,1,t3,s,1,20,0,,\n"
                             "1,10:03:00,0,0,1,t4,s,1,100,0,E,\n"
                             "3,10:04:00,0,0,9,t5,s,0,40,0,,\n"
                             "2,10:05:00,0,0,1,t6,s,2,2,0,,\n";
        const DatosVentas d = analizarVentas(v, L, "J", "S", 30);
        Riesgo r = calcularRiesgo(d, 30, 100);
        QCOMPARE(r.ventaNeta, std::int64_t(6550));
        QCOMPARE(int(r.filas.size()), 4);
        const QStringList numeros = {r.filas[0].numero, r.filas[1].numero, r.filas[2].numero,
                                     r.filas[3].numero};
        QCOMPARE(numeros, (QStringList{"0", "1", "00", "2"}));
        QCOMPARE(r.filas[0].nombre, QStringLiteral("Delfin"));
        QCOMPARE(r.filas[1].jugado, std::int64_t(2000)); // the deleted 100 is not in
        QCOMPARE(r.filas[2].jugado, std::int64_t(1500)); // 10 + 5
        QCOMPARE(r.filas[0].premio, std::int64_t(120000));
        QCOMPARE(r.filas[2].premio, std::int64_t(45000));
        QCOMPARE(r.filas[0].resultado, std::int64_t(6550 - 120000));
        QCOMPARE(r.filas[3].resultado, std::int64_t(550));
        QVERIFY(r.filas[0].sobreLimite && r.filas[1].sobreLimite && r.filas[2].sobreLimite);
        QVERIFY(!r.filas[3].sobreLimite); // 60.00 is 92 % of 65.50
        QVERIFY(r.filas[2].ganador);
        QVERIFY(!r.filas[0].ganador && !r.filas[1].ganador && !r.filas[3].ganador);
        double p = 0;
        QVERIFY(r.porcentaje(r.filas[3], p));
        QVERIFY(qAbs(p - 6000.0 * 100 / 6550) < 1e-9);
        QVERIFY(qAbs(r.jugadoLimite - 6550.0 / 30) < 1e-9);
        QCOMPARE(r.sobreLimite, 3);
        QCOMPARE(r.resumen(2), QString::fromUtf8("3 números sobre el límite · peor: 0-Delfin paga "
                                                 "1,200.00 (1832 % de la venta neta)"));
        r = calcularRiesgo(d, 30, 1000);
        QCOMPARE(r.sobreLimite, 1);
        QCOMPARE(r.resumen(0), QString::fromUtf8("1 número sobre el límite · peor: 0-Delfin paga "
                                                 "1,200 (1832 % de la venta neta)"));
        r = calcularRiesgo(d, 30, 91);
        QCOMPARE(r.sobreLimite, 4);
        // Nothing sold, nothing to say.
        QCOMPARE(calcularRiesgo(analizarVentas("", L, "J", "S", 30), 30, 100).resumen(2),
                 QString());
        // No net sale: every prize is over any limit.
        L.cargarAgencias("1,0,0,1,A,J,100\n");
        r = calcularRiesgo(analizarVentas("1,10:00:00,0,0,1,t1,s,1,10,0,,\n", L, "J", "S", 30), 30,
                           100);
        QCOMPARE(r.sobreLimite, 1);
        QCOMPARE(r.resumen(2), QString::fromUtf8("1 número sobre el límite · peor: 1-Carnero paga "
                                                 "300.00 (sin venta neta)"));
    }

    // The reply read piece by piece, as it arrives, gives exactly what the whole reply read at
    // once gives, wherever the pieces are cut (inside a field, between CR and LF, one byte at
    // a time).
    void lecturaPorTrozos()
    {
        const ListasMonitor L = listasVariadas();
        QRandomGenerator g(77);
        for (int vez = 0; vez < 40; ++vez) {
            const QByteArray bruto = respuestaVariada(g, 1 + g.bounded(60));
            const QStringList entera = volcado(analizarVentas(bruto, L, "J", "S", 30));
            LectorVentas lector;
            const int maximo = vez % 4 == 0 ? 1 : 1 + g.bounded(40);
            for (int i = 0; i < bruto.size();) {
                const int n = std::min(bruto.size() - i, 1 + g.bounded(maximo));
                lector.agregar(bruto.constData() + i, n);
                i += n;
            }
            QCOMPARE(lector.vacio(), bruto.isEmpty());
            QCOMPARE(volcado(lector.terminar(L, "J", "S", 30)), entera);
        }
    }

    // Nothing from the first NUL on is read, in whatever piece it comes: the line it cuts ends
    // there, and a reply that starts with it is no answer at all.
    void lecturaCortadaEnNul()
    {
        const ListasMonitor L = listasVariadas();
        const QByteArray antes("1,10:00:00,0,0,0,T1,d,1,5,0,,\n2,10:00:00,1,0,1,T2,d,2,7.5");
        const QByteArray despues(",0,,\n1,10:00:00,0,0,0,T3,d,3,9,0,,\n");
        const QByteArray conNul = antes + QByteArray(1, '\0') + despues;
        const QStringList esperado = volcado(analizarVentas(antes, L, "J", "S", 30));
        for (int corte = 0; corte <= conNul.size(); ++corte) {
            LectorVentas lector;
            lector.agregar(conNul.left(corte));
            lector.agregar(conNul.mid(corte));
            QVERIFY(!lector.vacio());
            const DatosVentas d = lector.terminar(L, "J", "S", 30);
            QCOMPARE(int(d.jugadas.size()), 2);
            QCOMPARE(d.ventaBruta, std::int64_t(1250));
            QCOMPARE(volcado(d), esperado);
        }
        LectorVentas nada;
        nada.agregar(QByteArray("\0"
                                "1,10:00:00,0,0,0,T1,d,1,5,0,,\n",
                                32));
        QVERIFY(nada.vacio());
        QVERIFY(nada.terminar(L, "J", "S", 30).jugadas.empty());
    }

    // Names, commissions and the result are those of the lists when the reading ends, not when
    // the first line arrived: the lists may still be loading while the plays come in.
    void listasDelFinal()
    {
        ListasMonitor L;
        LectorVentas lector;
        lector.agregar(QByteArray("1,10:00:00,0,0,0,T1,d,3,100,0,,\n"));
        L = listasVariadas();
        const DatosVentas d = lector.terminar(L, "J", "S", 30);
        QCOMPARE(d.agencias[0].nombre, QStringLiteral("Ag A"));
        QCOMPARE(d.comision, std::int64_t(1000));
        QCOMPARE(d.premios, std::int64_t(300000));
        QCOMPARE(d.numeros[0].nombre, QStringLiteral("Tres"));
    }

    // A table of plain values keeps its values when it grows past the size whose blocks are
    // pages of their own and when it is cut back; copies are independent.
    void tablaPlanaCreceYSeAjusta()
    {
        TablaPlana<std::uint32_t> t;
        for (std::uint32_t i = 0; i < 700000; ++i)
            t.push_back(i * 2654435761u);
        QCOMPARE(t.size(), std::size_t(700000));
        TablaPlana<std::uint32_t> copia = t;
        copia[5] = 1;
        t.ajustar();
        QCOMPARE(t.capacidad(), t.size());
        bool iguales = true;
        for (std::uint32_t i = 0; i < 700000; ++i)
            iguales = iguales && t[i] == i * 2654435761u;
        QVERIFY(iguales);
        QCOMPARE(copia[5], std::uint32_t(1));
        t.resize(10);
        t.ajustar();
        QCOMPARE(t[9], 9u * 2654435761u);
        TablaPlana<std::uint32_t> movida = std::move(copia);
        QVERIFY(copia.empty());
        QCOMPARE(movida.size(), std::size_t(700000));
        QCOMPARE(movida[699999], 699999u * 2654435761u);
    }

    void textosDeLaJugada()
    {
        // Ticket, datum and second amount are kept apart from the reply; consecutive plays of
        // one ticket share its text; an absurdly long field is cut, never overflows.
        ListasMonitor L;
        const QByteArray largo(70000, 't');
        const QByteArray bruto = "1,10:00:00,0,0,1,T7,dA,5,10,2.5,,\n"
                                 "1,10:00:00,0,0,1,T7,dB,5,10,,,\n"
                                 "1,10:00:00,0,0,1,T8,,5,10,0,,\n"
                                 "1,10:00:00,0,0,1," +
                                 largo + ",x,5,1," + QByteArray(300, '9') + ",,\n";
        const DatosVentas d = analizarVentas(bruto, L, "J", "S", 30);
        QCOMPARE(int(d.jugadas.size()), 4);
        QCOMPARE(d.ticket(d.jugadas[0]), QStringLiteral("T7"));
        QCOMPARE(d.ticket(d.jugadas[1]), QStringLiteral("T7"));
        QCOMPARE(d.jugadas[0].ticket, d.jugadas[1].ticket);
        QCOMPARE(d.ticket(d.jugadas[2]), QStringLiteral("T8"));
        QCOMPARE(d.dato(d.jugadas[0]), QStringLiteral("dA"));
        QCOMPARE(d.dato(d.jugadas[1]), QStringLiteral("dB"));
        QCOMPARE(d.dato(d.jugadas[2]), QString());
        QCOMPARE(d.segundoMonto(d.jugadas[0]), QStringLiteral("2.5"));
        QCOMPARE(d.segundoMonto(d.jugadas[1]), QString());
        QCOMPARE(d.segundoMonto(d.jugadas[2]), QStringLiteral("0"));
        QCOMPARE(d.ticket(d.jugadas[3]).size(), 0xffff);
        QCOMPARE(d.dato(d.jugadas[3]), QStringLiteral("x"));
        QCOMPARE(d.segundoMonto(d.jugadas[3]).size(), 0xff);
        QCOMPARE(d.jugadas[0].minuto, std::int16_t(600));
        QCOMPARE(textoHora(d.jugadas[0].minuto * 60), QStringLiteral("10:00 a. m."));
    }

    // The rule: sorting the plays by a column keeps plays with equal values (the same number,
    // say) in the order the server's reply listed them, ascending and descending alike; only
    // the order between different values is reversed. aleatorioIgualAlLiteral in tst_monitor
    // checks the same rule against a literal stable sort of random replies.
    void ordenEstableYDescendente()
    {
        ListasMonitor L;
        const QByteArray bruto = "1,10:00:00,0,0,1,a,d,2,1,0,,\n"
                                 "1,10:00:00,0,0,1,b,d,1,2,0,,\n"
                                 "1,10:00:00,0,0,1,c,d,2,3,0,,\n"
                                 "1,10:00:00,0,0,1,d,d,1,4,0,,\n";
        auto datos = std::make_shared<DatosVentas>(analizarVentas(bruto, L, "J", "S", 1));
        ModeloJugadas m;
        m.cargar(datos, 2);
        m.sort(ModeloJugadas::ColNumero, Qt::AscendingOrder);
        QStringList t;
        for (int f = 0; f < 4; ++f)
            t << m.texto(f, ModeloJugadas::ColTicket);
        QCOMPARE(t, (QStringList{"b", "d", "a", "c"}));
        m.sort(ModeloJugadas::ColNumero, Qt::DescendingOrder);
        t.clear();
        for (int f = 0; f < 4; ++f)
            t << m.texto(f, ModeloJugadas::ColTicket);
        QCOMPARE(t, (QStringList{"a", "c", "b", "d"}));
        m.sort(ModeloJugadas::ColMonto, Qt::DescendingOrder);
        QCOMPARE(m.texto(0, ModeloJugadas::ColMonto), QStringLiteral("4.00"));
        m.sort(ModeloJugadas::ColTicket, Qt::AscendingOrder);
        QCOMPARE(m.texto(3, ModeloJugadas::ColTicket), QStringLiteral("d"));
        QCOMPARE(m.headerData(9, Qt::Horizontal).toString(), QStringLiteral("codAgencia"));
    }
};

QTEST_GUILESS_MAIN(TstVentasMonitor)
#include "tst_ventasmonitor.moc"
