// The automatic awarding dialog with a draw list of N games (one draw each) and N published
// results, offscreen, against the fixture server: time from the request to the tables filled
// (the loopback transfer included), for the draw list and for one round of results, and the
// same steps' plain functions alone. Every step must grow linearly with
// the reply: 4 × the games may cost about 4 × the time, never 16 ×.
//
//   bench_autopremiacion [games...]      (default: 10000 40000)

#include "autopremiacion/auto_calcular.h"
#include "autopremiacion/datos_autopremiacion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {

QByteArray listaSorteos(int juegos)
{
    QByteArray texto;
    for (int i = 0; i < juegos; ++i) {
        const QByteArray n = QByteArray::number(i);
        texto += n + ",Juego " + n + "," + n + "0,10:00 AM,10:00:00,1/30," + (i % 2 ? "X" : "") +
                 ",guion" + n + "\n";
    }
    return texto;
}

QByteArray listaResultados(int juegos)
{
    QByteArray texto;
    for (int i = 0; i < juegos; ++i) {
        const QByteArray n = QByteArray::number(i);
        texto += n + ",Juego " + n + ",," + n + "0,10:00 AM,25,Gallina,10:05:09\n";
    }
    return texto;
}

struct Medida {
    double sorteosMs = 0;
    double resultadosMs = 0;
    double funcionesMs = 0;
};

Medida medir(int juegos)
{
    ServidorPrueba srv;
    DirectorioTrabajo dir;
    dir.apuntarA(srv.direccion());
    srv.responder("datetime.php", "2026-11-22\nsabado\n-4\n1790000000\n07:00:00\n");
    srv.responder("cargarsorteos.php", listaSorteos(juegos));
    srv.responder("cargarresultados.php", listaResultados(juegos));
    CapturaMensajes captura;

    Medida m;
    QElapsedTimer reloj;
    reloj.start();
    auto_calcular d;
    d.temporizadorArchivos->stop();
    d.temporizadorCiclo->stop();
    d.temporizadorReloj->stop();
    // Connected after the dialog's own handlers: each runs once the dialog has filled its tables.
    for (QNetworkAccessManager *nam : d.findChildren<QNetworkAccessManager *>()) {
        QObject::connect(nam, &QNetworkAccessManager::finished, nam, [&](QNetworkReply *r) {
            if (r->url().path().endsWith("cargarsorteos.php"))
                m.sorteosMs = reloj.nsecsElapsed() / 1e6;
            else if (r->url().path().endsWith("cargarresultados.php"))
                m.resultadosMs = reloj.nsecsElapsed() / 1e6;
        });
    }
    // The dialog's requests left in its constructor; the clock for the draw list starts there.
    reloj.start();
    if (!QTest::qWaitFor([&] { return d.esperaActiva; }, 600000))
        std::printf("la lista de sorteos no llegó\n");

    reloj.restart();
    d.cargarResultados();
    if (!QTest::qWaitFor([&] { return d.resultadosCargados; }, 600000))
        std::printf("los resultados no llegaron\n");

    // The same steps without widgets, on the same texts.
    const QString sorteos = QString::fromLatin1(listaSorteos(juegos));
    const QString resultados = QString::fromLatin1(listaResultados(juegos));
    QElapsedTimer f;
    f.start();
    QStringList nombres, scripts;
    ListasJuego lj;
    ListasSorteo ls;
    ListasResultado lr;
    agregarSorteos(sorteos, nombres, lj, ls, scripts);
    aplicarResultados(resultados, lr, ls);
    m.funcionesMs = f.nsecsElapsed() / 1e6;
    return m;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QList<int> tamanos;
    for (int i = 1; i < argc; ++i)
        tamanos << QByteArray(argv[i]).toInt();
    if (tamanos.isEmpty())
        tamanos = {10000, 40000};

    std::printf("%10s %28s %28s %24s\n", "juegos", "lista de sorteos (ms)",
                "una ronda de resultados (ms)", "solo las funciones (ms)");
    QList<Medida> medidas;
    for (int n : tamanos) {
        const Medida m = medir(n);
        medidas << m;
        std::printf("%10d %28.1f %28.1f %24.1f\n", n, m.sorteosMs, m.resultadosMs, m.funcionesMs);
        std::fflush(stdout);
    }
    if (medidas.size() >= 2) {
        const double factor = double(tamanos.last()) / tamanos.first();
        std::printf("crecimiento %dk -> %dk (x%.0f en tamaño): sorteos x%.1f, resultados x%.1f, "
                    "funciones x%.1f   objetivo: lineal (cerca de x%.0f, nunca x%.0f)\n",
                    tamanos.first() / 1000, tamanos.last() / 1000, factor,
                    medidas.last().sorteosMs / qMax(0.001, medidas.first().sorteosMs),
                    medidas.last().resultadosMs / qMax(0.001, medidas.first().resultadosMs),
                    medidas.last().funcionesMs / qMax(0.001, medidas.first().funcionesMs), factor,
                    factor * factor);
    }
    return 0;
}
