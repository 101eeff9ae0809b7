// Sales monitor at a big network's scale: generates the server's replies (38 animal numbers,
// 3,000 agencies with the commissions of 5 games, a result loaded), drives the real dialog
// offscreen and prints each figure beside its target. The replies come from the fixture server
// in a child process (this same program started with --servir), so the memory and the CPU
// measured are the console's own; waits block on the event loop instead of spinning.
//
//   bench_monitor [plays...]      (default: 100000 1000000; add 3000000 for the largest)

#include "bench/comun/red_monitor.h"
#include "app/sesion.h"
#include "monitor/modelojugadas.h"
#include "monitor/monitor2.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHeaderView>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <vector>

volatile long g_sumidero = 0;

namespace {

using namespace red_monitor;

QByteArray ventas(int jugadas)
{
    QRandomGenerator g(1234);
    QByteArray r;
    r.reserve(jugadas * 60);
    QVector<QByteArray> prefijos(kAgencias);
    for (int a = 0; a < kAgencias; ++a) {
        const QByteArray p = partes(a);
        const int coma = p.indexOf(',');
        prefijos[a] = p.left(coma) + ",%," + p.mid(coma + 1);
    }
    for (int i = 0; i < jugadas; ++i) {
        const int a = g.bounded(kAgencias);
        const int s = 8 * 3600 + g.bounded(4 * 3600);
        char hora[16];
        std::snprintf(hora, sizeof hora, "%02d:%02d:%02d", s / 3600, s / 60 % 60, s % 60);
        QByteArray linea = prefijos[a];
        linea.replace("%", hora);
        linea += "," + QByteArray::number(100000 + i / 3) + ",S" + QByteArray::number(i) + "," +
                 numeroAnimal(g.bounded(38)) + "," + QByteArray::number(g.bounded(1, 200)) +
                 ".00,0," + (g.bounded(50) == 0 ? "E" : "") + "," +
                 (g.bounded(20) == 0 ? "X" : "") + "\n";
        r += linea;
    }
    return r;
}

long estadoKb(const char *clave)
{
    QFile f("/proc/self/status");
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &l : f.readAll().split('\n'))
        if (l.startsWith(clave))
            return l.mid(int(std::strlen(clave))).trimmed().split(' ').value(0).toLong();
    return -1;
}

// Starts a new peak-memory measurement (VmHWM back to the current resident size).
bool reiniciarPico()
{
    QFile f("/proc/self/clear_refs");
    return f.open(QIODevice::WriteOnly) && f.write("5") == 1;
}

// The child: serves the lists and the sales of the size last asked for on standard input.
int servir()
{
    ServidorPrueba srv;
    std::mutex mutex;
    QByteArray actual;
    srv.responder("monitorsorteos2.php", sorteos());
    srv.responder("bancasactivas.php", bancas());
    srv.responder("monitoragencias.php", agencias());
    srv.responder("monitorresultados.php", "cjuego,csorteo,resultado\nLA-1,1,17\n");
    srv.responderCon("monitorventas.php", [&](const QString &) {
        std::lock_guard<std::mutex> candado(mutex);
        return actual;
    });
    std::printf("%d\n", srv.puerto());
    std::fflush(stdout);
    std::string linea;
    while (std::getline(std::cin, linea)) {
        QByteArray r = ventas(std::stoi(linea));
        {
            std::lock_guard<std::mutex> candado(mutex);
            actual = std::move(r);
        }
        std::printf("listo\n");
        std::fflush(stdout);
    }
    return 0;
}

