#include "ui/iniciar_sesion.h"
#include "ui_iniciar_sesion.h"

#include "app/mensaje.h"
#include "app/salida.h"
#include "app/red.h"
#include "ui/acceso.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

iniciar_sesion::iniciar_sesion(QWidget *parent) : QDialog(parent), ui(new Ui::iniciar_sesion)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Conectando..."));
    show();
    ui->label_logo->show();
    setWindowTitle(QStringLiteral("Iniciar Sesión"));

    // Tab moves only between the two fields.
    ui->pushButton_iniciar->setFocusPolicy(Qt::NoFocus);
    ui->pushButton_salir->setFocusPolicy(Qt::NoFocus);
}

iniciar_sesion::~iniciar_sesion()
{
    delete ui;
}

void iniciar_sesion::on_pushButton_iniciar_clicked()
{
    manager = new QNetworkAccessManager(this);
    connect(manager, &QNetworkAccessManager::finished, this, &iniciar_sesion::respuestaLogin);
    const QString ruta = rutaLogin(ui->lineEdit_usuario->text(), ui->lineEdit_clave->text());
    url = red::urlPeticion(ruta);
    red::get(manager, ruta);
}

void iniciar_sesion::respuestaLogin(QNetworkReply *respuesta)
{
    const QString texto = red::textoRespuesta(respuesta);
    if (texto.isEmpty()) {
        mostrarMensaje(this, QStringLiteral("Error"),
                       QStringLiteral("No hubo respuesta del servidor"), IconoMensaje::Error);
    } else {
        const RespuestaLogin datos = leerRespuestaLogin(texto);
        if (datos.rechazado) {
            // Refused credentials get the question picture on purpose.
            mostrarMensaje(this, QStringLiteral("Error"),
                           QStringLiteral("Usuario y/o clave incorrecto"), IconoMensaje::Pregunta);
        } else {
            guardarSesion(datos, ui->lineEdit_usuario->text());
            if (auto *nam = qobject_cast<QNetworkAccessManager *>(sender()))
                nam->clearAccessCache();
            close();
        }
    }
    respuesta->deleteLater();
}

void iniciar_sesion::on_pushButton_salir_clicked()
{
    terminarPrograma();
}

void iniciar_sesion::on_lineEdit_usuario_returnPressed()
{
    if (ui->lineEdit_usuario->text().length() > 5)
        ui->lineEdit_clave->setFocus();
}

void iniciar_sesion::on_lineEdit_clave_textChanged(QString arg1)
{
    // Passing the focus through the login button makes it the dialog's default button, so
    // that Enter in the password field logs in.
    if (arg1.length() > 5) {
        ui->pushButton_iniciar->setFocusPolicy(Qt::StrongFocus);
        ui->pushButton_iniciar->setFocus();
        ui->lineEdit_clave->setFocus();
    }
}
