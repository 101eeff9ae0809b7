#include "autopremiacion/auto_calcular.h"
#include "autopremiacion/procesoscript.h"
#include "monitor/monitor2.h"
#include "premios/calcularpremios2.h"
#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"
#include "app/salida.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/procesos.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/sesionprueba.h"
#include "ui/mainwindow.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QProcess>
#include <QPushButton>

#include <csignal>
#include <cstdio>
#include <memory>

namespace {

// The automatic game whose script "hijos.py" is run: the script starts a child, which starts a
// grandchild; all three note their pids and hang.
const QByteArray sorteoConHijos = "1,Lotto Activo,10,10:00 AM,10:00:00,1/30,X,hijos\n";
const QByteArray scriptHijos = "import os, time\n"
                               "def anotar(nombre):\n"
                               "    open(nombre + '.tmp', 'w').write(str(os.getpid()))\n"
                               "    os.rename(nombre + '.tmp', nombre)\n"
                               "anotar('padre.pid')\n"
                               "if os.fork() == 0:\n"
                               "    if os.fork() == 0:\n"
                               "        anotar('nieto.pid')\n"
                               "    else:\n"
                               "        anotar('hijo.pid')\n"
                               "time.sleep(600)\n";

// A script that leaves a mark each time it is started.
const QByteArray scriptQueMarca = "open('corrido.log', 'a').write('x\\n')\n";

// The script, its child and its grandchild have all noted their pids.
bool tresAnotados()
{
    return QFile::exists("padre.pid") && QFile::exists("hijo.pid") && QFile::exists("nieto.pid");
}

qint64 pidEn(const QString &archivo)
{
    QFile f(archivo);
    return f.open(QIODevice::ReadOnly) ? f.readAll().trimmed().toLongLong() : 0;
}

// A logged-in main window on a fixture server that answers every request the dialogs make.
struct Consola {
    ServidorPrueba srv;
    std::unique_ptr<MainWindow> ventana;

    explicit Consola(const QByteArray &sorteos = sorteoConHijos)
    {
        QFile svr(QStringLiteral("Tornavo.svr"));
        if (svr.open(QIODevice::WriteOnly | QIODevice::Truncate))
            svr.write(srv.direccion().toLatin1() + '\n');
        svr.close();
        srv.responder("validarUser.php", respuestaLoginAdmin);
        srv.responder("datetime.php", "2026-11-22\nsabado\n-4\n1790000000\n10:00:00\n");
        srv.responder("cargarsorteos.php", sorteos);
        srv.responder("cargarresultados.php", "\n");
        srv.responder("sorteospremiar3.php", "1;Lotto;;05;León;A\n_FIN_\n1;10;10AM\n");
        srv.responder("monitorsorteos2.php", "1,Lotto,10,10AM,10:00:00,X,30,0\n");
        srv.responder("ventabancas2.php", "\n");
        responderLogin();
        ventana = std::make_unique<MainWindow>();
        ventana->show();
    }

    template <typename Dialogo> Dialogo *abrir(const char *accion)
    {
        const auto antes = ventana->findChildren<Dialogo *>();
        ventana->findChild<QAction *>(QString::fromLatin1(accion))->trigger();
        for (Dialogo *d : ventana->findChildren<Dialogo *>())
            if (!antes.contains(d))
                return d;
        return nullptr;
    }

    // Opens the awarding dialog and starts its first script at once.
    auto_calcular *autoPremiacionCorriendo()
    {
        auto *d = abrir<auto_calcular>("actionAuto_premiaci_n");
        if (!d || !QTest::qWaitFor([d] { return d->esperaActiva; }, 10000))
            return nullptr;
        d->pyExe();
        return d;
    }
};

} // namespace

// What closing a dialog and leaving the console leave behind: nothing.
class TstCicloVida : public QObject {
    Q_OBJECT

