#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"

#include "app/red.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorreferencia.h"

#include <QDateEdit>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

#include <cmath>

// Both reports against the reference server's demo network, with a fixed server clock so that
// the day's draws already have their results and prizes. Their totals are checked against the
// sales that the monitor's endpoints give for the same day.
namespace {

const QDate kDia(2026, 11, 20);
const QStringList kOpcionesServidor{"--demo", "--ahora", "2026-11-20 18:30:00"};

// Amount as shown ("1,234.50") back to a number.
double numero(const QString &texto)
{
    QString t = texto;
    t.remove(QLatin1Char(','));
    bool ok = false;
    const double v = t.toDouble(&ok);
    return ok ? v : std::nan("");
}

bool cerca(double a, double b)
{
    return std::fabs(a - b) < 0.011;
}

QString pedir(const QString &ruta)
{
    QNetworkAccessManager nam;
    QSignalSpy llegada(&nam, &QNetworkAccessManager::finished);
    QNetworkReply *r = red::get(&nam, ruta);
    if (!llegada.wait(20000))
        return QString();
    const QString texto = red::textoRespuesta(r);
    r->deleteLater();
    return texto;
}

// Logs in as the demo's super user: the server then accepts this address, and the session
// gets the super-banca key and the report's games from the reply.
bool iniciarSesion()
{
    const QStringList l = pedir("validarUser.php?u=admin&p=tornavo1").split('\n');
    if (l.size() < 8 || l.at(0) != "1")
        return false;
    SesionGlobal::usuario = "admin";
    SesionGlobal::nombre = l.at(1);
    SesionGlobal::datoLinea7 = l.at(6);
    SesionGlobal::listaLinea8 = l.at(7).split(',');
    SesionGlobal::decimales = 2;
    SesionGlobal::fechaActual = kDia;
    return true;
}

// The day's plays as the sales monitor receives them, per draw.
struct JugadaMonitor {
    QString banca;
    QString juego;
    double monto = 0;
    double premio = 0;
};

QVector<JugadaMonitor> jugadasDelMonitor(const QDate &dia)
{
    QVector<JugadaMonitor> jugadas;
    const QString fecha = dia.toString("yyyy-MM-dd");
    for (const QString &sorteo : pedir("monitorsorteos2.php?&u=admin").split('\n')) {
        const QString cjuego = sorteo.section(';', 0, 0);
        if (cjuego.isEmpty())
            continue;
        for (const QString &linea :
             pedir("monitorventas.php?&f=" + fecha + "&j=" + cjuego).split('\n')) {
            const QStringList f = linea.split(',');
            if (f.size() < 12 || f.at(10) == "E")
                continue;
            jugadas.append(
                {f.at(0), cjuego.section('-', 0, 0), f.at(8).toDouble(), f.at(9).toDouble()});
        }
    }
    return jugadas;
}

template <class Dialogo> bool pulsarYEsperar(Dialogo &dlg, const char *boton)
{
    auto *red = dlg.template findChild<QNetworkAccessManager *>();
    QSignalSpy llegada(red, &QNetworkAccessManager::finished);
    QTest::mouseClick(dlg.template findChild<QPushButton *>(boton), Qt::LeftButton);
    return llegada.wait(20000) || llegada.count() > 0;
}

} // namespace

