#include "monitor/monitor2.h"

#include "app/sesion.h"
#include "monitor/modelojugadas.h"
#include "tests/monitor/generador.h"
#include "tests/monitor/referencia.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/respuestas.h"
#include "tests/soporte/servidorprueba.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QStackedBarSeries>
#include <QtCharts/QBarSet>
#include <QPointer>
#include <QTabWidget>
#include <QThread>
#include <QTableView>
#include <QTableWidget>

#include <memory>

namespace {

QStringList g_debug;
QtMessageHandler g_anterior = nullptr;

void capturar(QtMsgType tipo, const QMessageLogContext &ctx, const QString &msg)
{
    if (msg.contains(QLatin1String("No matching signal")))
        qFatal("slot wired to nothing: %s", qPrintable(msg));
    if (tipo == QtDebugMsg)
        g_debug << msg;
    else if (g_anterior)
        g_anterior(tipo, ctx, msg);
}

const QByteArray kSorteos =
    "L1-10;Lotto Activo 10AM;1;1;30;0,00,1,2;Delfin,Ballena,Carnero,Toro;10;"
    "10:00 AM\n"
    "L1-11;Lotto Activo 11AM;0;1;30;0,00;Delfin,Ballena;11;11:00 AM\n"
    "L1-10;Lotto Activo 12PM;1;1;40;0,1;OTRO,OTRO1;12;12:00 PM\n"
    "G2-5;Granjita 5PM;1;2;60;0,1,1;Cero,Uno,UnoBis;5;5:00 PM\n";
const QByteArray kBancas = "1,Banca Uno\n2,Banca Dos\n3,Banca Tres\n1,Banca Uno Bis\n";
const QByteArray kAgencias = "1,0,0,1,Agencia A,L1-10,10\n"
                             "1,0,0,2,Agencia B,L1-10,10\n"
                             "2,0,0,1,Agencia C,L1-10,0\n"
                             "1,0,0,1,Agencia A,G2-5,20\n"
                             "3,0,0,9,Agencia Vieja,L1-10,30\n"
                             "3,0,0,9,Agencia Nueva,L1-10,25\n";
const QByteArray kResultados = "cabecera\nL1-10,10,0\nL1-10,10,00\nG2-5,5,1\n";

// One dialog against the fixture server, with counters of the replies each channel handled.
struct Escena {
    ServidorPrueba srv;
    DirectorioTrabajo dir;
    std::unique_ptr<Monitor2> m;
    int fin[5] = {0, 0, 0, 0, 0}; // draws, bancas, agencies, results, sales

    Escena(const QByteArray &sorteos = kSorteos, const QByteArray &bancas = kBancas,
           const QByteArray &agencias = kAgencias, const QByteArray &resultados = kResultados)
    {
        dir.apuntarA(srv.direccion());
        srv.responder("monitorsorteos2.php", sorteos);
        srv.responder("bancasactivas.php", bancas);
        srv.responder("monitoragencias.php", agencias);
        srv.responder("monitorresultados.php", resultados);
    }

    void abrir()
    {
        m = std::make_unique<Monitor2>();
        const auto nams = m->findChildren<QNetworkAccessManager *>();
        for (int i = 0; i < nams.size() && i < 5; ++i)
            QObject::connect(nams[i], &QNetworkAccessManager::finished, [this, i] { ++fin[i]; });
    }

    // Waits until every reply of the constructor and of the draws reply has been handled.
    bool esperarCarga()
    {
        for (int i = 0; i < 500 && (fin[0] < 1 || fin[1] < 1 || fin[2] < 1); ++i)
            QTest::qWait(10);
        const int esperados = combo()->count() > 0 ? 3 : 2;
        for (int i = 0; i < 500 && fin[3] < esperados; ++i)
            QTest::qWait(10);
        return fin[0] == 1 && fin[1] == 1 && fin[2] == 1 && fin[3] == esperados;
    }

    // Chooses a draw, asks for its sales and waits until they are shown.
    bool ventas(int indice, const QByteArray &cuerpo)
    {
        srv.responder("monitorventas.php", cuerpo);
        const int res = fin[3];
        combo()->setCurrentIndex(indice);
        for (int i = 0; i < 500 && fin[3] < res + (indice == 0 ? 0 : 1); ++i)
            QTest::qWait(10);
        QSignalSpy mostradas(m.get(), &Monitor2::ventasMostradas);
        const int antes = fin[3];
        boton()->click();
        if (!mostradas.wait(10000))
            return false;
        for (int i = 0; i < 500 && fin[3] < antes + 1; ++i)
            QTest::qWait(10);
        return true;
    }

    template <class T> T *w(const char *nombre) const
    {
        T *x = m->findChild<T *>(QLatin1String(nombre));
        if (!x)
            qFatal("missing widget %s", nombre);
        return x;
    }
    QComboBox *combo() const { return w<QComboBox>("comboBox"); }
    QPushButton *boton() const { return w<QPushButton>("pushButton_actualizar"); }
    QTableView *jugadas() const { return w<QTableView>("tableWidget"); }
    QTableWidget *tabla(const char *n) const { return w<QTableWidget>(n); }
    QString label(const char *n) const { return w<QLabel>(n)->text(); }
    QString campo(const char *n) const { return w<QLineEdit>(n)->text(); }

    QString celda(int f, int c) const { return jugadas()->model()->index(f, c).data().toString(); }
    static QString celda(QTableWidget *t, int f, int c)
    {
        return t->item(f, c) ? t->item(f, c)->text() : QStringLiteral("<null>");
    }
    static literal::Tabla contenido(QAbstractItemModel *m)
    {
        literal::Tabla r;
        for (int f = 0; f < m->rowCount(); ++f) {
            QStringList fila;
            for (int c = 0; c < m->columnCount(); ++c)
                fila << m->index(f, c).data().toString();
            r << fila;
        }
        return r;
    }
    static literal::Tabla contenido(QTableWidget *t)
    {
        literal::Tabla r;
        for (int f = 0; f < t->rowCount(); ++f) {
            QStringList fila;
            for (int c = 0; c < t->columnCount(); ++c)
                fila << celda(t, f, c);
            r << fila;
        }
        return r;
    }
    literal::Tabla contenidoJugadas() const
    {
        literal::Tabla r;
        QAbstractItemModel *mod = jugadas()->model();
        for (int f = 0; f < mod->rowCount(); ++f) {
            QStringList fila;
            for (int c = 0; c < 10; ++c)
                fila << mod->index(f, c).data().toString();
            r << fila;
        }
        return r;
    }
    // Rows whose cells 0-7 are all selected; fails on partly selected rows or on 8-9.
    QVector<int> seleccionadas() const
    {
        QVector<int> r;
        QAbstractItemModel *mod = jugadas()->model();
        QItemSelectionModel *sel = jugadas()->selectionModel();
        for (int f = 0; f < mod->rowCount(); ++f) {
            int n = 0;
            for (int c = 0; c < 8; ++c)
                n += sel->isSelected(mod->index(f, c)) ? 1 : 0;
            if (sel->isSelected(mod->index(f, 8)) || sel->isSelected(mod->index(f, 9)))
                return {-2};
            if (n == 8)
                r << f;
            else if (n != 0)
                return {-1};
        }
        return r;
    }
    QStringList totales() const
    {
        return {label("label_jugadas"),   label("label_monto"),     label("label_montott"),
                label("label_comisiont"), label("label_ventaneta"), label("label_premios"),
                label("label_utilidad")};
    }
    QStringList totalesS() const
    {
        return {campo("lineEdit_vbrutaS"), campo("lineEdit_comisionS"), campo("lineEdit_vnetaS"),
                campo("lineEdit_premioS"), campo("lineEdit_utilidadS")};
    }
};

QStringList encabezados(QTableView *t)
{
    QStringList r;
    for (int c = 0; c < t->model()->columnCount(); ++c)
        r << t->model()->headerData(c, Qt::Horizontal).toString();
    return r;
}

literal::Listas literales(const QByteArray &s, const QByteArray &b, const QByteArray &a,
                          const QByteArray &r)
{
    literal::Listas L;
    L.sorteos(QString::fromLatin1(s));
    L.bancas(QString::fromLatin1(b));
    L.agencias(QString::fromLatin1(a));
    L.resultadosDe(QString::fromLatin1(r));
    return L;
}

} // namespace

class TstMonitor : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &nombre);

