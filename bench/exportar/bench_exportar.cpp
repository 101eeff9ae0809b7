// Exporting the sales monitor's plays table: the real dialog, offscreen, loaded with a big
// network's sales through the fixture server, then its plays table written as CSV. Prints each
// figure beside its target.
//
//   bench_exportar [plays...]      (default: 1000000)

#include "bench/comun/red_monitor.h"
#include "app/exportartabla.h"
#include "app/sesion.h"
#include "monitor/monitor2.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTableView>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <cstdio>

namespace {

using namespace red_monitor;

// Sales of the first draw: amounts up to 4,999.50 (so that some show a group separator).
QByteArray ventas(int jugadas)
{
    QRandomGenerator g(4321);
    QByteArray r;
    r.reserve(jugadas * 60);
    for (int i = 0; i < jugadas; ++i) {
        const int a = g.bounded(kAgencias);
        const int s = 8 * 3600 + g.bounded(4 * 3600);
        char hora[16];
        std::snprintf(hora, sizeof hora, "%02d:%02d:%02d", s / 3600, s / 60 % 60, s % 60);
        const QByteArray p = partes(a);
        const int coma = p.indexOf(',');
        r += p.left(coma) + "," + QByteArray(hora) + "," + p.mid(coma + 1) + "," +
             QByteArray::number(100000 + i / 3) + ",S" + QByteArray::number(i) + "," +
             numeroAnimal(g.bounded(38)) + "," +
             QByteArray::number(g.bounded(1, 10000) / 2.0, 'f', 2) + ",0," +
             (g.bounded(50) == 0 ? "E" : "") + "," + (g.bounded(20) == 0 ? "X" : "") + "\n";
    }
    return r;
}

std::atomic<int> g_jugadas{0};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QList<int> tamanos;
    for (int i = 1; i < argc; ++i)
        tamanos << QByteArray(argv[i]).toInt();
    if (tamanos.isEmpty())
        tamanos = {1000000};

    ServidorPrueba srv;
    DirectorioTrabajo dir;
    dir.apuntarA(srv.direccion());
    srv.responder("monitorsorteos2.php", sorteos());
    srv.responder("bancasactivas.php", bancas());
    srv.responder("monitoragencias.php", agencias());
    srv.responder("monitorresultados.php", "cjuego,csorteo,resultado\nLA-1,1,17\n");
    srv.responderCon("monitorventas.php", [](const QString &) { return ventas(g_jugadas); });
    SesionGlobal::usuario = "admin";
    SesionGlobal::decimales = 2;

    Monitor2 m;
    m.resize(1240, 720);
    exportar::instalarMenusTablas(&m);
    m.show();
    auto *combo = m.findChild<QComboBox *>("comboBox");
    auto *tabla = m.findChild<QTableView *>("tableWidget");
    QElapsedTimer espera;
    espera.start();
    while ((combo->count() != 5 || m.listas().clavesAgencia.size() != kAgencias * 5 ||
            m.listas().resultados.isEmpty()) &&
           espera.elapsed() < 20000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    if (combo->count() != 5) {
        std::printf("the dialog did not load its lists\n");
        return 1;
    }

    QTemporaryDir carpeta;
    std::printf("Table export benchmark (offscreen, RelWithDebInfo expected)\n");
    for (int n : tamanos) {
        g_jugadas = n;
        bool mostradas = false;
        QObject::connect(&m, &Monitor2::ventasMostradas, &m, [&] { mostradas = true; });
        m.findChild<QPushButton *>("pushButton_actualizar")->click();
        espera.restart();
        while (!(mostradas && tabla->model()->rowCount() == n) && espera.elapsed() < 120000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QObject::disconnect(&m, &Monitor2::ventasMostradas, nullptr, nullptr);
        QCoreApplication::processEvents();
        if (tabla->model()->rowCount() != n) {
            std::printf(
                "the plays table did not fill (%d rows; %s; %s)\n", tabla->model()->rowCount(),
                qPrintable(srv.peticionesA("monitorventas.php").join(' ')), ventas(2).constData());
            return 1;
        }

        // The CSV writer alone, measuring the longest stretch between two chances to let
        // events through (what a user would feel as a frozen window).
        const QString ruta = carpeta.filePath("jugadas.csv");
        QFile archivo(ruta);
        archivo.open(QIODevice::WriteOnly);
        QElapsedTimer reloj, tramo;
        qint64 tramoMaximo = 0;
        const std::clock_t cpu = std::clock();
        reloj.start();
        tramo.start();
        const bool ok = exportar::escribirCsv(tabla, archivo, [&](int, int) {
            tramoMaximo = std::max(tramoMaximo, tramo.nsecsElapsed());
            QCoreApplication::processEvents();
            tramo.restart();
            return true;
        });
        archivo.close();
        const double ms = reloj.nsecsElapsed() / 1e6;
        const double msCpu = double(std::clock() - cpu) * 1000.0 / CLOCKS_PER_SEC;
        std::printf("%8d rows: CSV written in %8.1f ms   (target < 3000 ms)%s\n", n, ms,
                    ok ? "" : "  FAILED");
        std::printf("               of which CPU time     %8.1f ms   (about what an idle machine "
                    "takes)\n",
                    msCpu);
        std::printf("               longest stretch without events %6.1f ms   (target: a "
                    "progress step, < 100 ms)\n",
                    tramoMaximo / 1e6);
        std::printf("               file size %.1f MB\n", QFileInfo(ruta).size() / 1048576.0);

        // The whole menu path: progress box, file replaced once complete.
        reloj.restart();
        const bool okMenu = exportar::exportarCsv(tabla, carpeta.filePath("menu.csv"));
        std::printf("               through exportarCsv (progress box, save file) %8.1f ms%s\n",
                    reloj.nsecsElapsed() / 1e6, okMenu ? "" : "  FAILED");

        // For looking at: the plays table as PDF, when a path is given.
        if (qEnvironmentVariableIsSet("TORNAVO_PDF_JUGADAS")) {
            reloj.restart();
            const bool okPdf =
                exportar::exportarPdf(tabla, qEnvironmentVariable("TORNAVO_PDF_JUGADAS"));
            std::printf("               PDF written in %8.1f ms%s\n", reloj.nsecsElapsed() / 1e6,
                        okPdf ? "" : "  FAILED");
        }

        // Copying the whole table to the clipboard (nothing selected).
        tabla->clearSelection();
        reloj.restart();
        const QString copia = exportar::textoCopia(tabla);
        std::printf("               whole table as tab-separated text  %8.1f ms (%.1f MB)\n",
                    reloj.nsecsElapsed() / 1e6, copia.size() * 2 / 1048576.0);
    }
    return 0;
}
