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

} // namespace

void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto, IconoMensaje icono)
{
    QMessageBox *caja = nuevaCaja(padre, titulo, texto, icono);
    caja->exec();
    if (!padre)
        caja->deleteLater();
}

bool mostrarPregunta(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &textoRechazo, IconoMensaje icono)
{
    QPointer<QMessageBox> caja = nuevaCaja(padre, titulo, texto, icono);
    QAbstractButton *aceptar = caja->buttons().value(0);
    caja->addButton(textoRechazo, QMessageBox::RejectRole);
    caja->exec();
    if (!caja)
        return false;
    const bool si = caja->clickedButton() == aceptar;
    if (!padre)
        caja->deleteLater();
    return si;
}

bool confirmarAccion(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &informativo, const QPixmap &icono, const QString &textoCancelar,
                     const QString &textoAccion)
{
    // On the heap and guarded: the parent may be closed and deleted while the box is open.
    QPointer<QMessageBox> caja = new QMessageBox(padre);
    caja->setWindowTitle(titulo);
    caja->setText(texto);
    caja->setInformativeText(informativo);
    if (!icono.isNull())
        caja->setIconPixmap(icono);
    caja->addButton(textoCancelar, QMessageBox::NoRole);
    QPushButton *accion = caja->addButton(textoAccion, QMessageBox::YesRole);
    caja->exec();
    if (!caja)
        return false;
    const bool si = caja->clickedButton() == accion;
    caja->deleteLater();
    return si;
}

void mensajeSimple(QWidget *padre, QMessageBox::Icon icono, const QString &titulo,
                   const QString &texto)
{
    QPointer<QMessageBox> caja = new QMessageBox(icono, titulo, texto, QMessageBox::Ok, padre);
    caja->exec();
    if (caja)
        caja->deleteLater();
}
