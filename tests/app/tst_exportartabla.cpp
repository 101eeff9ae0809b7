#include "app/exportartabla.h"

#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "ui/iniciar_sesion.h"
#include "ui/mainwindow.h"

#include <QAbstractTableModel>
#include <QAction>
#include <QBuffer>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDateEdit>
#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPrintDialog>
#include <QPointer>
#include <QPrinter>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTabWidget>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>
#include <memory>

using namespace exportar;

namespace {

// Runs `accion` on the first modal or popup widget of type T that shows up (polling), once.
// Returns the polling timer, which deletes itself once it has acted.
template <typename T>
QPointer<QTimer> alAparecer(std::function<void(T *)> accion, bool popup = false)
{
    auto *sondeo = new QTimer;
    QObject::connect(sondeo, &QTimer::timeout, [sondeo, accion, popup] {
        QWidget *w = popup ? QApplication::activePopupWidget() : QApplication::activeModalWidget();
        auto *buscado = qobject_cast<T *>(w);
        if (!buscado || !buscado->isVisible())
            return;
        sondeo->stop();
        sondeo->deleteLater();
        accion(buscado);
    });
    sondeo->start(10);
    return sondeo;
}

// Right-clicks a cell of `tabla` as a user would and returns the texts of the menu that opened;
// picks the entry `elegir` when given, else closes the menu.
QStringList menuDe(QTableView *tabla, const QString &elegir = {}, const QPoint &punto = {5, 5},
                   bool teclado = false)
{
    QStringList textos;
    bool visto = false;
    auto *sondeo = new QTimer;
    QObject::connect(sondeo, &QTimer::timeout, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        sondeo->stop();
        visto = true;
        QAction *elegida = nullptr;
        for (QAction *a : menu->actions()) {
            textos << a->text();
            if (a->text() == elegir)
                elegida = a;
        }
        if (elegida) {
            menu->setActiveAction(elegida);
            QTest::keyClick(menu, Qt::Key_Return);
        } else {
            menu->close();
        }
    });
    sondeo->start(10);
    if (teclado) {
        // The menu key: the event goes to the widget with the focus.
        QContextMenuEvent e(QContextMenuEvent::Keyboard, QPoint(), tabla->mapToGlobal(QPoint()));
        QApplication::sendEvent(tabla, &e);
    } else {
        QContextMenuEvent e(QContextMenuEvent::Mouse, punto, tabla->viewport()->mapToGlobal(punto));
        QApplication::sendEvent(tabla->viewport(), &e);
    }
    sondeo->stop();
    delete sondeo;
    if (!visto)
        textos << QStringLiteral("(sin menú)");
    return textos;
}

const QStringList kMenu = {kCopiar, kExportarCsv, kExportarPdf, kImprimir};

// Types `ruta` as the file name and presses the accept button. (selectFile() leaves the name
// field alone while it has the focus.)
void elegirArchivo(QFileDialog *d, const QString &ruta)
{
    d->selectFile(ruta);
    if (auto *nombre = d->findChild<QLineEdit *>("fileNameEdit"))
        nombre->setText(ruta);
    static_cast<QDialog *>(d)->accept();
}

// Answers the next save-file dialog with `ruta`.
void responderArchivo(const QString &ruta)
{
    alAparecer<QFileDialog>([ruta](QFileDialog *d) { elegirArchivo(d, ruta); });
}

