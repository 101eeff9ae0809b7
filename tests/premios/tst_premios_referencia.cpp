#include "premios/calcularpremios2.h"

#include "app/formato.h"
#include "app/red.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorreferencia.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QTableWidget>

#include <memory>

// The prize calculation against the reference server and its demo network: calculate, publish,
// publish again from a second window, undo, each time checked against what the server reloads.
class TstPremiosReferencia : public QObject {
    Q_OBJECT

    template <typename T> static T *w(calcularpremios2 *dlg, const char *nombre)
    {
        T *widget = dlg->findChild<T *>(QString::fromLatin1(nombre));
        if (!widget)
            qFatal("no widget %s", nombre);
        return widget;
    }

    // One GET from the test itself; the reply text, or "<sin respuesta>".
    static QString pedir(const QString &ruta)
    {
        QNetworkAccessManager nam;
        QString texto;
        bool llego = false;
        connect(&nam, &QNetworkAccessManager::finished, [&](QNetworkReply *r) {
            texto = red::textoRespuesta(r);
            r->deleteLater();
            llego = true;
        });
        red::get(&nam, ruta);
        if (!QTest::qWaitFor([&] { return llego; }, 10000))
            return QStringLiteral("<sin respuesta>");
        return texto;
    }

    static std::unique_ptr<calcularpremios2> abrir()
    {
        auto dlg = std::make_unique<calcularpremios2>();
        dlg->show();
        if (!QTest::qWaitFor(
                [&] { return w<QListWidget>(dlg.get(), "listWidget_juegos")->count() > 0; }, 10000))
            qWarning("the game list did not arrive");
        return dlg;
    }

    // Clicks the game and waits for its draw table.
    static bool clicJuego(calcularpremios2 *dlg, int fila)
    {
        auto *lista = w<QListWidget>(dlg, "listWidget_juegos");
        auto *tabla = w<QTableWidget>(dlg, "tableWidget_sorteos");
        tabla->setRowCount(0);
        QTest::mouseClick(lista->viewport(), Qt::LeftButton, {},
                          lista->visualItemRect(lista->item(fila)).center());
        return QTest::qWaitFor([&] { return tabla->rowCount() > 0; }, 10000);
    }

    static QString celda(calcularpremios2 *dlg, int fila, int columna)
    {
        const QTableWidgetItem *c =
            w<QTableWidget>(dlg, "tableWidget_sorteos")->item(fila, columna);
        return c ? c->text() : QString();
    }

    // Types the number into the selected pending draw and calculates.
    static bool calcular(calcularpremios2 *dlg, const QString &numero)
    {
        auto *edit = w<QLineEdit>(dlg, "lineEdit_numero");
        QTest::keyClicks(edit, numero);
        QTest::keyClick(edit, Qt::Key_Return);
        auto *boton = w<QPushButton>(dlg, "pushButton_calcular");
        if (!boton->isEnabled())
            return false;
        QTest::mouseClick(boton, Qt::LeftButton);
        return QTest::qWaitFor(
            [&] { return w<QPushButton>(dlg, "pushButton_publicar")->isEnabled(); }, 10000);
    }

