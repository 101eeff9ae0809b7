#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
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
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("calcularpremios4.php", "cabecera\n");
        QNetworkAccessManager nam;
        const QString texto = pedir(nam, [&] {
            return red::get(&nam, "calcularpremios4.php?&f=2026-11-22&j=1&s=10&a=05");
        });
        QCOMPARE(texto, QStringLiteral("cabecera\n"));
        QCOMPARE(
            srv.peticiones(),
            QStringList{"/Tornavo/TornavoSU/calcularpremios4.php?&f=2026-11-22&j=1&s=10&a=05"});
    }

    void concatenacionNoCodificaDeMas()
    {
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        QNetworkAccessManager nam;
        pedir(nam, [&] { return red::get(&nam, "validarUser.php?u=ana maria&p=a'b\"c"); });
        // Only what a URL cannot carry is encoded; the rest travels as typed.
        QCOMPARE(srv.peticiones().value(0),
                 QStringLiteral("/Tornavo/TornavoSU/validarUser.php?u=ana%20maria&p=a'b%22c"));
    }

    void objetoConsulta()
    {
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        QNetworkAccessManager nam;
        pedir(nam, [&] {
            return red::get(&nam, "resultadosJuego.php", {{"f", "2026-11-22"}, {"j", "3"}});
        });
        QCOMPARE(srv.peticiones().value(0),
                 QStringLiteral("/Tornavo/TornavoSU/resultadosJuego.php?f=2026-11-22&j=3"));
        QCOMPARE(red::urlPeticion("ventabancas2.php", {{"d", "2026-11-01"}, {"h", "2026-11-22"}}),
                 srv.urlBase() + "ventabancas2.php?d=2026-11-01&h=2026-11-22");
    }

    void cuerpoConNulSeCorta()
    {
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("datetime.php", QByteArray("2026-11-22\nx\0basura", 19));
        QNetworkAccessManager nam;
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, "datetime.php"); }),
                 QStringLiteral("2026-11-22\nx"));
    }

    void utf8SeLeeComoLatin1()
    {
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("bancasactivas.php", "1,Pe\xc3\xb1"
                                           "a\n");
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
        DirectorioTrabajo dir;
        dir.apuntarA(ServidorPrueba::direccionSinServidor());
        QNetworkAccessManager nam;
        QCOMPARE(pedir(nam, [&] { return red::get(&nam, "datetime.php"); }), QString());
    }

    void cuerpoVacioMuestraNoHuboRespuesta()
    {
        // A handler written the way every dialog writes it: empty text → the message box.
        ServidorPrueba srv;
        DirectorioTrabajo dir;
        dir.apuntarA(srv.direccion());
        srv.responder("cargarsorteos.php", "");
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
};

TORNAVO_PRUEBA_MAIN(TstRed)
#include "tst_red.moc"
