#include "app/formato.h"
#include "app/sesion.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

class TstFormato : public QObject {
    Q_OBJECT

private slots:
    void init() { SesionGlobal::reiniciar(); }

    void montos_data()
    {
        QTest::addColumn<double>("monto");
        QTest::addColumn<int>("decimales");
        QTest::addColumn<QString>("esperado");
        QTest::newRow("millones") << 1234567.5 << 2 << "1,234,567.50";
        QTest::newRow("tres cifras") << 123.0 << 0 << "123";
        QTest::newRow("mil sin decimales") << 1234.0 << 0 << "1,234";
        QTest::newRow("negativo") << -1234.5 << 2 << "-1,234.50";
        QTest::newRow("negativo que redondea a cero") << -0.001 << 2 << "-0.00";
        QTest::newRow("cero") << 0.0 << 2 << "0.00";
        QTest::newRow("999") << 999.0 << 0 << "999";
        QTest::newRow("seis cifras") << 123456.0 << 2 << "123,456.00";
        QTest::newRow("siete cifras") << 1000000.0 << 0 << "1,000,000";
        QTest::newRow("redondeo") << 0.125 << 1 << "0.1";
        QTest::newRow("redondeo sube grupo") << 999.999 << 2 << "1,000.00";
    }
    void montos()
    {
        QFETCH(double, monto);
        QFETCH(int, decimales);
        QFETCH(QString, esperado);
        QCOMPARE(formatoMonto(monto, decimales), esperado);
    }

    void montosNoDependenDelLocale()
    {
        const QLocale anterior;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(formatoMonto(1234567.5, 2), QStringLiteral("1,234,567.50"));
        QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Venezuela));
        QCOMPARE(formatoMonto(-9876.25, 2), QStringLiteral("-9,876.25"));
        QLocale::setDefault(anterior);
    }

    void relleno()
    {
        QCOMPARE(rellenarCeros(QStringLiteral("7"), 2), QStringLiteral("07"));
        QCOMPARE(rellenarCeros(QStringLiteral("123"), 2), QStringLiteral("123"));
        QCOMPARE(rellenarCeros(QString(), 3), QStringLiteral("000"));
        QCOMPARE(rellenarCeros(QStringLiteral("12"), 2), QStringLiteral("12"));
    }

    void buscarValorUltimaCoincidencia()
    {
        SesionGlobal::tablaClaves = {"1", "2", "1"};
        SesionGlobal::tablaValores = {"Lotto Activo", "Granjita", "Lotto Nuevo"};
        QCOMPARE(buscarValor(QStringLiteral("1")), QStringLiteral("Lotto Nuevo"));
        QCOMPARE(buscarValor(QStringLiteral("2")), QStringLiteral("Granjita"));
        QCOMPARE(buscarValor(QStringLiteral("9")), QString());
        SesionGlobal::tablaClaves.clear();
        SesionGlobal::tablaValores.clear();
        QCOMPARE(buscarValor(QStringLiteral("1")), QString());
    }

    void rutaDeImagen()
    {
        QTemporaryDir dir;
        const QString anterior = QDir::currentPath();
        QDir::setCurrent(dir.path());
        QCOMPARE(rutaImagenAnimal(QStringLiteral("Lotto Activo"), QStringLiteral("05")),
                 QStringLiteral("animales/Lotto Activo/05.jpg"));
        QDir().mkpath(QStringLiteral("animales/Lotto Activo"));
        QFile jpg(QStringLiteral("animales/Lotto Activo/05.jpg"));
        QVERIFY(jpg.open(QIODevice::WriteOnly));
        jpg.close();
        QCOMPARE(rutaImagenAnimal(QStringLiteral("Lotto Activo"), QStringLiteral("05")),
                 QStringLiteral("animales/Lotto Activo/05.jpg"));
        QFile png(QStringLiteral("animales/Lotto Activo/05.png"));
        QVERIFY(png.open(QIODevice::WriteOnly));
        png.close();
        QCOMPARE(rutaImagenAnimal(QStringLiteral("Lotto Activo"), QStringLiteral("05")),
                 QStringLiteral("animales/Lotto Activo/05.png"));
        QDir::setCurrent(anterior);
    }
};

QTEST_GUILESS_MAIN(TstFormato)
#include "tst_formato.moc"