    // The reference server with its demo network, its clock at 14:05 of today: the 14:00 draw
    // of the first game is the first one waiting for its result.
    static QStringList demoALas1405()
    {
        return {QStringLiteral("--demo"), QStringLiteral("--ahora"),
                QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")) +
                    QStringLiteral(" 14:05:00")};
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init()
    {
        reiniciarSesion();
        SesionGlobal::juegos = QStringList{"root"};
        SesionGlobal::decimales = 2;
        SesionGlobal::fechaActual = QDate::currentDate();
    }

    void calcularPublicarYDeshacer()
    {
        ServidorReferencia ref(demoALas1405());
        QVERIFY2(ref.iniciado(), qPrintable(ref.salida()));
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        // The server only takes changes from an address that logged in.
        QVERIFY(pedir("validarUser.php?u=admin&p=tornavo1").startsWith("1\n"));
        // Any unexpected box is recorded and closed instead of blocking the test.
        CapturaMensajes captura;

        // Two windows on the same draw, as two operators would have them.
        auto a = abrir();
        auto b = abrir();
        auto *lista = w<QListWidget>(a.get(), "listWidget_juegos");
        QVERIFY(lista->count() > 0);
        const QString juego = lista->item(0)->text();
        QVERIFY(clicJuego(a.get(), 0));
        QVERIFY(clicJuego(b.get(), 0));
        auto *tablaA = w<QTableWidget>(a.get(), "tableWidget_sorteos");
        const int fila = tablaA->currentRow();
        QVERIFY(fila >= 0);
        QCOMPARE(w<QTableWidget>(b.get(), "tableWidget_sorteos")->currentRow(), fila);
        QCOMPARE(celda(a.get(), fila, 1), QString());
        const QString etiqueta = celda(a.get(), fila, 0);
        QCOMPARE(w<QLabel>(a.get(), "label_calcular")->text(), juego + "-" + etiqueta);

        // Calculation: the demo's sales of the day give winners for 10 in some draws, none in
        // others; either way publishing is open and the total is the sum of the rows.
        QVERIFY(calcular(a.get(), "10"));
        QVERIFY(calcular(b.get(), "10"));
        auto *calculo = w<QTableWidget>(a.get(), "tableWidget_calculo");
        double suma = 0;
        for (int r = 0; r < calculo->rowCount(); ++r) {
            QCOMPARE(calculo->item(r, 3)->text(), QStringLiteral("10"));
            suma += calculo->item(r, 5)->text().remove(',').toDouble();
        }
        QCOMPARE(w<QLineEdit>(a.get(), "lineEdit_totalPremios")->text(), formatoMonto(suma, 2));
        QCOMPARE(w<QLabel>(a.get(), "label_publicar")->text().section(" => ", 1),
                 QStringLiteral("10-Tigre"));

        QVERIFY2(captura.cantidad() == 0, qPrintable(captura.ultimo().texto));
        captura.responder("Publicar");
        QTest::mouseClick(w<QPushButton>(a.get(), "pushButton_publicar"), Qt::LeftButton);
        QVERIFY(captura.esperar(2, 10000));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Exito"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Se publicó exitosamente el resultado"));
        QTest::qWait(50);
        QCOMPARE(celda(a.get(), fila, 1), QStringLiteral("10-Tigre"));

        // The server now marks the draw published.
        QVERIFY(clicJuego(a.get(), 0));
        QCOMPARE(celda(a.get(), fila, 1), QStringLiteral("10-Tigre"));
        QVERIFY(tablaA->currentRow() != fila);

