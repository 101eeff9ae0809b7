#include "autopremiacion/auto_calcular.h"

#include "app/red.h"
#include "autopremiacion/procesoscript.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorreferencia.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableWidget>
#include <QTextEdit>
#include <QTimer>

#include <memory>

namespace {

// The reference server with its demo network, its clock at 10:15 today: the demo leaves the
// automatic game's 10:00 draw without a result for the result script.
QStringList opcionesServidor()
{
    return {QStringLiteral("--demo"), QStringLiteral("--ahora"),
            QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")) +
                QStringLiteral(" 10:15:00")};
}

bool esperar(const std::function<bool()> &condicion, int ms)
{
    return QTest::qWaitFor(condicion, ms);
}

// Opens the server session for this address, as the console's login does.
bool iniciarSesion()
{
    QNetworkAccessManager nam;
    QString texto;
    bool llego = false;
    QObject::connect(&nam, &QNetworkAccessManager::finished, [&](QNetworkReply *r) {
        texto = red::textoRespuesta(r);
        r->deleteLater();
        llego = true;
    });
    red::get(&nam, QStringLiteral("validarUser.php?u=admin&p=tornavo1"));
    return esperar([&] { return llego; }, 20000) && texto.startsWith(QLatin1String("1\n"));
}

bool copiarScriptDemo()
{
    const QString origen = carpetaFuentes() + QStringLiteral("/servidor/demo/resultados_demo.py");
    return QFile::copy(origen, QStringLiteral("resultados_demo.py"));
}

QStringList columna(QTableWidget *t, int c)
{
    QStringList textos;
    for (int f = 0; f < t->rowCount(); ++f)
        textos.append(t->item(f, c) ? t->item(f, c)->text() : QString());
    return textos;
}

// Runs the cycle step by step, with short real waits in between, until the draw shows among
// the results and no longer waits; at most `ms`.
bool cicloHastaPremiar(auto_calcular &d, const QString &etiqueta, const QString &fila, int ms)
{
    auto falta = d.findChild<QTableWidget *>(QStringLiteral("tableWidget_falta"));
    auto resultados = d.findChild<QTableWidget *>(QStringLiteral("tableWidget_resultados"));
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) {
        d.pyExe();
        esperar([&] { return !d.proceso->abierto() && d.resultadosCargados; }, 9000);
        QTest::qWait(300);
        if (!columna(falta, 0).contains(etiqueta) && columna(resultados, 0).contains(fila))
            return true;
    }
    return false;
}

} // namespace

// The automatic awarding against the reference server and its demo result script: a past
// draw of the automatic game is awarded without an operator.
class TstAutoCalcularReferencia : public QObject {
    Q_OBJECT

public:
    // "ver": shows the dialog against the reference server, awards by itself and stays open
    // for a look (TORNAVO_VER_MS milliseconds, 20000 by default).
    static int correrEscenario(const QString &escenario)
    {
        if (escenario != QLatin1String("ver"))
            return 2;
        ServidorReferencia ref(opcionesServidor());
        if (!ref.iniciado())
            return 3;
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        if (!copiarScriptDemo() || !iniciarSesion())
            return 4;
        auto_calcular d;
        d.temporizadorCiclo->setInterval(2000);
        d.show();
        const int ms = qEnvironmentVariableIntValue("TORNAVO_VER_MS");
        QTest::qWait(ms > 0 ? ms : 20000);
        return 0;
    }

private slots:
    void premiaUnSorteoPasadoSolo()
    {
        ServidorReferencia ref(opcionesServidor());
        QVERIFY2(ref.iniciado(), qPrintable(ref.salida()));
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        QVERIFY(copiarScriptDemo());
        QVERIFY(iniciarSesion());
        CapturaMensajes captura;

        auto d = std::make_unique<auto_calcular>();
        d->temporizadorArchivos->stop();
        d->temporizadorReloj->stop();
        d->temporizadorCiclo->stop();
        QVERIFY(esperar([&] { return d->esperaActiva; }, 10000));
        QCOMPARE(d->listaScripts, QStringList{"resultados_demo.py"});

        // The automatic game's 10:00 draw.
        int i = 0;
        while (i < d->listasSorteo.cantidad() &&
               !(d->listasSorteo.sorteoScript.at(i) == "resultados_demo" &&
                 d->listasSorteo.sorteoCampo4.at(i) == "10:00:00"))
            ++i;
        QVERIFY(i < d->listasSorteo.cantidad());
        const QString etiqueta = etiquetaSorteo(d->listasSorteo, i);
        const QString fila =
            d->listasSorteo.sorteoNombreJuego.at(i) + " " + d->listasSorteo.sorteoEtiqueta.at(i);

        // Before: waiting, not among the results; the draws before it are.
        d->cargarResultados();
        QVERIFY(esperar([&] { return d->resultadosCargados; }, 10000));
        auto falta = d->findChild<QTableWidget *>("tableWidget_falta");
        auto resultados = d->findChild<QTableWidget *>("tableWidget_resultados");
        QVERIFY(columna(falta, 0).contains(etiqueta));
        QVERIFY(!columna(resultados, 0).contains(fila));
        QVERIFY(resultados->rowCount() > 0);

        QVERIFY2(cicloHastaPremiar(*d, etiqueta, fila, 30000),
                 qPrintable(d->findChild<QTextEdit *>("textEdit_info")->toPlainText()));
        const QString registro = d->findChild<QTextEdit *>("textEdit_info")->toPlainText();
        QVERIFY2(registro.contains("Premiando :\n" + etiqueta + " -> "), qPrintable(registro));
        QCOMPARE(captura.cantidad(), 0);
        d.reset();
    }
};

TORNAVO_PRUEBA_MAIN(TstAutoCalcularReferencia)
#include "tst_auto_calcular_referencia.moc"