// Runs the event loop until `hecho` holds or `ms` pass; sleeps while nothing happens.
template <class F> bool esperar(F hecho, int ms)
{
    QElapsedTimer reloj;
    reloj.start();
    QTimer despertador;
    despertador.start(20);
    while (!hecho() && reloj.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return hecho();
}

// A plain read of the reply: every line and every comma found, nothing built.
double leerYPartir(const QByteArray &bytes)
{
    double mejor = 1e99;
    for (int vez = 0; vez < 3; ++vez) {
        QElapsedTimer reloj;
        reloj.start();
        const char *p = bytes.constData();
        const char *fin = p + bytes.size();
        long campos = 0;
        while (p < fin) {
            const char *eol = static_cast<const char *>(std::memchr(p, '\n', std::size_t(fin - p)));
            if (!eol)
                eol = fin;
            const char *c = p;
            while (const char *coma =
                       static_cast<const char *>(std::memchr(c, ',', std::size_t(eol - c)))) {
                ++campos;
                c = coma + 1;
            }
            ++campos;
            p = eol + 1;
        }
        // Seen from outside before the clock is read, so the scan cannot be moved past it.
        g_sumidero = campos;
        const double ms = reloj.nsecsElapsed() / 1e6;
        if (campos > 0)
            mejor = std::min(mejor, ms);
    }
    return mejor;
}

struct Cifras {
    double carga = 0, clic = 0, clicOrdenado = 0, resumen = 0, riesgo = 0, partir = 0;
    double picoMb = -1;
};

const char *objetivo(int n, double a1M, double a3M, char *buf)
{
    if (n == 1000000)
        std::snprintf(buf, 32, "< %g", a1M);
    else if (n == 3000000)
        std::snprintf(buf, 32, "< %g", a3M);
    else
        std::snprintf(buf, 32, "-");
    return buf;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--servir") == 0)
        return servir();

    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QList<int> tamanos;
    for (int i = 1; i < argc; ++i)
        tamanos << QByteArray(argv[i]).toInt();
    if (tamanos.isEmpty())
        tamanos = {100000, 1000000};

    QProcess servidor;
    servidor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    servidor.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--servir")});
    if (!servidor.waitForStarted(10000) || !servidor.waitForReadyRead(20000)) {
        std::printf("the reply server did not start\n");
        return 1;
    }
    const int puerto = servidor.readLine().trimmed().toInt();
    DirectorioTrabajo dir;
    dir.apuntarA(QStringLiteral("127.0.0.1:%1").arg(puerto));
    SesionGlobal::usuario = "admin";
    SesionGlobal::decimales = 2;

    Monitor2 m;
    m.resize(1240, 720);
    m.show();
    auto *combo = m.findChild<QComboBox *>("comboBox");
    auto *tabla = m.findChild<QTableView *>("tableWidget");
    auto *resumen = m.findChild<QTableWidget *>("tableWidget_resumen_numeros");
    auto *limite = m.findChild<QSpinBox *>("spinBox_limite");
    QNetworkAccessManager *redVentas = m.findChildren<QNetworkAccessManager *>().value(4);
    if (!esperar(
            [&] {
                return combo->count() == 5 && m.listas().clavesAgencia.size() == kAgencias * 5 &&
                       !m.listas().resultados.isEmpty();
            },
            30000)) {
        std::printf("the dialog did not load its lists\n");
        return 1;
    }

    std::printf("Sales monitor benchmark (offscreen, RelWithDebInfo expected; replies from a "
                "separate process)\n");
    std::map<int, Cifras> cifras;
    for (int n : tamanos) {
        servidor.write(QByteArray::number(n) + "\n");
        while (!servidor.canReadLine())
            servidor.waitForReadyRead(60000);
        servidor.readLine();
        const bool pico = reiniciarPico();
        Cifras &c = cifras[n];

        QElapsedTimer reloj;
        qint64 llegada = -1, mostrado = -1;
        auto conexion = QObject::connect(&m, &Monitor2::ventasMostradas, &m,
                                         [&] { mostrado = reloj.nsecsElapsed(); });
        reloj.start();
        m.findChild<QPushButton *>("pushButton_actualizar")->click();
        // The reply is a child of the sales manager; its last progress report is the moment
        // the whole body has arrived, just before the dialog's handler runs.
        for (QNetworkReply *r : redVentas->findChildren<QNetworkReply *>())
            QObject::connect(r, &QNetworkReply::downloadProgress, r, [&](qint64 a, qint64 t) {
                if (a == t)
                    llegada = reloj.nsecsElapsed();
            });
        esperar([&] { return mostrado >= 0; }, 180000);
        QObject::disconnect(conexion);
        c.carga = (mostrado - llegada) / 1e6;
        QCoreApplication::processEvents();

        // The risk page alone, recomputed by a change of its limit.
        QElapsedTimer t;
        t.start();
        limite->setValue(limite->value() == 100 ? 99 : 100);
        c.riesgo = t.nsecsElapsed() / 1e6;

        // A click on a play of a number: the cell selected, then the slot, then the repaint.
        const auto clic = [&](int fila) {
            const QModelIndex celda = tabla->model()->index(fila, 4);
            // A user clicks a row on screen: the table is scrolled there first, untimed.
            tabla->scrollTo(celda, QAbstractItemView::PositionAtCenter);
            QCoreApplication::processEvents();
            QElapsedTimer r;
            r.start();
            tabla->selectionModel()->select(celda, QItemSelectionModel::ClearAndSelect);
            m.on_tableWidget_clicked(celda);
            QCoreApplication::processEvents();
            return r.nsecsElapsed() / 1e6;
        };
        // Each click figure is the median of five clicks on different rows (so on different
        // numbers, each with its own share of the plays).
        const auto mediana = [](std::vector<double> v) {
            std::sort(v.begin(), v.end());
            return v[v.size() / 2];
        };
        const int filas = tabla->model()->rowCount();
        std::vector<double> veces;
        for (int k = 1; k <= 5; ++k)
            veces.push_back(clic(int(qint64(filas) * (2 * k - 1) / 10)));
        c.clic = mediana(veces);
        veces.clear();
        for (int k = 0; k < 5; ++k) {
            t.restart();
            m.on_tableWidget_resumen_numeros_clicked(
                resumen->model()->index((3 + 7 * k) % std::max(1, resumen->rowCount()), 0));
            QCoreApplication::processEvents();
            veces.push_back(t.nsecsElapsed() / 1e6);
        }
        c.resumen = mediana(veces);
        // The same after the user sorted the plays by agency (a number's plays scattered).
        tabla->horizontalHeader()->setSortIndicator(1, Qt::AscendingOrder);
        QCoreApplication::processEvents();
        veces.clear();
        for (int k = 1; k <= 5; ++k)
            veces.push_back(clic(int(qint64(filas) * (2 * k - 1) / 10 + 1)));
        c.clicOrdenado = mediana(veces);
        tabla->horizontalHeader()->setSortIndicator(4, Qt::AscendingOrder);
        QCoreApplication::processEvents();
        c.picoMb = pico ? estadoKb("VmHWM:") / 1024.0 : -1;

        std::printf("%8d plays: rows %d, numbers %d, selected cells %d\n", n,
                    tabla->model()->rowCount(), resumen->rowCount(),
                    int(tabla->selectionModel()->selectedIndexes().size()));
        // The floor: the same bytes read and split, in this process, after the peak was read.
        c.partir = leerYPartir(ventas(n));
    }

    char b[32];
    std::printf("\n%-58s", "figure");
    for (int n : tamanos)
        std::printf(" %10d", n);
    std::printf("   target (1M / 3M)\n");
    const auto fila = [&](const char *nombre, double Cifras::*campo, double a1M, double a3M) {
        std::printf("%-58s", nombre);
        for (int n : tamanos)
            std::printf(" %10.1f", cifras[n].*campo);
        std::printf("   %s / %s\n", objetivo(1000000, a1M, a3M, b),
                    objetivo(3000000, a1M, a3M, b + 16));
    };
    fila("load: reply arrival -> every table filled (ms)", &Cifras::carga, 150, 450);
    fila("  of it, the Riesgo page (ms)", &Cifras::riesgo, 20, 60);
    fila("click in the plays table (ms)", &Cifras::clic, 5, 15);
    fila("click in the plays table sorted by agency (ms)", &Cifras::clicOrdenado, 5, 15);
    fila("click in the per-number summary (ms)", &Cifras::resumen, 20, 60);
    fila("peak memory of this process during the load (MB)", &Cifras::picoMb, 160, 420);
    fila("plain read-and-split of the same bytes (ms)", &Cifras::partir, 0, 0);
    std::printf("%-58s", "load / read-and-split");
    for (int n : tamanos)
        std::printf(" %9.1fx", cifras[n].carga / std::max(cifras[n].partir, 1e-3));
    std::printf("\n");
    if (tamanos.size() > 1) {
        std::printf("growth %d -> %d: load x%.1f, plays click x%.1f, summary click x%.1f   "
                    "(x%.0f plays; target: no worse than linear)\n",
                    tamanos.first(), tamanos.last(),
                    cifras[tamanos.last()].carga / std::max(cifras[tamanos.first()].carga, 1e-3),
                    cifras[tamanos.last()].clic / std::max(cifras[tamanos.first()].clic, 1e-3),
                    cifras[tamanos.last()].resumen /
                        std::max(cifras[tamanos.first()].resumen, 1e-3),
                    double(tamanos.last()) / tamanos.first());
    }
    servidor.closeWriteChannel();
    servidor.waitForFinished(10000);
    return 0;
}
