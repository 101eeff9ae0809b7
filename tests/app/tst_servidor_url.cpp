#include "app/servidor.h"
#include "app/sesion.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// Base URL from "Tornavo.svr" and the first-line reader.
class TstServidorUrl : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_anterior;

    void escribirSvr(const QByteArray &contenido)
    {
        QFile f(QStringLiteral("Tornavo.svr"));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(contenido);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_anterior = QDir::currentPath();
        QDir::setCurrent(m_dir.path());
    }
    void cleanupTestCase() { QDir::setCurrent(m_anterior); }
    void init()
    {
        QFile::remove(QStringLiteral("Tornavo.svr"));
        SesionGlobal::reiniciar();
    }

    void sinArchivoUsaLaDireccionPorDefecto()
    {
        const QString defecto = SesionGlobal::servidorPorDefecto();
        QCOMPARE(defecto.split(QLatin1Char('.')).size(), 4);
        QCOMPARE(urlBase(), QStringLiteral("http://") + defecto + "/Tornavo/TornavoSU/");
        QCOMPARE(SesionGlobal::servidor, defecto);
    }

    void nombreConUnPuntoVaPorHttps()
    {
        escribirSvr("tornavo.net\n");
        QCOMPARE(urlBase(), QStringLiteral("https://tornavo.net/Tornavo/TornavoSU/"));
        QCOMPARE(SesionGlobal::servidor, QStringLiteral("tornavo.net"));
    }

    void nombreConEsquemaPropioQuedaIgual()
    {
        escribirSvr("http://tornavo.net");
        QCOMPARE(urlBase(), QStringLiteral("http://tornavo.net/Tornavo/TornavoSU/"));
        escribirSvr("https://www.tornavo.net\n");
        QCOMPARE(urlBase(), QStringLiteral("https://www.tornavo.net/Tornavo/TornavoSU/"));
    }

    void nombreDeCuatroEtiquetasVaPorHttp()
    {
        escribirSvr("a.b.tornavo.net\n");
        QCOMPARE(urlBase(), QStringLiteral("http://a.b.tornavo.net/Tornavo/TornavoSU/"));
        escribirSvr("x.a.b.tornavo.net\n");
        QCOMPARE(urlBase(), QStringLiteral("http://x.a.b.tornavo.net/Tornavo/TornavoSU/"));
    }

    void nombreDeTresEtiquetasVaPorHttps()
    {
        escribirSvr("www.tornavo.net\n");
        QCOMPARE(urlBase(), QStringLiteral("https://www.tornavo.net/Tornavo/TornavoSU/"));
    }

    void ipv4ConPuerto()
    {
        escribirSvr("10.0.0.5:8080\n");
        QCOMPARE(urlBase(), QStringLiteral("http://10.0.0.5:8080/Tornavo/TornavoSU/"));
    }

    void primeraLineaVacia()
    {
        escribirSvr("\n192.168.1.1\n");
        QCOMPARE(urlBase(), QStringLiteral("https:///Tornavo/TornavoSU/"));
        QCOMPARE(SesionGlobal::servidor, QString());
    }

    void archivoVacioUsaElValorAnterior()
    {
        escribirSvr("10.1.2.3\n");
        QCOMPARE(urlBase(), QStringLiteral("http://10.1.2.3/Tornavo/TornavoSU/"));
        escribirSvr("");
        QCOMPARE(urlBase(), QStringLiteral("http://10.1.2.3/Tornavo/TornavoSU/"));
    }

    void soloCuentaLaPrimeraLineaYNadaSeRecorta()
    {
        escribirSvr(" tornavo.net \n10.0.0.1\n");
        QCOMPARE(urlBase(), QStringLiteral("https:// tornavo.net /Tornavo/TornavoSU/"));
    }

    void cambiarElArchivoCambiaLaSiguientePeticion()
    {
        escribirSvr("10.0.0.1\n");
        QCOMPARE(urlBase(), QStringLiteral("http://10.0.0.1/Tornavo/TornavoSU/"));
        escribirSvr("10.0.0.2\n");
        QCOMPARE(urlBase(), QStringLiteral("http://10.0.0.2/Tornavo/TornavoSU/"));
        QFile::remove(QStringLiteral("Tornavo.svr"));
        // Without the file the last address read stays in use.
        QCOMPARE(urlBase(), QStringLiteral("http://10.0.0.2/Tornavo/TornavoSU/"));
    }

    void leerPrimeraLineaDeArchivos()
    {
        QFile f(QStringLiteral("uno.txt"));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("darkgold\nlight\n");
        f.close();
        QCOMPARE(leerPrimeraLinea(QStringLiteral("uno.txt")), QStringLiteral("darkgold"));
        QCOMPARE(leerPrimeraLinea(QStringLiteral("no-existe.txt")), QString());
    }

    void estadoInicialDeLaSesion()
    {
        QCOMPARE(SesionGlobal::decimales, 0);
        QCOMPARE(SesionGlobal::temaCambiado, false);
        QCOMPARE(SesionGlobal::colorRojo, QStringLiteral("color: rgb(255, 0, 0);"));
        QCOMPARE(SesionGlobal::animalitos, QStringLiteral("animalitos"));
        QCOMPARE(SesionGlobal::accesoPermitido, false);
        QCOMPARE(SesionGlobal::sesionIniciada, false);
        QCOMPARE(SesionGlobal::fechaActual, QDate::currentDate());
        QVERIFY(SesionGlobal::tablaClaves.empty());
        QVERIFY(SesionGlobal::juegos.isEmpty());
        QCOMPARE(SesionGlobal::ipPublica.split(QLatin1Char('.')).size(), 4);
        QVERIFY(!horaActual.isValid());
    }
};

QTEST_GUILESS_MAIN(TstServidorUrl)
#include "tst_servidor_url.moc"
