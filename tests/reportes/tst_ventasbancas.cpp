#include "reportes/ventasbancas.h"

#include "app/formato.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/tablas.h"

#include <QDateEdit>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTableWidget>

// The sales-by-banca dialog against the fixture server.
class TstVentasBancas : public QObject {
    Q_OBJECT

    struct Dialogo : DialogoDeFechas<VentasBancas> {
        QTableWidget *agencias = dlg.findChild<QTableWidget *>("tableWidget_agencias");
        QTableWidget *bancas = dlg.findChild<QTableWidget *>("tableWidget_bancas");
        QPushButton *actualizar = dlg.findChild<QPushButton *>("pushButton_actualizar");
        QLabel *totalVenta = dlg.findChild<QLabel *>("label_totalventa");
        QLabel *totalComision = dlg.findChild<QLabel *>("label_totalcomision");

        // Presses "Actualizar" and waits until the reply was handled.
        bool actualizarYEsperar() { return pulsarYEsperarRespuesta(actualizar, red); }
    };

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init()
    {
        reiniciarSesion();
        SesionGlobal::decimales = 2;
    }

    void fechasDelEquipoNoDeLaSesion()
    {
        // Both dates start on the machine's date, whatever date the server's clock gave the
        // session.
        Escenario e;
        SesionGlobal::fechaActual = QDate::currentDate().addDays(-40);
        Dialogo d;
        QCOMPARE(d.desde->date(), QDate::currentDate());
        QCOMPARE(d.hasta->date(), QDate::currentDate());
        QVERIFY(e.srv.peticiones().isEmpty());
    }