private slots:
    void initTestCase() { g_anterior = qInstallMessageHandler(capturar); }

    void init()
    {
        reiniciarSesion();
        SesionGlobal::usuario = "ana maria";
        SesionGlobal::decimales = 2;
        SesionGlobal::fechaActual = QDate(2026, 3, 15);
        g_debug.clear();
    }

    void formulario()
    {
        Escena e;
        e.abrir();
        Monitor2 &m = *e.m;
        QCOMPARE(m.windowTitle(), QStringLiteral("Monitorear Ventas"));
        auto *fecha = e.w<QDateEdit>("dateEdit_fecha");
        QCOMPARE(fecha->displayFormat(), QStringLiteral("dddd dd/MM/yyyy"));
        QVERIFY(fecha->calendarPopup());
        QCOMPARE(fecha->date(), QDate(2026, 3, 15));
        QCOMPARE(e.boton()->text(), QStringLiteral("Actualizar"));
        bool mascara = false;
        for (QLineEdit *l : m.findChildren<QLineEdit *>())
            mascara = mascara || l->inputMask() == QStringLiteral("99:99:99 A.P.");
        QVERIFY(mascara);
        auto *tn = e.w<QTabWidget>("tabWidget_numeros");
        auto *tt = e.w<QTabWidget>("tabWidget");
        QCOMPARE(tn->currentIndex(), 1);
        QCOMPARE(tn->widget(0)->objectName(), QStringLiteral("tab_renumen_numeros"));
        QCOMPARE(tn->widget(1)->objectName(), QStringLiteral("tab_detalle_numeros"));
        QCOMPARE(tn->tabText(0), QStringLiteral("Resumen"));
        QCOMPARE(tn->tabText(1), QStringLiteral("Detallado"));
        QCOMPARE(tt->tabText(0), QStringLiteral("General"));
        QCOMPARE(tt->tabText(1), QStringLiteral("Sorteo"));
        QCOMPARE(tt->tabText(2), QStringLiteral("Bancas"));
        QCOMPARE(tt->tabText(3), QStringLiteral("Riesgo"));
        QCOMPARE(tt->count(), 4);
        QCOMPARE(tt->currentIndex(), 0);
        QVERIFY(tn->widget(1)->isAncestorOf(e.jugadas()));
        QVERIFY(tn->widget(0)->isAncestorOf(e.tabla("tableWidget_resumen_numeros")));
        QVERIFY(tt->isAncestorOf(e.tabla("tableWidget_bancas")));
        QVERIFY(tt->isAncestorOf(e.tabla("tableWidget_tbancas")));
        auto *com = e.w<QComboBox>("comboBox_comision");
        QCOMPARE(com->count(), 3);
        QCOMPARE(com->itemText(0), QStringLiteral("Sub-Banca"));
        QCOMPARE(com->itemText(1), QStringLiteral("Jefe de Grupo"));
        QCOMPARE(com->itemText(2), QStringLiteral("Agencia"));
        QStringList textos;
        for (QLabel *l : m.findChildren<QLabel *>())
            textos << l->text();
        for (const char *t :
             {"Fecha :", "Sorteo :", "Comisión :", "Total\nJugadas", "Monto del Sorteo",
              "Cantida Jugadas :", "Monto Jugada :", "Monto Premio :",
              "Venta Bruta .............................", "Comisión .........................",
              "Venta Neta ...............................",
              "Premios ...................................",
              "Utilidad ...............................................",
              "Venta Bruta :", "Venta neta :", "Premios :", "Utilidad :"})
            QVERIFY2(textos.contains(QString::fromUtf8(t)), t);
        for (const char *n :
             {"label_jugadas", "label_monto", "label_juego", "label_montott", "label_comisiont",
              "label_ventaneta", "label_premios", "label_utilidad", "label_hora"})
            e.w<QLabel>(n);
        for (const char *n : {"lineEdit_animal", "lineEdit_jugadas", "lineEdit_monto",
                              "lineEdit_premio", "lineEdit_vbrutaS", "lineEdit_comisionS",
                              "lineEdit_vnetaS", "lineEdit_premioS", "lineEdit_utilidadS"})
            e.w<QLineEdit>(n);
    }

    void tablas()
    {
        Escena e;
        e.abrir();
        const QString estilo =
            QStringLiteral("background-color: rgb(0, 98, 147);\ncolor: rgb(255, 255, 255);");
        struct Caso {
            const char *nombre;
            QStringList columnas;
            QList<int> anchos;
            QList<int> ocultas;
        };
        const QList<Caso> casos = {
            {"tableWidget_resumen_numeros",
             {"#", "Nombre", "Monto", "#\nJug"},
             {50, 85, 80, 50},
             {}},
            {"tableWidget_resumen_agencias",
             {"Banca", "Nombre Agencia", "Monto"},
             {90, 125, 65},
             {}},
            {"tableWidget",
             {"Banca", "Agencia", "Ticket", "Hora", "#", "Nombre", "Monto", "Estado", "monto",
              "codAgencia"},
             {100, 140, 65, 70, 30, 90, 70, 70},
             {8, 9}},
            {"tableWidget_bancas",
             {"Agencia", "#\nJug", "Monto", "Banca", "cAgencia"},
             {140, 30, 65, 80},
             {4}},
            {"tableWidget_tbancas",
             {"Banca", "Vta Bruta", "Comisión", "Vta Neta", "Premios", "Utilidad"},
             {90, 85, 80, 85, 85},
             {}},
        };
        for (const Caso &c : casos) {
            auto *t = e.w<QTableView>(c.nombre);
            QCOMPARE(encabezados(t), c.columnas);
            for (int i = 0; i < c.anchos.size(); ++i)
                QCOMPARE(t->columnWidth(i), c.anchos[i]);
            for (int i = 0; i < c.columnas.size(); ++i)
                QCOMPARE(t->isColumnHidden(i), c.ocultas.contains(i));
            QCOMPARE(t->horizontalHeader()->styleSheet(), estilo);
        }
        // The last column of the banca totals keeps the default width.
        QHeaderView *h = e.tabla("tableWidget_tbancas")->horizontalHeader();
        QCOMPARE(h->sectionSize(5), h->defaultSectionSize());
        QVERIFY(e.esperarCarga());
    }

    void peticionesExactas()
    {
        Escena e;
        e.abrir();
        QCOMPARE(e.combo()->itemText(0), QStringLiteral("Cargando sorteos..."));
        QVERIFY(e.esperarCarga());
        const QString base = "/Tornavo/TornavoSU/";
        QCOMPARE(e.srv.peticionesA("bancasactivas.php"), QStringList{base + "bancasactivas.php"});
        QCOMPARE(e.srv.peticionesA("monitoragencias.php"),
                 QStringList{base + "monitoragencias.php"});
        QCOMPARE(e.srv.peticionesA("monitorsorteos2.php"),
                 QStringList{base + "monitorsorteos2.php?&u=ana%20maria"});
        for (const QString &p : e.srv.peticionesA("monitorresultados.php"))
            QCOMPARE(p, base + "monitorresultados.php?&f=2026-03-15");
        // The complete URL of the results request goes to the debug log.
        QVERIFY(g_debug.contains(e.srv.urlBase() + "monitorresultados.php?&f=2026-03-15"));

        e.srv.limpiarPeticiones();
        QVERIFY(e.ventas(1, ""));
        QCOMPARE(e.srv.peticionesA("monitorventas.php"),
                 QStringList{base + "monitorventas.php?&f=2026-03-15&j=L1-10"});
        QCOMPARE(e.srv.peticionesA("monitorresultados.php").last(),
                 base + "monitorresultados.php?&f=2026-03-15");
        e.srv.limpiarPeticiones();
        QVERIFY(e.ventas(2, ""));
        QCOMPARE(e.srv.peticionesA("monitorventas.php"),
                 QStringList{base + "monitorventas.php?&f=2026-03-15&j=G2-5"});

        // Another date: clears and asks for that date's results.
        e.srv.limpiarPeticiones();
        e.w<QDateEdit>("dateEdit_fecha")->setDate(QDate(2026, 2, 1));
        QTRY_COMPARE(e.srv.peticionesA("monitorresultados.php"),
                     QStringList{base + "monitorresultados.php?&f=2026-02-01"});
    }

    void sorteosActivosYAnimales()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        const ListasMonitor &L = e.m->listas();
        QCOMPARE(e.combo()->count(), 3);
        QCOMPARE(e.combo()->itemText(0), QStringLiteral("Lotto Activo 10AM 10:00 AM"));
        QCOMPARE(e.combo()->itemText(1), QStringLiteral("Lotto Activo 12PM 12:00 PM"));
        QCOMPARE(e.combo()->itemText(2), QStringLiteral("Granjita 5PM 5:00 PM"));
        QCOMPARE(L.codigosJuego, (QStringList{"L1-10", "L1-10", "G2-5"}));
        QCOMPARE(L.codigosSorteo, (QStringList{"10", "12", "5"}));
        QCOMPARE(L.nombresSorteo.value(1), QStringLiteral("Lotto Activo 12PM"));
        QCOMPARE(L.factoresSorteo, (QList<double>{30.0, 40.0, 30.0}));
        // The repeated game code added its combo item but not its animals.
        QCOMPARE(L.clavesAnimal,
                 (QStringList{"L1-100", "L1-1000", "L1-101", "L1-102", "G2-50", "G2-51", "G2-51"}));
        QCOMPARE(e.m->animal("L1-10", "1"), QStringLiteral("Carnero"));
        QCOMPARE(e.m->animal("L1-10", "00"), QStringLiteral("Ballena"));
        QCOMPARE(e.m->animal("G2-5", "1"), QStringLiteral("UnoBis")); // last match
        QCOMPARE(e.m->animal("G2-5", "7"), QString());
    }

    void sinSorteoActivoComboVacio()
    {
        Escena e(
            "A-1;Uno;0;1;30;0;X;1;1 PM\nA-2;Dos;X;1;30;0;X;2;2 PM\nA-3;Tres; 1;1;30;0;X;3;3 PM\n");
        e.abrir();
        QVERIFY(e.esperarCarga());
        QCOMPARE(e.combo()->count(), 0);
        QVERIFY(e.m->listas().codigosJuego.isEmpty());
        Escena v("");
        v.abrir();
        QVERIFY(v.esperarCarga());
        QCOMPARE(v.combo()->count(), 0);
    }

    void busquedasUltimaCoincidencia()
    {
        Escena e;
        e.abrir();
        Monitor2 &m = *e.m;
        // No results yet.
        QVERIFY(!m.hayResultado("L1-10", "10"));
        QVERIFY(e.esperarCarga());
        QCOMPARE(m.banca("1"), QStringLiteral("Banca Uno Bis"));
        QCOMPARE(m.banca("2"), QStringLiteral("Banca Dos"));
        QCOMPARE(m.banca("9"), QString());
        QCOMPARE(m.indiceBanca("1"), 3);
        QCOMPARE(m.indiceBanca("3"), 2);
        QCOMPARE(m.indiceBanca("9"), -1);
        QCOMPARE(m.agencia("1001"), QStringLiteral("Agencia A"));
        QCOMPARE(m.agencia("3009"), QStringLiteral("Agencia Nueva"));
        QCOMPARE(m.agencia("9999"), QString());
        QCOMPARE(m.comisionAgencia("3009", "L1-10"), QStringLiteral("25"));
        QCOMPARE(m.comisionAgencia("1001", "G2-5"), QStringLiteral("20"));
        QCOMPARE(m.comisionAgencia("1001", "L1-10"), QStringLiteral("10"));
        QCOMPARE(m.comisionAgencia("1002", "G2-5"), QString());
        QVERIFY(m.hayResultado("L1-10", "10"));
        QCOMPARE(m.resultado("L1-10", "10"), QStringLiteral("00"));
        QVERIFY(m.hayResultado("G2-5", "5"));
        QVERIFY(!m.hayResultado("L1-10", "12"));
        QCOMPARE(m.resultado("L1-10", "12"), QString());
        QCOMPARE(m.listas().resultados, (QStringList{"0", "00", "1"}));
        QCOMPARE(m.ventaBrutaBanca.size(), 4);
        QCOMPARE(m.agenciaTab2("1001"), -1);
    }

    void resultadosSoloCabecera()
    {
        Escena e(kSorteos, kBancas, kAgencias, "L1-10,10,00\n");
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(!e.m->hayResultado("L1-10", "10"));
        QVERIFY(e.m->listas().resultados.isEmpty());
    }

    void relojParpadea()
    {
        Escena e;
        e.abrir();
        QTime hora(14, 5, 8);
        e.m->reloj = [&] {
            return hora;
        };
        e.m->mhora();
        QCOMPARE(e.label("label_hora"), QStringLiteral("2;05;08 p. m."));
        QVERIFY(e.label("label_hora").contains(";05;08"));
        hora = QTime(9, 7, 9);
        e.m->mhora();
        QCOMPARE(e.label("label_hora"), QStringLiteral("9:07:09 a. m."));
        QVERIFY(e.label("label_hora").startsWith("9:07:09"));
        QVERIFY(e.esperarCarga());
    }

    void ventasSinResultado()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        const QByteArray v = "1,09:15:00,0,0,2,1001,s1,5,50.00,0,,\n"
                             "1,09:16:30,0,0,2,1002,s2,5,25.50,0,,X\n"
                             "\n"
                             "2,14:05:00,0,0,1,1003,s3,0,10,0,E,\n"
                             "9,10:00:00,0,0,7,1004,s4,00,7.25,0,,\n";
        QVERIFY(e.ventas(1, v)); // L1-10 draw 12: no result
        QCOMPARE(e.label("label_juego"), QStringLiteral("Lotto Activo 12PM"));
        QVERIFY(e.boton()->isEnabled());
        QCOMPARE(e.contenidoJugadas(),
                 (literal::Tabla{
                     {"Banca Dos", "Agencia C", "1003", "2:05 p. m.", "0", "Delfin", "10.00",
                      "Eliminado", "10", "2001"},
                     {"", "", "1004", "10:00 a. m.", "00", "Ballena", "7.25", "", "7.25", "9007"},
                     {"Banca Uno Bis", "Agencia B", "1001", "9:15 a. m.", "5", "", "50.00", "",
                      "50", "1002"},
                     {"Banca Uno Bis", "Agencia B", "1002", "9:16 a. m.", "5", "", "25.50",
                      "Pagado", "25.5", "1002"}}));
        // The deleted play is in no sum; 10 % of 50 and of 25.50 is commission.
        QCOMPARE(e.totales(),
                 (QStringList{"3", "82.75", "82.75", "7.55", "75.20", "0.00", "75.20"}));
        QCOMPARE(e.totalesS(), (QStringList{"82.75", "7.55", "75.20", "0.00", "75.20"}));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), QString());
        // Number 5 played twice: one row, "#\nJug" 2; the deleted "0" has no row.
        QTableWidget *res = e.tabla("tableWidget_resumen_numeros");
        QCOMPARE(Escena::contenido(res),
                 (literal::Tabla{{"00", "Ballena", "7.25", "1"}, {"5", "", "75.50", "2"}}));
        QCOMPARE(res->item(1, 2)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(res->item(1, 3)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
        // Per agency: the deleted play's agency has no row; the missing one has empty names.
        QTableWidget *ag = e.tabla("tableWidget_bancas");
        QCOMPARE(Escena::contenido(ag),
                 (literal::Tabla{{"Agencia B", "2", "75.50", "Banca Uno Bis", "1002"},
                                 {"", "1", "7.25", "", "9007"}}));
        QCOMPARE(ag->item(0, 1)->textAlignment(), int(Qt::AlignCenter));
        QCOMPARE(ag->item(0, 2)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(e.m->agenciaTab2("1002"), 0);
        QCOMPARE(e.m->agenciaTab2("9007"), 1);
        QCOMPARE(e.m->agenciaTab2("2001"), -1);
        // No result: nothing selected, Premios 0 and the banca totals all 0.
        QCOMPARE(e.seleccionadas(), QVector<int>{});
        QCOMPARE(e.campo("lineEdit_animal"), QString());
        QTableWidget *tb = e.tabla("tableWidget_tbancas");
        QCOMPARE(tb->rowCount(), 4);
        for (int f = 0; f < 4; ++f) {
            for (int c = 1; c < 6; ++c)
                QCOMPARE(tb->item(f, c)->text(), QStringLiteral("0.00"));
            QCOMPARE(tb->item(f, 0)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
        }
        QCOMPARE(tb->item(3, 0)->text(), QStringLiteral("Banca Uno Bis"));
        // Sorted as the user sees them.
        QCOMPARE(e.jugadas()->horizontalHeader()->sortIndicatorSection(), 4);
        QVERIFY(e.jugadas()->isSortingEnabled());
    }

    void comisionDiezSobreCincuenta()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(1, "1,09:15:00,0,0,2,1001,s1,5,50,0,,\n"));
        QCOMPARE(e.label("label_comisiont"), QStringLiteral("5.00"));
        QCOMPARE(e.campo("lineEdit_comisionS"), QStringLiteral("5.00"));
        QCOMPARE(e.label("label_ventaneta"), QStringLiteral("45.00"));
        QVERIFY(e.ventas(1, "1,09:15:00,0,0,2,1001,s1,5,50,0,,\n"
                            "1,09:15:00,0,0,2,1001,s1,5,50,0,E,\n"));
        QCOMPARE(e.label("label_comisiont"), QStringLiteral("5.00"));
    }

    void ventasConResultado()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        const QByteArray v = "1,10:00:00,0,0,1,2001,s,00,10,0,,\n"
                             "2,10:01:00,0,0,1,2002,s,0,20,0,,\n"
                             "1,10:02:00,0,0,2,2003,s,00,5,0,E,\n"
                             "3,10:03:00,0,0,9,2004,s,1,100,0,,\n";
        QVERIFY(e.ventas(0, v)); // L1-10 draw 10, result "00", factor 30
        QCOMPARE(e.totales(),
                 (QStringList{"3", "130.00", "130.00", "26.00", "104.00", "300.00", "-196.00"}));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), SesionGlobal::colorRojo);
        QCOMPARE(e.campo("lineEdit_animal"), QStringLiteral("Ballena"));
        // The winning plays (the deleted one too) are selected, cells 0-7 only.
        QCOMPARE(e.celda(1, 4), QStringLiteral("00"));
        QCOMPARE(e.celda(2, 4), QStringLiteral("00"));
        QCOMPARE(e.seleccionadas(), (QVector<int>{1, 2}));
        // Banca totals: banca "1" sums into its last entry, whose utility is red.
        QTableWidget *tb = e.tabla("tableWidget_tbancas");
        QCOMPARE(Escena::contenido(tb),
                 (literal::Tabla{{"Banca Uno", "0.00", "0.00", "0.00", "0.00", "0.00"},
                                 {"Banca Dos", "20.00", "0.00", "20.00", "0.00", "20.00"},
                                 {"Banca Tres", "100.00", "25.00", "75.00", "0.00", "75.00"},
                                 {"Banca Uno Bis", "10.00", "1.00", "9.00", "300.00", "-291.00"}}));
        QCOMPARE(tb->item(3, 5)->foreground().color(), QColor(Qt::red));
        QVERIFY(tb->item(1, 5)->foreground().color() != QColor(Qt::red));
        QCOMPARE(tb->item(3, 5)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
        QCOMPARE(e.m->ventaBrutaBanca, (QList<double>{0, 20, 100, 10}));
        QCOMPARE(e.m->utilidadBanca, (QList<double>{0, 20, 75, -291}));

        // A click on a number: its plays selected and its figures shown.
        e.m->click_numero("0");
        QCOMPARE(e.seleccionadas(), QVector<int>{0});
        QCOMPARE(e.campo("lineEdit_animal"), QStringLiteral("Delfin"));
        QCOMPARE(e.campo("lineEdit_jugadas"), QStringLiteral("1"));
        QCOMPARE(e.campo("lineEdit_monto"), QStringLiteral("20.00"));
        QCOMPARE(e.campo("lineEdit_premio"), QStringLiteral("600.00"));
        QCOMPARE(e.label("label_premios"), QStringLiteral("300.00")); // not the result
        e.m->click_numero("00");
        QCOMPARE(e.seleccionadas(), (QVector<int>{1, 2}));
        QCOMPARE(e.campo("lineEdit_jugadas"), QStringLiteral("1")); // the deleted one not
        QCOMPARE(e.campo("lineEdit_monto"), QStringLiteral("10.00"));
        QCOMPARE(e.campo("lineEdit_premio"), QStringLiteral("300.00"));
        QCOMPARE(e.label("label_premios"), QStringLiteral("300.00"));
        QCOMPARE(e.campo("lineEdit_premioS"), QStringLiteral("300.00"));
        QCOMPARE(e.label("label_utilidad"), QStringLiteral("-196.00"));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), SesionGlobal::colorRojo);
        e.m->click_numero("36");
        QCOMPARE(e.seleccionadas(), QVector<int>{});
        QCOMPARE(e.campo("lineEdit_jugadas"), QStringLiteral("0"));

        // A click in the plays table selects or deselects all plays of that number.
        QTableView *t = e.jugadas();
        QItemSelectionModel *sel = t->selectionModel();
        const QModelIndex celda = t->model()->index(3, 2); // number "1"
        sel->select(celda, QItemSelectionModel::ClearAndSelect);
        e.m->on_tableWidget_clicked(celda);
        QCOMPARE(e.seleccionadas(), QVector<int>{3});
        QCOMPARE(e.campo("lineEdit_monto"), QStringLiteral("100.00"));
        sel->select(t->model()->index(1, 0), QItemSelectionModel::Deselect);
        e.m->on_tableWidget_clicked(t->model()->index(1, 0));
        QCOMPARE(e.seleccionadas(), QVector<int>{});

        // A click in the per-number summary lists where the number was sold.
        QTableWidget *res = e.tabla("tableWidget_resumen_numeros");
        QCOMPARE(Escena::celda(res, 1, 0), QStringLiteral("00"));
        e.m->on_tableWidget_resumen_numeros_clicked(res->model()->index(1, 0));
        QTableView *donde = e.w<QTableView>("tableWidget_resumen_agencias");
        QCOMPARE(Escena::contenido(donde->model()),
                 (literal::Tabla{{"Banca Uno Bis", "Agencia A", "10.00"}}));
        QCOMPARE(donde->model()->index(0, 2).data(Qt::TextAlignmentRole).toInt(),
                 int(Qt::AlignRight | Qt::AlignVCenter));
        QVERIFY(donde->isSortingEnabled());
        QCOMPARE(donde->horizontalHeader()->sortIndicatorSection(), 0);
        QCOMPARE(e.seleccionadas(), (QVector<int>{1, 2}));
    }

    void utilidadPositivaSinRojo()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, "2,10:01:00,0,0,1,2002,s,0,20,0,,\n"));
        QCOMPARE(e.label("label_premios"), QStringLiteral("0.00"));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), QString());
        QCOMPARE(e.seleccionadas(), QVector<int>{});
        QTableWidget *tb = e.tabla("tableWidget_tbancas");
        for (int f = 0; f < tb->rowCount(); ++f)
            QVERIFY(tb->item(f, 5)->foreground().color() != QColor(Qt::red));
    }

    void equilibrioExactoSinRojo()
    {
        // 26.00 sold at 10 % commission, 0.78 of it on the result "00" at factor 30: the net
        // sale and the prizes are both 23.40 and the utility is exactly nothing (summed as
        // binary fractions it comes out a hair below zero).
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, "1,10:00:00,0,0,1,2001,s,00,0.78,0,,\n"
                            "1,10:01:00,0,0,1,2002,s,5,25.22,0,,\n"));
        QCOMPARE(e.totales(),
                 (QStringList{"2", "26.00", "26.00", "2.60", "23.40", "23.40", "0.00"}));
        QCOMPARE(e.totalesS(), (QStringList{"26.00", "2.60", "23.40", "23.40", "0.00"}));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), QString());
        QCOMPARE(e.w<QLineEdit>("lineEdit_utilidadS")->styleSheet(), QString());
        QTableWidget *tb = e.tabla("tableWidget_tbancas");
        QCOMPARE(Escena::contenido(tb).value(3),
                 (QStringList{"Banca Uno Bis", "26.00", "2.60", "23.40", "23.40", "0.00"}));
        QVERIFY(tb->item(3, 5)->foreground().color() != QColor(Qt::red));
        // The winning number's click gives the same figures.
        e.m->click_numero("00");
        QCOMPARE(e.label("label_utilidad"), QStringLiteral("0.00"));
        QCOMPARE(e.w<QLabel>("label_utilidad")->styleSheet(), QString());
        // Rows add up to the totals: 0.10 + 0.20 is 0.30, not 0.30000000000000004.
        QVERIFY(e.ventas(1, "1,10:00:00,0,0,1,2001,s,5,0.10,0,,\n"
                            "1,10:01:00,0,0,1,2002,s,5,0.20,0,,\n"
                            "1,10:02:00,0,0,1,2003,s,5,0.30,0,,\n"));
        QCOMPARE(e.m->ventaBrutaBanca.value(3), 0.0); // draw 12 has no result
        QCOMPARE(e.label("label_monto"), QStringLiteral("0.60"));
        QCOMPARE(Escena::celda(e.tabla("tableWidget_resumen_numeros"), 0, 2),
                 QStringLiteral("0.60"));
    }

    void ventasVaciasYBotonOcupado()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, "1,10:00:00,0,0,1,2001,s,00,10,0,,\n"));
        QCOMPARE(e.jugadas()->model()->rowCount(), 1);
        // While the request is out the button stays disabled.
        e.srv.demorar("monitorventas.php", 300);
        e.srv.responder("monitorventas.php", "");
        QSignalSpy mostradas(e.m.get(), &Monitor2::ventasMostradas);
        e.boton()->click();
        QVERIFY(!e.boton()->isEnabled());
        QVERIFY(mostradas.wait(10000));
        QVERIFY(e.boton()->isEnabled());
        QCOMPARE(e.jugadas()->model()->rowCount(), 0);
        for (const char *t :
             {"tableWidget_resumen_numeros", "tableWidget_bancas", "tableWidget_tbancas"})
            QCOMPARE(e.tabla(t)->rowCount(), 0);
        QCOMPARE(e.w<QTableView>("tableWidget_resumen_agencias")->model()->rowCount(), 0);
        QCOMPARE(e.totales(), (QStringList{"0", "0", "0", "0", "0", "0", "0"}));
        QCOMPARE(e.totalesS(), (QStringList{"0", "0", "0", "0", "0"}));
    }

    void cambioDeSorteoLimpia()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, "1,10:00:00,0,0,1,2001,s,00,10,0,,\n"));
        QCOMPARE(e.label("label_jugadas"), QStringLiteral("1"));
        e.srv.limpiarPeticiones();
        e.combo()->setCurrentIndex(2);
        QCOMPARE(e.jugadas()->model()->rowCount(), 0);
        QCOMPARE(e.label("label_jugadas"), QStringLiteral("0"));
        QCOMPARE(e.label("label_juego"), QString());
        QTRY_COMPARE(e.srv.peticionesA("monitorresultados.php").size(), 1);
        QCOMPARE(e.srv.peticionesA("monitorventas.php").size(), 0);
        QCOMPARE(e.m->ventaBrutaBanca, (QList<double>{0, 0, 0, 0}));
        QTRY_COMPARE(e.fin[3], 5);
    }

    void cambioDeSorteoConVentasEnCamino()
    {
        // The draw changes while its sales are on their way: they are not shown under the
        // new draw's name, and the button comes back.
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        e.srv.demorar("monitorventas.php", 1200);
        e.srv.responder("monitorventas.php", "1,10:00:00,0,0,1,2001,s,00,10,0,,\n");
        QSignalSpy mostradas(e.m.get(), &Monitor2::ventasMostradas);
        QSignalSpy descartadas(e.m.get(), &Monitor2::ventasDescartadas);
        const int antes = e.fin[4];
        e.boton()->click();
        QVERIFY(!e.boton()->isEnabled());
        e.combo()->setCurrentIndex(2);
        QTRY_COMPARE_WITH_TIMEOUT(e.fin[4], antes + 1, 15000);
        QCOMPARE(descartadas.size(), 1);
        QCOMPARE(mostradas.size(), 0);
        QVERIFY(e.boton()->isEnabled());
        QCOMPARE(e.label("label_juego"), QString());
        QCOMPARE(e.jugadas()->model()->rowCount(), 0);
        QCOMPARE(e.tabla("tableWidget_resumen_numeros")->rowCount(), 0);
        QCOMPARE(e.totales(), (QStringList{"0", "0", "0", "0", "0", "0", "0"}));
        // The same press on the new draw shows it, with its own name.
        e.srv.demorar("monitorventas.php", 0);
        e.srv.responder("monitorventas.php", "1,10:00:00,0,0,1,2001,s,1,10,0,,\n");
        e.boton()->click();
        QVERIFY(mostradas.wait(10000));
        QCOMPARE(e.label("label_juego"), QStringLiteral("Granjita 5PM"));
        QCOMPARE(e.campo("lineEdit_animal"), QStringLiteral("UnoBis"));
    }

    void cambioDeFechaConVentasEnCamino()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        e.srv.demorar("monitorventas.php", 1200);
        e.srv.responder("monitorventas.php", "1,10:00:00,0,0,1,2001,s,00,10,0,,\n");
        QSignalSpy descartadas(e.m.get(), &Monitor2::ventasDescartadas);
        const int antes = e.fin[4];
        e.boton()->click();
        e.w<QDateEdit>("dateEdit_fecha")->setDate(QDate(2026, 3, 14));
        QTRY_COMPARE_WITH_TIMEOUT(e.fin[4], antes + 1, 15000);
        QCOMPARE(e.label("label_juego"), QString());
        QCOMPARE(descartadas.size(), 1);
        QVERIFY(e.boton()->isEnabled());
        QCOMPARE(e.jugadas()->model()->rowCount(), 0);
        QCOMPARE(e.label("label_jugadas"), QStringLiteral("0"));
    }

    void ventasEsperanSusResultados()
    {
        // A result is published between two presses; the results reply of the press comes
        // after its sales reply. The sales still show the prize.
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(1, "")); // L1-10 draw 12, factor 40, no result yet
        QVERIFY(!e.m->hayResultado("L1-10", "12"));
        e.srv.responder("monitorresultados.php", kResultados + "L1-10,12,1\n");
        e.srv.demorar("monitorresultados.php", 1000);
        e.srv.responder("monitorventas.php", "1,10:00:00,0,0,1,2001,s,1,10,0,,\n"
                                             "1,10:01:00,0,0,1,2001,s,0,5,0,,\n");
        e.srv.limpiarPeticiones();
        QSignalSpy mostradas(e.m.get(), &Monitor2::ventasMostradas);
        e.boton()->click();
        QVERIFY(mostradas.wait(15000));
        QVERIFY(e.m->hayResultado("L1-10", "12"));
        QCOMPARE(e.label("label_premios"), QStringLiteral("400.00"));
        QCOMPARE(e.campo("lineEdit_animal"), QStringLiteral("Carnero"));
        QCOMPARE(e.seleccionadas(), QVector<int>{1});
        // Same requests as ever, results first.
        const QString base = "/Tornavo/TornavoSU/";
        QCOMPARE(e.srv.peticiones().size(), 2);
        QCOMPARE(e.srv.peticionesA("monitorresultados.php"),
                 QStringList{base + "monitorresultados.php?&f=2026-03-15"});
        QCOMPARE(e.srv.peticionesA("monitorventas.php"),
                 QStringList{base + "monitorventas.php?&f=2026-03-15&j=L1-10"});
    }

    void resultadosDeOtraFechaNoCuentan()
    {
        // The results of the 14th come after those of the 15th, which is the date on screen.
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        e.srv.responderCon("monitorresultados.php", [](const QString &objetivo) -> QByteArray {
            if (objetivo.endsWith("2026-03-14")) {
                QThread::msleep(1200);
                return "cabecera\nL1-10,10,1\n";
            }
            return "cabecera\nL1-10,10,2\n";
        });
        const int antes = e.fin[3];
        auto *fecha = e.w<QDateEdit>("dateEdit_fecha");
        fecha->setDate(QDate(2026, 3, 14));
        fecha->setDate(QDate(2026, 3, 16));
        QTRY_COMPARE_WITH_TIMEOUT(e.fin[3], antes + 2, 15000);
        QCOMPARE(e.m->resultado("L1-10", "10"), QStringLiteral("2"));
        // An older reply for the date on screen does not replace a newer one either.
        e.srv.responderCon("monitorresultados.php", [](const QString &) -> QByteArray {
            static int n = 0;
            if (n++ == 0) {
                QThread::msleep(1200);
                return "cabecera\nL1-10,10,viejo\n";
            }
            return "cabecera\nL1-10,10,nuevo\n";
        });
        e.m->cargarResultados();
        QTest::qWait(200);
        e.m->cargarResultados();
        QTRY_COMPARE_WITH_TIMEOUT(e.fin[3], antes + 4, 15000);
        QCOMPARE(e.m->resultado("L1-10", "10"), QStringLiteral("nuevo"));
    }

    void cerrarConPeticionesEnCamino()
    {
        // The dialog is destroyed while every channel has a request out.
        Escena e;
        e.srv.demorar("monitorsorteos2.php", 800);
        e.srv.demorar("monitorresultados.php", 800);
        e.srv.demorar("monitorventas.php", 800);
        e.abrir();
        e.boton()->click();
        QPointer<Monitor2> vivo(e.m.get());
        e.m.reset();
        QVERIFY(vivo.isNull());
        QTest::qWait(1500);
        QVERIFY(e.srv.peticionesA("monitorventas.php").size() <= 1);
    }

    void frescuraDeLaCarga()
    {
        Escena e;
        e.abrir();
        e.m->reloj = [] {
            return QTime(14, 7, 45);
        };
        QVERIFY(e.esperarCarga());
        QLabel *frescura = e.w<QLabel>("label_actualizado");
        QCOMPARE(frescura->text(), QString());
        QVERIFY(e.ventas(0, "1,10:00:00,0,0,1,2001,s,00,10,0,,\n"));
        // Qt writes the Spanish (Venezuela) "p. m." with a no-break space inside.
        QCOMPARE(frescura->text(), QString::fromUtf8("Actualizado 2:07:45 p.\u00a0m."));
        QCOMPARE(frescura->styleSheet(), QString());
        // No answer at all is not "no sales".
        QVERIFY(e.ventas(0, ""));
        QCOMPARE(frescura->text(), QStringLiteral("Sin respuesta del servidor"));
        QCOMPARE(frescura->styleSheet(), SesionGlobal::colorRojo);
        QCOMPARE(e.label("label_jugadas"), QStringLiteral("0"));
        e.m->reloj = [] {
            return QTime(9, 5, 1);
        };
        QVERIFY(e.ventas(0, "\n")); // the server's answer for a draw without sales
        QCOMPARE(frescura->text(), QString::fromUtf8("Actualizado 9:05:01 a.\u00a0m."));
        QCOMPARE(frescura->styleSheet(), QString());
        // The label sits beside the button.
        QCOMPARE(frescura->parentWidget(), e.boton()->parentWidget());
    }

    void autoPulsaActualizar()
    {
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        auto *autom = e.w<QCheckBox>("checkBox_auto");
        QCOMPARE(autom->text(), QStringLiteral("Auto"));
        QVERIFY(!autom->isChecked());
        QCOMPARE(e.m->intervaloAuto(), 30000);
        e.m->setIntervaloAuto(100);
        e.srv.responder("monitorventas.php", "1,10:00:00,0,0,1,2001,s,00,10,0,,\n");
        e.srv.limpiarPeticiones();
        QTest::qWait(500);
        QCOMPARE(e.srv.peticionesA("monitorventas.php").size(), 0); // off by default
        autom->setChecked(true);
        QTRY_VERIFY_WITH_TIMEOUT(e.srv.peticionesA("monitorventas.php").size() >= 2, 15000);
        QTRY_COMPARE_WITH_TIMEOUT(e.label("label_jugadas"), QStringLiteral("1"), 15000);
        // Each press asks for the results too.
        QVERIFY(e.srv.peticionesA("monitorresultados.php").size() >=
                e.srv.peticionesA("monitorventas.php").size());
        // While a request is out, no second one is sent.
        autom->setChecked(false);
        QTRY_VERIFY_WITH_TIMEOUT(e.boton()->isEnabled(), 15000);
        e.srv.demorar("monitorventas.php", 4000);
        const int antes = e.srv.peticionesA("monitorventas.php").size();
        autom->setChecked(true);
        QTRY_COMPARE_WITH_TIMEOUT(e.srv.peticionesA("monitorventas.php").size(), antes + 1, 15000);
        QTest::qWait(800);
        QVERIFY(!e.boton()->isEnabled());
        QCOMPARE(e.srv.peticionesA("monitorventas.php").size(), antes + 1);
        autom->setChecked(false);
        QTRY_VERIFY_WITH_TIMEOUT(e.boton()->isEnabled(), 15000);
        const int despues = e.srv.peticionesA("monitorventas.php").size();
        QTest::qWait(500);
        QCOMPARE(e.srv.peticionesA("monitorventas.php").size(), despues);
    }

    void paginaDeRiesgo()
    {
        // Draw 10 of L1-10, factor 30, result "00". Net sale 77.00 - 11.50 = 65.50.
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        const QByteArray v = "1,10:00:00,0,0,1,t1,s,00,10,0,,\n"
                             "1,10:01:00,0,0,1,t2,s,00,5,0,,\n"
                             "2,10:02:00,0,0,1,t3,s,1,20,0,,\n"
                             "1,10:03:00,0,0,1,t4,s,1,100,0,E,\n"
                             "3,10:04:00,0,0,9,t5,s,0,40,0,,\n"
                             "2,10:05:00,0,0,1,t6,s,2,2,0,,\n";
        QVERIFY(e.ventas(0, v));
        auto *limite = e.w<QSpinBox>("spinBox_limite");
        QCOMPARE(limite->value(), 100);
        QCOMPARE(e.label("label_limite"), QString::fromUtf8("Límite %"));
        QTableWidget *t = e.tabla("tableWidget_riesgo");
        QCOMPARE(encabezados(t), (QStringList{"#", "Nombre", "Jugado", "Premio si sale",
                                              "% Venta Neta", "Resultado si sale"}));
        QCOMPARE(Escena::contenido(t),
                 (literal::Tabla{{"0", "Delfin", "40.00", "1,200.00", "1832 %", "-1,134.50"},
                                 {"1", "Carnero", "20.00", "600.00", "916 %", "-534.50"},
                                 {"00", "Ballena", "15.00", "450.00", "687 %", "-384.50"},
                                 {"2", "Toro", "2.00", "60.00", "92 %", "5.50"}}));
        QCOMPARE(e.label("label_riesgo"),
                 QString::fromUtf8("3 números sobre el límite · peor: 0-Delfin paga 1,200.00 "
                                   "(1832 % de la venta neta)"));
        for (int f = 0; f < 4; ++f)
            for (int c = 0; c < 6; ++c)
                QCOMPARE(t->item(f, c)->foreground().color() == QColor(Qt::red), f < 3);
        // The published result's row is marked.
        for (int f = 0; f < 4; ++f)
            QCOMPARE(t->item(f, 0)->font().bold(), f == 2);
        QCOMPARE(t->item(2, 0)->toolTip(), QStringLiteral("Resultado del sorteo"));
        QCOMPARE(t->item(2, 2)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));

        // The chart: one bar per number in the table's order, red over the limit line.
        auto *vista = e.m->findChild<QtCharts::QChartView *>("chartView_riesgo");
        QVERIFY(vista);
        const auto series = vista->chart()->series();
        QCOMPARE(series.size(), 2);
        auto *barras = qobject_cast<QtCharts::QStackedBarSeries *>(series[0]);
        auto *linea = qobject_cast<QtCharts::QLineSeries *>(series[1]);
        QVERIFY(barras && linea);
        QtCharts::QBarSet *normal = barras->barSets().at(0), *rojo = barras->barSets().at(1);
        QCOMPARE(rojo->color(), QColor(Qt::red));
        QVERIFY(normal->color() != QColor(Qt::red));
        QCOMPARE(rojo->count(), 4);
        const QList<double> rojos = {rojo->at(0), rojo->at(1), rojo->at(2), rojo->at(3)};
        const QList<double> normales = {normal->at(0), normal->at(1), normal->at(2), normal->at(3)};
        QCOMPARE(rojos, (QList<double>{40, 20, 15, 0}));
        QCOMPARE(normales, (QList<double>{0, 0, 0, 2}));
        QCOMPARE(linea->count(), 2);
        QVERIFY(qAbs(linea->at(0).y() - 65.5 / 30) < 1e-9);
        QCOMPARE(linea->at(1).y(), linea->at(0).y());

        // Amounts sort as numbers.
        t->sortItems(2, Qt::AscendingOrder);
        QCOMPARE(Escena::celda(t, 0, 2), QStringLiteral("2.00"));
        QCOMPARE(Escena::celda(t, 1, 2), QStringLiteral("15.00"));
        t->sortItems(3, Qt::DescendingOrder);
        QCOMPARE(Escena::celda(t, 0, 3), QStringLiteral("1,200.00"));
        QCOMPARE(Escena::celda(t, 3, 3), QStringLiteral("60.00"));

        // Another limit: rows, line and summary follow.
        limite->setValue(1000);
        QCOMPARE(e.label("label_riesgo"),
                 QString::fromUtf8("1 número sobre el límite · peor: 0-Delfin paga 1,200.00 "
                                   "(1832 % de la venta neta)"));
        QVERIFY(t->item(0, 0)->foreground().color() == QColor(Qt::red));
        QVERIFY(t->item(1, 0)->foreground().color() != QColor(Qt::red));
        linea = qobject_cast<QtCharts::QLineSeries *>(vista->chart()->series().at(1));
        QVERIFY(qAbs(linea->at(0).y() - 655.0 / 30) < 1e-9);

        // The other pages show what they showed.
        QCOMPARE(e.totales(),
                 (QStringList{"5", "77.00", "77.00", "11.50", "65.50", "450.00", "-384.50"}));
        // A change of draw empties the page.
        e.combo()->setCurrentIndex(1);
        QCOMPARE(t->rowCount(), 0);
        QCOMPARE(e.label("label_riesgo"), QString());
        QCOMPARE(vista->chart()->series().size(), 0);
    }

    void resumenPasoAPasoIgualAlCargado()
    {
        // actualizar_resumen, one play at a time, writes what the bulk load writes.
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        const RepliesAleatorias r = generarReplies(7, 400);
        QVERIFY(e.ventas(0, r.ventas));
        QTableWidget *res = e.tabla("tableWidget_resumen_numeros");
        const literal::Tabla cargado = Escena::contenido(res);
        res->setSortingEnabled(false);
        res->setRowCount(0);
        for (const QString &l : QString::fromLatin1(r.ventas).split('\n', Qt::SkipEmptyParts)) {
            const QStringList f = l.split(',');
            if (f.value(10) != "E")
                e.m->actualizar_resumen(f.value(7), f.value(8).toDouble());
        }
        res->sortItems(0);
        QCOMPARE(Escena::contenido(res), cargado);
    }

    void aleatorioIgualAlLiteral_data()
    {
        QTest::addColumn<quint32>("semilla");
        QTest::addColumn<int>("indice");
        QTest::addColumn<int>("decimales");
        QTest::newRow("a") << 1u << 0 << 2;
        QTest::newRow("b") << 2u << 0 << 0;
        QTest::newRow("c") << 3u << 1 << 2;
        QTest::newRow("d") << 4u << 0 << 3;
    }

    void aleatorioIgualAlLiteral()
    {
        QFETCH(quint32, semilla);
        QFETCH(int, indice);
        QFETCH(int, decimales);
        SesionGlobal::decimales = decimales;
        const RepliesAleatorias r = generarReplies(semilla, 3000);
        Escena e(r.sorteos, r.bancas, r.agencias, r.resultados);
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(indice, r.ventas));

        const literal::Listas L = literales(r.sorteos, r.bancas, r.agencias, r.resultados);
        const QString cj = L.codigosJuego.value(indice), cs = L.codigosSorteo.value(indice);
        const literal::Vista v = literal::calcular(QString::fromLatin1(r.ventas), L, cj, cs,
                                                   L.factoresSorteo.value(indice), decimales);
        QVERIFY(v.jugadas.size() > 2900);
        QCOMPARE(e.contenidoJugadas(), v.jugadas);
        QCOMPARE(Escena::contenido(e.tabla("tableWidget_resumen_numeros")), v.resumen);
        QTableWidget *ag = e.tabla("tableWidget_bancas");
        QCOMPARE(Escena::contenido(ag), v.agencias);
        for (int f = 0; f < ag->rowCount(); ++f)
            QCOMPARE(ag->item(f, 1)->textAlignment(),
                     v.agenciaReescrita[f] ? int(Qt::AlignCenter) : 0);
        QTableWidget *tb = e.tabla("tableWidget_tbancas");
        QCOMPARE(Escena::contenido(tb), v.tbancas);
        for (int f = 0; f < tb->rowCount(); ++f)
            QCOMPARE(tb->item(f, 5)->foreground().color() == QColor(Qt::red), v.utilidadRoja[f]);
        QCOMPARE(e.totales(), v.totales);
        QCOMPARE(e.totalesS(), v.totales.mid(2));
        QCOMPARE(e.seleccionadas(), v.seleccionadas);
        QCOMPARE(e.campo("lineEdit_animal"), v.animal);

        // Every lookup, for known, repeated and unknown keys.
        const Monitor2 &m = *e.m;
        const ListasMonitor &R = m.listas();
        QCOMPARE(R.clavesAnimal, L.clavesAnimal);
        QCOMPARE(R.clavesAgencia, L.clavesAgencia);
        QCOMPARE(R.comisiones, L.comisiones);
        for (const QString &b : L.codigosBanca + QStringList{"7", "", "x"}) {
            QCOMPARE(R.banca(b), L.banca(b));
            QCOMPARE(R.indiceBanca(b), L.indiceBanca(b));
        }
        for (const QString &a : L.clavesAgencia + QStringList{"7009", ""}) {
            QCOMPARE(R.agencia(a), L.agencia(a));
            for (const char *j : {"J1-1", "J2-1", "J3"})
                QCOMPARE(R.comisionAgencia(a, j), L.comisionAgencia(a, j));
        }
        for (const char *n : {"0", "00", "1", "36", "99", ""})
            for (const char *j : {"J1-1", "J2-1"})
                QCOMPARE(R.animal(j, n), L.animal(j, n));
        for (const char *j : {"J1-1", "J2-1", "J3"})
            for (const char *s : {"1", "2", "3"}) {
                QCOMPARE(R.hayResultado(j, s), L.hayResultado(j, s));
                QCOMPARE(R.resultado(j, s), L.resultado(j, s));
            }

        // click_numero against a scan of the table in its order.
        const double factor = L.factoresSorteo.value(indice);
        for (const char *n : {"0", "00", "3", "7", "zz"}) {
            e.m->click_numero(n);
            QVector<int> filas;
            int cuenta = 0;
            qint64 suma = 0, premio = 0;
            for (int f = 0; f < v.jugadas.size(); ++f) {
                if (v.jugadas[f][4] != n)
                    continue;
                filas << f;
                if (v.jugadas[f][7] != "Eliminado") {
                    ++cuenta;
                    suma += literal::cts(v.montos[f]);
                    premio += literal::redondear(factor * literal::cts(v.montos[f]));
                }
            }
            QCOMPARE(e.seleccionadas(), filas);
            QCOMPARE(e.campo("lineEdit_jugadas"), QString::number(cuenta));
            QCOMPARE(e.campo("lineEdit_monto"), literal::enTexto(suma, decimales));
            QCOMPARE(e.campo("lineEdit_premio"), literal::enTexto(premio, decimales));
            QCOMPARE(e.campo("lineEdit_animal"), L.animal(cj, n));
        }

        // Header re-sorts by the user, each followed by clicks: the table, the selected plays
        // and the summary's list of where the number was sold match a stable sort of the
        // literal table's texts.
        literal::Tabla tabla = v.jugadas;
        QTableView *vista = e.jugadas();
        QTableView *donde = e.w<QTableView>("tableWidget_resumen_agencias");
        QTableWidget *res = e.tabla("tableWidget_resumen_numeros");
        const QList<QPair<int, Qt::SortOrder>> ordenes = {
            {1, Qt::AscendingOrder},  {6, Qt::DescendingOrder}, {3, Qt::AscendingOrder},
            {2, Qt::DescendingOrder}, {7, Qt::AscendingOrder},  {4, Qt::DescendingOrder}};
        for (const auto &o : ordenes) {
            vista->sortByColumn(o.first, o.second);
            literal::ordenar(tabla, o.first, nullptr, o.second == Qt::DescendingOrder);
            QCOMPARE(e.contenidoJugadas(), tabla);
            for (int fila : {0, tabla.size() / 2, tabla.size() - 1}) {
                const QString n = tabla[fila][4];
                QVector<int> filas;
                for (int f = 0; f < tabla.size(); ++f)
                    if (tabla[f][4] == n)
                        filas << f;
                const QModelIndex celda = vista->model()->index(fila, 5);
                vista->selectionModel()->select(celda, QItemSelectionModel::ClearAndSelect);
                e.m->on_tableWidget_clicked(celda);
                QCOMPARE(e.seleccionadas(), filas);
                vista->selectionModel()->select(celda, QItemSelectionModel::Deselect);
                e.m->on_tableWidget_clicked(celda);
                QCOMPARE(e.seleccionadas(), QVector<int>{});
            }
            for (int r = 0; r < res->rowCount(); r += 2) {
                const QString n = res->item(r, 0)->text();
                literal::Tabla lugares;
                QVector<int> filas;
                for (int f = 0; f < tabla.size(); ++f) {
                    if (tabla[f][4] != n)
                        continue;
                    filas << f;
                    if (tabla[f][7] != "Eliminado")
                        lugares << QStringList{tabla[f][0], tabla[f][1], tabla[f][6]};
                }
                literal::ordenar(lugares, 0);
                e.m->on_tableWidget_resumen_numeros_clicked(res->model()->index(r, 0));
                QCOMPARE(Escena::contenido(donde->model()), lugares);
                QCOMPARE(e.seleccionadas(), filas);
                // Its own header re-sorts too.
                donde->sortByColumn(2, Qt::DescendingOrder);
                literal::ordenar(lugares, 2, nullptr, true);
                QCOMPARE(Escena::contenido(donde->model()), lugares);
                donde->sortByColumn(1, Qt::AscendingOrder);
                literal::ordenar(lugares, 1);
                QCOMPARE(Escena::contenido(donde->model()), lugares);
            }
        }
    }

    // The sales reply is asked for in gzip and decoded while it arrives: compressed (in one
    // member or several, or as a zlib stream) it fills the tables exactly as sent plain. A
    // body that cannot be decoded whole is no answer, never a partial list of sales.
    void ventasComprimidas()
    {
        const RepliesAleatorias r = generarReplies(11, 3000);
        QByteArray ventas;
        for (const QByteArray &l : r.ventas.split('\n'))
            if (l.count(',') == 11)
                ventas +=
                    l.left(l.indexOf(',')) + l.mid(l.indexOf(',')).replace("J1-1", "L1-10") + "\n";
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, ventas));
        QCOMPARE(e.srv.cabeceraPedida("monitorventas.php", "Accept-Encoding"), QByteArray("gzip"));
        const literal::Tabla plano = e.contenidoJugadas();
        const QStringList totales = e.totales();
        QVERIFY(plano.size() > 1000);
        const literal::Tabla resumen = Escena::contenido(e.tabla("tableWidget_resumen_numeros"));

        const int mitad = ventas.indexOf('\n', ventas.size() / 2) + 1;
        const QPair<QByteArray, QByteArray> formas[] = {
            {"gzip", comprimido(ventas)},
            {"gzip", comprimido(ventas.left(mitad), false, 1) + comprimido(ventas.mid(mitad))},
            {"deflate", comprimido(ventas, true)},
        };
        for (const auto &forma : formas) {
            e.srv.codificacion("monitorventas.php", QByteArray());
            QVERIFY(e.ventas(0, QByteArray("1,10:00:00,0,0,1,x,s,0,1,0,,\n")));
            QCOMPARE(e.jugadas()->model()->rowCount(), 1);
            e.srv.codificacion("monitorventas.php", forma.first);
            QVERIFY(e.ventas(0, forma.second));
            QCOMPARE(e.contenidoJugadas(), plano);
            QCOMPARE(e.totales(), totales);
            QCOMPARE(Escena::contenido(e.tabla("tableWidget_resumen_numeros")), resumen);
            QVERIFY(e.label("label_actualizado").startsWith(QStringLiteral("Actualizado ")));
        }

        QByteArray roto = comprimido(ventas);
        for (int i = roto.size() / 2; i < roto.size() / 2 + 32; ++i)
            roto[i] = char(roto[i] ^ 0x33);
        const QByteArray gz = comprimido(ventas);
        const QPair<QByteArray, QByteArray> malas[] = {
            {"gzip", roto},
            {"gzip", gz.left(gz.size() * 2 / 3)},
            {"gzip", gz + "basura"},
            {"br", ventas},
        };
        for (const auto &mala : malas) {
            e.srv.codificacion("monitorventas.php", "gzip");
            QVERIFY(e.ventas(0, gz));
            e.srv.codificacion("monitorventas.php", mala.first);
            QCOMPARE(e.jugadas()->model()->rowCount(), plano.size());
            QVERIFY(e.ventas(0, mala.second));
            QCOMPARE(e.jugadas()->model()->rowCount(), 0);
            QCOMPARE(e.label("label_jugadas"), QStringLiteral("0"));
            QCOMPARE(e.label("label_actualizado"), QStringLiteral("Sin respuesta del servidor"));
            QVERIFY(e.boton()->isEnabled());
        }
    }

    void respuestasRotasNoRompen()
    {
        const QByteArray basura[] = {
            QByteArray("1,2,3\n,,,,,,,,,,,,,,,,\n\n\n,\nE\n", 26),
            QByteArray(5000, ','),
            QByteArray("1,25:99:99,0,0,1,t,s,0,1e400,nan,E,X\n1,x\xff\xfe,\n"),
            QByteArray("\n\n\n"),
        };
        for (const QByteArray &b : basura) {
            Escena e(b, b, b, b);
            e.abrir();
            QVERIFY(e.esperarCarga());
            if (e.combo()->count() == 0)
                continue;
            QVERIFY(e.ventas(0, b));
        }
        Escena e;
        e.abrir();
        QVERIFY(e.esperarCarga());
        QVERIFY(e.ventas(0, basura[0]));
        QVERIFY(e.ventas(0, basura[2]));
        QCOMPARE(e.jugadas()->model()->rowCount(), 2);
        QCOMPARE(e.celda(0, 3), QString()); // not a time
    }
};