    // Closes a dialog the way `como` says and waits until it is destroyed.
    static bool cerrarYEsperar(QWidget *dialogo, const QString &como)
    {
        QPointer<QWidget> guarda(dialogo);
        if (como == QLatin1String("escape"))
            QTest::keyClick(dialogo, Qt::Key_Escape);
        else
            dialogo->close(); // what the title bar's button does
        return QTest::qWaitFor([&] { return guarda.isNull(); }, 10000);
    }

    // The parent looks at the script's processes before the child takes its way out.
    static void esperarAdelante()
    {
        if (!QTest::qWaitFor([] { return QFile::exists("adelante"); }, 30000))
            std::fprintf(stderr, "sin respuesta del proceso padre\n");
    }

public:
    // Child process: a console with a hanging script, then the exit path named by the scenario.
    static int correrEscenario(const QString &escenario)
    {
        instalarSenalesSalida(); // as the console's main() does
        if (escenario == QLatin1String("login-salir")) {
            // A script of the console's own kind is running when the login's "Salir" is hit.
            ProcesoScript proceso;
            proceso.start(QStringLiteral("python"), {QStringLiteral("hijos.py")});
            if (!QTest::qWaitFor(tresAnotados, 20000))
                return 3;
            std::printf("LISTO\n");
            std::fflush(stdout);
            esperarAdelante();
            responderLogin(RespuestaLogin::Salir);
            MainWindow ventana; // ends the process in its constructor
            return 4;
        }
        Consola consola;
        if (!consola.autoPremiacionCorriendo() || !QTest::qWaitFor(tresAnotados, 20000))
            return 3;
        std::printf("LISTO\n");
        std::fflush(stdout);
        esperarAdelante();
        if (escenario == QLatin1String("salir")) {
            consola.ventana->findChild<QAction *>("action_Salir")->trigger();
            return 4;
        }
        if (escenario == QLatin1String("cerrar")) {
            // The main window closes and goes away, as when the event loop of main() ends.
            consola.ventana->close();
            consola.ventana.reset();
            return 0;
        }
        return QApplication::exec(); // waits for the parent's signal
    }

private slots:
    void init() { reiniciarSesion(); }

    void dialogoCerradoSeDestruye_data()
    {
        QTest::addColumn<QString>("accion");
        QTest::addColumn<QString>("como");
        const QStringList acciones = {"actionMonitorear_Ventas", "actionCalcular_Premios",
                                      "actionAuto_premiaci_n", "actionVentas_Bancas",
                                      "actionVentas_Bancas_2"};
        for (const QString &a : acciones) {
            QTest::newRow(qPrintable(a + " escape")) << a << "escape";
            QTest::newRow(qPrintable(a + " cerrar")) << a << "cerrar";
        }
    }

    void dialogoCerradoSeDestruye()
    {
        QFETCH(QString, accion);
        QFETCH(QString, como);
        DirectorioTrabajo dir;
        CapturaMensajes captura; // the fixture's empty replies may be reported
        Consola consola;
        const auto antes = consola.ventana->findChildren<QDialog *>();
        consola.ventana->findChild<QAction *>(accion)->trigger();
        QDialog *nuevo = nullptr;
        for (QDialog *d : consola.ventana->findChildren<QDialog *>())
            if (!antes.contains(d))
                nuevo = d;
        QVERIFY(nuevo);
        QVERIFY(nuevo->isVisible());
        QTest::qWait(200); // its first requests are out
        QVERIFY(cerrarYEsperar(nuevo, como));
    }

