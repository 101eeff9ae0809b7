#include "premios/calcularpremios2.h"

#include "app/formato.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/respuestas.h"
#include "tests/soporte/servidorprueba.h"

#include <QBuffer>
#include <QDateEdit>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QTimer>
#include <QLineEdit>
#include <QListWidget>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QPushButton>
#include <QTableWidget>

#include <memory>

namespace {

// Games: an animal game, a game flagged "X" with three-digit results, a "T" game, and a second
// animal game that only "root" or its own code lets in.
const QByteArray sorteosFixture = respuestaSorteosPremiar(
    {"1;Lotto Activo;;0,00,01,02,05,10;Delfín,Ballena,Carnero,Toro,León,Tigre;A",
     "2;Triple A;X;;;N", "4;Terminal;;;;T", "LG;La Granjita;;05,06;Mono,Gato;A"},
    {"1;10;10AM", "1;11;11AM", "2;20;1PM", "1;12;12PM", "2;21;4PM", "4;40;7PM", "LG;50;9AM"});

const QDate hoy(2026, 11, 22);

QByteArray pngDiminuto(const QColor &color, int ancho = 64, int alto = 48)
{
    QImage imagen(ancho, alto, QImage::Format_RGB32);
    imagen.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    imagen.save(&buffer, "PNG");
    return bytes;
}

QStringList avisosVistos;

void recogerAvisos(QtMsgType tipo, const QMessageLogContext &, const QString &texto)
{
    if (tipo != QtDebugMsg && tipo != QtInfoMsg)
        avisosVistos.append(texto);
}

// Data rows of the error statuses a failing server answers with.
void codigosDeError()
{
    QTest::addColumn<int>("codigo");
    QTest::newRow("500") << 500;
    QTest::newRow("404") << 404;
}

} // namespace

// Everything one test needs: the fixture server answering the fixture's games, a working
// directory pointing at it, the session of a root user and the dialog, shown, with its games
// loaded.
struct Banco : EscenarioDialogo<calcularpremios2> {
    Banco() : EscenarioDialogo{{"sorteospremiar3.php", sorteosFixture}} {}

    bool abrir()
    {
        crear().show();
        return QTest::qWaitFor([&] { return lista()->count() > 0; }, 5000);
    }

    // The dialog open with `resultados` as the draws' results.
    bool abrirCon(const QByteArray &resultados)
    {
        srv.responder("resultadosJuego.php", resultados);
        return abrir();
    }

    // The usual start: the dialog open with `resultados` and the first game clicked.
    bool abrirEnPrimerJuego(const QByteArray &resultados)
    {
        return abrirCon(resultados) && clicJuego(0);
    }

    // The dialog open with no results yet, and 05 calculated on the first draw (10AM) with
    // `respuesta`.
    bool abrirYCalcularLeon(const QByteArray &respuesta)
    {
        return abrirCon("\n") && calcularLeon(respuesta);
    }

    // Presses `boton`, answers its confirmation with `respuesta`, and waits until `cajas` boxes
    // were seen.
    bool confirmar(QPushButton *boton, CapturaMensajes &captura, const char *respuesta, int cajas)
    {
        captura.responder(QString::fromUtf8(respuesta));
        QTest::mouseClick(boton, Qt::LeftButton);
        return captura.esperar(cajas);
    }

    // 05 calculated on draw 10AM with `calculo`, its publication confirmed and the server
    // answering `respuesta`; true once the box telling the outcome was seen.
    bool publicarLeon(CapturaMensajes &captura, const QByteArray &respuesta,
                      const QByteArray &calculo)
    {
        srv.responder("publicarPremios2.php", respuesta);
        return abrirYCalcularLeon(calculo) && confirmar(bPublicar(), captura, "Publicar", 2);
    }

    // Draw 10AM published as 05, its undo confirmed and the server answering `respuesta`; true
    // once the box telling the outcome was seen.
    bool deshacerDiez(CapturaMensajes &captura, const QByteArray &respuesta)
    {
        srv.responder("deshacerpremios.php", respuesta);
        if (!abrirEnPrimerJuego("10,05\n"))
            return false;
        clicSorteo(0);
        return confirmar(bDeshacer(), captura, "Deshacer", 2);
    }

    QListWidget *lista() const { return w<QListWidget>("listWidget_juegos"); }
    QTableWidget *sorteos() const { return w<QTableWidget>("tableWidget_sorteos"); }
    QTableWidget *calculo() const { return w<QTableWidget>("tableWidget_calculo"); }
    QLineEdit *numero() const { return w<QLineEdit>("lineEdit_numero"); }
    QLineEdit *nombre() const { return w<QLineEdit>("lineEdit_nombre"); }
    QLineEdit *total() const { return w<QLineEdit>("lineEdit_totalPremios"); }
    QLineEdit *hora() const { return w<QLineEdit>("lineEdit_hora"); }
    QLabel *calcular() const { return w<QLabel>("label_calcular"); }
    QLabel *publicar() const { return w<QLabel>("label_publicar"); }
    QLabel *imagen() const { return w<QLabel>("label_imageAnimal"); }
    QDateEdit *fecha() const { return w<QDateEdit>("dateEdit_fecha"); }
    QPushButton *bCalcular() const { return w<QPushButton>("pushButton_calcular"); }
    QPushButton *bPublicar() const { return w<QPushButton>("pushButton_publicar"); }
    QPushButton *bDeshacer() const { return w<QPushButton>("pushButton_deshacer"); }

    // A click on a game the way a user makes it; waits for the draw table's reply.
    bool clicJuego(int fila)
    {
        const int antes = srv.peticionesA("resultadosJuego.php").size();
        QListWidgetItem *item = lista()->item(fila);
        QTest::mouseClick(lista()->viewport(), Qt::LeftButton, {},
                          lista()->visualItemRect(item).center());
        if (!QTest::qWaitFor([&] { return srv.peticionesA("resultadosJuego.php").size() > antes; },
                             5000))
            return false;
        QTest::qWait(50);
        return true;
    }

    void clicSorteo(int fila)
    {
        const QRect r = sorteos()->visualRect(sorteos()->model()->index(fila, 0));
        QTest::mouseClick(sorteos()->viewport(), Qt::LeftButton, {}, r.center());
    }

