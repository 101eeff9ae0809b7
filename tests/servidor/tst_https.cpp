// A remote office reaching the reference server by name over HTTPS, end to end: a throwaway
// certificate authority signs a certificate for the two-label name "tornavo.prueba"; the
// server serves HTTPS with it (--tls-cert, --tls-key); the console trusts that authority, finds
// "tornavo.prueba:PORT" in Tornavo.svr, and its own login dialog and main window log in and
// load the server's clock over https://.
//
// The name resolves to 127.0.0.1 only inside the console's process: it runs in a private
// mount namespace (unshare) where a copy of /etc/hosts with that name is bind-mounted over the
// real one, which is never touched.
#include "app/servidor.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "ui/iniciar_sesion.h"
#include "ui/mainwindow.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

const char *const nombreServidor = "tornavo.prueba";

// Runs a program to its end; true when it exited with 0. Its output goes to `salida`.
bool correr(const QString &programa, const QStringList &args, QByteArray *salida = nullptr,
            int milisegundos = 60000)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(programa, args);
    const bool bien = p.waitForFinished(milisegundos) && p.exitStatus() == QProcess::NormalExit &&
                      p.exitCode() == 0;
    if (salida)
        *salida = p.readAll();
    return bien;
}

// The unshare command that gives a private mount namespace: as root a plain one, otherwise
// one inside a user namespace mapped to root.
QStringList argumentosUnshare()
{
    return geteuid() == 0
               ? QStringList{QStringLiteral("-m")}
               : QStringList{QStringLiteral("-U"), QStringLiteral("-r"), QStringLiteral("-m")};
}

// Fills the login dialog that the main window runs and presses "Iniciar sesión".
void responderLogin()
{
    auto *sondeo = new QTimer;
    QObject::connect(sondeo, &QTimer::timeout, [sondeo] {
        auto *login = qobject_cast<iniciar_sesion *>(QApplication::activeModalWidget());
        if (!login)
            return;
        sondeo->stop();
        sondeo->deleteLater();
        login->findChild<QLineEdit *>(QStringLiteral("lineEdit_usuario"))
            ->setText(QStringLiteral("admin"));
        login->findChild<QLineEdit *>(QStringLiteral("lineEdit_clave"))
            ->setText(QStringLiteral("tornavo1"));
        login->findChild<QPushButton *>(QStringLiteral("pushButton_iniciar"))->click();
    });
    sondeo->start(10);
}

} // namespace

