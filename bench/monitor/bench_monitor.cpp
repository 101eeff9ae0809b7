// Sales monitor at a big network's scale: generates the server's replies (38 animal numbers,
// 3,000 agencies with the commissions of 5 games, a result loaded), drives the real dialog
// offscreen through the fixture server and prints each figure beside its target.
//
//   bench_monitor [plays...]      (default: 100000 1000000)

#include "app/sesion.h"
#include "monitor/modelojugadas.h"
#include "monitor/monitor2.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTableView>
#include <QTableWidget>

#include <atomic>
#include <cstdio>

namespace {

constexpr int kAgencias = 3000;
constexpr int kBancas = 30;
const char *const kJuegos[] = {"LA-1", "GR-1", "LT-1", "RU-1", "TR-1"};

QByteArray numeroAnimal(int i)
{
    return i == 37 ? QByteArray("00") : QByteArray::number(i);
}

QByteArray sorteos()
{
    QByteArray codigos, nombres;
    for (int i = 0; i < 38; ++i) {
        codigos += (i ? "," : "") + numeroAnimal(i);
        nombres += (i ? "," : "") + QByteArray("Animal") + numeroAnimal(i);
    }
    QByteArray r;
    for (const char *j : kJuegos)
        r +=
            QByteArray(j) + ";Sorteo " + j + ";1;1;30;" + codigos + ";" + nombres + ";1;10:00 AM\n";
    return r;
}

QByteArray bancas()
{
    QByteArray r;
    for (int b = 1; b <= kBancas; ++b)
        r += QByteArray::number(b) + ",Banca " + QByteArray::number(b) + "\n";
    return r;
}

QByteArray partes(int a)
{
    return QByteArray::number(a % kBancas + 1) + "," + QByteArray::number(a / 100) + ",0," +
           QByteArray::number(a);
}

QByteArray agencias()
{
    QByteArray r;
    for (int a = 0; a < kAgencias; ++a)
        for (int j = 0; j < 5; ++j)
            r += partes(a) + ",Agencia " + QByteArray::number(a) + "," + kJuegos[j] + "," +
                 QByteArray::number(5 + (a + j) % 11) + "\n";
    return r;
}

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

long picoMemoriaKb()
{
    QFile f("/proc/self/status");
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &l : f.readAll().split('\n'))
        if (l.startsWith("VmHWM:"))
            return l.mid(6).trimmed().split(' ').value(0).toLong();
    return -1;
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
        tamanos = {100000, 1000000};

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
    m.show();
    auto *combo = m.findChild<QComboBox *>("comboBox");
    auto *tabla = m.findChild<QTableView *>("tableWidget");
    auto *resumen = m.findChild<QTableWidget *>("tableWidget_resumen_numeros");
    QNetworkAccessManager *redVentas = m.findChildren<QNetworkAccessManager *>().value(4);
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

    std::printf("Sales monitor benchmark (offscreen, RelWithDebInfo expected)\n");
    double tiempos[2] = {0, 0};
    for (int n : tamanos) {
        g_jugadas = n;
        QElapsedTimer reloj;
        qint64 llegada = -1, mostrado = -1;
        QObject::connect(&m, &Monitor2::ventasMostradas, &m,
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
        while (mostrado < 0 && reloj.elapsed() < 120000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QObject::disconnect(&m, &Monitor2::ventasMostradas, nullptr, nullptr);
        const double ms = (mostrado - llegada) / 1e6;
        const char *objetivo = n <= 100000 ? "< 100 ms" : n <= 1000000 ? "< 1000 ms" : "-";
        std::printf("%8d plays: reply to tables filled and sorted %8.1f ms   (target %s)\n", n, ms,
                    objetivo);
        std::printf("               rows %d, numbers %d, selected cells %d\n",
                    tabla->model()->rowCount(), resumen->rowCount(),
                    int(tabla->selectionModel()->selectedIndexes().size()));
        if (n == 100000)
            tiempos[0] = ms;
        if (n == 1000000)
            tiempos[1] = ms;
        QCoreApplication::processEvents();

        // A click on a play of a number: the cell selected, then the slot, then the repaint.
        const int fila = tabla->model()->rowCount() / 2;
        const QModelIndex celda = tabla->model()->index(fila, 4);
        QElapsedTimer clic;
        clic.start();
        tabla->selectionModel()->select(celda, QItemSelectionModel::ClearAndSelect);
        m.on_tableWidget_clicked(celda);
        QCoreApplication::processEvents();
        const double msClic = clic.nsecsElapsed() / 1e6;
        clic.restart();
        m.on_tableWidget_resumen_numeros_clicked(resumen->model()->index(3, 0));
        QCoreApplication::processEvents();
        const double msResumen = clic.nsecsElapsed() / 1e6;
        std::printf("               click on a number in the plays table %6.1f ms   (target < 50 "
                    "ms at 1M)\n",
                    msClic);
        std::printf("               click on a number in the summary     %6.1f ms\n", msResumen);
    }
    if (tiempos[0] > 0 && tiempos[1] > 0)
        std::printf("growth 100k -> 1M: x%.1f   (target: no worse than linear, x10)\n",
                    tiempos[1] / tiempos[0]);
    std::printf("peak memory of the process (VmHWM): %.0f MB   (target < 400 MB at 1M)\n",
                picoMemoriaKb() / 1024.0);
    return 0;
}