QByteArray leer(const QString &ruta)
{
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

int paginasPdf(const QByteArray &pdf)
{
    return pdf.count("/Type /Page\n") + pdf.count("/Type /Page\r") + pdf.count("/Type /Page/") +
           pdf.count("/Type /Page ") + pdf.count("/Type /Page>");
}

// Width and height of the first page's media box.
QSizeF tamanoPagina(const QByteArray &pdf)
{
    const QRegularExpression re(QStringLiteral("/MediaBox \\[([-0-9. ]+)\\]"));
    const auto m = re.match(QString::fromLatin1(pdf.constData(), pdf.size()));
    if (!m.hasMatch())
        return {};
    const QStringList v = m.captured(1).split(' ', Qt::SkipEmptyParts);
    return QSizeF(v.value(2).toDouble() - v.value(0).toDouble(),
                  v.value(3).toDouble() - v.value(1).toDouble());
}

// A small table as the reports fill theirs: amounts as shown, a hidden column, a date, a red
// cell, and a title in two lines.
QTableWidget *tablaEjemplo(QWidget *padre = nullptr)
{
    auto *t = new QTableWidget(3, 5, padre);
    t->setHorizontalHeaderLabels({"Nombre", "Monto", "Oculta", "Fecha", "#\nJug"});
    const QStringList filas[] = {
        {"Pérez, Ana \"la jefa\"", "12,345.50", "x1", "lunes 23/11/2026", "00"},
        {"Ñandú", "-0.00", "x2", "01/02/2026", "5"},
        {"Centro", "-1,234,567.89", "x3", "", "36"},
    };
    for (int f = 0; f < 3; ++f)
        for (int c = 0; c < 5; ++c)
            t->setItem(f, c, new QTableWidgetItem(filas[f].at(c)));
    t->item(2, 1)->setForeground(QBrush(QColor(255, 0, 0)));
    t->setColumnHidden(2, true);
    return t;
}

const QByteArray kCsvEjemplo = "\xEF\xBB\xBF"
                               "Nombre,Monto,Fecha,# Jug\r\n"
                               "\"Pérez, Ana \"\"la jefa\"\"\",12345.50,2026-11-23,00\r\n"
                               "Ñandú,0.00,2026-02-01,5\r\n"
                               "Centro,-1234567.89,,36\r\n";

// A dialog holding `tabla`, with the menus installed, shown.
std::unique_ptr<QDialog> dialogoCon(QTableView *tabla, const QString &titulo = "Prueba")
{
    auto d = std::make_unique<QDialog>();
    d->setWindowTitle(titulo);
    auto *l = new QVBoxLayout(d.get());
    l->addWidget(tabla);
    d->resize(700, 500);
    instalarMenusTablas(d.get());
    d->show();
    return d;
}

// A long table of texts, numbers and (optionally) a slow cell now and then, so that an export
// lasts long enough to be seen.
class ModeloLargo : public QAbstractTableModel {
public:
    ModeloLargo(int filas, int columnas, bool lento = false)
        : m_filas(filas), m_columnas(columnas), m_lento(lento)
    {
    }
    int rowCount(const QModelIndex &p = {}) const override { return p.isValid() ? 0 : m_filas; }
    int columnCount(const QModelIndex &p = {}) const override
    {
        return p.isValid() ? 0 : m_columnas;
    }
    QVariant data(const QModelIndex &i, int rol) const override
    {
        if (rol == Qt::ForegroundRole && i.column() == 1 && i.row() % 2 == 0)
            return QBrush(Qt::red);
        if (rol != Qt::DisplayRole)
            return {};
        if (m_lento && i.column() == 0 && i.row() % 100 == 0)
            QThread::msleep(1);
        switch (i.column()) {
        case 0:
            return QStringLiteral("Agencia número %1").arg(i.row());
        case 1:
            return QStringLiteral("%1.50").arg(i.row() % 1000);
        default:
            return QStringLiteral("c%1").arg(i.column());
        }
    }
    QVariant headerData(int s, Qt::Orientation o, int rol) const override
    {
        if (rol != Qt::DisplayRole)
            return {};
        return o == Qt::Horizontal ? QVariant(QStringLiteral("Columna %1").arg(s)) : QVariant(s);
    }
    void reiniciar(int filas)
    {
        beginResetModel();
        m_filas = filas;
        endResetModel();
    }

private:
    int m_filas, m_columnas;
    bool m_lento;
};

// Red pixels of the first page of a PDF, rendered with pdftoppm; -1 when it is not installed.
int pixelesRojos(const QString &pdf, const QString &carpeta)
{
    const QString programa = QStandardPaths::findExecutable(QStringLiteral("pdftoppm"));
    if (programa.isEmpty())
        return -1;
    QProcess p;
    p.start(programa, {"-png", "-r", "60", "-f", "1", "-l", "1", pdf, carpeta + "/pagina"});
    if (!p.waitForFinished(60000) || p.exitCode() != 0)
        return -2;
    QDir dir(carpeta);
    const QStringList png = dir.entryList({"pagina*.png"});
    if (png.isEmpty())
        return -3;
    const QImage img(dir.filePath(png.first()));
    int rojos = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            const QColor c = img.pixelColor(x, y);
            if (c.red() > 180 && c.green() < 90 && c.blue() < 90)
                ++rojos;
        }
    for (const QString &f : png)
        dir.remove(f);
    return rojos;
}

