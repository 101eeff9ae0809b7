#include "reportes/calculoreportes.h"

#include "app/formato.h"
#include "tests/soporte/prueba_main.h"

#include <QElapsedTimer>
#include <QTest>

// Reply parsing and arithmetic of the two sales reports, without any dialog.
class TstCalculoReportes : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void montos()
    {
        QCOMPARE(montoDeTexto("1250.00"), 1250.0);
        QCOMPARE(montoDeTexto("-3.5"), -3.5);
        QCOMPARE(montoDeTexto(" 12.5 "), 12.5);
        QCOMPARE(montoDeTexto("abc"), 0.0);
        QCOMPARE(montoDeTexto(""), 0.0);
        QCOMPARE(montoDeTexto("1,250.00"), 0.0); // no thousands separators in replies
        QCOMPARE(montoDeTexto("1e999"), 0.0);
        QCOMPARE(montoDeTexto("nan"), 0.0);
        QCOMPARE(montoDeTexto("inf"), 0.0);
    }

    void lineas()
    {
        QCOMPARE(lineasDeTexto("a\n\nb\r\n\r\nc"), (QStringList{"a", "b", "c"}));
        QCOMPARE(lineasDeTexto(""), QStringList());
        QCOMPARE(lineasDeTexto("\n\n"), QStringList());
    }

    // --- sales by banca ----------------------------------------------------------------------

    void agenciaYBanca()
    {
        const ReporteVentasBancas r =
            calcularVentasBancas("7,Centro,701,La Esquina,Jefe,1500.50,300,150.05,14:05:09\n");
        QCOMPARE(r.agencias.size(), 1);
        const FilaAgencia &a = r.agencias.at(0);
        QCOMPARE(a.banca, QStringLiteral("7-Centro"));
        QCOMPARE(a.agencia, QStringLiteral("701-La Esquina"));
        QCOMPARE(a.ventaBruta, 1500.50);
        QCOMPARE(a.otroMonto, 300.0);
        QCOMPARE(a.comision, 150.05);
        QCOMPARE(a.horaUltimaVenta, QTime(14, 5, 9));
        QCOMPARE(textoHoraVenta(a.horaUltimaVenta), QStringLiteral("2:05 p. m."));
        QCOMPARE(textoHoraVenta(QTime(9, 30)), QStringLiteral("9:30 a. m."));
        QCOMPARE(textoHoraVenta(QTime()), QString());
        QCOMPARE(r.bancas.size(), 1);
        QCOMPARE(r.bancas.at(0).clave, QStringLiteral("7"));
        QCOMPARE(r.bancas.at(0).nombre, QStringLiteral("Centro"));
        QCOMPARE(r.bancas.at(0).agencias, 1);
        QCOMPARE(r.totalVenta, 1500.50);
        QCOMPARE(r.totalComision, 150.05);
    }

    void dosAgenciasDeUnaBanca()
    {
        const ReporteVentasBancas r =
            calcularVentasBancas("1,Norte,11,A,,100,0,10,08:00:00\n"
                                 "1,Norte,12,B,,250.5,0,25.25,09:00:00\n");
        QCOMPARE(r.agencias.size(), 2);
        QCOMPARE(r.bancas.size(), 1);
        QCOMPARE(r.bancas.at(0).agencias, 2);
        QCOMPARE(r.bancas.at(0).ventaBruta, 350.5);
        QCOMPARE(r.bancas.at(0).comision, 35.25);
        QCOMPARE(r.totalVenta, 350.5);
        QCOMPARE(r.totalComision, 35.25);
    }

    void bancasEnOrdenDeAparicion()
    {
        const ReporteVentasBancas r = calcularVentasBancas("9,Zeta,1,a,,1,0,0,\n"
                                                           "2,Beta,2,b,,2,0,0,\n"
                                                           "9,Zeta,3,c,,4,0,0,\n"
                                                           "5,Alfa,4,d,,8,0,0,\n");
        QStringList claves;
        for (const FilaBanca &b : r.bancas)
            claves << b.clave;
        QCOMPARE(claves, (QStringList{"9", "2", "5"}));
        QCOMPARE(r.bancas.at(0).ventaBruta, 5.0);
        QCOMPARE(r.bancas.at(0).agencias, 2);
    }

    void lineasMalasNoRompen()
    {
        const ReporteVentasBancas r = calcularVentasBancas("\n\nsolo\n1,B\n,,,,,,,,\n"
                                                           "1,B,2,C,x,abc,?,zz,25:99:00,extra\n");
        QCOMPARE(r.agencias.size(), 4);
        QCOMPARE(r.agencias.at(0).banca, QStringLiteral("solo-"));
        QCOMPARE(r.agencias.at(0).agencia, QStringLiteral("-"));
        QCOMPARE(r.agencias.at(3).ventaBruta, 0.0);
        QCOMPARE(r.agencias.at(3).comision, 0.0);
        QVERIFY(!r.agencias.at(3).horaUltimaVenta.isValid());
        QCOMPARE(r.totalVenta, 0.0);
        QCOMPARE(calcularVentasBancas("").agencias.size(), 0);
    }

    // --- super-banca report ------------------------------------------------------------------

    void secciones()
    {
        const QString t = "1,Lotto\n_FIN_\n7,1,10,50\n_FIN_\n7,Centro,1,1000,500\n";
        QCOMPARE(seccionReporte(t, 1), QStringLiteral("1,Lotto\n"));
        QCOMPARE(seccionReporte(t, 2), QStringLiteral("\n7,1,10,50\n"));
        QCOMPARE(seccionReporte(t, 3), QStringLiteral("\n7,Centro,1,1000,500\n"));
        QCOMPARE(seccionReporte("solo juegos", 1), QStringLiteral("solo juegos"));
        QCOMPARE(seccionReporte("solo juegos", 2), QString());
        QCOMPARE(seccionReporte("a_FIN_b", 2), QStringLiteral("b"));
        QCOMPARE(seccionReporte("a_FIN_b", 3), QString());
        QCOMPARE(seccionReporte("a_FIN_b_FIN_c_FIN_d", 3), QStringLiteral("c_FIN_d"));
    }

    // Gross 100.10, 10 % commission, prizes 90.09: the line breaks even, to the cent.
    void puntoDeEquilibrio()
    {
        const CifrasReporte c = cifrasLinea(100.10, 90.09, 10, 50);
        QCOMPARE(formatoMonto(c.comision, 2), QStringLiteral("10.01"));
        QCOMPARE(formatoMonto(c.ventaNeta(), 2), QStringLiteral("90.09"));
        QVERIFY(c.utilidad() == 0.0);
        QVERIFY(c.participacion == 0.0);
        QVERIFY(c.saldo() == 0.0);
        QCOMPARE(formatoMonto(c.utilidad(), 2), QStringLiteral("0.00"));
        QCOMPARE(formatoMonto(c.saldo(), 2), QStringLiteral("0.00"));

        ReporteSuperBanca r;
        r.cargar("1,Lotto\n_FIN_\n7,1,10,50\n_FIN_\n7,Centro,1,100.10,90.09\n");
        QVERIFY(r.cifrasBanca(0).utilidad() == 0.0);
        QVERIFY(r.totales().saldo() == 0.0);
    }

    // Each figure is rounded to the cent before it is summed, so the rows shown add up to the
    // total shown.
    void filasSumanElTotal()
    {
        const CifrasReporte c = cifrasLinea(0.05, 0, 10, 0);
        QVERIFY(c.comision == 0.01); // 0.5 cent, away from zero

        ReporteSuperBanca r;
        r.cargar("1,Lotto\n_FIN_\n1,1,10,0\n2,1,10,0\n3,1,10,0\n_FIN_\n"
                 "1,Uno,1,0.05,0\n2,Dos,1,0.05,0\n3,Tres,1,0.05,0\n");
        QCOMPARE(r.bancaClaves.size(), 3);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(formatoMonto(r.cifrasBanca(i).comision, 2), QStringLiteral("0.01"));
        QCOMPARE(formatoMonto(r.totales().comision, 2), QStringLiteral("0.03"));

        // Ten lines of 0.10 make exactly 1.00, and 100.10 - 10.01 exactly 90.09.
        QString lineas;
        for (int i = 0; i < 10; ++i)
            lineas += QStringLiteral("7,Centro,1,0.10,0\n");
        r.cargar("1,Lotto\n_FIN_\n7,1,10,0\n_FIN_\n" + lineas);
        QVERIFY(r.cifrasBanca(0).ventaBruta == 1.0);
        QVERIFY(sumarMontos(0.1, 0.2) == 0.3);
        QVERIFY(restarMontos(100.10, 10.01) == 90.09);

        // Sales by banca: agencies of 0.005 commission each show 0.01, and so does each part of
        // the total.
        const ReporteVentasBancas v = calcularVentasBancas("1,A,1,X,,0.10,0,0.005,10:00:00\n"
                                                           "2,B,2,Y,,0.10,0,0.005,10:00:00\n"
                                                           "3,C,3,Z,,0.10,0,0.005,10:00:00\n");
        for (const FilaBanca &b : v.bancas)
            QCOMPARE(formatoMonto(b.comision, 2), QStringLiteral("0.01"));
        QCOMPARE(formatoMonto(v.totalComision, 2), QStringLiteral("0.03"));
        QVERIFY(v.totalVenta == 0.3);
    }

    // Amounts far beyond any real one (a trillion or more), or not numbers, count as 0 and do
    // not break the arithmetic.
    void montosExtremos()
    {
        QCOMPARE(aCentavos(qInf()), qint64(0));
        QCOMPARE(aCentavos(qQNaN()), qint64(0));
        QCOMPARE(aCentavos(1e300), qint64(0));
        QCOMPARE(aCentavos(-1e300), qint64(0));
        QCOMPARE(aCentavos(999999999999.99), qint64(99999999999999));
        QCOMPARE(aCentavos(-0.004), qint64(0));
        QVERIFY(!(redondearCentavos(-0.004) < 0.0));
    }

    void ejemploResuelto()
    {
        const CifrasReporte c = cifrasLinea(1000, 500, 10, 50);
        QCOMPARE(c.comision, 100.0);
        QCOMPARE(c.ventaNeta(), 900.0);
        QCOMPARE(c.utilidad(), 400.0);
        QCOMPARE(c.participacion, 200.0);
        QCOMPARE(c.saldo(), 200.0);

        ReporteSuperBanca r;
        r.cargar("1,Lotto\n_FIN_\n7,1,10,50\n_FIN_\n7,Centro,1,1000,500\n");
        QVERIFY(!r.sinVentas());
        QCOMPARE(r.bancaClaves, QStringList{"7"});
        const CifrasReporte b = r.cifrasBanca(0);
        QCOMPARE(b.comision, 100.0);
        QCOMPARE(b.ventaNeta(), 900.0);
        QCOMPARE(b.utilidad(), 400.0);
        QCOMPARE(b.participacion, 200.0);
        QCOMPARE(b.saldo(), 200.0);
        QCOMPARE(r.totales().saldo(), 200.0);
    }

    void ultimaFilaDeComisionGana()
    {
        ReporteSuperBanca r;
        r.cargar("_FIN_\n7,1,10,50\n7,2,99,99\n7,1,20,25\n_FIN_\n7,Centro,1,1000,0\n");
        QCOMPARE(r.pcomision("7", "1"), (QList<double>{20.0, 25.0}));
        QCOMPARE(r.pcomision("7", "2"), (QList<double>{99.0, 99.0}));
        QCOMPARE(r.pcomision("7", "3"), (QList<double>{0.0, 0.0}));
        QCOMPARE(r.pcomision("8", "1"), (QList<double>{0.0, 0.0}));
        QCOMPARE(r.cifrasBanca(0).comision, 200.0);
        // utility 800, participation 25 %
        QCOMPARE(r.cifrasBanca(0).participacion, 200.0);
        QCOMPARE(r.comBancas.size(), 3);
    }

    void ultimaFilaSinComisionAnulaLaAnterior()
    {
        ReporteSuperBanca r;
        r.cargar("_FIN_\n7,1,10,50\n7,1,0,50\n_FIN_\n7,Centro,1,1000,0\n");
        QCOMPARE(r.pcomision("7", "1"), (QList<double>{0.0, 50.0}));
        QVERIFY(r.bancaClaves.isEmpty());
        QVERIFY(r.ventaBancas.isEmpty());
        QVERIFY(!r.sinVentas()); // the sales section did have a line
    }

    void bancaSinComisionNoAparece()
    {
        ReporteSuperBanca r;
        r.cargar("1,Lotto\n2,Ruleta\n_FIN_\n"
                 "7,1,10,50\n8,2,0,50\n9,1,-5,50\n"
                 "_FIN_\n"
                 "8,Sin Comision,1,500,0\n" // no row for banca 8 and game 1
                 "8,Sin Comision,2,500,0\n" // a zero commission
                 "9,Negativa,1,500,0\n"     // a negative commission
                 "7,Centro,1,1000,500\n");
        QCOMPARE(r.bancaClaves, QStringList{"7"});
        QCOMPARE(r.bancaNombres, QStringList{"Centro"});
        QCOMPARE(r.ventaBancas, QStringList{"7"});
        QCOMPARE(r.totales().ventaBruta, 1000.0);
    }

    void bancasEnOrdenYDetalle()
    {
        ReporteSuperBanca r;
        r.cargar("1,Lotto\n2,Ruleta\n_FIN_\n"
                 "5,1,10,0\n5,2,10,0\n3,1,10,0\n"
                 "_FIN_\n"
                 "5,Cinco,1,100,0\n3,Tres,1,200,0\n5,Cinco,2,300,0\n");
        QCOMPARE(r.bancaClaves, (QStringList{"5", "3"}));
        QCOMPARE(r.cifrasBanca(0).ventaBruta, 400.0);
        QCOMPARE(r.lineasDeBanca("5"), (QVector<int>{0, 2}));
        QCOMPARE(r.lineasDeBanca("3"), (QVector<int>{1}));
        QCOMPARE(r.nombreJuego("2"), QStringLiteral("Ruleta"));
        QCOMPARE(r.nombreJuego("9"), QString());
        QCOMPARE(r.totales().ventaBruta, 600.0);
        QCOMPARE(r.totales().comision, 60.0);
    }

    void participacionSobreCien()
    {
        // Utility 400 with a participation of 150 % leaves a negative balance.
        const CifrasReporte c = cifrasLinea(1000, 500, 10, 150);
        QCOMPARE(c.utilidad(), 400.0);
        QCOMPARE(c.participacion, 600.0);
        QCOMPARE(c.saldo(), -200.0);
    }

    void premiosSobreVentaNeta()
    {
        const CifrasReporte c = cifrasLinea(1000, 1500, 10, 50);
        QCOMPARE(c.utilidad(), -600.0);
        QCOMPARE(c.participacion, -300.0);
        QCOMPARE(c.saldo(), -300.0);
    }

    void sinVentas()
    {
        ReporteSuperBanca r;
        r.cargar("1,Lotto\n_FIN_\n7,1,10,50\n_FIN_\n\n\n");
        QVERIFY(r.sinVentas());
        r.cargar("1,Lotto\n_FIN_\n7,1,10,50\n"); // no sales section at all
        QVERIFY(r.sinVentas());
        QCOMPARE(r.juegoCodigos, QStringList{"1"});
    }

    void cargarReemplazaTodo()
    {
        ReporteSuperBanca r;
        r.cargar("1,Lotto\n_FIN_\n7,1,10,50\n_FIN_\n7,Centro,1,1000,500\n");
        r.cargar("2,Otro\n_FIN_\n8,2,5,0\n_FIN_\n8,Ocho,2,10,0\n");
        QCOMPARE(r.juegoCodigos, QStringList{"2"});
        QCOMPARE(r.pcomision("7", "1"), (QList<double>{0.0, 0.0}));
        QCOMPARE(r.bancaClaves, QStringList{"8"});
        QCOMPARE(r.ventaBrutas.size(), 1);
    }

    void reporteLineasMalasNoRompen()
    {
        ReporteSuperBanca r;
        r.cargar("x\n,\n_FIN_\n7\n7,1\n7,1,abc\n,,10,1\n_FIN_\n7\n7,N,1\n7,N,1,zz,yy\n,,,5,1\n"
                 "7,N\n");
        // "7,1,abc" left banca 7 / game 1 without commission; ",,10,1" gave the empty pair 10 %.
        QCOMPARE(r.pcomision("", ""), (QList<double>{10.0, 1.0}));
        QCOMPARE(r.bancaClaves, QStringList{""});
        QCOMPARE(r.cifrasBanca(0).ventaBruta, 5.0);
        r.cargar(QString());
        QVERIFY(r.sinVentas());
        r.cargar("_FIN__FIN__FIN_");
        QVERIFY(!r.sinVentas()); // "_FIN_" left over in the sales section is one odd line
        QVERIFY(r.bancaClaves.isEmpty());
    }

    void respuestaEnormeEsRapida()
    {
        QString texto;
        texto += "1,Lotto\n2,Ruleta\n_FIN_\n";
        for (int b = 0; b < 300; ++b)
            for (int j = 1; j <= 2; ++j)
                texto += QStringLiteral("%1,%2,12,40\n").arg(b).arg(j);
        texto += "_FIN_\n";
        for (int i = 0; i < 60000; ++i)
            texto += QStringLiteral("%1,Banca %1,%2,%3.50,%4\n")
                         .arg(i % 300)
                         .arg(1 + i % 2)
                         .arg(i)
                         .arg(i % 7);
        QElapsedTimer reloj;
        reloj.start();
        ReporteSuperBanca r;
        r.cargar(texto);
        QVERIFY2(reloj.elapsed() < 3000, qPrintable(QString::number(reloj.elapsed())));
        QCOMPARE(r.bancaClaves.size(), 300);
        QCOMPARE(r.ventaBancas.size(), 60000);
    }
};

TORNAVO_PRUEBA_MAIN(TstCalculoReportes)
#include "tst_calculoreportes.moc"