    QString resultado(int fila) const
    {
        const QTableWidgetItem *celda = sorteos()->item(fila, 1);
        return celda ? celda->text() : QStringLiteral("<sin celda>");
    }

    void teclear(const QString &texto, bool enter = true)
    {
        QTest::keyClicks(numero(), texto);
        if (enter)
            QTest::keyClick(numero(), Qt::Key_Return);
    }

    // Game 0, its pending draw 11AM, number 5 → 05 (León), calculated with `respuesta`.
    bool calcularLeon(const QByteArray &respuesta)
    {
        srv.responder("calcularpremios4.php", respuesta);
        if (!clicJuego(0))
            return false;
        teclear("5");
        if (!bCalcular()->isEnabled())
            return false;
        const int antes = srv.peticionesA("calcularpremios4.php").size();
        QTest::mouseClick(bCalcular(), Qt::LeftButton);
        return QTest::qWaitFor(
                   [&] { return srv.peticionesA("calcularpremios4.php").size() > antes; }, 5000) &&
               QTest::qWaitFor([&] { return bPublicar()->isEnabled(); }, 5000);
    }

    // Enabled state of number field, calculate, undo, publish, e.g. "1000".
    QString estados() const
    {
        QString s;
        for (const QWidget *x :
             {static_cast<QWidget *>(numero()), static_cast<QWidget *>(bCalcular()),
              static_cast<QWidget *>(bDeshacer()), static_cast<QWidget *>(bPublicar())})
            s += x->isEnabled() ? QLatin1Char('1') : QLatin1Char('0');
        return s;
    }
};

