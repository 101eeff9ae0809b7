#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QAbstractButton>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QWidget>

// The request pattern against a real HTTP server, and the console's message box.
class TstRed : public QObject {
    Q_OBJECT

    // Sends one GET and waits for its reply; returns the reply text.
    QString pedir(QNetworkAccessManager &nam, const std::function<QNetworkReply *()> &enviar)
    {
        QString texto;
        bool llego = false;
        auto c = connect(&nam, &QNetworkAccessManager::finished, [&](QNetworkReply *r) {
            texto = red::textoRespuesta(r);
            r->deleteLater();
            llego = true;
        });
        enviar();
        for (int i = 0; i < 500 && !llego; ++i)
            QTest::qWait(10);
        disconnect(c);
        if (!llego)
            return QStringLiteral("<sin respuesta>");
        return texto;
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init() { reiniciarSesion(); }

    void concatenacionLlegaTalCual()
    {
        Escenario e{{"calcularpremios4.php", "cabecera\n"}};
        QNetworkAccessManager nam;
        const QString texto = pedir(nam, [&] {
            return red::get(&nam, "calcularpremios4.php?&f=2026-11-22&j=1&s=10&a=05");
        });
        QCOMPARE(texto, QStringLiteral("cabecera\n"));
        QCOMPARE(
            e.srv.peticiones(),
            QStringList{"/Tornavo/TornavoSU/calcularpremios4.php?&f=2026-11-22&j=1&s=10&a=05"});
    }

    void concatenacionNoCodificaDeMas()
    {
        Escenario e;
        QNetworkAccessManager nam;
        pedir(nam, [&] { return red::get(&nam, "validarUser.php?u=ana maria&p=a'b\"c"); });
        // Only what a URL cannot carry is encoded; the rest travels as typed.
        QCOMPARE(e.srv.peticiones().value(0),
                 QStringLiteral("/Tornavo/TornavoSU/validarUser.php?u=ana%20maria&p=a'b%22c"));
    }

    void objetoConsulta()
    {
        Escenario e;
        QNetworkAccessManager nam;
        pedir(nam, [&] {
            return red::get(&nam, "resultadosJuego.php", {{"f", "2026-11-22"}, {"j", "3"}});
        });
        QCOMPARE(e.srv.peticiones().value(0),
                 QStringLiteral("/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-22&j=3"));
        QCOMPARE(red::urlPeticion("ventabancas2.php", {{"d", "2026-11-01"}, {"h", "2026-11-22"}}),
                 e.srv.urlBase() + "ventabancas2.php?d=2026-11-01&h=2026-11-22");
    }

    void cuerpoConNulSeCorta()
    {
        Escenario e{{"datetime.php", QByteArray("2026-11-22\nx\0basura", 19)}};
        QNetworkAccessManager nam;
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, "datetime.php"); }),
                 QStringLiteral("2026-11-22\nx"));
    }

    void utf8SeLeeComoLatin1()
    {
        Escenario e{{"bancasactivas.php", "1,Pe\xc3\xb1"
                                          "a\n"}};
        QNetworkAccessManager nam;
        const QString texto = pedir(nam, [&] { return red::get(&nam, "bancasactivas.php"); });
        QCOMPARE(texto.size(), 8);
        QCOMPARE(texto, QString::fromLatin1("1,Pe\xc3\xb1"
                                            "a\n"));
        QCOMPARE(texto.at(4), QChar(0xC3));
    }

    void bytesATexto()
    {
        QCOMPARE(red::textoDeBytes(QByteArray()), QString());
        QVERIFY(red::textoDeBytes(QByteArray()).isEmpty());
        QCOMPARE(red::textoDeBytes(QByteArray("\0abc", 4)), QString());
        QCOMPARE(red::textoDeBytes(QByteArray("\xe9t\xe9", 3)), QString::fromUtf8("été"));
    }

    void servidorCaidoDaTextoVacio()
    {
        EscenarioSinServidor caido;
        QNetworkAccessManager nam;
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, "datetime.php"); }), QString());
    }

    void cuerpoVacioMuestraNoHuboRespuesta()
    {
        // A handler written the way every dialog writes it: empty text → the message box.
        Escenario e{{"cargarsorteos.php", ""}};
        QWidget ventana;
        QNetworkAccessManager nam;
        CapturaMensajes captura;
        bool terminado = false;
        connect(&nam, &QNetworkAccessManager::finished, &ventana, [&](QNetworkReply *r) {
            if (red::textoRespuesta(r).isEmpty())
                mostrarMensaje(&ventana, "Error", "No hubo respuesta del servidor",
                               IconoMensaje::Error);
            r->deleteLater();
            terminado = true;
        });
        red::get(&nam, "cargarsorteos.php");
        QTRY_VERIFY_WITH_TIMEOUT(terminado, 5000);
        QCOMPARE(captura.cantidad(), 1);
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Error"));
        QCOMPARE(m.texto, QStringLiteral("No hubo respuesta del servidor"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/error-crash.png"));
        QCOMPARE(m.altoIcono, 128);
        QCOMPARE(m.botones, QStringList{"Aceptar"});
        QCOMPARE(m.roles.value(0), QMessageBox::AcceptRole);
        QCOMPARE(m.anchosBotones.value(0), 80);
    }

    void cuatroIconos()
    {
        QWidget ventana;
        CapturaMensajes captura;
        const QList<QPair<IconoMensaje, QString>> casos = {
            {IconoMensaje::Error, ":/Imagenes/error-crash.png"},
            {IconoMensaje::Exito, ":/Imagenes/like-crash.png"},
            {IconoMensaje::Advertencia, ":/Imagenes/warning-crash.png"},
            {IconoMensaje::Pregunta, ":/Imagenes/question-crash.png"}};
        int vistos = 0;
        for (const auto &caso : casos) {
            QVERIFY(!QPixmap(caso.second).isNull());
            mostrarMensaje(&ventana, "T", "x", caso.first);
            QVERIFY(captura.esperar(++vistos));
            QCOMPARE(captura.ultimo().rutaIcono, caso.second);
            QCOMPARE(captura.ultimo().altoIcono, 128);
        }
        QCOMPARE(captura.cantidad(), 4);
        // Each box was a child of the window that showed it, and is gone once closed.
        QTRY_COMPARE(ventana.findChildren<QMessageBox *>().size(), 0);
    }

    void preguntaConSegundoBoton()
    {
        QWidget ventana;
        CapturaMensajes captura;
        captura.responder("Cancelar");
        QVERIFY(!mostrarPregunta(&ventana, "Atención", "¿Seguro?", "Cancelar"));
        QCOMPARE(captura.ultimo().botones.size(), 2);
        QCOMPARE(captura.ultimo().rolDe("Aceptar"), QMessageBox::AcceptRole);
        QCOMPARE(captura.ultimo().rolDe("Cancelar"), QMessageBox::RejectRole);
        captura.responder("Aceptar");
        QVERIFY(mostrarPregunta(&ventana, "Atención", "¿Seguro?", "Cancelar"));
    }

    void confirmacionConIconoPropio()
    {
        QWidget ventana;
        CapturaMensajes captura;
        QPixmap icono(40, 40);
        icono.fill(Qt::red);
        captura.responder("Cancelar");
        QVERIFY(!confirmarAccion(&ventana, "Publicar resultado", "Fecha = x", "¿ Esta seguro ?",
                                 icono, "Cancelar", "Publicar"));
        MensajeVisto m = captura.ultimo();
        QCOMPARE(m.botones.size(), 2);
        QCOMPARE(m.rolDe("Cancelar"), QMessageBox::NoRole);
        QCOMPARE(m.rolDe("Publicar"), QMessageBox::YesRole);
        QCOMPARE(m.informativo, QStringLiteral("¿ Esta seguro ?"));
        QCOMPARE(m.altoIcono, 40);
        captura.responder("Publicar");
        QVERIFY(confirmarAccion(&ventana, "Publicar resultado", "Fecha = x", "¿ Esta seguro ?",
                                icono, "Cancelar", "Publicar"));
    }

    void errorHttpEsFaltaDeRespuesta_data()
    {
        QTest::addColumn<int>("codigo");
        QTest::addColumn<QString>("endpoint");
        QTest::newRow("500 publicar") << 500 << "publicarPremios2.php";
        QTest::newRow("404 publicar") << 404 << "publicarPremios2.php";
        QTest::newRow("500 deshacer") << 500 << "deshacerpremios.php";
        QTest::newRow("404 autopremiar") << 404 << "autopremiar.php";
        QTest::newRow("503 ventas") << 503 << "monitorventas.php";
        QTest::newRow("400 reporte") << 400 << "reportex.php";
    }

    void errorHttpEsFaltaDeRespuesta()
    {
        // An error page carries a body; it is still no answer of the server's.
        QFETCH(int, codigo);
        QFETCH(QString, endpoint);
        Escenario e{{endpoint, "<html><body>Internal Server Error</body></html>\n"}};
        e.srv.estado(endpoint, codigo);
        QNetworkAccessManager nam;
        QByteArray bytes = "x";
        bool valida = true;
        bool llego = false;
        auto c = connect(&nam, &QNetworkAccessManager::finished, [&](QNetworkReply *r) {
            valida = red::respuestaValida(r);
            bytes = red::bytesRespuesta(r);
            r->deleteLater();
            llego = true;
        });
        red::get(&nam, endpoint + "?&f=2026-11-22");
        QTRY_VERIFY_WITH_TIMEOUT(llego, 10000);
        disconnect(c);
        QVERIFY(!valida);
        QVERIFY(bytes.isEmpty());
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, endpoint); }), QString());

        // The same body with 200 is an answer.
        e.srv.estado(endpoint, 200);
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, endpoint); }),
                 QStringLiteral("<html><body>Internal Server Error</body></html>\n"));
    }

    void contextoViajaConLaRespuesta()
    {
        Escenario e;
        QNetworkAccessManager nam;
        QStringList visto;
        bool llego = false;
        connect(&nam, &QNetworkAccessManager::finished, [&](QNetworkReply *r) {
            visto = red::contexto(r);
            r->deleteLater();
            llego = true;
        });
        red::anotarContexto(red::get(&nam, "resultadosJuego.php", {{"f", "2026-11-22"}}),
                            {"2026-11-22", "3"});
        QTRY_VERIFY_WITH_TIMEOUT(llego, 10000);
        QCOMPARE(visto, (QStringList{"2026-11-22", "3"}));
    }

    // Presses `tecla` on the next modal box that appears; records its default button.
    void pulsarEnLaCaja(int tecla, QString *predeterminado)
    {
        auto *t = new QTimer(this);
        t->setInterval(10);
        connect(t, &QTimer::timeout, this, [t, tecla, predeterminado] {
            auto *caja = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!caja || !caja->isVisible())
                return;
            t->stop();
            t->deleteLater();
            if (predeterminado)
                *predeterminado = caja->defaultButton() ? caja->defaultButton()->text() : QString();
            QTest::keyClick(caja, Qt::Key(tecla));
        });
        t->start();
    }

    void confirmacionNoSeAceptaPorTeclado_data()
    {
        QTest::addColumn<int>("tecla");
        QTest::newRow("Return") << int(Qt::Key_Return);
        QTest::newRow("Enter") << int(Qt::Key_Enter);
        QTest::newRow("Escape") << int(Qt::Key_Escape);
    }

    void confirmacionNoSeAceptaPorTeclado()
    {
        // Return, Enter and Escape all mean "Cancelar".
        QFETCH(int, tecla);
        QWidget ventana;
        ventana.show();
        QString predeterminado;
        pulsarEnLaCaja(tecla, &predeterminado);
        QTimer vigilante;
        vigilante.setSingleShot(true);
        connect(&vigilante, &QTimer::timeout, [] {
            if (auto *w = QApplication::activeModalWidget())
                w->close();
        });
        vigilante.start(10000);
        QVERIFY(!confirmarAccion(&ventana, "Publicar resultado", "Fecha = x", "¿ Esta seguro ?",
                                 QPixmap(), "Cancelar", "Publicar"));
        QVERIFY(vigilante.isActive()); // answered by the key, not by the watchdog
        QCOMPARE(predeterminado, QStringLiteral("Cancelar"));
    }

    void confirmacionConPadreDestruido()
    {
        // The dialog that asked goes away while its confirmation is up: the answer is "no".
        auto *ventana = new QWidget;
        ventana->show();
        QTimer::singleShot(100, ventana, [ventana] { ventana->deleteLater(); });
        QVERIFY(!confirmarAccion(ventana, "Deshacer resultado", "x", "¿ Esta seguro ?", QPixmap(),
                                 "Cancelar", "Deshacer"));
    }

    void mensajeNoDetieneAlQueLlama()
    {
        // The handler that reports goes on at once; the box comes up after its event, and
        // what is to happen after the box happens when it is closed.
        QWidget ventana;
        ventana.show();
        CapturaMensajes captura;
        bool cerrado = false;
        mostrarMensaje(&ventana, "Exito", "Se deshizo el resultado", IconoMensaje::Exito,
                       [&cerrado] { cerrado = true; });
        QCOMPARE(captura.cantidad(), 0);
        QVERIFY(!cerrado);
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Se deshizo el resultado"));
        QTRY_VERIFY(cerrado);
    }

    void mensajeMuereConSuPadre()
    {
        // A box whose dialog goes away goes with it, and what was to follow it never runs.
        auto *ventana = new QWidget;
        ventana->show();
        bool cerrado = false;
        mostrarMensaje(ventana, "Exito", "x", IconoMensaje::Exito, [&cerrado] { cerrado = true; });
        QTRY_VERIFY(QApplication::activeModalWidget() != nullptr);
        delete ventana;
        QTest::qWait(50);
        QVERIFY(!cerrado);
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }
};

TORNAVO_PRUEBA_MAIN(TstRed)
#include "tst_red.moc"