        // The second window still had it pending: the server refuses a second publication.
        captura.olvidar();
        captura.responder("Publicar");
        QTest::mouseClick(w<QPushButton>(b.get(), "pushButton_publicar"), Qt::LeftButton);
        QVERIFY(captura.esperar(2, 10000));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Atención"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Este sorteo ya fué publicado"));
        QTest::qWait(50);
        QCOMPARE(celda(b.get(), fila, 1), QString());

        // The second window reloads and sees it published as well.
        QVERIFY(clicJuego(b.get(), 0));
        QCOMPARE(celda(b.get(), fila, 1), QStringLiteral("10-Tigre"));

        // Undo from the first window.
        const QRect r = tablaA->visualRect(tablaA->model()->index(fila, 0));
        QTest::mouseClick(tablaA->viewport(), Qt::LeftButton, {}, r.center());
        auto *deshacer = w<QPushButton>(a.get(), "pushButton_deshacer");
        QVERIFY(deshacer->isEnabled());
        captura.olvidar();
        captura.responder("Deshacer");
        QTest::mouseClick(deshacer, Qt::LeftButton);
        QVERIFY(captura.esperar(2, 10000));
        QCOMPARE(captura.vistos().at(0).texto, juego + " " + etiqueta + " = 10-Tigre");
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Exito"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Se deshizo el resultado"));
        QTest::qWait(50);
        QCOMPARE(celda(a.get(), fila, 1), QString());
        QVERIFY(!deshacer->isEnabled());

        // Reloaded from the server: pending again, and again the first pending draw.
        QVERIFY(clicJuego(a.get(), 0));
        QCOMPARE(celda(a.get(), fila, 1), QString());
        QCOMPARE(tablaA->currentRow(), fila);
        QVERIFY(w<QLineEdit>(a.get(), "lineEdit_numero")->isEnabled());

        // The second window still shows it published; its undo finds nothing to undo.
        auto *tablaB = w<QTableWidget>(b.get(), "tableWidget_sorteos");
        QTest::mouseClick(tablaB->viewport(), Qt::LeftButton, {},
                          tablaB->visualRect(tablaB->model()->index(fila, 0)).center());
        captura.olvidar();
        captura.responder("Deshacer");
        QTest::mouseClick(w<QPushButton>(b.get(), "pushButton_deshacer"), Qt::LeftButton);
        QVERIFY(captura.esperar(2, 10000));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Atención"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Algo salio mal, vuelva a intentarlo"));
        QTest::qWait(50);
        QCOMPARE(celda(b.get(), fila, 1), QStringLiteral("10-Tigre"));
    }

    // Typed as "5", the number is padded to "05" by the dialog; the server knows the animal by
    // that number, so it is calculated, published and shown again as "05-León".
    void cincoEsLeon()
    {
        ServidorReferencia ref(demoALas1405());
        QVERIFY2(ref.iniciado(), qPrintable(ref.salida()));
        DirectorioTrabajo dir;
        dir.apuntarA(ref.direccion());
        QVERIFY(pedir("validarUser.php?u=admin&p=tornavo1").startsWith("1\n"));
        CapturaMensajes captura;

        auto dlg = abrir();
        QVERIFY(clicJuego(dlg.get(), 0));
        auto *tabla = w<QTableWidget>(dlg.get(), "tableWidget_sorteos");
        const int fila = tabla->currentRow();
        QVERIFY(fila >= 0);
        QCOMPARE(celda(dlg.get(), fila, 0), QStringLiteral("02:00 PM"));
        QCOMPARE(celda(dlg.get(), fila, 1), QString());

        QVERIFY(calcular(dlg.get(), "5"));
        QVERIFY2(captura.cantidad() == 0, qPrintable(captura.ultimo().texto));
        QCOMPARE(w<QLineEdit>(dlg.get(), "lineEdit_numero")->text(), QStringLiteral("05"));
        QCOMPARE(w<QLineEdit>(dlg.get(), "lineEdit_nombre")->text(), QStringLiteral("León"));
        QCOMPARE(w<QLabel>(dlg.get(), "label_publicar")->text().section(" => ", 1),
                 QStringLiteral("05-León"));
        // The winners of "05" the server lists are the plays on "05".
        auto *calculo = w<QTableWidget>(dlg.get(), "tableWidget_calculo");
        for (int r = 0; r < calculo->rowCount(); ++r)
            QCOMPARE(calculo->item(r, 3)->text(), QStringLiteral("05"));

        captura.responder("Publicar");
        QTest::mouseClick(w<QPushButton>(dlg.get(), "pushButton_publicar"), Qt::LeftButton);
        QVERIFY(captura.esperar(2, 10000));
        QCOMPARE(captura.ultimo().titulo, QStringLiteral("Exito"));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Se publicó exitosamente el resultado"));
        QTest::qWait(50);
        QCOMPARE(celda(dlg.get(), fila, 1), QStringLiteral("05-León"));

        // Reloaded from the server: published as "05-León", and the server holds "05".
        QVERIFY(clicJuego(dlg.get(), 0));
        QCOMPARE(celda(dlg.get(), fila, 1), QStringLiteral("05-León"));
        const QString fecha = QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"));
        QVERIFY(pedir("resultadosJuego.php?&f=" + fecha + "&j=1").contains("\n7,05\n"));
    }
};

TORNAVO_PRUEBA_MAIN(TstPremiosReferencia)
#include "tst_premios_referencia.moc"
