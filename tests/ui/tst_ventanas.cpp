#include "app/celdas.h"
#include "app/pantalla.h"
#include "app/sesion.h"
#include "autopremiacion/auto_calcular.h"
#include "consulta/mysqlconsulta.h"
#include "monitor/monitor2.h"
#include "premios/calcularpremios2.h"
#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"
#include "temas/themeconfig.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/sesionprueba.h"
#include "ui/iniciar_sesion.h"
#include "ui/mainwindow.h"

#include <QDialog>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>
#include <QTimer>
#include <QToolTip>

#include <functional>
#include <memory>

// Every window of the console fits a 1366×768 laptop screen, and cut amounts show whole in
// their tooltips.
class TstVentanas : public QObject {
    Q_OBJECT

    // A 1366×768 screen with a 40-pixel panel at the bottom.
    const QRect laptop{0, 0, 1366, 728};

    // Free area less the frame that the window system will add.
    QSize espacioCliente() const
    {
        return laptop.size() - QSize(kMarcoEstimado.left() + kMarcoEstimado.right(),
                                     kMarcoEstimado.top() + kMarcoEstimado.bottom());
    }

    static QStringList anchos(QTableWidget *t)
    {
        QStringList r;
        for (int c = 0; c < t->columnCount(); ++c)
            r << QString::number(t->columnWidth(c));
        return r;
    }

    // A cut amount whose item carries a tooltip of its own.
    static QTableWidgetItem *celdaConTooltipPropio()
    {
        auto *celda = new QTableWidgetItem("99,999,999.99");
        celda->setToolTip("su propio texto");
        return celda;
    }

    // Shows the table at 400×200; true once it is on screen.
    static bool mostrar(QTableWidget &tabla)
    {
        tabla.resize(400, 200);
        tabla.show();
        return QTest::qWaitForWindowExposed(&tabla);
    }

    // The tooltip a user gets resting the pointer on cell (f, c), "" when none shows.
    static QString tooltip(QTableWidget &tabla, int f, int c)
    {
        QToolTip::hideText();
        // The tooltip fades out; wait until it is gone.
        for (int i = 0; i < 500 && QToolTip::isVisible(); ++i)
            QTest::qWait(10);
        const QPoint p = tabla.visualItemRect(tabla.item(f, c)).center();
        QHelpEvent evento(QEvent::ToolTip, p, tabla.viewport()->mapToGlobal(p));
        QApplication::sendEvent(tabla.viewport(), &evento);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    }

