// Times both sales reports over a month of a few hundred agencies: the replies come from the
// fixture HTTP server and go through the real dialogs, offscreen. Prints the figures.
#include "app/sesion.h"
#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QApplication>
#include <QDateEdit>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

#include <cstdio>

namespace {

constexpr int kBancas = 40;
constexpr int kAgenciasPorBanca = 10; // 400 agencies
constexpr int kDias = 30;
constexpr int kJuegos = 4;
constexpr int kSorteosPorDia = 3;

// ventabancas2.php: one line per agency and day of the month (12,000 lines).
QByteArray respuestaVentasBancas()
{
    QByteArray r;
    for (int dia = 0; dia < kDias; ++dia)
        for (int b = 1; b <= kBancas; ++b)
            for (int a = 1; a <= kAgenciasPorBanca; ++a) {
                const int ag = b * 100 + a;
                r +=
                    QStringLiteral("%1,Banca %1,%2,Agencia %2,Jefe %1,%3.50,%4.00,%5.25,%6:%7:00\n")
                        .arg(b)
                        .arg(ag)
                        .arg(1000 + (ag * 37 + dia * 11) % 9000)
                        .arg((ag * 13 + dia) % 5000)
                        .arg(100 + (ag + dia) % 700)
                        .arg(8 + (ag + dia) % 12, 2, 10, QLatin1Char('0'))
                        .arg((ag * 7) % 60, 2, 10, QLatin1Char('0'))
                        .toLatin1();
            }
    return r;
}

// reportex.php: lines per banca, game, day and draw (40 × 4 × 30 × 3 = 14,400), plus a
// second copy of every line for each agency group (× 3 = 43,200 lines).
QByteArray respuestaReporteX()
{
    QByteArray r;
    for (int j = 1; j <= kJuegos; ++j)
        r += QStringLiteral("%1,Juego %1\n").arg(j).toLatin1();
    r += "_FIN_\n";
    for (int b = 1; b <= kBancas; ++b)
        for (int j = 1; j <= kJuegos; ++j)
            r += QStringLiteral("%1,%2,%3,%4\n")
                     .arg(b)
                     .arg(j)
                     .arg(8 + b % 7)
                     .arg(30 + b % 40)
                     .toLatin1();
    r += "_FIN_\n";
    for (int dia = 0; dia < kDias; ++dia)
        for (int s = 0; s < kSorteosPorDia; ++s)
            for (int g = 0; g < 3; ++g)
                for (int b = 1; b <= kBancas; ++b)
                    for (int j = 1; j <= kJuegos; ++j)
                        r += QStringLiteral("%1,Banca %1,%2,%3.00,%4.00\n")
                                 .arg(b)
                                 .arg(j)
                                 .arg(2000 + (b * 31 + dia * 7 + s + g) % 3000)
                                 .arg((b * 17 + dia * 5 + j) % 2600)
                                 .toLatin1();
    return r;
}

// Presses the button and returns the milliseconds until the dialog's reply handler has filled
// the tables (the spy is connected after the dialog's own handler, so it fires last).
qint64 medir(QPushButton *boton, QNetworkAccessManager *red)
{
    QSignalSpy llegada(red, &QNetworkAccessManager::finished);
    QElapsedTimer reloj;
    reloj.start();
    QTest::mouseClick(boton, Qt::LeftButton);
    llegada.wait(30000);
    return reloj.elapsed();
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qRegisterMetaType<QNetworkReply *>();

    ServidorPrueba srv;
    DirectorioTrabajo dir;
    dir.apuntarA(srv.direccion());
    SesionGlobal::decimales = 2;
    SesionGlobal::nombre = QStringLiteral("Super Banca");
    SesionGlobal::datoLinea7 = QStringLiteral("1");
    SesionGlobal::listaLinea8 = QStringList{"1", "2", "3", "4"};

    const QByteArray ventas = respuestaVentasBancas();
    const QByteArray reporte = respuestaReporteX();
    srv.responder("ventabancas2.php", ventas);
    srv.responder("reportex.php", reporte);

    {
        VentasBancas dlg;
        dlg.show();
        auto *boton = dlg.findChild<QPushButton *>("pushButton_actualizar");
        auto *red = dlg.findChild<QNetworkAccessManager *>();
        const qint64 primera = medir(boton, red); // includes the connection and first layout
        qint64 mejor = 1 << 30;
        for (int i = 0; i < 3; ++i)
            mejor = qMin(mejor, medir(boton, red));
        std::printf("Ventas Bancas: %d lines (%lld KB), %d agency rows, %d banca rows: %lld ms "
                    "from click to filled tables (best of 3; first %lld ms)\n",
                    int(ventas.count('\n')), ventas.size() / 1024LL,
                    dlg.findChild<QTableWidget *>("tableWidget_agencias")->rowCount(),
                    dlg.findChild<QTableWidget *>("tableWidget_bancas")->rowCount(), mejor,
                    primera);
    }
    {
        reporteVentasX dlg;
        dlg.show();
        auto *boton = dlg.findChild<QPushButton *>("pushButton");
        auto *red = dlg.findChild<QNetworkAccessManager *>();
        auto *tabla = dlg.findChild<QTableWidget *>("tableWidget_ventas");
        const qint64 primera = medir(boton, red);
        qint64 mejor = 1 << 30;
        for (int i = 0; i < 3; ++i)
            mejor = qMin(mejor, medir(boton, red));
        std::printf("Super Banca: %d sale lines (%lld KB), %d banca rows, total gross %s: %lld ms "
                    "from click to filled tables (best of 3; first %lld ms)\n",
                    int(reporte.count('\n')) - kJuegos - kBancas * kJuegos - 2,
                    reporte.size() / 1024LL, tabla->rowCount(),
                    qPrintable(dlg.findChild<QLineEdit *>("lineEdit_ventaBruta")->text()), mejor,
                    primera);

        QElapsedTimer reloj;
        reloj.start();
        const QRect r = tabla->visualRect(tabla->model()->index(0, 0));
        QTest::mouseClick(tabla->viewport(), Qt::LeftButton, {}, r.center());
        std::printf("Super Banca: detail of one banca, %d rows: %lld ms\n",
                    dlg.findChild<QTableWidget *>("tableWidget_detalle")->rowCount(),
                    reloj.elapsed());
    }
    return 0;
}