    void formulario()
    {
        Escenario e;
        Dialogo d;
        QCOMPARE(d.dlg.windowTitle(), QStringLiteral("Ventas Bancas"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label")->text(), QStringLiteral("Desde :"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_2")->text(), QStringLiteral("Hasta :"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_3")->text(), QStringLiteral("Total Venta"));
        QCOMPARE(d.dlg.findChild<QLabel *>("label_4")->text(), QStringLiteral("Total Comisión"));
        QCOMPARE(d.actualizar->text(), QStringLiteral("Actualizar"));
        QVERIFY(d.actualizar->isEnabled());
        QCOMPARE(d.desde->displayFormat(), QStringLiteral("dddd dd/MM/yyyy"));
        QCOMPARE(d.hasta->displayFormat(), QStringLiteral("dddd dd/MM/yyyy"));
        QCOMPARE(d.desde->date(), QDate::currentDate());
        QCOMPARE(d.hasta->date(), QDate::currentDate());

        QCOMPARE(encabezados(d.agencias),
                 (QStringList{"Banca", "Agencia", "Venta Bruta", "Comisión", "Hora ult.\nVenta"}));
        QCOMPARE(d.agencias->columnWidth(0), 130);
        QCOMPARE(d.agencias->columnWidth(1), 220);
        QCOMPARE(d.agencias->columnWidth(2), 150);
        QCOMPARE(d.agencias->columnWidth(3), 150);
        QCOMPARE(d.agencias->columnWidth(4), d.agencias->horizontalHeader()->defaultSectionSize());
        QCOMPARE(encabezados(d.bancas),
                 (QStringList{"Banca", "Cantidad\nAgencias", "Venta Bruta", "Comisión"}));
        QCOMPARE(d.bancas->columnWidth(0), 150);
        QCOMPARE(d.bancas->columnWidth(1), 100);
        QCOMPARE(d.bancas->columnWidth(2), 150);
        QCOMPARE(d.bancas->columnWidth(3), 150);

        // The agency table is the left part of the splitter.
        QCOMPARE(d.agencias->parentWidget()->objectName(), QStringLiteral("splitter"));
        QCOMPARE(d.dlg.findChild<QFrame *>("frame_venta")->styleSheet(),
                 QStringLiteral("background-color: rgb(0, 85, 127);\ncolor: rgb(255, 255, 255);"));
        QCOMPARE(d.dlg.findChild<QFrame *>("frame_2")->styleSheet(),
                 QStringLiteral("background-color: rgb(0, 170, 127);\ncolor: rgb(0, 0, 0);"));
        QCOMPARE(d.totalVenta->parentWidget()->objectName(), QStringLiteral("frame_venta"));
        QCOMPARE(d.totalComision->parentWidget()->objectName(), QStringLiteral("frame_2"));

        // Nothing is asked before the button is pressed.
        QTest::qWait(50);
        QVERIFY(e.srv.peticiones().isEmpty());
    }

    void peticionExacta()
    {
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1,0,0,10:00:00\n"}};
        Dialogo d;
        d.desde->setDate(QDate(2026, 11, 1));
        d.hasta->setDate(QDate(2026, 11, 22));
        QVERIFY(d.actualizarYEsperar());
        // The range goes as it stands, even backwards.
        d.desde->setDate(QDate(2026, 12, 31));
        d.hasta->setDate(QDate(2026, 1, 2));
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(e.srv.peticiones(),
                 (QStringList{"/Tornavo/TornavoSU/ventabancas2.php?d=2026-11-01&h=2026-11-22",
                              "/Tornavo/TornavoSU/ventabancas2.php?d=2026-12-31&h=2026-01-02"}));
    }

    void botonDesactivadoMientrasEspera()
    {
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1,0,0,10:00:00\n"}};
        e.srv.demorar("ventabancas2.php", 300);
        Dialogo d;
        QSignalSpy llegada(d.red, &QNetworkAccessManager::finished);
        QTest::mouseClick(d.actualizar, Qt::LeftButton);
        QVERIFY(!d.actualizar->isEnabled());
        QVERIFY(llegada.wait(5000));
        QVERIFY(d.actualizar->isEnabled());
    }

    void llenaTablasYTotales()
    {
        Escenario e{{"ventabancas2.php",
                     "7,Centro,701,La Esquina,Jefe 1,1500.5,300,150.05,14:05:09\n"
                     "\n"
                     "3,Norte,301,El Kiosco,,2000,10,200,09:07:00\n"
                     "7,Centro,702,La Plaza,,1234567.891,0,0.5,23:59:59\n"}};
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());

        QCOMPARE(d.agencias->rowCount(), 3);
        QCOMPARE(textoCelda(d.agencias, 0, 0), QStringLiteral("7-Centro"));
        QCOMPARE(textoCelda(d.agencias, 0, 1), QStringLiteral("701-La Esquina"));
        QCOMPARE(textoCelda(d.agencias, 0, 2), QStringLiteral("1,500.50"));
        QCOMPARE(textoCelda(d.agencias, 0, 3), QStringLiteral("150.05"));
        QCOMPARE(textoCelda(d.agencias, 0, 4), QStringLiteral("2:05 p. m."));
        QCOMPARE(textoCelda(d.agencias, 1, 4), QStringLiteral("9:07 a. m."));
        QCOMPARE(textoCelda(d.agencias, 2, 2), QStringLiteral("1,234,567.89"));
        QCOMPARE(textoCelda(d.agencias, 2, 4), QStringLiteral("11:59 p. m."));
        for (int c = 2; c <= 4; ++c)
            QCOMPARE(d.agencias->item(0, c)->textAlignment(),
                     int(Qt::AlignRight | Qt::AlignVCenter));

        // Bancas in order of first appearance, not sorted.
        QCOMPARE(d.bancas->rowCount(), 2);
        QCOMPARE(textoCelda(d.bancas, 0, 0), QStringLiteral("7-Centro"));
        QCOMPARE(textoCelda(d.bancas, 0, 1), QStringLiteral("2"));
        QCOMPARE(textoCelda(d.bancas, 0, 2), QStringLiteral("1,236,068.39"));
        QCOMPARE(textoCelda(d.bancas, 0, 3), QStringLiteral("150.55"));
        QCOMPARE(textoCelda(d.bancas, 1, 0), QStringLiteral("3-Norte"));
        QCOMPARE(textoCelda(d.bancas, 1, 1), QStringLiteral("1"));
        QCOMPARE(textoCelda(d.bancas, 1, 2), QStringLiteral("2,000.00"));
        for (int c = 1; c <= 3; ++c)
            QCOMPARE(d.bancas->item(0, c)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));

        QCOMPARE(d.totalVenta->text(), QStringLiteral("1,238,068.39"));
        QCOMPARE(d.totalComision->text(), QStringLiteral("350.55"));
        QVERIFY(d.actualizar->isEnabled());
    }

    void decimalesDeLaSesion()
    {
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1234.4,0,12.5,10:00:00\n"}};
        SesionGlobal::decimales = 0;
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(textoCelda(d.agencias, 0, 2), QStringLiteral("1,234"));
        QCOMPARE(d.totalVenta->text(), QStringLiteral("1,234"));
    }

    void dosAgenciasDeUnaBanca()
    {
        Escenario e{{"ventabancas2.php", "5,Sur,51,Uno,,100,0,10,08:00:00\n"
                                         "5,Sur,52,Dos,,250,0,25,09:00:00\n"}};
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(d.agencias->rowCount(), 2);
        QCOMPARE(d.bancas->rowCount(), 1);
        QCOMPARE(textoCelda(d.bancas, 0, 1), QStringLiteral("2"));
        QCOMPARE(textoCelda(d.bancas, 0, 2), QStringLiteral("350.00"));
        QCOMPARE(textoCelda(d.bancas, 0, 3), QStringLiteral("35.00"));
    }

