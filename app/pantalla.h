#pragma once

#include <QMargins>
#include <QRect>

class QApplication;
class QWidget;

// Room a window frame takes around the window before the window system has drawn one: a title
// bar and thin borders.
inline constexpr QMargins kMarcoEstimado{8, 38, 8, 8};

// Geometry of a window of geometry `geometria` with frame `marco` on a screen whose free area is
// `disponible`: shrunk, when it is too big, so that the window with its frame fits the area, and
// moved into it. A window that fits keeps its size; a shrunk one keeps its centre where it can.
QRect geometriaEnPantalla(const QRect &geometria, const QMargins &marco, const QRect &disponible);

// Fits a top-level window to `disponible` (the free area of the screen it opens on when empty).
// Its minimum size is never undercut.
void ajustarAPantalla(QWidget *ventana, const QRect &disponible = QRect());

// From now on every dialog and main window of the application is fitted to its screen when it
// is first shown, unless it is shown maximised or full screen.
void ajustarVentanasAPantalla(QApplication &aplicacion);
