#include "reportes/reporteventasx.h"

#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/respuestas.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/tablas.h"

#include <QDateEdit>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

// The super-banca report dialog against the fixture server.
class TstReporteVentasX : public QObject {
    Q_OBJECT

    struct Dialogo : DialogoDeFechas<reporteVentasX> {
        QTableWidget *ventas = dlg.findChild<QTableWidget *>("tableWidget_ventas");
        QTableWidget *detalle = dlg.findChild<QTableWidget *>("tableWidget_detalle");
        QPushButton *consultar = dlg.findChild<QPushButton *>("pushButton");
        QLabel *banca = dlg.findChild<QLabel *>("label_banca");

        QLineEdit *campo(const QString &nombre) { return dlg.findChild<QLineEdit *>(nombre); }

        bool consultarYEsperar() { return pulsarYEsperarRespuesta(consultar, red); }

        // A user's click on the first cell of a summary row.
        void pulsarFila(int fila)
        {
            dlg.show();
            const QRect r = ventas->visualRect(ventas->model()->index(fila, 0));
            QTest::mouseClick(ventas->viewport(), Qt::LeftButton, {}, r.center());
        }

        bool filaSeleccionada(int fila)
        {
            for (int c = 0; c < ventas->columnCount(); ++c)
                if (!ventas->item(fila, c)->isSelected())
                    return false;
            return true;
        }

        int celdasSeleccionadas() { return ventas->selectedItems().size(); }
    };

    static bool rojo(QTableWidget *t, int f, int c)
    {
        const QVariant v = t->item(f, c)->data(Qt::ForegroundRole);
        return v.isValid() && v.value<QBrush>().color() == QColor(255, 0, 0);
    }