class TstReportesServidor : public QObject {
    Q_OBJECT

public:
    // "mostrar": both reports filled and on screen for a while, to be looked at (run by hand
    // under a display; TORNAVO_SEGUNDOS sets how long, TORNAVO_SOLO=ventas shows only the sales
    // by banca, TORNAVO_DETALLE picks the second banca and shows its detail, or with "resumen"
    // only its selected row).
    static int correrEscenario(const QString &nombre)
    {
        if (nombre != "mostrar")
            return 2;
        qRegisterMetaType<QNetworkReply *>();
        ServidorReferencia ref(kOpcionesServidor);
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        if (!ref.iniciado() || !iniciarSesion())
            return 3;
        auto *ventas = new VentasBancas;
        ventas->findChild<QDateEdit *>("dateEdit_desde")->setDate(kDia.addDays(-6));
        ventas->findChild<QDateEdit *>("dateEdit_hasta")->setDate(kDia);
        ventas->resize(1260, 600);
        ventas->move(0, 0);
        ventas->show();
        pulsarYEsperar(*ventas, "pushButton_actualizar");
        if (qEnvironmentVariable("TORNAVO_SOLO") == "ventas") {
            ventas->resize(1380, 900);
            QTest::qWait(1000 * qEnvironmentVariableIntValue("TORNAVO_SEGUNDOS"));
            delete ventas;
            return 0;
        }
        auto *reporte = new reporteVentasX;
        reporte->setWindowTitle("Reporte de Ventas Super Banca");
        reporte->findChild<QDateEdit *>("dateEdit_desde")->setDate(kDia.addDays(-6));
        reporte->resize(1260, 560);
        reporte->move(0, 440);
        reporte->show();
        pulsarYEsperar(*reporte, "pushButton");
        if (qEnvironmentVariableIsSet("TORNAVO_DETALLE")) {
            auto *t = reporte->findChild<QTableWidget *>("tableWidget_ventas");
            const QRect r = t->visualRect(t->model()->index(1, 0));
            QTest::mouseClick(t->viewport(), Qt::LeftButton, {}, r.center());
            if (qEnvironmentVariable("TORNAVO_DETALLE") != "resumen")
                reporte->findChild<QTabWidget *>("tabWidget")->setCurrentIndex(1);
        }
        QTest::qWait(1000 * qEnvironmentVariableIntValue("TORNAVO_SEGUNDOS"));
        delete reporte;
        delete ventas;
        return 0;
    }

private slots:
    void initTestCase() { qRegisterMetaType<QNetworkReply *>(); }

    void init() { reiniciarSesion(); }