    void ordenDeAparicion()
    {
        Escenario e{{"ventabancas2.php", "9,Zeta,91,a,,1,0,0,\n2,Beta,21,b,,1,0,0,\n"
                                         "9,Zeta,92,c,,1,0,0,\n5,Alfa,51,d,,1,0,0,\n"}};
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(d.bancas->rowCount(), 3);
        QCOMPARE(textoCelda(d.bancas, 0, 0), QStringLiteral("9-Zeta"));
        QCOMPARE(textoCelda(d.bancas, 1, 0), QStringLiteral("2-Beta"));
        QCOMPARE(textoCelda(d.bancas, 2, 0), QStringLiteral("5-Alfa"));
    }

    void tituloConLaHora()
    {
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1,0,0,10:00:00\n"}};
        Dialogo d;
        const QTime antes = QTime::currentTime();
        QVERIFY(d.actualizarYEsperar());
        const QTime despues = QTime::currentTime();
        const QString titulo = d.dlg.windowTitle();
        QVERIFY2(titulo.startsWith("Ventas Bancas - "), qPrintable(titulo));
        const QString hora = titulo.mid(QStringLiteral("Ventas Bancas - ").size());
        QVERIFY2(hora == textoConsola(antes, "h:mm:ss ap") ||
                     hora == textoConsola(despues, "h:mm:ss ap"),
                 qPrintable(titulo));
        QVERIFY(
            QRegularExpression("^\\d{1,2}:\\d\\d:\\d\\d (a|p)\\. m\\.$").match(hora).hasMatch());
    }

    void respuestaVaciaDejaBotonDesactivado()
    {
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1,0,0,10:00:00\n"}};
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(d.agencias->rowCount(), 1);
        const QString tituloAntes = d.dlg.windowTitle();

        e.srv.responder("ventabancas2.php", "");
        CapturaMensajes captura;
        QVERIFY(d.actualizarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.cantidad(), 1);
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
        QCOMPARE(d.agencias->rowCount(), 0);
        QCOMPARE(d.bancas->rowCount(), 0);
        QVERIFY(!d.actualizar->isEnabled());
        QCOMPARE(d.dlg.windowTitle(), tituloAntes);
    }

    void errorHttpEsFaltaDeRespuesta_data()
    {
        QTest::addColumn<int>("codigo");
        QTest::newRow("500") << 500;
        QTest::newRow("404") << 404;
    }

    void errorHttpEsFaltaDeRespuesta()
    {
        QFETCH(int, codigo);
        Escenario e{{"ventabancas2.php", "1,B,2,A,,1,0,0,10:00:00\n"}};
        e.srv.estado("ventabancas2.php", codigo);
        Dialogo d;
        CapturaMensajes captura;
        QVERIFY(d.actualizarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(d.agencias->rowCount(), 0);
        QCOMPARE(d.bancas->rowCount(), 0);
    }

    void servidorCaido()
    {
        EscenarioSinServidor caido;
        Dialogo d;
        CapturaMensajes captura;
        QVERIFY(d.actualizarYEsperar());
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QVERIFY(!d.actualizar->isEnabled());
    }

    void lineasMalas()
    {
        Escenario e{{"ventabancas2.php", QByteArray("corta\n1,B\n1,B,2,A,x,abc,?,zz,99:99:99\n"
                                                    "\xe9,\xf1,3,C,,5,0,1,08:00:00\0basura",
                                                    68)}};
        Dialogo d;
        QVERIFY(d.actualizarYEsperar());
        QCOMPARE(d.agencias->rowCount(), 4);
        QCOMPARE(textoCelda(d.agencias, 0, 0), QStringLiteral("corta-"));
        QCOMPARE(textoCelda(d.agencias, 2, 2), QStringLiteral("0.00"));
        QCOMPARE(textoCelda(d.agencias, 2, 4), QString()); // unreadable time: empty cell
        QCOMPARE(textoCelda(d.agencias, 3, 0), QString::fromUtf8("é-ñ"));
        QCOMPARE(d.bancas->rowCount(), 3);
        QCOMPARE(textoCelda(d.bancas, 1, 1), QStringLiteral("2"));
        QCOMPARE(d.totalVenta->text(), QStringLiteral("5.00"));
        QVERIFY(d.actualizar->isEnabled());
    }
};

TORNAVO_PRUEBA_MAIN(TstVentasBancas)
#include "tst_ventasbancas.moc"