// "mostrar": the dialog with data on screen, for looking at it. With TORNAVO_SERVIDOR set
// ("127.0.0.1:PORT") it talks to that server, otherwise to the fixture server with sample
// data. It opens on date TORNAVO_FECHA (yyyy-MM-dd, default today), chooses draw TORNAVO_SORTEO
// (default 0), asks for the sales, optionally clicks the summary row TORNAVO_CLIC, saves a picture
// to TORNAVO_CAPTURA and stays TORNAVO_SEGUNDOS.
int TstMonitor::correrEscenario(const QString &nombre)
{
    if (nombre != QLatin1String("mostrar"))
        return 2;
    SesionGlobal::usuario = qEnvironmentVariable("TORNAVO_USUARIO", "admin");
    SesionGlobal::decimales = 2;
    if (qEnvironmentVariableIsSet("TORNAVO_FECHA"))
        SesionGlobal::fechaActual =
            QDate::fromString(qEnvironmentVariable("TORNAVO_FECHA"), QStringLiteral("yyyy-MM-dd"));
    const RepliesAleatorias r = generarReplies(5, 300);
    Escena e(kSorteos, kBancas + "4,Banca Cuatro\n", kAgencias, kResultados);
    if (qEnvironmentVariableIsSet("TORNAVO_SERVIDOR"))
        e.dir.apuntarA(qEnvironmentVariable("TORNAVO_SERVIDOR"));
    QByteArray ventas = "1,10:00:00,0,0,1,2001,s,00,10,0,,\n2,10:01:00,0,0,1,2002,s,0,20,0,,\n"
                        "1,10:02:00,0,0,2,2003,s,00,5,0,E,\n3,10:03:00,0,0,9,2004,s,1,100,0,,X\n";
    for (const QByteArray &l : r.ventas.split('\n'))
        if (l.count(',') == 11)
            ventas += l.left(l.indexOf(',')).replace("7", "4") +
                      l.mid(l.indexOf(',')).replace("J1-1", "L1-10") + "\n";
    e.abrir();
    e.m->resize(1240, 720);
    e.m->show();
    e.esperarCarga();
    if (!e.ventas(qEnvironmentVariableIntValue("TORNAVO_SORTEO"), ventas))
        return 3;
    if (qEnvironmentVariableIsSet("TORNAVO_CLIC"))
        e.m->on_tableWidget_resumen_numeros_clicked(
            e.tabla("tableWidget_resumen_numeros")
                ->model()
                ->index(qEnvironmentVariableIntValue("TORNAVO_CLIC"), 0));
    if (qEnvironmentVariableIsSet("TORNAVO_TAB"))
        e.w<QTabWidget>("tabWidget_numeros")
            ->setCurrentIndex(qEnvironmentVariableIntValue("TORNAVO_TAB"));
    if (qEnvironmentVariableIsSet("TORNAVO_TAB2"))
        e.w<QTabWidget>("tabWidget")->setCurrentIndex(qEnvironmentVariableIntValue("TORNAVO_TAB2"));
    QTest::qWait(600);
    if (qEnvironmentVariableIsSet("TORNAVO_CAPTURA"))
        e.m->grab().save(qEnvironmentVariable("TORNAVO_CAPTURA"));
    QTest::qWait(1000 * qEnvironmentVariableIntValue("TORNAVO_SEGUNDOS"));
    return 0;
}

TORNAVO_PRUEBA_MAIN(TstMonitor)
#include "tst_monitor.moc"