    void reportesCuadranConElMonitor()
    {
        ServidorReferencia ref(kOpcionesServidor);
        QVERIFY2(ref.iniciado(), qPrintable(ref.salida()));
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        QVERIFY(iniciarSesion());
        QCOMPARE(SesionGlobal::datoLinea7, QStringLiteral("SB01"));

        const QVector<JugadaMonitor> jugadas = jugadasDelMonitor(kDia);
        QVERIFY(jugadas.size() > 1000);
        double ventaMonitor = 0, premiosMonitor = 0;
        QMap<QString, double> ventaPorBanca;
        for (const JugadaMonitor &j : jugadas) {
            ventaMonitor += j.monto;
            premiosMonitor += j.premio;
            ventaPorBanca[j.banca] += j.monto;
        }
        QVERIFY(premiosMonitor > 0); // the day's draws were awarded

        CapturaMensajes captura;

        // --- Sales by banca ---
        VentasBancas ventas;
        ventas.findChild<QDateEdit *>("dateEdit_desde")->setDate(kDia);
        ventas.findChild<QDateEdit *>("dateEdit_hasta")->setDate(kDia);
        QVERIFY(pulsarYEsperar(ventas, "pushButton_actualizar"));
        QCOMPARE(captura.cantidad(), 0);
        auto *agencias = ventas.findChild<QTableWidget *>("tableWidget_agencias");
        auto *bancas = ventas.findChild<QTableWidget *>("tableWidget_bancas");
        QVERIFY(agencias->rowCount() > 100);
        QVERIFY(bancas->rowCount() >= 2);
        const double totalVenta = numero(ventas.findChild<QLabel *>("label_totalventa")->text());
        const double totalComision =
            numero(ventas.findChild<QLabel *>("label_totalcomision")->text());
        // The grand total is the monitor's total of the day.
        QVERIFY2(cerca(totalVenta, ventaMonitor),
                 qPrintable(QString("%1 / %2").arg(totalVenta).arg(ventaMonitor)));
        // Agencies earn between 5 % and 15 % on what they sell.
        QVERIFY(totalComision > 0.05 * totalVenta && totalComision < 0.15 * totalVenta);
        int cantidad = 0;
        double sumaBancas = 0;
        QMap<QString, double> brutoVentasBancas; // banca name → gross
        for (int i = 0; i < bancas->rowCount(); ++i) {
            cantidad += bancas->item(i, 1)->text().toInt();
            const double bruto = numero(bancas->item(i, 2)->text());
            sumaBancas += bruto;
            const QString clave = bancas->item(i, 0)->text().section('-', 0, 0);
            QVERIFY2(cerca(bruto, ventaPorBanca.value(clave)), qPrintable(clave));
            brutoVentasBancas[bancas->item(i, 0)->text().section('-', 1)] = bruto;
        }
        QCOMPARE(cantidad, agencias->rowCount());
        QVERIFY(cerca(sumaBancas, totalVenta));
        QVERIFY(ventas.windowTitle().startsWith("Ventas Bancas - "));

        // --- Super-banca report ---
        reporteVentasX reporte;
        QVERIFY(pulsarYEsperar(reporte, "pushButton"));
        QCOMPARE(captura.cantidad(), 0);
        auto *tabla = reporte.findChild<QTableWidget *>("tableWidget_ventas");
        QVERIFY(tabla->rowCount() >= 2);
        QVERIFY(tabla->rowCount() < bancas->rowCount()); // only the bancas of one super banca
        auto total = [&](const char *nombre) {
            return numero(reporte.findChild<QLineEdit *>(nombre)->text());
        };
        const double bruta = total("lineEdit_ventaBruta");
        const double comision = total("lineEdit_comision");
        const double neta = total("lineEdit_ventaNeta");
        const double premios = total("lineEdit_premios");
        const double utilidad = total("lineEdit_utilidad");
        const double participacion = total("lineEdit_participacion");
        const double saldo = total("lineEdit_saldo");
        QVERIFY(bruta > 0 && bruta <= totalVenta + 0.01);
        QVERIFY(cerca(neta, bruta - comision));
        QVERIFY(cerca(utilidad, neta - premios));
        QVERIFY(cerca(saldo, utilidad - participacion));
        QVERIFY(comision > 0.05 * bruta && comision < 0.30 * bruta);
        QVERIFY(premios > 0 && premios <= premiosMonitor + 0.01);

        // Each banca row: its gross never exceeds what the banca sold that day, and its
        // figures add up.
        double sumaFilas = 0;
        for (int i = 0; i < tabla->rowCount(); ++i) {
            const QString nombre = tabla->item(i, 0)->text();
            QVERIFY2(brutoVentasBancas.contains(nombre), qPrintable(nombre));
            const double b = numero(tabla->item(i, 1)->text());
            QVERIFY(b > 0 && b <= brutoVentasBancas.value(nombre) + 0.01);
            QVERIFY(
                cerca(numero(tabla->item(i, 3)->text()), b - numero(tabla->item(i, 2)->text())));
            QVERIFY(cerca(numero(tabla->item(i, 7)->text()),
                          numero(tabla->item(i, 5)->text()) - numero(tabla->item(i, 6)->text())));
            sumaFilas += b;
        }
        QVERIFY(cerca(sumaFilas, bruta));

        // The detail of the first banca: one row per game, adding up to its summary row.
        const QRect r = tabla->visualRect(tabla->model()->index(0, 0));
        reporte.show();
        QTest::mouseClick(tabla->viewport(), Qt::LeftButton, {}, r.center());
        auto *detalle = reporte.findChild<QTableWidget *>("tableWidget_detalle");
        QVERIFY(detalle->rowCount() >= 1);
        QSet<QString> juegos;
        for (int i = 0; i < detalle->rowCount(); ++i) {
            QVERIFY(!detalle->item(i, 0)->text().isEmpty());
            juegos.insert(detalle->item(i, 0)->text());
        }
        QCOMPARE(juegos.size(), detalle->rowCount());
        QCOMPARE(reporte.findChild<QLabel *>("label_banca")->text(), tabla->item(0, 0)->text());
        const char *detalles[] = {"lineEdit_dVentaBruta", "lineEdit_dComision",
                                  "lineEdit_dVentaNeta",  "lineEdit_dPremios",
                                  "lineEdit_dUtilidad",   "lineEdit_dParticipacion",
                                  "lineEdit_dSaldo"};
        for (int c = 0; c < 7; ++c)
            QVERIFY(cerca(total(detalles[c]), numero(tabla->item(0, c + 1)->text())));
    }

    void unDiaSinVentas()
    {
        ServidorReferencia ref(kOpcionesServidor);
        QVERIFY2(ref.iniciado(), qPrintable(ref.salida()));
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        QVERIFY(iniciarSesion());
        CapturaMensajes captura;
        reporteVentasX reporte;
        reporte.findChild<QDateEdit *>("dateEdit_desde")->setDate(QDate(2020, 1, 1));
        reporte.findChild<QDateEdit *>("dateEdit_hasta")->setDate(QDate(2020, 1, 2));
        QVERIFY(pulsarYEsperar(reporte, "pushButton"));
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Atención"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Sin ventas"));
    }
};

TORNAVO_PRUEBA_MAIN(TstReportesServidor)
#include "tst_reportes_servidor.moc"