    // Checks one dialog: its smallest size fits the laptop, and after fitting, the window with
    // its frame lies inside the free area. Returns the size it opens with.
    QSize comprobar(QWidget *dialogo, const char *nombre)
    {
        if (QLayout *l = dialogo->layout())
            l->activate();
        const QSize minimo = dialogo->minimumSizeHint();
        const QString texto = QStringLiteral("%1: mínimo %2×%3, abierto %4×%5")
                                  .arg(QLatin1String(nombre))
                                  .arg(minimo.width())
                                  .arg(minimo.height())
                                  .arg(dialogo->width())
                                  .arg(dialogo->height());
        [&] {
            QVERIFY2(minimo.width() <= espacioCliente().width() &&
                         minimo.height() <= espacioCliente().height(),
                     qPrintable(texto));
        }();
        ajustarAPantalla(dialogo, laptop);
        // The frame the window system drew, or the one it will draw.
        const QRect g = dialogo->frameGeometry() != dialogo->geometry()
                            ? dialogo->frameGeometry()
                            : dialogo->geometry().marginsAdded(kMarcoEstimado);
        [&] {
            QVERIFY2(laptop.contains(g), qPrintable(texto + QStringLiteral(" → %1,%2 %3×%4")
                                                                .arg(g.x())
                                                                .arg(g.y())
                                                                .arg(g.width())
                                                                .arg(g.height())));
        }();
        return dialogo->size();
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init() { reiniciarSesion(); }

    void geometriaQueCabe()
    {
        const QMargins marco(8, 38, 8, 8);
        // Fits: unchanged.
        QCOMPARE(geometriaEnPantalla(QRect(100, 100, 800, 500), marco, laptop),
                 QRect(100, 100, 800, 500));
        // Too wide: as wide as the area allows, centre kept where it can be.
        QCOMPARE(geometriaEnPantalla(QRect(0, 0, 1420, 640), marco, laptop),
                 QRect(8, 38, 1350, 640));
        QCOMPARE(geometriaEnPantalla(QRect(-30, -30, 3000, 3000), marco, laptop),
                 QRect(8, 38, 1350, 682));
        // Off to the right: moved back in.
        QCOMPARE(geometriaEnPantalla(QRect(1200, 300, 400, 300), marco, laptop),
                 QRect(958, 300, 400, 300));
        // An area on a second screen.
        QCOMPARE(geometriaEnPantalla(QRect(0, 0, 2000, 500), marco, QRect(1366, 0, 1366, 768)),
                 QRect(1374, 38, 1350, 500));
        // No area known: as it was.
        QCOMPARE(geometriaEnPantalla(QRect(0, 0, 2000, 500), marco, QRect()),
                 QRect(0, 0, 2000, 500));
    }

    // Each dialog opened from the main window, against a 1366×768 screen.
    void cadaDialogoCabe()
    {
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        CapturaMensajes captura;
        SesionGlobal::decimales = 2;
        QWidget padre;

        QCOMPARE(comprobar(new VentasBancas(&padre), "VentasBancas"), QSize(1340, 640));
        auto *ventas = padre.findChild<VentasBancas *>();
        QCOMPARE(anchos(ventas->findChild<QTableWidget *>("tableWidget_agencias")).mid(0, 4),
                 (QStringList{"130", "220", "150", "150"}));
        QCOMPARE(anchos(ventas->findChild<QTableWidget *>("tableWidget_bancas")),
                 (QStringList{"150", "100", "150", "150"}));
        // Cut amounts of both reports show whole in their tooltips.
        for (auto *tabla : ventas->findChildren<QTableWidget *>())
            QVERIFY(qobject_cast<DelegadoTextoCompleto *>(tabla->itemDelegate()));

        comprobar(new reporteVentasX(&padre), "reporteVentasX");
        auto *reporte = padre.findChild<reporteVentasX *>();
        const QStringList anchosReporte = {"180", "110", "110", "110", "110", "110", "110", "110"};
        QCOMPARE(anchos(reporte->findChild<QTableWidget *>("tableWidget_ventas")), anchosReporte);
        QCOMPARE(anchos(reporte->findChild<QTableWidget *>("tableWidget_detalle")), anchosReporte);
        for (auto *tabla : reporte->findChildren<QTableWidget *>())
            QVERIFY(qobject_cast<DelegadoTextoCompleto *>(tabla->itemDelegate()));

        comprobar(new Monitor2(&padre), "Monitor2");
        comprobar(new calcularpremios2(&padre), "calcularpremios2");
        comprobar(new auto_calcular(&padre), "auto_calcular");
        comprobar(new mysqlconsulta(&padre), "mysqlconsulta");
        comprobar(new themeconfig(&padre), "themeconfig");
        comprobar(new iniciar_sesion(&padre), "iniciar_sesion");
    }

    // The main window is shown maximised: its smallest size has to fit the screen.
    void ventanaPrincipalCabe()
    {
        Escenario e{{"validarUser.php", respuestaLoginAdmin}};
        responderLogin();
        MainWindow ventana;
        const QSize minimo = ventana.minimumSizeHint();
        QVERIFY2(minimo.width() <= espacioCliente().width() &&
                     minimo.height() <= espacioCliente().height(),
                 qPrintable(QStringLiteral("%1×%2").arg(minimo.width()).arg(minimo.height())));
    }

    // Installed at start, the fitting happens by itself when a window is first shown.
    void ajusteAlMostrar()
    {
        ajustarVentanasAPantalla(*qApp);
        const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
        QDialog grande;
        grande.resize(area.width() + 500, area.height() + 400);
        grande.show();
        QVERIFY(QTest::qWaitForWindowExposed(&grande));
        QVERIFY2(area.contains(grande.geometry()),
                 qPrintable(QStringLiteral("%1×%2").arg(grande.width()).arg(grande.height())));
        QVERIFY(grande.width() < area.width());

        QDialog chica;
        chica.resize(300, 200);
        chica.show();
        QVERIFY(QTest::qWaitForWindowExposed(&chica));
        QCOMPARE(chica.size(), QSize(300, 200));
    }

    // A cut amount shows whole in its tooltip; one that fits has none.
    void montoCortadoEnTooltip()
    {
        QTableWidget tabla(2, 2);
        mostrarTextoCompletoEnTooltip(&tabla);
        QVERIFY(qobject_cast<DelegadoTextoCompleto *>(tabla.itemDelegate()));
        tabla.setColumnWidth(0, 60);
        tabla.setColumnWidth(1, 200);
        tabla.setItem(0, 0, new QTableWidgetItem("12,345,678.90"));
        tabla.setItem(0, 1, new QTableWidgetItem("12,345,678.90"));
        tabla.setItem(1, 0, new QTableWidgetItem("1.00"));
        tabla.setItem(1, 1, celdaConTooltipPropio());
        tabla.setColumnWidth(1, 30);
        QVERIFY(mostrar(tabla));

        QCOMPARE(tooltip(tabla, 0, 0), QStringLiteral("12,345,678.90"));
        QCOMPARE(tooltip(tabla, 1, 0), QString());
        QCOMPARE(tooltip(tabla, 1, 1), QStringLiteral("su propio texto"));
        tabla.setColumnWidth(1, 200);
        QCOMPARE(tooltip(tabla, 0, 1), QString());
        QToolTip::hideText();
    }

    // Installed at start, the same holds for every table, whatever its delegate.
    void textoCortadoEnCualquierTabla()
    {
        mostrarTextosCortadosEnTooltips(*qApp);
        QTableWidget tabla(2, 2);
        QVERIFY(!qobject_cast<DelegadoTextoCompleto *>(tabla.itemDelegate()));
        tabla.setColumnWidth(0, 60);
        tabla.setColumnWidth(1, 200);
        tabla.setItem(0, 0, new QTableWidgetItem("7:00 a. m. 12,345,678.90"));
        tabla.setItem(0, 1, new QTableWidgetItem("7:00 a. m."));
        tabla.setItem(1, 0, celdaConTooltipPropio());
        QVERIFY(mostrar(tabla));

        QCOMPARE(tooltip(tabla, 0, 0), QStringLiteral("7:00 a. m. 12,345,678.90"));
        QCOMPARE(tooltip(tabla, 0, 1), QString());
        QCOMPARE(tooltip(tabla, 1, 0), QStringLiteral("su propio texto"));
        QToolTip::hideText();
    }
};

TORNAVO_PRUEBA_MAIN(TstVentanas)
#include "tst_ventanas.moc"