class TstCalcularPremios2 : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void initTestCase() { qInstallMessageHandler(recogerAvisos); }

    void init()
    {
        reiniciarSesion();
        SesionGlobal::juegos = QStringList{"root"};
        SesionGlobal::fechaActual = hoy;
        SesionGlobal::decimales = 2;
        avisosVistos.clear();
    }

    void cleanup()
    {
        // A renamed widget or slot only shows up as a warning of the name-based wiring.
        for (const QString &aviso : qAsConst(avisosVistos))
            QVERIFY2(!aviso.contains("connectSlotsByName"), qPrintable(aviso));
    }

    void construccion()
    {
        Banco b;
        b.srv.demorar("sorteospremiar3.php", 400);
        b.crear().show();

        QCOMPARE(b.dlg->windowTitle(), QStringLiteral("Calcular Premios"));
        QCOMPARE(b.dlg->size(), QSize(1020, 700));
        QCOMPARE(b.dlg->font().pointSize(), 10);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Cargando Juegos"));
        QCOMPARE(b.fecha()->date(), hoy);
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        QVERIFY(b.lista()->isEnabled());
        QVERIFY(b.sorteos()->isEnabled());
        QVERIFY(b.fecha()->isEnabled());

        QCOMPARE(b.sorteos()->columnCount(), 2);
        QCOMPARE(b.sorteos()->horizontalHeaderItem(0)->text(), QStringLiteral("Sorteo"));
        QCOMPARE(b.sorteos()->horizontalHeaderItem(1)->text(), QStringLiteral("Resultado"));
        QCOMPARE(b.sorteos()->columnWidth(0), 80);
        QCOMPARE(b.sorteos()->columnWidth(1), 110);
        const QStringList cabeceras{"Banca", "Agencia", "Ticket", "Núm", "Jugado", "Premio"};
        const QList<int> anchos{90, 135, 70, 40, 80, 110};
        QCOMPARE(b.calculo()->columnCount(), 6);
        for (int c = 0; c < 6; ++c) {
            QCOMPARE(b.calculo()->horizontalHeaderItem(c)->text(), cabeceras[c]);
            QCOMPARE(b.calculo()->columnWidth(c), anchos[c]);
        }
        // One manager per request kind, plus the spare one.
        QCOMPARE(b.dlg->findChildren<QNetworkAccessManager *>().size(), 6);

        QTRY_COMPARE_WITH_TIMEOUT(b.lista()->count(), 4, 5000);
        QCOMPARE(b.srv.peticiones(), QStringList{"/Tornavo/TornavoSU/sorteospremiar3.php"});
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.lista()->item(0)->text(), QStringLiteral("Lotto Activo"));
        QCOMPARE(b.lista()->item(3)->text(), QStringLiteral("La Granjita"));
        QCOMPARE(b.lista()->item(0)->sizeHint(), QSize(175, 23));
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        QCOMPARE(b.dlg->focusWidget(), b.lista());

        // The dialog writes the shared game vectors, parallel to its list.
        const std::vector<QString> claves{"1", "2", "4", "LG"};
        QCOMPARE(SesionGlobal::tablaClaves, claves);
        QCOMPARE(SesionGlobal::tablaValores,
                 (std::vector<QString>{"Lotto Activo", "Triple A", "Terminal", "La Granjita"}));
        QCOMPARE(SesionGlobal::tablaAux9, (std::vector<QString>{"", "X", "", ""}));
        QCOMPARE(SesionGlobal::tablaAux10, (std::vector<QString>{"A", "N", "T", "A"}));
        QCOMPARE(b.dlg->nombreAnimal("1", "05"), QStringLiteral("León"));
        QCOMPARE(b.dlg->nombreAnimal("LG", "05"), QStringLiteral("Mono"));
        QCOMPARE(b.dlg->nombreAnimal("1", "5"), QString());
    }

    void vectoresSeRehacen()
    {
        SesionGlobal::tablaClaves = {"viejo"};
        SesionGlobal::tablaValores = {"Viejo"};
        SesionGlobal::tablaAux9 = {"X"};
        SesionGlobal::tablaAux10 = {"N"};
        Banco b;
        QVERIFY(b.abrir());
        QCOMPARE(SesionGlobal::tablaClaves.size(), std::size_t(4));
        QCOMPARE(SesionGlobal::tablaClaves.front(), QStringLiteral("1"));
    }

    void sorteosSinRespuesta()
    {
        Banco b;
        b.srv.responder("sorteospremiar3.php", "");
        CapturaMensajes captura;
        b.crear().show();
        QVERIFY(captura.esperar(1));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Error"));
        QCOMPARE(m.texto, QStringLiteral("¡ No hubo respuesta del servidor !"));
        QCOMPARE(m.icono, QMessageBox::Critical);
        QCOMPARE(b.lista()->count(), 0);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Cargando Juegos"));
    }

    void permisos_data()
    {
        QTest::addColumn<QStringList>("juegos");
        QTest::addColumn<QStringList>("vistos");
        QTest::newRow("root ve todo")
            << QStringList{"root"}
            << QStringList{"Lotto Activo", "Triple A", "Terminal", "La Granjita"};
        QTest::newRow("root primero y más")
            << QStringList{"root", "2"}
            << QStringList{"Lotto Activo", "Triple A", "Terminal", "La Granjita"};
        QTest::newRow("ROOT no es root") << QStringList{"ROOT"} << QStringList{};
        QTest::newRow("root no primero") << QStringList{"2", "root"} << QStringList{"Triple A"};
        QTest::newRow("códigos sin mayúsculas")
            << QStringList{"lg", "4"} << QStringList{"Terminal", "La Granjita"};
        QTest::newRow("vacío") << QStringList{} << QStringList{};
    }

    void permisos()
    {
        QFETCH(QStringList, juegos);
        QFETCH(QStringList, vistos);
        SesionGlobal::juegos = juegos;
        Banco b;
        b.crear().show();
        QTRY_COMPARE_WITH_TIMEOUT(b.calcular()->text(), QString(), 5000);
        QStringList mostrados;
        for (int i = 0; i < b.lista()->count(); ++i)
            mostrados << b.lista()->item(i)->text();
        QCOMPARE(mostrados, vistos);
        QCOMPARE(static_cast<int>(SesionGlobal::tablaClaves.size()), vistos.size());
    }

    void permisoTambienFiltraSorteos()
    {
        // "lg" lets in game "LG" and its draw 50.
        SesionGlobal::juegos = QStringList{"lg"};
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        QCOMPARE(b.sorteos()->rowCount(), 1);
        QCOMPARE(b.sorteos()->item(0, 0)->text(), QStringLiteral("9AM"));
    }

    void resultadosDeUnJuego()
    {
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("10,05\n12,33\n99,01\n\n"));
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php"),
                 QStringList{"/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-22&j=1"});
        QCOMPARE(b.sorteos()->rowCount(), 3);
        QCOMPARE(b.sorteos()->item(0, 0)->text(), QStringLiteral("10AM"));
        QCOMPARE(b.sorteos()->item(1, 0)->text(), QStringLiteral("11AM"));
        QCOMPARE(b.sorteos()->item(2, 0)->text(), QStringLiteral("12PM"));
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        QCOMPARE(b.resultado(1), QString());
        QCOMPARE(b.resultado(2), QStringLiteral("33-")); // unknown number: no name
        // The first pending draw is selected and its entry opened.
        QCOMPARE(b.sorteos()->currentRow(), 1);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-11AM"));
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        QCOMPARE(b.dlg->focusWidget(), b.numero());

        // A published draw opens undo instead of entry.
        b.clicSorteo(0);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-10AM"));
        QCOMPARE(b.estados(), QStringLiteral("0010"));
        b.clicSorteo(1);
        QCOMPARE(b.estados(), QStringLiteral("1000"));
    }

    void resultadosSinNombre()
    {
        Banco b;
        b.srv.responderCon("resultadosJuego.php", [](const QString &objetivo) -> QByteArray {
            if (objetivo.endsWith("j=2"))
                return "20,123\n";
            if (objetivo.endsWith("j=4"))
                return "40,05\n";
            return "\n";
        });
        QVERIFY(b.abrir());
        QVERIFY(b.clicJuego(1));
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").last(),
                 QStringLiteral("/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-22&j=2"));
        QCOMPARE(b.sorteos()->rowCount(), 2);
        QCOMPARE(b.resultado(0), QStringLiteral("123"));
        QCOMPARE(b.resultado(1), QString());
        QCOMPARE(b.sorteos()->currentRow(), 1);

        // A "T" game shows results as they stand, too.
        QVERIFY(b.clicJuego(2));
        QCOMPARE(b.sorteos()->rowCount(), 1);
        QCOMPARE(b.resultado(0), QStringLiteral("05"));
    }

    void todosPublicados()
    {
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("10,05\n11,00\n12,0\n"));
        QCOMPARE(b.sorteos()->rowCount(), 3);
        QCOMPARE(b.resultado(1), QStringLiteral("00-Ballena"));
        QCOMPARE(b.resultado(2), QStringLiteral("0-Delfín"));
        QCOMPARE(b.sorteos()->currentRow(), -1);
        QVERIFY(b.sorteos()->selectedItems().isEmpty());
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        QCOMPARE(b.calcular()->text(), QString());
    }

    void resultadosSinRespuesta()
    {
        Banco b;
        QVERIFY(b.abrirCon(""));
        CapturaMensajes captura;
        QVERIFY(b.clicJuego(0));
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
        QCOMPARE(b.sorteos()->rowCount(), 0);
        QVERIFY(b.lista()->selectedItems().isEmpty());
        QCOMPARE(b.estados(), QStringLiteral("0000"));
    }

    void fechaFuturaVuelve()
    {
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        b.teclear("5", false);
        QCOMPARE(b.numero()->text(), QStringLiteral("5"));

        b.fecha()->setDate(hoy.addDays(1));
        QCOMPARE(b.fecha()->date(), hoy);
        // Snapping back ran the clean-up: entry closed, texts gone.
        QCOMPARE(b.numero()->text(), QString());
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.estados(), QStringLiteral("0000"));

        b.fecha()->setDate(hoy.addYears(3));
        QCOMPARE(b.fecha()->date(), hoy);

        // An earlier date is kept; the draw table stays until a game is clicked again.
        b.fecha()->setDate(hoy.addDays(-2));
        QCOMPARE(b.fecha()->date(), hoy.addDays(-2));
        QCOMPARE(b.sorteos()->rowCount(), 3);
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").size(), 1);
        QVERIFY(b.clicJuego(0));
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").last(),
                 QStringLiteral("/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-20&j=1"));
    }

    void reloj()
    {
        Banco b;
        QVERIFY(b.abrir());
        horaActual = QTime(9, 4, 7);
        QTRY_COMPARE_WITH_TIMEOUT(b.hora()->text(), QStringLiteral("9:04:07 a. m."), 10000);
        QVERIFY(b.hora()->text().startsWith("9:04:07"));
        horaActual = QTime(21, 4, 8);
        QTRY_COMPARE_WITH_TIMEOUT(b.hora()->text(), QStringLiteral("9;04;08 p. m."), 10000);
        QVERIFY(b.hora()->text().startsWith("9;04;08"));
        horaActual = QTime();
    }

    void animalSeRellena()
    {
        Banco b;
        b.dir.escribir("animales/Lotto Activo/05.png", pngDiminuto(Qt::red, 200, 100));
        QVERIFY(b.abrirEnPrimerJuego("\n"));

        b.teclear("5", false);
        QCOMPARE(b.nombre()->text(), QString()); // "5" is not "05"
        QVERIFY(b.imagen()->pixmap(Qt::ReturnByValue).isNull());
        QTest::keyClick(b.numero(), Qt::Key_Return);
        QCOMPARE(b.numero()->text(), QStringLiteral("05"));
        QCOMPARE(b.nombre()->text(), QStringLiteral("León"));
        QCOMPARE(b.estados(), QStringLiteral("1100"));
        const QPixmap foto = b.imagen()->pixmap(Qt::ReturnByValue);
        QVERIFY(!foto.isNull());
        QVERIFY(foto.width() <= b.imagen()->width() && foto.height() <= b.imagen()->height());

        // "0" and "00" are looked up as typed.
        b.numero()->clear();
        b.teclear("0");
        QCOMPARE(b.numero()->text(), QStringLiteral("0"));
        QCOMPARE(b.nombre()->text(), QStringLiteral("Delfín"));
        QVERIFY(b.bCalcular()->isEnabled());
        b.numero()->clear();
        b.teclear("00");
        QCOMPARE(b.numero()->text(), QStringLiteral("00"));
        QCOMPARE(b.nombre()->text(), QStringLiteral("Ballena"));
        QVERIFY(b.bCalcular()->isEnabled());

        // While typing, the name follows each keystroke.
        b.numero()->clear();
        b.teclear("1", false);
        QCOMPARE(b.nombre()->text(), QString());
        b.teclear("0", false);
        QCOMPARE(b.nombre()->text(), QStringLiteral("Tigre"));
        QVERIFY(!b.bCalcular()->isEnabled());
    }

    void animalDesconocidoSeRechaza_data()
    {
        QTest::addColumn<QString>("tecleado");
        QTest::newRow("33") << "33";
        QTest::newRow("letras") << "ab";
        QTest::newRow("000") << "000";
    }

    void animalDesconocidoSeRechaza()
    {
        QFETCH(QString, tecleado);
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        CapturaMensajes captura;
        b.teclear(tecleado);
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Este número no es válido"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
        // Cleared, and entry open again for another try.
        QCOMPARE(b.numero()->text(), QString());
        QCOMPARE(b.nombre()->text(), QString());
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        QCOMPARE(b.dlg->focusWidget(), b.numero());
    }

    void enterVacioNoHaceNada()
    {
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        CapturaMensajes captura;
        QTest::keyClick(b.numero(), Qt::Key_Return);
        QTest::qWait(100);
        QCOMPARE(captura.cantidad(), 0);
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-10AM"));
    }

    void numeroDeTresCifras_data()
    {
        QTest::addColumn<int>("juego");
        QTest::addColumn<QString>("tecleado");
        QTest::addColumn<bool>("valido");
        QTest::addColumn<QString>("queda");
        QTest::newRow("12") << 1 << "12" << false << "";
        QTest::newRow("7 pasa a 07") << 1 << "7" << false << "";
        QTest::newRow("123") << 1 << "123" << true << "123";
        QTest::newRow("012") << 1 << "012" << true << "012";
        QTest::newRow("T 45") << 2 << "45" << false << "";
        QTest::newRow("T 045") << 2 << "045" << true << "045";
    }

    void numeroDeTresCifras()
    {
        QFETCH(int, juego);
        QFETCH(QString, tecleado);
        QFETCH(bool, valido);
        QFETCH(QString, queda);
        Banco b;
        QVERIFY(b.abrirCon("\n"));
        QVERIFY(b.clicJuego(juego));
        CapturaMensajes captura;
        b.teclear(tecleado);
        QTest::qWait(50);
        QCOMPARE(b.numero()->text(), queda);
        if (valido) {
            QCOMPARE(captura.cantidad(), 0);
            QCOMPARE(b.estados(), QStringLiteral("1100"));
            QCOMPARE(b.nombre()->text(), QString());
        } else {
            QVERIFY(captura.esperar(1));
            QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
            QCOMPARE(captura.ultimo().texto,
                     QStringLiteral("Este número no es válido\nDebe ser de 3 dígitos"));
            QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
            QCOMPARE(b.estados(), QStringLiteral("1000"));
        }
    }

    void calculoConGanadores()
    {
        Banco b;
        QVERIFY(b.abrirCon("10,01\n"));
        QVERIFY(b.calcularLeon("banca,agencia,ticket,numero,jugado,premio\n"
                               "B1,Agencia Centro,1001,05,10.00,300.00\n"
                               "\n"
                               "B2,Agencia Norte,1002,05,50,1500\n"
                               "B3,Agencia Sur,1003,05,diez,1234567.5\n"));
        QCOMPARE(
            b.srv.peticionesA("calcularpremios4.php"),
            QStringList{"/Tornavo/TornavoSU/calcularpremios4.php?&f=2026-11-22&j=1&s=11&a=05"});
        QCOMPARE(b.calculo()->rowCount(), 3);
        QCOMPARE(b.calculo()->item(0, 0)->text(), QStringLiteral("B1"));
        QCOMPARE(b.calculo()->item(0, 1)->text(), QStringLiteral("Agencia Centro"));
        QCOMPARE(b.calculo()->item(0, 2)->text(), QStringLiteral("1001"));
        QCOMPARE(b.calculo()->item(0, 3)->text(), QStringLiteral("05"));
        QCOMPARE(b.calculo()->item(0, 4)->text(), QStringLiteral("10.00"));
        QCOMPARE(b.calculo()->item(0, 5)->text(), QStringLiteral("300.00"));
        QCOMPARE(b.calculo()->item(1, 5)->text(), QStringLiteral("1,500.00"));
        QCOMPARE(b.calculo()->item(2, 4)->text(), QStringLiteral("0.00"));
        QCOMPARE(b.calculo()->item(2, 5)->text(), QStringLiteral("1,234,567.50"));
        const int derecha = Qt::AlignRight | Qt::AlignVCenter;
        QCOMPARE(b.calculo()->item(0, 4)->textAlignment(), derecha);
        QCOMPARE(b.calculo()->item(0, 5)->textAlignment(), derecha);
        QCOMPARE(b.total()->text(), QStringLiteral("1,236,367.50"));
        QCOMPARE(b.publicar()->text(), QStringLiteral("Lotto Activo-11AM => 05-León"));
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-11AM"));
        QCOMPARE(b.calcular()->styleSheet(), QString());
        QCOMPARE(b.estados(), QStringLiteral("1101"));
    }

    void calculoConCeroDecimales()
    {
        SesionGlobal::decimales = 0;
        Banco b;
        QVERIFY(b.abrirYCalcularLeon("h\nB1,A,1,05,1000,30000\n"));
        QCOMPARE(b.calculo()->item(0, 4)->text(), QStringLiteral("1,000"));
        QCOMPARE(b.total()->text(), QStringLiteral("30,000"));
    }

    void calculoSinPremios()
    {
        Banco b;
        QVERIFY(b.abrirYCalcularLeon("banca,agencia,ticket,numero,jugado,premio\n"));
        QCOMPARE(b.calculo()->rowCount(), 0);
        QCOMPARE(b.total()->text(), QStringLiteral("0.00"));
        QCOMPARE(b.calcular()->text(), QStringLiteral(" *** NO HAY PREMIOS *** "));
        QCOMPARE(b.calcular()->styleSheet(),
                 QStringLiteral("color: rgb(255, 255, 255);background-color: rgb(224, 27, 36);"));
        QCOMPARE(b.publicar()->text(), QStringLiteral("Lotto Activo-10AM => 05-León"));
        QCOMPARE(b.estados(), QStringLiteral("1101"));
        // Long status texts never widen the window.
        QTest::qWait(50);
        QCOMPARE(b.dlg->size(), QSize(1020, 700));

        // Typing again removes the banner and its colours.
        b.teclear("1", false);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-10AM"));
        QCOMPARE(b.calcular()->styleSheet(), QString());
    }

    void calculoSinRespuesta()
    {
        Banco b;
        b.srv.responder("calcularpremios4.php", "");
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        b.teclear("5");
        CapturaMensajes captura;
        QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("El servidor no responde"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Critical);
        QCOMPARE(b.estados(), QStringLiteral("1100"));
        QCOMPARE(b.publicar()->text(), QString());
        QCOMPARE(b.total()->text(), QString());
    }

    void tecleoDescartaCalculo()
    {
        Banco b;
        QVERIFY(b.abrirYCalcularLeon("h\nB1,A,1,05,10,300\n"));
        QCOMPARE(b.calculo()->rowCount(), 1);
        b.teclear("1", false);
        QCOMPARE(b.numero()->text(), QStringLiteral("051"));
        QCOMPARE(b.calculo()->rowCount(), 0);
        QCOMPARE(b.total()->text(), QString());
        QCOMPARE(b.publicar()->text(), QString());
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        QCOMPARE(b.dlg->focusWidget(), b.numero());
        // A publish click now does nothing at all.
        CapturaMensajes captura;
        QTest::mouseClick(b.bPublicar(), Qt::LeftButton);
        QTest::qWait(100);
        QCOMPARE(captura.cantidad(), 0);
    }

    void publicarCancelado()
    {
        Banco b;
        b.dir.escribir("animales/Lotto Activo/05.png", pngDiminuto(Qt::blue, 400, 300));
        QVERIFY(b.abrirYCalcularLeon("h\nB1,A,1,05,10,300\n"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bPublicar(), captura, "Cancelar", 1));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Publicar resultado"));
        QCOMPARE(m.texto, QStringLiteral("Fecha = ") + textoConsola(hoy, "dddd dd-MM-yyyy") +
                              QStringLiteral("\nSorteo = Lotto Activo 10AM\nResultado = 05-León"));
        QVERIFY(m.texto.contains(" 22-11-2026\n"));
        QCOMPARE(m.informativo, QStringLiteral("¿ Esta seguro ?"));
        // The button row is laid out by role; both buttons are there with their roles.
        QCOMPARE(m.botones.size(), 2);
        QCOMPARE(m.rolDe("Cancelar"), QMessageBox::NoRole);
        QCOMPARE(m.rolDe("Publicar"), QMessageBox::YesRole);
        QCOMPARE(m.altoIcono, 128); // the animal's picture, scaled
        QTest::qWait(200);
        QCOMPARE(b.srv.peticionesA("publicarPremios2.php").size(), 0);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-10AM"));
        QCOMPARE(b.estados(), QStringLiteral("1101"));
    }

    void publicarSinImagen()
    {
        Banco b;
        QVERIFY(b.abrirYCalcularLeon("h\n"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bPublicar(), captura, "Cancelar", 1));
        QCOMPARE(captura.ultimo().altoIcono, 0);
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Publicar resultado"));
    }

    void publicarUno()
    {
        Banco b;
        b.srv.responder("publicarPremios2.php", "1");
        // The answer is held long enough for "Publicando..." to be seen on a busy machine.
        b.srv.demorar("publicarPremios2.php", 3000);
        QVERIFY(b.abrirYCalcularLeon("h\nB1,A,1,05,10,300\n"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bPublicar(), captura, "Publicar", 1));
        QTRY_COMPARE_WITH_TIMEOUT(b.calcular()->text(), QStringLiteral("Publicando..."), 10000);
        QVERIFY(captura.esperar(2, 20000));
        QCOMPARE(
            b.srv.peticionesA("publicarPremios2.php"),
            QStringList{"/Tornavo/TornavoSU/publicarPremios2.php?&f=2026-11-22&j=1&s=10&a=05"});
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Exito"));
        QCOMPARE(m.texto, QStringLiteral("Se publicó exitosamente el resultado"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/like-crash.png"));
        QCOMPARE(m.altoIcono, 128);
        QCOMPARE(m.botones, QStringList{"Aceptar"});
        QCOMPARE(m.anchosBotones.value(0), 80);
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        // The form is cleared afterwards.
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        QCOMPARE(b.numero()->text(), QString());
        QCOMPARE(b.nombre()->text(), QString());
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.publicar()->text(), QString());
        QCOMPARE(b.total()->text(), QString());
        QCOMPARE(b.calculo()->rowCount(), 0);
        // The row now counts as published: a click opens undo.
        b.clicSorteo(0);
        QCOMPARE(b.estados(), QStringLiteral("0010"));
    }

    void publicarOtroTextoEsExito()
    {
        Banco b;
        CapturaMensajes captura;
        QVERIFY(b.publicarLeon(captura, "ok\n", "h\n"));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Exito"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
    }

    void publicarCero()
    {
        Banco b;
        CapturaMensajes captura;
        QVERIFY(b.publicarLeon(captura, "0", "h\nB1,A,1,05,10,300\n"));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Atención"));
        QCOMPARE(m.texto, QStringLiteral("Este sorteo ya fué publicado"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/warning-crash.png"));
        QCOMPARE(m.altoIcono, 128);
        QCOMPARE(m.botones, QStringList{"Aceptar"});
        QTest::qWait(50);
        QCOMPARE(b.srv.peticionesA("publicarPremios2.php").size(), 1);
        // The table is unchanged and the calculation stays on screen.
        QCOMPARE(b.resultado(0), QString());
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.calculo()->rowCount(), 1);
        QCOMPARE(b.estados(), QStringLiteral("1101"));
    }

    void publicarSinRespuesta()
    {
        Banco b;
        CapturaMensajes captura;
        QVERIFY(b.publicarLeon(captura, "", "h\n"));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Error"));
        QCOMPARE(m.texto,
                 QStringLiteral(
                     "El servidor no respondio\nNo se pudieron publicar los premios/resultado"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/error-crash.png"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QString());
        QCOMPARE(b.calcular()->text(), QStringLiteral("Publicando..."));
    }

    void publicarJuegoSinNombres()
    {
        Banco b;
        b.srv.responder("calcularpremios4.php", "h\n");
        b.srv.responder("publicarPremios2.php", "1");
        QVERIFY(b.abrirCon("\n"));
        QVERIFY(b.clicJuego(1));
        b.teclear("123");
        QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(b.bPublicar()->isEnabled(), 5000);
        QCOMPARE(
            b.srv.peticionesA("calcularpremios4.php").last(),
            QStringLiteral("/Tornavo/TornavoSU/calcularpremios4.php?&f=2026-11-22&j=2&s=20&a=123"));
        QCOMPARE(b.publicar()->text(), QStringLiteral("Triple A-1PM => 123"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bPublicar(), captura, "Publicar", 2));
        QCOMPARE(captura.vistos().at(0).texto.section('\n', 2), QStringLiteral("Resultado = 123"));
        QCOMPARE(captura.vistos().at(0).texto.section('\n', 1, 1),
                 QStringLiteral("Sorteo = Triple A 1PM"));
        QCOMPARE(
            b.srv.peticionesA("publicarPremios2.php").last(),
            QStringLiteral("/Tornavo/TornavoSU/publicarPremios2.php?&f=2026-11-22&j=2&s=20&a=123"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("123"));
    }

    void deshacerCancelado()
    {
        Banco b;
        b.dir.escribir("animales/Lotto Activo/05.png", pngDiminuto(Qt::green, 300, 256));
        QVERIFY(b.abrirEnPrimerJuego("10,05\n11,01\n12,02\n"));
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        b.clicSorteo(0);
        QCOMPARE(b.estados(), QStringLiteral("0010"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bDeshacer(), captura, "Cancelar", 1));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Deshacer resultado"));
        QCOMPARE(m.texto, QStringLiteral("Lotto Activo 10AM = 05-León"));
        QCOMPARE(m.informativo, QStringLiteral("¿ Esta seguro de deshacer esta premiación ?"));
        QCOMPARE(m.botones.size(), 2);
        QCOMPARE(m.rolDe("Cancelar"), QMessageBox::NoRole);
        QCOMPARE(m.rolDe("Deshacer"), QMessageBox::YesRole);
        QCOMPARE(m.altoIcono, 128); // picture of "05", the part before "-"
        QTest::qWait(200);
        QCOMPARE(b.srv.peticionesA("deshacerpremios.php").size(), 0);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        QCOMPARE(b.estados(), QStringLiteral("0010"));

        // Another published row without a picture file: a box without picture.
        b.clicSorteo(1);
        QVERIFY(b.confirmar(b.bDeshacer(), captura, "Cancelar", 2));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Lotto Activo 11AM = 01-Carnero"));
        QCOMPARE(captura.ultimo().altoIcono, 0);
        QTest::qWait(100);
        QCOMPARE(b.srv.peticionesA("deshacerpremios.php").size(), 0);
    }

    void deshacerUno()
    {
        Banco b;
        b.srv.responder("deshacerpremios.php", "1");
        QVERIFY(b.abrirEnPrimerJuego("10,05\n"));
        b.clicSorteo(0);
        QCOMPARE(b.estados(), QStringLiteral("0010"));
        CapturaMensajes captura;
        QVERIFY(b.confirmar(b.bDeshacer(), captura, "Deshacer", 2));
        QCOMPARE(b.srv.peticionesA("deshacerpremios.php"),
                 QStringList{"/Tornavo/TornavoSU/deshacerpremios.php?&f=2026-11-22&j=1&s=10"});
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Exito"));
        QCOMPARE(m.texto, QStringLiteral("Se deshizo el resultado"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/like-crash.png"));
        QCOMPARE(m.botones, QStringList{"Aceptar"});
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QString());
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.estados(), QStringLiteral("0000"));
        // Pending again: a click opens entry.
        b.clicSorteo(0);
        QCOMPARE(b.estados(), QStringLiteral("1000"));
    }

    void deshacerCero()
    {
        Banco b;
        CapturaMensajes captura;
        QVERIFY(b.deshacerDiez(captura, "0"));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Atención"));
        QCOMPARE(m.texto, QStringLiteral("Algo salio mal, vuelva a intentarlo"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/warning-crash.png"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        QCOMPARE(b.calcular()->text(), QString());
        QCOMPARE(b.estados(), QStringLiteral("0010"));
    }

    void deshacerSinRespuesta()
    {
        Banco b;
        CapturaMensajes captura;
        QVERIFY(b.deshacerDiez(captura, ""));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Error"));
        QCOMPARE(m.texto,
                 QStringLiteral(
                     "El servidor no respondio\nNo se pudieron publicar los premios/resultado"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/error-crash.png"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        QCOMPARE(b.calcular()->text(), QString());
    }

    void respuestasRarasNoRompen()
    {
        Banco b;
        b.srv.responder("sorteospremiar3.php", QByteArray("1;Lotto\0basura", 14));
        QVERIFY(b.abrirCon(",,,\n;;;\nx\n"));
        QCOMPARE(b.lista()->count(), 1);
        QVERIFY(b.clicJuego(0));
        QCOMPARE(b.sorteos()->rowCount(), 0);
        QCOMPARE(b.estados(), QStringLiteral("0000"));
    }

    void errorHttpAlPublicar_data() { codigosDeError(); }

    void errorHttpAlPublicar()
    {
        // An error page is no "published": the row stays pending and the error is told.
        QFETCH(int, codigo);
        Banco b;
        b.srv.estado("publicarPremios2.php", codigo);
        CapturaMensajes captura;
        QVERIFY(b.publicarLeon(captura, "<html><body>Error interno</body></html>",
                               "h\nB1,A,1,05,10,300\n"));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto,
                 QStringLiteral(
                     "El servidor no respondio\nNo se pudieron publicar los premios/resultado"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QString());
        QCOMPARE(captura.cantidad(), 2);
    }

    void errorHttpAlDeshacer_data() { codigosDeError(); }

    void errorHttpAlDeshacer()
    {
        QFETCH(int, codigo);
        Banco b;
        b.srv.estado("deshacerpremios.php", codigo);
        CapturaMensajes captura;
        QVERIFY(b.deshacerDiez(captura, "<html>Not Found</html>"));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QTest::qWait(50);
        QCOMPARE(b.resultado(0), QStringLiteral("05-León"));
        QCOMPARE(b.estados(), QStringLiteral("0010"));
    }

    void errorHttpAlCargar_data()
    {
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<QString>("texto");
        QTest::newRow("juegos") << "sorteospremiar3.php"
                                << "¡ No hubo respuesta del servidor !";
        QTest::newRow("sorteos") << "resultadosJuego.php"
                                 << "No hubo respuesta del servidor";
        QTest::newRow("calculo") << "calcularpremios4.php"
                                 << "El servidor no responde";
    }

    void errorHttpAlCargar()
    {
        QFETCH(QString, endpoint);
        QFETCH(QString, texto);
        Banco b;
        b.srv.responder("resultadosJuego.php", "\n");
        b.srv.responder("calcularpremios4.php", "h\nB1,A,1,05,10,300\n");
        b.srv.estado(endpoint, 500);
        CapturaMensajes captura;
        if (endpoint == QLatin1String("sorteospremiar3.php")) {
            b.crear().show();
        } else {
            QVERIFY(b.abrir());
            QVERIFY(b.clicJuego(0));
            if (endpoint == QLatin1String("calcularpremios4.php")) {
                b.teclear("5");
                QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
            }
        }
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Error"));
        QCOMPARE(captura.ultimo().texto, texto);
        QTest::qWait(50);
        QVERIFY(!b.bPublicar()->isEnabled());
        QCOMPARE(b.calculo()->rowCount(), 0);
    }

    void calculoTardioNoHabilitaPublicar()
    {
        // 05 is calculated slowly; meanwhile the entry becomes 01. The late answer belongs to
        // 05 and must neither show its winners nor let "Publicar" publish 01.
        Banco b;
        b.srv.responder("resultadosJuego.php", "\n");
        b.srv.responderCon("calcularpremios4.php", [](const QString &objetivo) -> QByteArray {
            if (objetivo.endsWith("&a=05")) {
                QThread::msleep(800);
                return "h\nB1,A,1,05,10,300\n";
            }
            return "h\nB2,B,2,01,20,600\n";
        });
        QVERIFY(b.abrir());
        QVERIFY(b.clicJuego(0));
        b.teclear("5");
        QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
        QVERIFY(QTest::qWaitFor(
            [&] { return b.srv.peticionesA("calcularpremios4.php").size() == 1; }, 5000));
        b.numero()->clear();
        b.teclear("1");
        QCOMPARE(b.numero()->text(), QStringLiteral("01"));
        QVERIFY(b.esperarAtendida("a=05"));
        QCOMPARE(b.calculo()->rowCount(), 0);
        QVERIFY(!b.bPublicar()->isEnabled());
        QCOMPARE(b.publicar()->text(), QString());
        QCOMPARE(b.total()->text(), QString());

        // Calculating 01 shows 01's winners and publishes 01.
        QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
        QVERIFY(QTest::qWaitFor([&] { return b.bPublicar()->isEnabled(); }, 5000));
        QCOMPARE(b.calculo()->item(0, 3)->text(), QStringLiteral("01"));
        CapturaMensajes captura;
        captura.responder("Publicar");
        b.srv.responder("publicarPremios2.php", "1");
        QTest::mouseClick(b.bPublicar(), Qt::LeftButton);
        QVERIFY(captura.esperar(2));
        QCOMPARE(
            b.srv.peticionesA("publicarPremios2.php"),
            QStringList{"/Tornavo/TornavoSU/publicarPremios2.php?&f=2026-11-22&j=1&s=10&a=01"});
    }

    void publicarSinCalculoVigenteNoEnvia()
    {
        // The button is the only way to publish, and only what was calculated is published.
        Banco b;
        QVERIFY(b.abrirYCalcularLeon("h\nB1,A,1,05,10,300\n"));
        // Another draw is picked: what was calculated no longer matches the screen.
        b.clicSorteo(2);
        CapturaMensajes captura;
        captura.responder("Publicar");
        QMetaObject::invokeMethod(b.dlg.get(), "on_pushButton_publicar_clicked");
        QTest::qWait(100);
        QCOMPARE(captura.cantidad(), 0);
        QVERIFY(b.srv.peticionesA("publicarPremios2.php").isEmpty());
    }

    void resultadosFueraDeOrden()
    {
        // Game 1's draws answer slowly, game 2's at once; the user is on game 2 when game 1's
        // answer comes. It must not mark game 2's draws.
        Banco b;
        b.srv.responderCon("resultadosJuego.php", [](const QString &objetivo) -> QByteArray {
            if (objetivo.endsWith("&j=1")) {
                QThread::msleep(800);
                return "20,999\n21,888\n";
            }
            return "20,123\n";
        });
        QVERIFY(b.abrir());
        QVERIFY(b.clicJuego(0));
        QVERIFY(b.clicJuego(1));
        QVERIFY(b.esperarAtendida("j=1"));
        QVERIFY(b.esperarAtendida("j=2"));
        QTest::qWait(50);
        QCOMPARE(b.sorteos()->rowCount(), 2);
        QCOMPARE(b.sorteos()->item(0, 0)->text(), QStringLiteral("1PM"));
        QCOMPARE(b.resultado(0), QStringLiteral("123"));
        QCOMPARE(b.resultado(1), QString());
        // The pending draw of game 2 is the one open for entry.
        QCOMPARE(b.sorteos()->currentRow(), 1);
        QCOMPARE(b.calcular()->text(), QStringLiteral("Triple A-4PM"));
    }

    void tecladoCargaElJuego()
    {
        // Arrow keys in the game list load the game's draws exactly as a click does, so the
        // draw sent with "Calcular" always belongs to the game sent with it.
        Banco b;
        b.srv.responder("calcularpremios4.php", "h\n");
        QVERIFY(b.abrirEnPrimerJuego("\n"));
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").size(), 1);
        b.lista()->setFocus();
        QTest::keyClick(b.lista(), Qt::Key_Down);
        QVERIFY(QTest::qWaitFor(
            [&] { return b.srv.peticionesA("resultadosJuego.php").size() == 2; }, 5000));
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").value(1),
                 QStringLiteral("/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-22&j=2"));
        QVERIFY(b.esperarAtendida("j=2"));
        QCOMPARE(b.sorteos()->rowCount(), 2);
        QCOMPARE(b.sorteos()->item(0, 0)->text(), QStringLiteral("1PM"));
        b.teclear("123");
        QVERIFY(b.bCalcular()->isEnabled());
        QTest::mouseClick(b.bCalcular(), Qt::LeftButton);
        QVERIFY(QTest::qWaitFor(
            [&] { return b.srv.peticionesA("calcularpremios4.php").size() == 1; }, 5000));
        QCOMPARE(
            b.srv.peticionesA("calcularpremios4.php").value(0),
            QStringLiteral("/Tornavo/TornavoSU/calcularpremios4.php?&f=2026-11-22&j=2&s=20&a=123"));
        // A mouse click still sends one request, not two.
        QVERIFY(b.clicJuego(0));
        QTest::qWait(100);
        QCOMPARE(b.srv.peticionesA("resultadosJuego.php").size(), 3);
    }

    void tecladoEnSorteosPublicadoCierraEntrada()
    {
        // Draw 10 is published, 11 pending and open for entry. Moving up to 10 with the
        // keyboard must close entry and offer undo, as a click on it does.
        Banco b;
        QVERIFY(b.abrirEnPrimerJuego("10,05\n"));
        QCOMPARE(b.sorteos()->currentRow(), 1);
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        b.sorteos()->setFocus();
        QTest::keyClick(b.sorteos(), Qt::Key_Up);
        QCOMPARE(b.sorteos()->currentRow(), 0);
        QCOMPARE(b.estados(), QStringLiteral("0010"));
        QTest::keyClick(b.sorteos(), Qt::Key_Down);
        QCOMPARE(b.estados(), QStringLiteral("1000"));
        QCOMPARE(b.calcular()->text(), QStringLiteral("Lotto Activo-11AM"));
    }

    // Presses `tecla` on the next confirmation box, after noting its default button.
    static void teclaEnLaConfirmacion(int tecla, QString *predeterminado)
    {
        auto *t = new QTimer;
        QObject::connect(t, &QTimer::timeout, [t, tecla, predeterminado] {
            auto *caja = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!caja || !caja->isVisible())
                return;
            t->stop();
            t->deleteLater();
            *predeterminado = caja->defaultButton() ? caja->defaultButton()->text() : QString();
            QTest::keyClick(caja, Qt::Key(tecla));
        });
        t->start(10);
    }

    void teclaEnConfirmacionNoEnvia_data()
    {
        QTest::addColumn<bool>("publicar");
        QTest::addColumn<int>("tecla");
        QTest::newRow("Publicar, Return") << true << int(Qt::Key_Return);
        QTest::newRow("Publicar, Escape") << true << int(Qt::Key_Escape);
        QTest::newRow("Deshacer, Return") << false << int(Qt::Key_Return);
        QTest::newRow("Deshacer, Escape") << false << int(Qt::Key_Escape);
    }

    void teclaEnConfirmacionNoEnvia()
    {
        // A stray Return (or Escape) on a confirmation is "Cancelar": nothing is sent.
        QFETCH(bool, publicar);
        QFETCH(int, tecla);
        Banco b;
        QVERIFY(b.abrirCon(publicar ? "\n" : "10,05\n"));
        if (publicar) {
            QVERIFY(b.calcularLeon("h\nB1,A,1,05,10,300\n"));
        } else {
            QVERIFY(b.clicJuego(0));
            b.clicSorteo(0);
        }
        QString predeterminado;
        teclaEnLaConfirmacion(tecla, &predeterminado);
        QTest::mouseClick(publicar ? b.bPublicar() : b.bDeshacer(), Qt::LeftButton);
        QTRY_COMPARE(predeterminado, QStringLiteral("Cancelar"));
        QTest::qWait(300);
        QVERIFY(b.srv.peticionesA("publicarPremios2.php").isEmpty());
        QVERIFY(b.srv.peticionesA("deshacerpremios.php").isEmpty());
        QVERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(b.estados(), publicar ? QStringLiteral("1101") : QStringLiteral("0010"));
    }
};

TORNAVO_PRUEBA_MAIN(TstCalcularPremios2)
#include "tst_calcularpremios2.moc"
