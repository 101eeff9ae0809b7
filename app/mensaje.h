#pragma once

#include <QMessageBox>
#include <QPixmap>
#include <QString>

#include <functional>

class QWidget;

// The console's message box. Created with the caller as parent, modal, one "Aceptar" button 80
// pixels wide and one of four pictures 128 pixels high as icon.
enum class IconoMensaje { Error, Exito, Advertencia, Pregunta };

// Resource path of the picture of each icon kind.
QString rutaIconoMensaje(IconoMensaje icono);

// Shows the box, modal to the whole console, and returns at once; the box deletes itself when
// closed (or goes with its parent).
void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto,
                    IconoMensaje icono);

// The same, running `alCerrar` once the box has been closed. It belongs to the box: when the
// parent is destroyed first, the box goes with it and `alCerrar` never runs.
void mostrarMensaje(QWidget *padre, const QString &titulo, const QString &texto, IconoMensaje icono,
                    const std::function<void()> &alCerrar);

// Question form: "Aceptar" (accept role) plus a second button with the reject role.
// True when "Aceptar" was chosen; Escape chooses the second button. False as well when the
// parent was destroyed while the box was up: the caller must then return at once.
bool mostrarPregunta(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &textoRechazo, IconoMensaje icono = IconoMensaje::Pregunta);

// Confirmation before an action that changes data on the server: a picture as icon, a
// no-role button (`textoCancelar`) and then a yes-role button (`textoAccion`), and an
// informative text. The cancel button is the default, and Escape chooses it, so no stray key
// confirms. True only when the yes-role button was pressed; false as well when the parent was
// destroyed while the box was up, and the caller must then return at once.
bool confirmarAccion(QWidget *padre, const QString &titulo, const QString &texto,
                     const QString &informativo, const QPixmap &icono, const QString &textoCancelar,
                     const QString &textoAccion);

// The platform's plain box with one standard Ok button, for the few messages that the
// dialogs give in that form (critical errors of a dialog, the clock warning). Like
// mostrarMensaje it returns at once.
void mensajeSimple(QWidget *padre, QMessageBox::Icon icono, const QString &titulo,
                   const QString &texto);
