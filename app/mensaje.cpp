#include "app/mensaje.h"

#include <QPointer>
#include <QPushButton>
#include <QVariant>

QString rutaIconoMensaje(IconoMensaje icono)
{
    switch (icono) {
    case IconoMensaje::Error:
        return QStringLiteral(":/Imagenes/error-crash.png");
    case IconoMensaje::Exito:
        return QStringLiteral(":/Imagenes/like-crash.png");
    case IconoMensaje::Advertencia:
        return QStringLiteral(":/Imagenes/warning-crash.png");
    case IconoMensaje::Pregunta:
        break;
    }
    return QStringLiteral(":/Imagenes/question-crash.png");
}

namespace {

QMessageBox *nuevaCaja(QWidget *padre, const QString &titulo, const QString &texto,
                       IconoMensaje icono)
{
    auto *caja = new QMessageBox(padre);
    caja->setWindowTitle(titulo);
    caja->setText(texto);
    const QString ruta = rutaIconoMensaje(icono);
    caja->setIconPixmap(QPixmap(ruta).scaledToHeight(128, Qt::SmoothTransformation));
    // Lets tests and style sheets tell which of the four pictures the box carries.
    caja->setProperty("rutaIcono", ruta);
    QPushButton *aceptar = caja->addButton(QStringLiteral("Aceptar"), QMessageBox::AcceptRole);
    aceptar->setFixedWidth(80);
    caja->setDefaultButton(aceptar);
    return caja;
}

// Shows a box that blocks the rest of the console until it is closed, without running a
// nested event loop on the caller's stack: the caller returns at once, so a dialog that is
// closed (and deleted) while the box is up never resumes a handler of a destroyed object.
// The box is the dialog's child and goes with it.
//
// It appears once the event being handled is done: a Return that made a handler report an
// error must not travel on to the dialog and press the new box's default button.
void mostrarSinEsperar(QMessageBox *caja)
{
    caja->setAttribute(Qt::WA_DeleteOnClose);
    caja->setWindowModality(Qt::ApplicationModal);
    QMetaObject::invokeMethod(caja, &QWidget::show, Qt::QueuedConnection);
}

// Runs a question box and tells which button was chosen. The box and its parent are
// guarded: when either is destroyed while the box is up, the answer is "no" and the caller,
// which must return at once on "no", touches nothing of the destroyed parent.
QAbstractButton *preguntar(QWidget *padre, QMessageBox *cajaNueva)
{
    QPointer<QWidget> guardaPadre(padre);
    QPointer<QMessageBox> caja(cajaNueva);
    caja->exec();
    if (!caja || (padre && !guardaPadre))
        return nullptr;
    QAbstractButton *elegido = caja->clickedButton();
    caja->deleteLater();
    return elegido;
}

} // namespace

void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto, IconoMensaje icono)
{
    mostrarSinEsperar(nuevaCaja(padre, titulo, texto, icono));
}

void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto, IconoMensaje icono,
                    const std::function<void()> &alCerrar)
{
    QMessageBox *caja = nuevaCaja(padre, titulo, texto, icono);
    if (alCerrar)
        QObject::connect(caja, &QDialog::finished, caja, [alCerrar] { alCerrar(); });
    mostrarSinEsperar(caja);
}

bool mostrarPregunta(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &textoRechazo, IconoMensaje icono)
{
    QMessageBox *caja = nuevaCaja(padre, titulo, texto, icono);
    QAbstractButton *aceptar = caja->buttons().value(0);
    QPushButton *rechazo = caja->addButton(textoRechazo, QMessageBox::RejectRole);
    caja->setEscapeButton(rechazo);
    QAbstractButton *elegido = preguntar(padre, caja);
    return elegido && elegido == aceptar;
}

bool confirmarAccion(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &informativo, const QPixmap &icono, const QString &textoCancelar,
                     const QString &textoAccion)
{
    auto *caja = new QMessageBox(padre);
    caja->setWindowTitle(titulo);
    caja->setText(texto);
    caja->setInformativeText(informativo);
    if (!icono.isNull())
        caja->setIconPixmap(icono);
    QPushButton *cancelar = caja->addButton(textoCancelar, QMessageBox::NoRole);
    QPushButton *accion = caja->addButton(textoAccion, QMessageBox::YesRole);
    // A stray Return or Escape must never change data on the server: both mean "Cancelar",
    // and the action only happens on a deliberate press of its own button.
    caja->setDefaultButton(cancelar);
    caja->setEscapeButton(cancelar);
    accion->setAutoDefault(false);
    QAbstractButton *elegido = preguntar(padre, caja);
    return elegido && elegido == accion;
}

void mensajeSimple(QWidget *padre, QMessageBox::Icon icono, const QString &titulo,
                   const QString &texto)
{
    mostrarSinEsperar(new QMessageBox(icono, titulo, texto, QMessageBox::Ok, padre));
}
