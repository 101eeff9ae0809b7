// Opens and closes every dialog of the menu 100 times in a logged-in console, offscreen,
// against the fixture server, and prints the process's resident memory and thread count
// before, after a warm-up and after all cycles. A closed dialog must leave nothing behind:
// both figures stay flat within noise.
//
//   bench_dialogos [cycles]      (default: 100)

#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/sesionprueba.h"
#include "ui/mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QPixmapCache>
#include <QPointer>
#include <QTest>

#include <cstdio>
#include <malloc.h>
#include <memory>

namespace {

// A /proc/self/status figure ("VmRSS:" in kB, "Threads:").
long estado(const char *clave)
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &linea : f.readAll().split('\n'))
        if (linea.startsWith(clave))
            return linea.mid(int(qstrlen(clave))).trimmed().split(' ').value(0).toLong();
    return -1;
}

struct Figuras {
    long rssKb;
    long hilos;
};

Figuras medir()
{
    // Let deferred deletions and idle network threads settle first.
    for (int i = 0; i < 5; ++i) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QTest::qWait(20);
    }
    // Qt's process-wide pixmap cache (bounded, 10 MB by default) keeps rendered style-sheet
    // pieces of closed windows, and the allocator keeps freed pages: neither is a dialog's.
    QPixmapCache::clear();
    malloc_trim(0);
    return {estado("VmRSS:"), estado("Threads:")};
}

// One cycle: open the dialog from its menu entry, let its first requests be answered, close it
// by the title bar and wait until it is destroyed.
bool ciclo(MainWindow &ventana, const QString &accion)
{
    const auto antes = ventana.findChildren<QDialog *>();
    ventana.findChild<QAction *>(accion)->trigger();
    QPointer<QDialog> nuevo;
    for (QDialog *d : ventana.findChildren<QDialog *>())
        if (!antes.contains(d))
            nuevo = d;
    if (!nuevo)
        return false;
    QTest::qWait(30);
    nuevo->close();
    return QTest::qWaitFor([&] { return nuevo.isNull(); }, 10000);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const int ciclos = argc > 1 ? QByteArray(argv[1]).toInt() : 100;

    ServidorPrueba srv;
    DirectorioTrabajo dir;
    dir.apuntarA(srv.direccion());
    srv.responder("validarUser.php", respuestaLoginAdmin);
    srv.responder("datetime.php", "2026-11-22\nsabado\n-4\n1790000000\n07:00:00\n");
    srv.responder("cargarsorteos.php", "1,Lotto Activo,10,10:00 AM,10:00:00,1/30,X,lotto\n");
    srv.responder("cargarresultados.php", "\n");
    srv.responder("sorteospremiar3.php", "1;Lotto;;05;León;A\n_FIN_\n1;10;10AM\n");
    srv.responder("monitorsorteos2.php", "1,Lotto Activo,10,10AM,10:00:00,X,30,0\n");
    srv.responder("bancasactivas.php", "1,Banca Uno\n");
    srv.responder("monitoragencias.php", "1,1,Agencia Uno\n");
    srv.responder("monitorresultados.php", "\n");
    srv.responder("ventabancas2.php", "\n");
    srv.responder("reportex.php", "\n");
    CapturaMensajes captura; // closes whatever box a dialog shows

    responderLogin();
    MainWindow ventana;
    ventana.show();

    const QStringList acciones = {"actionMonitorear_Ventas", "actionCalcular_Premios",
                                  "actionAuto_premiaci_n", "actionVentas_Bancas",
                                  "actionVentas_Bancas_2"};
    std::printf("%-26s %12s %12s %12s %10s %10s %10s\n", "dialogo", "RSS inicio", "RSS 10",
                "RSS final", "hilos ini", "hilos 10", "hilos fin");
    bool bien = true;
    for (const QString &accion : acciones) {
        const Figuras inicio = medir();
        Figuras calentado = inicio;
        for (int c = 0; c < ciclos && bien; ++c) {
            bien = ciclo(ventana, accion);
            if (c == 9)
                calentado = medir();
        }
        const Figuras fin = medir();
        std::printf("%-26s %9ld kB %9ld kB %9ld kB %10ld %10ld %10ld\n", qPrintable(accion),
                    inicio.rssKb, calentado.rssKb, fin.rssKb, inicio.hilos, calentado.hilos,
                    fin.hilos);
        std::printf("%-26s crecimiento tras el calentamiento: %+ld kB en %d ciclos "
                    "(%+.1f kB/ciclo), %+ld hilos   objetivo: plano\n",
                    "", fin.rssKb - calentado.rssKb, ciclos - 10,
                    double(fin.rssKb - calentado.rssKb) / qMax(1, ciclos - 10),
                    fin.hilos - calentado.hilos);
        std::fflush(stdout);
    }
    std::printf("dialogos vivos al final: %d\n", int(ventana.findChildren<QDialog *>().size()));
    return bien ? 0 : 1;
}