void responderLogin()
{
    alAparecer<iniciar_sesion>([](iniciar_sesion *login) {
        login->findChild<QLineEdit *>("lineEdit_usuario")->setText("admin");
        login->findChild<QLineEdit *>("lineEdit_clave")->setText("tornavo1");
        login->findChild<QPushButton *>("pushButton_iniciar")->click();
    });
}

} // namespace

class TstExportarTabla : public QObject {
    Q_OBJECT

    QTemporaryDir tmp;

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init() { QApplication::clipboard()->clear(); }

    void montosYFechasPlanos_data()
    {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QString>("plano");
        QTest::newRow("grupos y decimales") << "12,345.50"
                                            << "12345.50";
        QTest::newRow("millones negativos") << "-1,234,567.89"
                                            << "-1234567.89";
        QTest::newRow("cero negativo") << "-0.00"
                                       << "0.00";
        QTest::newRow("cero negativo sin decimales") << "-0"
                                                     << "0";
        QTest::newRow("sin decimales con grupos") << "80,550"
                                                  << "80550";
        QTest::newRow("decimales sin grupos") << "2685.5"
                                              << "2685.5";
        QTest::newRow("número del juego") << "00"
                                          << "00";
        QTest::newRow("entero") << "36"
                                << "36";
        QTest::newRow("entero negativo") << "-5"
                                         << "-5";
        QTest::newRow("grupo corto") << "12,34"
                                     << "12,34";
        QTest::newRow("grupo largo al frente") << "1234,567.00"
                                               << "1234,567.00";
        QTest::newRow("blancos") << " 1,000.00 "
                                 << "1000.00";
        QTest::newRow("fecha") << "23/11/2026"
                               << "2026-11-23";
        QTest::newRow("fecha con día") << "lunes 23/11/2026"
                                       << "2026-11-23";
        QTest::newRow("fecha con guiones") << "lun. 1-2-2026"
                                           << "2026-02-01";
        QTest::newRow("fecha imposible") << "31/02/2026"
                                         << "31/02/2026";
        QTest::newRow("ya plana") << "2026-11-23"
                                  << "2026-11-23";
        QTest::newRow("hora") << "2:07 pm"
                              << "2:07 pm";
        QTest::newRow("por ciento") << "151 %"
                                    << "151 %";
        QTest::newRow("nombre") << "Banca 7"
                                << "Banca 7";
        QTest::newRow("vacío") << ""
                               << "";
    }

    void montosYFechasPlanos()
    {
        QFETCH(QString, texto);
        QFETCH(QString, plano);
        QCOMPARE(valorPlano(texto), plano);
    }

    void csvYTsvDeTextos()
    {
        QCOMPARE(textoCsv({"A", "B\nC"}, {{"x,y", "1,000.00"}, {"\"q\"", "línea\nnueva"}}),
                 QByteArray("\xEF\xBB\xBF"
                            "A,B C\r\n\"x,y\",1000.00\r\n\"\"\"q\"\"\",\"línea\nnueva\"\r\n"));
        QCOMPARE(textoTsv({"A", "B\nC"}, {{"x\ty", "1,000.00"}, {"", "z"}}),
                 QStringLiteral("A\tB C\nx y\t1,000.00\n\tz\n"));
    }