    // The worked example plus a second banca with two games.
    static QByteArray respuestaBase()
    {
        return respuestaReporteX({"1,Lotto Activo", "2,La Granjita"},
                                 {"7,1,10,50", "4,1,12,40", "4,2,12,40"},
                                 {"7,Centro,1,1000,500", "4,Oeste,2,500,100", "4,Oeste,1,250,0"});
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init()
    {
        reiniciarSesion();
        SesionGlobal::decimales = 2;
        SesionGlobal::nombre = QStringLiteral("Super Banca Uno");
        SesionGlobal::fechaActual = QDate(2026, 11, 22);
        SesionGlobal::datoLinea7 = QStringLiteral("SB1");
        SesionGlobal::listaLinea8 = QStringList{"1", "2"};
    }

    void formulario()
    {
        Escenario e;
        Dialogo d;
        QCOMPARE(d.dlg.windowTitle(), QStringLiteral("Reporte de Ventas Super Banca"));
        QCOMPARE(d.consultar->text(), QStringLiteral("Consultar"));
        QCOMPARE(d.dlg.findChild<QLineEdit *>("lineEdit_superBanca")->text(),
                 QStringLiteral("Super Banca Uno"));
        QCOMPARE(d.desde->date(), QDate(2026, 11, 22));
        QCOMPARE(d.hasta->date(), QDate(2026, 11, 22));
        QCOMPARE(d.desde->displayFormat(), QStringLiteral("ddd dd/MM/yyyy"));
        QCOMPARE(d.hasta->displayFormat(), QStringLiteral("ddd dd/MM/yyyy"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_superBanca")->text(),
                 QStringLiteral("Super Banca :"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_desde")->text(), QStringLiteral("Desde :"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_hasta")->text(), QStringLiteral("Hasta :"));
        QCOMPARE(d.dlg.findChild<QListWidget *>("listWidget_juegos")->count(), 0);
        QCOMPARE(d.banca->text(), QStringLiteral("TODAS"));

        auto *tabs = d.dlg.findChild<QTabWidget *>("tabWidget");
        QCOMPARE(tabs->count(), 3);
        QCOMPARE(tabs->currentIndex(), 0);
        QCOMPARE(tabs->widget(0)->objectName(), QStringLiteral("tab_resumen"));
        QCOMPARE(tabs->widget(1)->objectName(), QStringLiteral("tab_detalle"));
        QCOMPARE(tabs->widget(2)->objectName(), QStringLiteral("tab_sorteos"));
        QCOMPARE(tabs->tabText(0), QStringLiteral("Resumen"));
        QCOMPARE(tabs->tabText(1), QStringLiteral("Detalle x Juego"));
        QCOMPARE(tabs->tabText(2), QStringLiteral("Detalle x Sorteo"));
        QVERIFY(tabs->widget(0)->isAncestorOf(d.ventas));
        QVERIFY(tabs->widget(1)->isAncestorOf(d.detalle));
        QVERIFY(tabs->widget(1)->isAncestorOf(d.banca));
        // "Detalle x Sorteo" is an empty page.
        QCOMPARE(tabs->widget(2)->findChildren<QWidget *>().size(), 0);
        QVERIFY(!tabs->widget(2)->layout());

        QCOMPARE(encabezados(d.ventas),
                 (QStringList{"Banca", "Venta Bruta", "Comisión", "Venta Neta", "Premios",
                              "Utilidad", "Participación", "Saldo"}));
        QCOMPARE(encabezados(d.detalle),
                 (QStringList{"Juego", "Venta Bruta", "Comisión", "Venta Neta", "Premios",
                              "Utilidad", "Participación", "Saldo"}));
        for (QTableWidget *t : {d.ventas, d.detalle}) {
            QCOMPARE(t->columnWidth(0), 180);
            for (int c = 1; c < 8; ++c)
                QCOMPARE(t->columnWidth(c), 110);
        }

        // Totals below the tabs, each in its own frame, and the detail totals in the tab.
        const QStringList nombres{"VentaBruta", "Comision",      "VentaNeta", "Premios",
                                  "Utilidad",   "Participacion", "Saldo"};
        const QStringList textos{"Venta Bruta", "Comisión",      "Venta Neta", "Premios",
                                 "Utilidad",    "Participación", "Saldo"};
        for (int i = 0; i < nombres.size(); ++i) {
            QString n = nombres.at(i);
            n[0] = n[0].toLower();
            QLineEdit *total = d.campo("lineEdit_" + n);
            QVERIFY2(total, qPrintable(n));
            QCOMPARE(total->parentWidget()->objectName(), "frame_" + n);
            QVERIFY(!tabs->isAncestorOf(total));
            QCOMPARE(d.dlg.findChild<QLabel *>("label_" + n)->text(), textos.at(i));
            QLineEdit *det = d.campo("lineEdit_d" + nombres.at(i));
            QVERIFY2(det, qPrintable(nombres.at(i)));
            QVERIFY(tabs->widget(1)->isAncestorOf(det));
            const QString etiqueta = d.dlg.findChild<QLabel *>("label_d" + nombres.at(i))->text();
            QCOMPARE(etiqueta, nombres.at(i) == "Participacion" ? QStringLiteral("Participacion")
                                                                : textos.at(i));
        }
        QTest::qWait(50);
        QVERIFY(e.srv.peticiones().isEmpty());
    }

    void peticionExacta()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        d.desde->setDate(QDate(2026, 11, 1));
        QVERIFY(d.consultarYEsperar());
        SesionGlobal::datoLinea7 = QStringLiteral("X9");
        SesionGlobal::listaLinea8 = QStringList{"3"};
        d.desde->setDate(QDate(2026, 12, 5));
        d.hasta->setDate(QDate(2026, 12, 1));
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(
            e.srv.peticiones(),
            (QStringList{"/Tornavo/TornavoSU/reportex.php?bx=SB1&j=1,2&d=2026-11-01&h=2026-11-22",
                         "/Tornavo/TornavoSU/reportex.php?bx=X9&j=3&d=2026-12-05&h=2026-12-01"}));
    }

    void ejemploResuelto()
    {
        Escenario e{{"reportex.php",
                     respuestaReporteX({"1,Lotto"}, {"7,1,10,50"}, {"7,Centro,1,1000,500"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 1);
        QCOMPARE(textosFila(d.ventas, 0), (QStringList{"Centro", "1,000.00", "100.00", "900.00",
                                                       "500.00", "400.00", "200.00", "200.00"}));
        for (int c = 1; c < 8; ++c) {
            QCOMPARE(d.ventas->item(0, c)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
            QVERIFY(!rojo(d.ventas, 0, c));
        }
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("1,000.00"));
        QCOMPARE(d.campo("lineEdit_comision")->text(), QStringLiteral("100.00"));
        QCOMPARE(d.campo("lineEdit_ventaNeta")->text(), QStringLiteral("900.00"));
        QCOMPARE(d.campo("lineEdit_premios")->text(), QStringLiteral("500.00"));
        QCOMPARE(d.campo("lineEdit_utilidad")->text(), QStringLiteral("400.00"));
        QCOMPARE(d.campo("lineEdit_participacion")->text(), QStringLiteral("200.00"));
        QCOMPARE(d.campo("lineEdit_saldo")->text(), QStringLiteral("200.00"));
        QCOMPARE(d.campo("lineEdit_utilidad")->styleSheet(), QString());
        QCOMPARE(d.campo("lineEdit_saldo")->styleSheet(), QString());
        QCOMPARE(d.banca->text(), QStringLiteral("TODAS"));
        QCOMPARE(d.dlg.pcomision("7", "1"), (QList<double>{10.0, 50.0}));
        QCOMPARE(d.dlg.nombreJuego("1"), QStringLiteral("Lotto"));
    }

    // A line that breaks even to the cent (gross 100.10, 10 %, prizes 90.09) is black zero, in
    // the banca table, the detail and the totals.
    void puntoDeEquilibrioEnNegro()
    {
        Escenario e{{"reportex.php",
                     respuestaReporteX({"1,Lotto"}, {"7,1,10,50"}, {"7,Centro,1,100.10,90.09"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(textosFila(d.ventas, 0), (QStringList{"Centro", "100.10", "10.01", "90.09",
                                                       "90.09", "0.00", "0.00", "0.00"}));
        for (int c = 1; c < 8; ++c)
            QVERIFY2(!rojo(d.ventas, 0, c), qPrintable(QString::number(c)));
        for (const char *campo :
             {"lineEdit_utilidad", "lineEdit_participacion", "lineEdit_saldo"}) {
            QCOMPARE(d.campo(campo)->text(), QStringLiteral("0.00"));
            QCOMPARE(d.campo(campo)->styleSheet(), QString());
        }
        d.pulsarFila(0);
        QCOMPARE(textosFila(d.detalle, 0), (QStringList{"Lotto", "100.10", "10.01", "90.09",
                                                        "90.09", "0.00", "0.00", "0.00"}));
        for (int c = 1; c < 8; ++c)
            QVERIFY(!rojo(d.detalle, 0, c));
        QCOMPARE(d.campo("lineEdit_dUtilidad")->text(), QStringLiteral("0.00"));
        QCOMPARE(d.campo("lineEdit_dSaldo")->styleSheet(), QString());
    }

    // The banca rows add up to the totals below them, to the cent.
    void filasSumanElTotal()
    {
        Escenario e{{"reportex.php",
                     respuestaReporteX({"1,Lotto"}, {"1,1,10,0", "2,1,10,0", "3,1,10,0"},
                                       {"1,Uno,1,0.05,0", "2,Dos,1,0.05,0", "3,Tres,1,0.05,0"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 3);
        for (int f = 0; f < 3; ++f)
            QCOMPARE(textoCelda(d.ventas, f, 2), QStringLiteral("0.01"));
        QCOMPARE(d.campo("lineEdit_comision")->text(), QStringLiteral("0.03"));
        QCOMPARE(d.campo("lineEdit_ventaNeta")->text(), QStringLiteral("0.12"));
    }

    void totalesDeVariasBancas()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 2);
        QCOMPARE(textoCelda(d.ventas, 0, 0), QStringLiteral("Centro"));
        // Oeste: gross 750, commission 90, net 660, prizes 100, utility 560,
        // participation (500-60-100)*0.4 + (250-30-0)*0.4 = 136 + 88 = 224, balance 336.
        QCOMPARE(textosFila(d.ventas, 1), (QStringList{"Oeste", "750.00", "90.00", "660.00",
                                                       "100.00", "560.00", "224.00", "336.00"}));
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("1,750.00"));
        QCOMPARE(d.campo("lineEdit_comision")->text(), QStringLiteral("190.00"));
        QCOMPARE(d.campo("lineEdit_ventaNeta")->text(), QStringLiteral("1,560.00"));
        QCOMPARE(d.campo("lineEdit_premios")->text(), QStringLiteral("600.00"));
        QCOMPARE(d.campo("lineEdit_utilidad")->text(), QStringLiteral("960.00"));
        QCOMPARE(d.campo("lineEdit_participacion")->text(), QStringLiteral("424.00"));
        QCOMPARE(d.campo("lineEdit_saldo")->text(), QStringLiteral("536.00"));
    }

    void dosFilasDeComisionGanaLaUltima()
    {
        Escenario e{{"reportex.php", respuestaReporteX({"1,Lotto"}, {"7,1,10,50", "7,1,20,25"},
                                                       {"7,Centro,1,1000,0"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.dlg.pcomision("7", "1"), (QList<double>{20.0, 25.0}));
        QCOMPARE(d.dlg.pcomision("7", "9"), (QList<double>{0.0, 0.0}));
        QCOMPARE(textosFila(d.ventas, 0), (QStringList{"Centro", "1,000.00", "200.00", "800.00",
                                                       "0.00", "800.00", "200.00", "600.00"}));
    }

    void bancaSinComisionNoAparece()
    {
        Escenario e{
            {"reportex.php", respuestaReporteX({"1,Lotto", "2,Ruleta"}, {"7,1,10,50", "8,2,0,50"},
                                               {"8,Sin Comision,1,900,0", "8,Sin Comision,2,900,0",
                                                "7,Centro,1,1000,500"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 1);
        QCOMPARE(textoCelda(d.ventas, 0, 0), QStringLiteral("Centro"));
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("1,000.00"));
    }

    void utilidadNegativaEnRojo()
    {
        Escenario e{
            {"reportex.php", respuestaReporteX({"1,Lotto"}, {"7,1,10,50", "4,1,10,50"},
                                               {"7,Centro,1,1000,1500", "4,Oeste,1,1000,0"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        // Centro: net 900, prizes 1500 → utility -600, participation -300, balance -300.
        QCOMPARE(textosFila(d.ventas, 0),
                 (QStringList{"Centro", "1,000.00", "100.00", "900.00", "1,500.00", "-600.00",
                              "-300.00", "-300.00"}));
        for (int c = 1; c <= 4; ++c)
            QVERIFY(!rojo(d.ventas, 0, c));
        for (int c = 5; c <= 7; ++c) {
            QVERIFY(rojo(d.ventas, 0, c));
            QVERIFY(!rojo(d.ventas, 1, c));
        }
        // Totals: utility -600 + 900 = 300 (not red), participation -300 + 450 = 150,
        // balance 150.
        QCOMPARE(d.campo("lineEdit_utilidad")->text(), QStringLiteral("300.00"));
        QCOMPARE(d.campo("lineEdit_utilidad")->styleSheet(), QString());

        e.srv.responder("reportex.php",
                        respuestaReporteX({"1,Lotto"}, {"7,1,10,50"}, {"7,Centro,1,1000,1500"}));
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.campo("lineEdit_utilidad")->text(), QStringLiteral("-600.00"));
        QCOMPARE(d.campo("lineEdit_utilidad")->styleSheet(),
                 QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(d.campo("lineEdit_participacion")->styleSheet(),
                 QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(d.campo("lineEdit_saldo")->styleSheet(), QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(d.campo("lineEdit_ventaBruta")->styleSheet(), QString());

        // Positive again: the red goes away.
        e.srv.responder("reportex.php",
                        respuestaReporteX({"1,Lotto"}, {"7,1,10,50"}, {"7,Centro,1,1000,0"}));
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.campo("lineEdit_utilidad")->styleSheet(), QString());
        QCOMPARE(d.campo("lineEdit_saldo")->styleSheet(), QString());
    }

    void participacionSobreCienColoreaDistinto()
    {
        Escenario e{{"reportex.php",
                     respuestaReporteX({"1,Lotto"}, {"7,1,10,150"}, {"7,Centro,1,1000,500"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        // Utility 400, participation 600, balance -200.
        QCOMPARE(textosFila(d.ventas, 0), (QStringList{"Centro", "1,000.00", "100.00", "900.00",
                                                       "500.00", "400.00", "600.00", "-200.00"}));
        // The banca table goes by the sign of the utility: all black.
        for (int c = 1; c < 8; ++c)
            QVERIFY2(!rojo(d.ventas, 0, c), qPrintable(QString::number(c)));
        // The report total of the balance is red on its own sign.
        QCOMPARE(d.campo("lineEdit_saldo")->styleSheet(), QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(d.campo("lineEdit_utilidad")->styleSheet(), QString());

        d.pulsarFila(0);
        QCOMPARE(d.detalle->rowCount(), 1);
        QCOMPARE(textosFila(d.detalle, 0), (QStringList{"Lotto", "1,000.00", "100.00", "900.00",
                                                        "500.00", "400.00", "600.00", "-200.00"}));
        // Detail rows: each cell on its own sign.
        QVERIFY(!rojo(d.detalle, 0, 5));
        QVERIFY(!rojo(d.detalle, 0, 6));
        QVERIFY(rojo(d.detalle, 0, 7));
        QCOMPARE(d.campo("lineEdit_dSaldo")->text(), QStringLiteral("-200.00"));
        QCOMPARE(d.campo("lineEdit_dSaldo")->styleSheet(),
                 QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(d.campo("lineEdit_dUtilidad")->styleSheet(), QString());
        QCOMPARE(d.campo("lineEdit_dParticipacion")->styleSheet(), QString());
    }

    void detalleConPremiosAltos()
    {
        Escenario e{
            {"reportex.php", respuestaReporteX({"1,Lotto", "2,Ruleta"}, {"7,1,10,50", "7,2,10,50"},
                                               {"7,Centro,1,1000,1500", "7,Centro,2,1000,0"})}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        // The banca's utility is 300: its row is black.
        QCOMPARE(textoCelda(d.ventas, 0, 5), QStringLiteral("300.00"));
        QVERIFY(!rojo(d.ventas, 0, 5));
        d.pulsarFila(0);
        QCOMPARE(d.detalle->rowCount(), 2);
        QCOMPARE(textoCelda(d.detalle, 0, 0), QStringLiteral("Lotto"));
        QCOMPARE(textoCelda(d.detalle, 0, 5), QStringLiteral("-600.00"));
        for (int c = 5; c <= 7; ++c) {
            QVERIFY(rojo(d.detalle, 0, c));
            QVERIFY(!rojo(d.detalle, 1, c));
        }
        QCOMPARE(d.campo("lineEdit_dUtilidad")->text(), QStringLiteral("300.00"));
        QCOMPARE(d.campo("lineEdit_dUtilidad")->styleSheet(), QString());
    }

    void clicAlternaLaFila()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.celdasSeleccionadas(), 0);

        d.pulsarFila(1);
        QVERIFY(d.filaSeleccionada(1));
        QCOMPARE(d.celdasSeleccionadas(), 8);
        QCOMPARE(d.banca->text(), QStringLiteral("Oeste"));
        // Oeste's lines in reply order, with the game names of the first section.
        QCOMPARE(d.detalle->rowCount(), 2);
        QCOMPARE(textosFila(d.detalle, 0), (QStringList{"La Granjita", "500.00", "60.00", "440.00",
                                                        "100.00", "340.00", "136.00", "204.00"}));
        QCOMPARE(textosFila(d.detalle, 1), (QStringList{"Lotto Activo", "250.00", "30.00", "220.00",
                                                        "0.00", "220.00", "88.00", "132.00"}));
        QCOMPARE(d.campo("lineEdit_dVentaBruta")->text(), QStringLiteral("750.00"));
        QCOMPARE(d.campo("lineEdit_dComision")->text(), QStringLiteral("90.00"));
        QCOMPARE(d.campo("lineEdit_dVentaNeta")->text(), QStringLiteral("660.00"));
        QCOMPARE(d.campo("lineEdit_dPremios")->text(), QStringLiteral("100.00"));
        QCOMPARE(d.campo("lineEdit_dUtilidad")->text(), QStringLiteral("560.00"));
        QCOMPARE(d.campo("lineEdit_dParticipacion")->text(), QStringLiteral("224.00"));
        QCOMPARE(d.campo("lineEdit_dSaldo")->text(), QStringLiteral("336.00"));

        // Another row: only that one is selected.
        d.pulsarFila(0);
        QVERIFY(d.filaSeleccionada(0));
        QCOMPARE(d.celdasSeleccionadas(), 8);
        QCOMPARE(d.banca->text(), QStringLiteral("Centro"));
        QCOMPARE(d.detalle->rowCount(), 1);

        // The selected row again: deselected, detail empty.
        d.pulsarFila(0);
        QCOMPARE(d.celdasSeleccionadas(), 0);
        QCOMPARE(d.detalle->rowCount(), 0);
        QCOMPARE(d.campo("lineEdit_dVentaBruta")->text(), QStringLiteral("0.00"));

        // A click on another column of a row works the same.
        d.dlg.show();
        const QRect r = d.ventas->visualRect(d.ventas->model()->index(1, 5));
        QTest::mouseClick(d.ventas->viewport(), Qt::LeftButton, {}, r.center());
        QVERIFY(d.filaSeleccionada(1));
        QTest::mouseClick(d.ventas->viewport(), Qt::LeftButton, {}, r.center());
        QCOMPARE(d.celdasSeleccionadas(), 0);
    }

    void nuevaConsultaVaciaElDetalle()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        d.pulsarFila(1);
        QCOMPARE(d.banca->text(), QStringLiteral("Oeste"));
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.detalle->rowCount(), 0);
        QCOMPARE(d.ventas->rowCount(), 2);
        QCOMPARE(d.celdasSeleccionadas(), 0);
        QCOMPARE(d.banca->text(), QStringLiteral("TODAS"));
    }

    void sinVentas()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 2);
        d.pulsarFila(0);
        QCOMPARE(d.detalle->rowCount(), 1);

        e.srv.responder("reportex.php", respuestaReporteX({"1,Lotto"}, {"7,1,10,50"}, {""}));
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.cantidad(), 1);
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Atención"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Sin ventas"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Warning);
        QCOMPARE(d.ventas->rowCount(), 0);
        QCOMPARE(d.detalle->rowCount(), 0);
    }

    void ventasSinComisionNoEsSinVentas()
    {
        Escenario e{{"reportex.php", respuestaReporteX({"1,Lotto"}, {}, {"7,Centro,1,1000,500"})}};
        Dialogo d;
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QTest::qWait(50);
        QCOMPARE(captura.cantidad(), 0);
        QCOMPARE(d.ventas->rowCount(), 0);
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("0.00"));
    }

    void respuestaIlegibleConservaLasTablas()
    {
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        d.pulsarFila(1);

        e.srv.responder("reportex.php", "");
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
        QCOMPARE(d.ventas->rowCount(), 2);
        QCOMPARE(d.detalle->rowCount(), 2);
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("1,750.00"));
        QVERIFY(d.consultar->isEnabled());
        // The report is still there to click on.
        QCOMPARE(d.dlg.pcomision("4", "2"), (QList<double>{12.0, 40.0}));
    }

    void errorHttpConservaLasTablas_data()
    {
        QTest::addColumn<int>("codigo");
        QTest::newRow("500") << 500;
        QTest::newRow("404") << 404;
    }

    void errorHttpConservaLasTablas()
    {
        // An error page with a body is no report: the same as no answer at all.
        QFETCH(int, codigo);
        Escenario e{{"reportex.php", respuestaBase()}};
        Dialogo d;
        QVERIFY(d.consultarYEsperar());
        e.srv.estado("reportex.php", codigo);
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(d.ventas->rowCount(), 2);
        QCOMPARE(d.campo("lineEdit_ventaBruta")->text(), QStringLiteral("1,750.00"));
    }

    void servidorCaido()
    {
        EscenarioSinServidor caido;
        Dialogo d;
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
    }

    void respuestaMalformada()
    {
        Escenario e{{"reportex.php", "basura sin secciones"}};
        Dialogo d;
        CapturaMensajes captura;
        QVERIFY(d.consultarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Sin ventas"));

        e.srv.responder("reportex.php", respuestaReporteX({"1"}, {"7,1,x", "7,1,10"},
                                                          {"7", "7,C", "7,C,1", "7,C,1,abc,"}));
        QVERIFY(d.consultarYEsperar());
        QCOMPARE(d.ventas->rowCount(), 1);
        QCOMPARE(textosFila(d.ventas, 0),
                 (QStringList{"C", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00", "0.00"}));
        d.pulsarFila(0);
        QCOMPARE(d.detalle->rowCount(), 2);
        QCOMPARE(textoCelda(d.detalle, 0, 0), QString()); // game "1" has no name
    }
};

TORNAVO_PRUEBA_MAIN(TstReporteVentasX)
#include "tst_reporteventasx.moc"