    void salirDeAutoPremiacionLoDetieneTodo()
    {
        // After "Salir" no script starts and no request is sent, for three whole cycles.
        DirectorioTrabajo dir;
        dir.escribir("hijos.py", scriptQueMarca);
        Consola consola;
        auto *d = consola.abrir<auto_calcular>("actionAuto_premiaci_n");
        QVERIFY(d);
        QVERIFY(QTest::qWaitFor([d] { return d->esperaActiva; }, 10000));
        QPointer<auto_calcular> guarda(d);
        QTest::mouseClick(d->findChild<QPushButton *>("pushButton_salir"), Qt::LeftButton);
        QVERIFY(QTest::qWaitFor([&] { return guarda.isNull(); }, 10000));
        // The main window keeps asking for the clock; the dialog's endpoints stay silent.
        consola.srv.limpiarPeticiones();
        QTest::qWait(31000);
        QStringList delDialogo;
        for (const QString &p : consola.srv.peticiones())
            if (!p.contains("datetime.php"))
                delDialogo << p;
        QCOMPARE(delDialogo, QStringList());
        QVERIFY(!QFile::exists("corrido.log"));
    }

    void cerrarAutoPremiacionMataSuGuion()
    {
        DirectorioTrabajo dir;
        dir.escribir("hijos.py", scriptHijos);
        Consola consola;
        auto *d = consola.autoPremiacionCorriendo();
        QVERIFY(d);
        QVERIFY(QTest::qWaitFor(tresAnotados, 20000));
        QVERIFY(cerrarYEsperar(d, "cerrar"));
        for (const char *archivo : {"padre.pid", "hijo.pid", "nieto.pid"})
            QVERIFY2(QTest::qWaitFor([&] { return !procesoVivo(pidEn(archivo)); }, 10000), archivo);
    }

    void ningunaSalidaDejaGuiones_data()
    {
        QTest::addColumn<QString>("escenario");
        QTest::addColumn<int>("senal");
        QTest::addColumn<int>("codigo"); // exit code, or the signal that ended it
        QTest::newRow("&Salir") << "salir" << 0 << 1;
        QTest::newRow("Salir del login") << "login-salir" << 0 << 1;
        QTest::newRow("ventana principal cerrada") << "cerrar" << 0 << 0;
        QTest::newRow("SIGTERM") << "esperar" << int(SIGTERM) << int(SIGTERM);
        QTest::newRow("SIGINT") << "esperar" << int(SIGINT) << int(SIGINT);
        QTest::newRow("SIGHUP") << "esperar" << int(SIGHUP) << int(SIGHUP);
    }

    void ningunaSalidaDejaGuiones()
    {
        QFETCH(QString, escenario);
        QFETCH(int, senal);
        QFETCH(int, codigo);
        DirectorioTrabajo dir;
        dir.escribir("hijos.py", scriptHijos);

        QProcess consola;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TORNAVO_ESCENARIO", escenario);
        env.insert("QT_QPA_PLATFORM", "offscreen");
        consola.setProcessEnvironment(env);
        consola.setWorkingDirectory(dir.ruta());
        consola.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(consola.waitForStarted(10000));
        QVERIFY2(QTest::qWaitFor(
                     [&] {
                         return consola.state() == QProcess::NotRunning ||
                                consola.readAllStandardOutput().contains("LISTO");
                     },
                     40000) &&
                     consola.state() == QProcess::Running,
                 qPrintable(consola.readAllStandardError()));
        const QList<qint64> pids = {pidEn(dir.ruta() + "/padre.pid"),
                                    pidEn(dir.ruta() + "/hijo.pid"),
                                    pidEn(dir.ruta() + "/nieto.pid")};
        for (qint64 pid : pids)
            QVERIFY(procesoVivo(pid));
        dir.escribir("adelante", "");

        if (senal)
            ::kill(pid_t(consola.processId()), senal);
        QVERIFY(consola.waitForFinished(20000));
        if (senal) {
            QCOMPARE(consola.exitStatus(), QProcess::CrashExit);
        } else {
            QCOMPARE(consola.exitStatus(), QProcess::NormalExit);
            QCOMPARE(consola.exitCode(), codigo);
        }
        for (qint64 pid : pids)
            QVERIFY2(QTest::qWaitFor([pid] { return !procesoVivo(pid); }, 10000),
                     qPrintable(QString::number(pid)));
    }
};

TORNAVO_PRUEBA_MAIN(TstCicloVida)
#include "tst_ciclovida.moc"
