#pragma once

#include <QMessageBox>
#include <QPixmap>
#include <QString>

class QWidget;

// The console's message box. Created with the caller as parent (and left to it), modal, one
// "Aceptar" button 80 pixels wide and one of four pictures 128 pixels high as icon.
enum class IconoMensaje { Error, Exito, Advertencia, Pregunta };

// Resource path of the picture of each icon kind.
QString rutaIconoMensaje(IconoMensaje icono);

// Shows the box and returns when it is closed.
void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto,
                    IconoMensaje icono);

// Question form: "Aceptar" (accept role) plus a second button with the reject role.
// True when "Aceptar" was chosen.
bool mostrarPregunta(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &textoRechazo, IconoMensaje icono = IconoMensaje::Pregunta);

// Confirmation before an action that changes data on the server: a picture as icon, a
// no-role button (`textoCancelar`) and then a yes-role button (`textoAccion`), and an
// informative text. True only when the yes-role button was chosen.
bool confirmarAccion(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &informativo, const QPixmap &icono, const QString &textoCancelar,
                     const QString &textoAccion);

// The platform's plain box with one standard Ok button, for the few messages that the
// dialogs give in that form (critical errors of a dialog, the clock warning).
void mensajeSimple(QWidget *padre, QMessageBox::Icon icono, const QString &titulo,
                   const QString &texto);