class PruebaHttps : public QObject {
    Q_OBJECT

public:
    // The console's side, in the private namespace, in the working directory that holds
    // Tornavo.svr. Exit codes: 0 logged in and clock loaded; 3 name not resolved to
    // 127.0.0.1; 4 wrong base URL; 5 login failed; 6 clock not loaded.
    static int correrEscenario(const QString &)
    {
        const QString autoridad = qEnvironmentVariable("TORNAVO_CA");
        // Trust the throwaway authority as the system's authorities are trusted: every request
        // the console builds starts from the default configuration.
        QSslConfiguration conf = QSslConfiguration::defaultConfiguration();
        conf.addCaCertificates(QSslCertificate::fromPath(autoridad, QSsl::Pem));
        QSslConfiguration::setDefaultConfiguration(conf);

        QFile hosts(QStringLiteral("/etc/hosts"));
        if (!hosts.open(QIODevice::ReadOnly) ||
            !hosts.readAll().contains(QByteArray("127.0.0.1 ") + nombreServidor))
            return 3;
        const QString esperada = QStringLiteral("https://") + QString::fromLatin1(nombreServidor) +
                                 QLatin1Char(':') + qEnvironmentVariable("TORNAVO_PUERTO") +
                                 QStringLiteral("/Tornavo/TornavoSU/");
        if (urlBase() != esperada) {
            std::fprintf(stderr, "url base: %s\n", qPrintable(urlBase()));
            return 4;
        }
        CapturaMensajes captura;
        // A login that fails shows a box and keeps the dialog open: close it after a while,
        // so that the main window ends the process (exit code 1) instead of hanging.
        QTimer::singleShot(45000, [] {
            if (auto *login = qobject_cast<iniciar_sesion *>(QApplication::activeModalWidget()))
                login->close();
        });
        responderLogin();
        MainWindow ventana;
        ventana.show();
        if (SesionGlobal::nombre != QStringLiteral("Administrador General")) {
            std::fprintf(stderr, "login: %s\n", qPrintable(captura.ultimo().texto));
            return 5;
        }
        // The server's clock runs from 2026-11-22 14:05:00, not from the machine's.
        if (!QTest::qWaitFor(
                [] {
                    return SesionGlobal::fechaActual == QDate(2026, 11, 22) && horaActual.isValid();
                },
                30000))
            return 6;
        if (horaActual < QTime(14, 5) || horaActual > QTime(15, 5))
            return 6;
        std::fprintf(stdout, "reloj %s %s\n",
                     qPrintable(SesionGlobal::fechaActual.toString(Qt::ISODate)),
                     qPrintable(horaActual.toString(QStringLiteral("hh:mm:ss"))));
        return 0;
    }

private slots:
    void loginYRelojPorHttpsConNombre()
    {
        if (!QSslSocket::supportsSsl())
            QSKIP("Qt was built without TLS");
        QByteArray salida;
        if (!correr(QStringLiteral("unshare"), argumentosUnshare() + QStringList{"true"}, &salida))
            QSKIP(qPrintable("no private mount namespace here: " + QString::fromLocal8Bit(salida)));

        // A throwaway authority and a certificate for the name, signed by it.
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString ca = dir.filePath("ca.pem"), caClave = dir.filePath("ca.key");
        const QString cert = dir.filePath("servidor.pem"), clave = dir.filePath("servidor.key");
        const QString pedido = dir.filePath("servidor.csr"), ext = dir.filePath("ext.cnf");
        QVERIFY2(correr("openssl",
                        {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", caClave,
                         "-out", ca, "-days", "2", "-subj", "/CN=Autoridad de prueba de Tornavo"},
                        &salida),
                 salida.constData());
        QVERIFY2(correr("openssl",
                        {"req", "-newkey", "rsa:2048", "-nodes", "-keyout", clave, "-out", pedido,
                         "-subj", QStringLiteral("/CN=") + nombreServidor},
                        &salida),
                 salida.constData());
        {
            QFile f(ext);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(QByteArray("subjectAltName=DNS:") + nombreServidor +
                    "\nextendedKeyUsage=serverAuth\n");
        }
        QVERIFY2(correr("openssl",
                        {"x509", "-req", "-in", pedido, "-CA", ca, "-CAkey", caClave,
                         "-CAcreateserial", "-out", cert, "-days", "2", "-extfile", ext},
                        &salida),
                 salida.constData());

        // The server, serving HTTPS only, on a free loopback port.
        QProcess servidor;
        servidor.start(carpetaBinarios() + "/tornavo-servidor",
                       {"--db", dir.filePath("tornavo.db"), "--port", "0", "--demo", "--ahora",
                        "2026-11-22 14:05:00", "--tls-cert", cert, "--tls-key", clave});
        QVERIFY(servidor.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(servidor.canReadLine(), 60000);
        const QString primera = QString::fromLatin1(servidor.readLine()).trimmed();
        const QRegularExpressionMatch m =
            QRegularExpression("^https://127\\.0\\.0\\.1:([0-9]+)/Tornavo/TornavoSU/$")
                .match(primera);
        QVERIFY2(m.hasMatch(), qPrintable(primera));
        const QString puerto = m.captured(1);

        // Plain HTTP gets nothing from it.
        QVERIFY(!correr("curl",
                        {"-s", "--max-time", "5",
                         "http://127.0.0.1:" + puerto + "/Tornavo/TornavoSU/datetime.php"},
                        &salida) ||
                !salida.startsWith("2026-11-22"));

        // The console's working directory and the hosts file of its namespace.
        QTemporaryDir trabajo;
        {
            QFile svr(trabajo.filePath(archivoServidor));
            QVERIFY(svr.open(QIODevice::WriteOnly));
            svr.write(QByteArray(nombreServidor) + ":" + puerto.toLatin1() + "\n");
        }
        const QString hosts = dir.filePath("hosts");
        {
            QFile original(QStringLiteral("/etc/hosts"));
            QFile copia(hosts);
            QVERIFY(copia.open(QIODevice::WriteOnly));
            copia.write(QByteArray("127.0.0.1 ") + nombreServidor + "\n");
            if (original.open(QIODevice::ReadOnly))
                copia.write(original.readAll());
        }

        QProcess consola;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TORNAVO_ESCENARIO", "https");
        env.insert("TORNAVO_CA", ca);
        env.insert("TORNAVO_PUERTO", puerto);
        consola.setProcessEnvironment(env);
        consola.setWorkingDirectory(trabajo.path());
        consola.setProcessChannelMode(QProcess::MergedChannels);
        consola.start("unshare",
                      argumentosUnshare() +
                          QStringList{"--", "sh", "-c",
                                      "mount --bind \"$1\" /etc/hosts && exec \"$2\"", "sh", hosts,
                                      QCoreApplication::applicationFilePath()});
        QVERIFY(consola.waitForFinished(90000));
        const QByteArray dicho = consola.readAll();
        QVERIFY2(consola.exitStatus() == QProcess::NormalExit, dicho.constData());
        QVERIFY2(consola.exitCode() == 0, qPrintable(QString::number(consola.exitCode()) + ": " +
                                                     QString::fromLocal8Bit(dicho)));
        QVERIFY2(dicho.contains("reloj 2026-11-22 14:"), dicho.constData());
        // The real /etc/hosts never learnt the name.
        QFile real(QStringLiteral("/etc/hosts"));
        QVERIFY(real.open(QIODevice::ReadOnly));
        QVERIFY(!real.readAll().contains(nombreServidor));

        servidor.terminate();
        QVERIFY(servidor.waitForFinished(8000));
        QCOMPARE(servidor.exitCode(), 0);
    }

    void certificadoYClaveVanJuntos()
    {
        QProcess p;
        p.start(carpetaBinarios() + "/tornavo-servidor", {"--port", "0", "--tls-cert", "x.pem"});
        QVERIFY(p.waitForFinished(5000));
        QCOMPARE(p.exitCode(), 2);
        QTemporaryDir dir;
        p.start(carpetaBinarios() + "/tornavo-servidor",
                {"--db", dir.filePath("t.db"), "--port", "0", "--tls-cert", dir.filePath("no.pem"),
                 "--tls-key", dir.filePath("no.key")});
        QVERIFY(p.waitForFinished(10000));
        QCOMPARE(p.exitCode(), 1);
        QVERIFY(p.readAllStandardOutput().isEmpty());
    }
};

TORNAVO_PRUEBA_MAIN(PruebaHttps)
#include "tst_https.moc"