    void paginacion()
    {
        // 100 units of paper, 20 on top, 10 below: 7 rows of 10 per page.
        QCOMPARE(paginar(70, 100, 20, 10, 10).filasPorPagina, 7);
        QCOMPARE(paginar(70, 100, 20, 10, 10).paginas, 10);
        QCOMPARE(paginar(71, 100, 20, 10, 10).paginas, 11);
        QCOMPARE(paginar(0, 100, 20, 10, 10).paginas, 1);
        QCOMPARE(paginar(5, 25, 20, 10, 10).filasPorPagina, 1);
        QVERIFY(apaisada(800, 400, 1000));
        QVERIFY(apaisada(1200, 5000, 1000));
        QVERIFY(!apaisada(800, 5000, 1000));
    }

    void csvDeUnaTablaPequena()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t);
        QBuffer b;
        b.open(QIODevice::WriteOnly);
        QVERIFY(escribirCsv(t, b));
        QCOMPARE(b.data(), kCsvEjemplo);

        // Columns in the order they are shown.
        t->horizontalHeader()->moveSection(4, 0);
        QBuffer b2;
        b2.open(QIODevice::WriteOnly);
        QVERIFY(escribirCsv(t, b2));
        QVERIFY(b2.data().startsWith("\xEF\xBB\xBF# Jug,Nombre,Monto,Fecha\r\n00,\"Pérez"));
    }

    void exportarCsvDesdeElMenu()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t, "Ventas Bancas");
        const QString ruta = tmp.filePath("ventas.csv");
        QString sugerido;
        alAparecer<QFileDialog>([&](QFileDialog *f) {
            sugerido = f->selectedFiles().value(0);
            elegirArchivo(f, ruta);
        });
        QCOMPARE(menuDe(t, kExportarCsv), kMenu);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(ruta), 10000);
        QCOMPARE(leer(ruta), kCsvEjemplo);
        QVERIFY2(sugerido.endsWith("/Ventas Bancas.csv"), qPrintable(sugerido));

        // A name without extension gets one.
        responderArchivo(tmp.filePath("sin_extension"));
        menuDe(t, kExportarCsv);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(tmp.filePath("sin_extension.csv")), 10000);
    }

    void copiarSeleccionYTablaEntera()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t);
        // Nothing selected: the whole table, as shown.
        QCOMPARE(menuDe(t, kCopiar), kMenu);
        QTRY_VERIFY_WITH_TIMEOUT(!QApplication::clipboard()->text().isEmpty(), 5000);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("Nombre\tMonto\tFecha\t# Jug\n"
                                "Pérez, Ana \"la jefa\"\t12,345.50\tlunes 23/11/2026\t00\n"
                                "Ñandú\t-0.00\t01/02/2026\t5\n"
                                "Centro\t-1,234,567.89\t\t36\n"));

        // Two cells of the first row and the whole last row (hidden cell included): the
        // rectangle they span, cells not selected left empty.
        QApplication::clipboard()->clear();
        auto *sel = t->selectionModel();
        sel->select(t->model()->index(0, 0), QItemSelectionModel::Select);
        sel->select(t->model()->index(0, 1), QItemSelectionModel::Select);
        sel->select(QItemSelection(t->model()->index(2, 0), t->model()->index(2, 4)),
                    QItemSelectionModel::Select);
        menuDe(t, kCopiar);
        QTRY_VERIFY_WITH_TIMEOUT(!QApplication::clipboard()->text().isEmpty(), 5000);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("Nombre\tMonto\tFecha\t# Jug\n"
                                "Pérez, Ana \"la jefa\"\t12,345.50\t\t\n"
                                "Centro\t-1,234,567.89\t\t36\n"));

        // One column only.
        QApplication::clipboard()->clear();
        sel->clearSelection();
        sel->select(QItemSelection(t->model()->index(1, 1), t->model()->index(2, 1)),
                    QItemSelectionModel::Select);
        menuDe(t, kCopiar);
        QTRY_VERIFY_WITH_TIMEOUT(!QApplication::clipboard()->text().isEmpty(), 5000);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("Monto\n-0.00\n-1,234,567.89\n"));
    }

    void pdfDeUnaTablaLarga()
    {
        ModeloLargo modelo(300, 3);
        auto *t = new QTableView;
        t->setModel(&modelo);
        auto d = dialogoCon(t, "Reporte largo");
        const QString ruta = tmp.filePath("largo.pdf");
        responderArchivo(ruta);
        QCOMPARE(menuDe(t, kExportarPdf), kMenu);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(ruta), 20000);
        const QByteArray pdf = leer(ruta);
        QVERIFY(pdf.startsWith("%PDF"));

        // The pages the layout gives for 300 rows of this table...
        QPrinter otra(QPrinter::HighResolution);
        otra.setOutputFormat(QPrinter::PdfFormat);
        otra.setOutputFileName(tmp.filePath("otra.pdf"));
        const int paginas = imprimirTabla(t, &otra, encabezadoDe(t));
        QVERIFY2(paginas >= 4 && paginas <= 12, qPrintable(QString::number(paginas)));
        QCOMPARE(paginasPdf(pdf), paginas);
        // ...grow with the rows, and a short table fits on one upright page.
        modelo.reiniciar(600);
        QPrinter doble(QPrinter::HighResolution);
        doble.setOutputFormat(QPrinter::PdfFormat);
        doble.setOutputFileName(tmp.filePath("doble.pdf"));
        const int paginasDoble = imprimirTabla(t, &doble, encabezadoDe(t));
        QVERIFY(paginasDoble >= 2 * paginas - 1 && paginasDoble <= 2 * paginas + 1);
        QCOMPARE(paginasPdf(leer(tmp.filePath("doble.pdf"))), paginasDoble);
        QVERIFY(tamanoPagina(pdf).height() > tamanoPagina(pdf).width());
        // A page range chosen in the print dialog.
        QPrinter rango(QPrinter::HighResolution);
        rango.setOutputFormat(QPrinter::PdfFormat);
        rango.setOutputFileName(tmp.filePath("rango.pdf"));
        rango.setPrintRange(QPrinter::PageRange);
        rango.setFromTo(2, 3);
        QCOMPARE(imprimirTabla(t, &rango, encabezadoDe(t)), 2);
        QCOMPARE(paginasPdf(leer(tmp.filePath("rango.pdf"))), 2);

        // Red cells print red.
        QTemporaryDir png;
        const int rojos = pixelesRojos(ruta, png.path());
        if (rojos == -1)
            QSKIP("pdftoppm is not installed");
        QVERIFY2(rojos > 20, qPrintable(QString::number(rojos)));
    }

    void pdfApaisadoYSinRojo()
    {
        // Few rows, many columns: wider than tall.
        QTableWidget *t = tablaEjemplo();
        t->setColumnCount(12);
        t->item(2, 1)->setForeground(QBrush());
        auto d = dialogoCon(t, "Ancha");
        const QString ruta = tmp.filePath("ancha.pdf");
        QVERIFY(exportarPdf(t, ruta));
        const QByteArray pdf = leer(ruta);
        QCOMPARE(paginasPdf(pdf), 1);
        QVERIFY2(tamanoPagina(pdf).width() > tamanoPagina(pdf).height(),
                 qPrintable(QString::number(tamanoPagina(pdf).width())));
        QTemporaryDir png;
        const int rojos = pixelesRojos(ruta, png.path());
        if (rojos == -1)
            QSKIP("pdftoppm is not installed");
        QCOMPARE(rojos, 0);
    }

    void encabezadoDelDialogo()
    {
        QDialog d;
        d.setWindowTitle("Reporte de Ventas Super Banca");
        auto *l = new QVBoxLayout(&d);
        auto *fila = new QHBoxLayout;
        l->addLayout(fila);
        auto *etiqueta = new QLabel("Desde :");
        auto *desde = new QDateEdit(QDate(2026, 11, 1));
        desde->setDisplayFormat("dd/MM/yyyy");
        auto *hasta = new QDateEdit(QDate(2026, 11, 22));
        hasta->setDisplayFormat("dd/MM/yyyy");
        auto *otra = new QLabel("Hasta :");
        otra->setBuddy(hasta);
        fila->addWidget(etiqueta);
        fila->addWidget(desde);
        fila->addWidget(hasta);
        fila->addWidget(otra);
        auto *t = new QTableWidget(1, 1);
        l->addWidget(t);
        d.show();
        const QDateTime antes = QDateTime::currentDateTime();
        Encabezado e = encabezadoDe(t);
        QCOMPARE(e.titulo, QStringLiteral("Reporte de Ventas Super Banca"));
        QCOMPARE(e.contexto, QStringLiteral("Desde: 01/11/2026   Hasta: 22/11/2026"));
        QVERIFY(qAbs(e.momento.secsTo(antes)) < 5);
        // A dialog may say it itself.
        d.setProperty("contextoImpresion", "Sorteo 10:00 AM del 22/11/2026");
        QCOMPARE(encabezadoDe(t).contexto, QStringLiteral("Sorteo 10:00 AM del 22/11/2026"));
    }

    void tablasConMenuPropioYTablasNuevas()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t);
        instalarMenusTablas(d.get()); // a second call changes nothing
        auto *propia = new QTableWidget(2, 2);
        propia->setContextMenuPolicy(Qt::CustomContextMenu);
        d->layout()->addWidget(propia);
        QSignalSpy pedido(propia, &QWidget::customContextMenuRequested);
        QCOMPARE(menuDe(propia), QStringList{"(sin menú)"});
        QCOMPARE(pedido.count(), 1);
        // Nor a table that says it has no menu.
        auto *sinMenu = new QTableWidget(2, 2);
        sinMenu->setContextMenuPolicy(Qt::NoContextMenu);
        d->layout()->addWidget(sinMenu);
        QTRY_VERIFY(sinMenu->isVisible());
        QCOMPARE(menuDe(sinMenu), QStringList{"(sin menú)"});
        // A table added later gets the menu too, once, and so does its header.
        auto *nueva = new QTableWidget(2, 2);
        d->layout()->addWidget(nueva);
        QTRY_VERIFY(nueva->isVisible());
        QCOMPARE(menuDe(nueva), kMenu);
        QCOMPARE(menuDe(t), kMenu);
        // From the keyboard too.
        d->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(d.get()));
        t->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(t));
        QCOMPARE(menuDe(t, {}, {}, true), kMenu);
        // Other widgets keep theirs (no menu of ours over a button).
        auto *boton = new QPushButton("x");
        d->layout()->addWidget(boton);
        QTRY_VERIFY(boton->isVisible());
        bool visto = false;
        QPointer<QTimer> sondeo = alAparecer<QMenu>(
            [&](QMenu *m) {
                visto = true;
                m->close();
            },
            true);
        QContextMenuEvent e(QContextMenuEvent::Mouse, {2, 2}, boton->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(boton, &e);
        QTest::qWait(100);
        delete sondeo;
        QVERIFY(!visto);
    }

    void cancelarUnaExportacionLarga()
    {
        ModeloLargo modelo(200000, 3, true);
        auto *t = new QTableView;
        t->setModel(&modelo);
        auto d = dialogoCon(t);
        const QString ruta = tmp.filePath("cancelada.csv");
        {
            QFile previo(ruta);
            QVERIFY(previo.open(QIODevice::WriteOnly));
            previo.write("lo de antes");
        }
        QString etiqueta;
        alAparecer<QProgressDialog>([&](QProgressDialog *p) {
            etiqueta = p->labelText();
            QTest::mouseClick(p->findChild<QPushButton *>(), Qt::LeftButton);
        });
        QVERIFY(!exportarCsv(t, ruta));
        QCOMPARE(etiqueta, QStringLiteral("Exportando a CSV…"));
        QCOMPARE(leer(ruta), QByteArray("lo de antes"));
    }

    void cancelarUnaCopiaLarga()
    {
        ModeloLargo modelo(200000, 3, true);
        auto *t = new QTableView;
        t->setModel(&modelo);
        auto d = dialogoCon(t);
        QApplication::clipboard()->setText("lo de antes");
        QString etiqueta;
        QPointer<QProgressDialog> progreso;
        alAparecer<QProgressDialog>([&](QProgressDialog *p) {
            etiqueta = p->labelText();
            progreso = p;
            QTest::mouseClick(p->findChild<QPushButton *>(), Qt::LeftButton);
        });
        menuDe(t, kCopiar);
        QTRY_COMPARE_WITH_TIMEOUT(etiqueta, QStringLiteral("Copiando…"), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(!progreso, 20000);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("lo de antes"));
    }

    void laTablaCambiaDuranteLaExportacion()
    {
        ModeloLargo modelo(200000, 3, true);
        auto *t = new QTableView;
        t->setModel(&modelo);
        auto d = dialogoCon(t);
        const QString ruta = tmp.filePath("cambiada.csv");
        CapturaMensajes cajas;
        alAparecer<QProgressDialog>([&](QProgressDialog *) { modelo.reiniciar(10); });
        QVERIFY(!exportarCsv(t, ruta));
        QVERIFY(cajas.esperar(1));
        QCOMPARE(
            cajas.ultimo().texto,
            QStringLiteral(
                "La tabla cambió mientras se exportaba; no se guardó nada. Vuelva a intentarlo."));
        QVERIFY(!QFile::exists(ruta));
        // Afterwards it exports what it shows now.
        QVERIFY(exportarCsv(t, ruta));
        QCOMPARE(leer(ruta).count("\r\n"), 11);
    }

    void elDialogoSeCierraDuranteLaExportacion()
    {
        ModeloLargo modelo(200000, 3, true);
        auto *t = new QTableView;
        t->setModel(&modelo);
        auto d = dialogoCon(t);
        const QString ruta = tmp.filePath("sin_dialogo.csv");
        CapturaMensajes cajas;
        alAparecer<QProgressDialog>([&](QProgressDialog *) { d.reset(); });
        QVERIFY(!exportarCsv(t, ruta));
        QVERIFY(!d);
        QVERIFY(cajas.esperar(1));
        QVERIFY(cajas.ultimo().texto.startsWith("La tabla cambió"));
        QVERIFY(!QFile::exists(ruta));
    }

    void errorAlEscribir()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t);
        CapturaMensajes cajas;
        const QString ruta = tmp.filePath("no/existe/la/carpeta.csv");
        QVERIFY(!exportarCsv(t, ruta));
        QVERIFY(cajas.esperar(1));
        QCOMPARE(cajas.ultimo().titulo, QStringLiteral("Error"));
        QVERIFY2(cajas.ultimo().texto.startsWith("No se pudo escribir " + ruta),
                 qPrintable(cajas.ultimo().texto));
    }

    void imprimirAbreElDialogoDeImpresion()
    {
        QTableWidget *t = tablaEjemplo();
        auto d = dialogoCon(t);
        QString titulo;
        alAparecer<QPrintDialog>([&](QPrintDialog *p) {
            titulo = p->windowTitle();
            p->reject();
        });
        QCOMPARE(menuDe(t, kImprimir), kMenu);
        QTRY_COMPARE_WITH_TIMEOUT(titulo, QStringLiteral("Imprimir"), 10000);
    }

    // Every dialog the main window opens has the menu on each of its tables.
    void losDialogosDeLaConsola()
    {
        reiniciarSesion();
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("validarUser.php", "1\nAdministrador\nX\nroot\nroot\n01\nSB1\n1,2\n");
        CapturaMensajes cajas;
        responderLogin();
        MainWindow ventana;
        ventana.show();
        const QStringList acciones = {"actionMonitorear_Ventas", "actionCalcular_Premios",
                                      "actionAuto_premiaci_n", "actionVentas_Bancas",
                                      "actionVentas_Bancas_2"};
        int tablas = 0;
        for (const QString &nombre : acciones) {
            const auto antes =
                ventana.findChildren<QDialog *>(QString(), Qt::FindDirectChildrenOnly);
            ventana.findChild<QAction *>(nombre)->trigger();
            QDialog *nuevo = nullptr;
            for (QDialog *dlg :
                 ventana.findChildren<QDialog *>(QString(), Qt::FindDirectChildrenOnly))
                if (!antes.contains(dlg))
                    nuevo = dlg;
            QVERIFY2(nuevo, qPrintable(nombre));
            QVERIFY2(QTest::qWaitForWindowExposed(nuevo), qPrintable(nombre));
            // The dialog's first requests answered and their message boxes closed: a box that
            // opens would close the menu under test.
            for (int quietas = 0, vuelta = 0; quietas < 3 && vuelta < 50; ++vuelta) {
                const int antesCajas = cajas.cantidad(), antesPeticiones = srv.peticiones().size();
                QTest::qWait(100);
                const bool quieto = !QApplication::activeModalWidget() &&
                                    cajas.cantidad() == antesCajas &&
                                    srv.peticiones().size() == antesPeticiones;
                quietas = quieto ? quietas + 1 : 0;
            }
            const auto vistas = nuevo->findChildren<QTableView *>();
            QVERIFY2(!vistas.isEmpty(), qPrintable(nombre));
            for (QTableView *v : vistas) {
                // Each table on its page of the dialog, as the user would reach it.
                for (QWidget *w = v; w && w != nuevo; w = w->parentWidget())
                    if (auto *pagina = qobject_cast<QTabWidget *>(
                            w->parentWidget() ? w->parentWidget()->parentWidget() : nullptr))
                        pagina->setCurrentWidget(w);
                QTRY_VERIFY2(v->isVisible(), qPrintable(nombre + " " + v->objectName()));
                const QStringList textos = menuDe(v);
                QVERIFY2(textos == kMenu,
                         qPrintable(nombre + " " + v->objectName() + ": " + textos.join('|')));
                ++tablas;
            }
            nuevo->close();
        }
        QVERIFY(tablas >= 14);
    }

    // The super-banca report, filled from the fixture server, to a PDF and a picture of it.
    void pdfDelReporteSuperBanca()
    {
        reiniciarSesion();
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("validarUser.php", "1\nAdministrador\nX\nroot\nroot\n01\nSB1\n1,2\n");
        srv.responder("reportex.php", "1,Lotto Activo\n2,La Granjita\n"
                                      "_FIN_\n"
                                      "7,1,10,50\n"
                                      "4,1,12,40\n4,2,12,40\n"
                                      "_FIN_\n"
                                      "7,Centro,1,1000,500\n"
                                      "4,Oeste,2,500,100\n"
                                      "4,Oeste,1,250,900\n");
        CapturaMensajes cajas;
        responderLogin();
        MainWindow ventana;
        ventana.show();
        SesionGlobal::decimales = 2;
        ventana.findChild<QAction *>("actionVentas_Bancas_2")->trigger();
        QDialog *reporte = nullptr;
        QTRY_VERIFY((reporte = ventana.findChild<QDialog *>("reporteVentasX")));
        auto *ventas = reporte->findChild<QTableWidget *>("tableWidget_ventas");
        reporte->findChild<QPushButton *>("pushButton")->click();
        QTRY_VERIFY_WITH_TIMEOUT(ventas->rowCount() > 0, 10000);
        const QString ruta = qEnvironmentVariableIsSet("TORNAVO_PDF_REPORTE")
                                 ? qEnvironmentVariable("TORNAVO_PDF_REPORTE")
                                 : tmp.filePath("reporte.pdf");
        QFile::remove(ruta);
        responderArchivo(ruta);
        QCOMPARE(menuDe(ventas, kExportarPdf), kMenu);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(ruta), 20000);
        const QByteArray pdf = leer(ruta);
        QCOMPARE(paginasPdf(pdf), 1);
        QVERIFY(tamanoPagina(pdf).width() > tamanoPagina(pdf).height());
        QTemporaryDir png;
        const int rojos = pixelesRojos(ruta, png.path());
        if (rojos == -1)
            QSKIP("pdftoppm is not installed");
        QVERIFY2(rojos > 20, qPrintable(QString::number(rojos)));
    }
};

TORNAVO_PRUEBA_MAIN(TstExportarTabla)
#include "tst_exportartabla.moc"
