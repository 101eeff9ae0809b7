#include "app/pantalla.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace {

const char *const kAjustada = "tornavoAjustadaAPantalla";

QScreen *pantallaDe(QWidget *ventana)
{
    const QWidget *padre = ventana->parentWidget() ? ventana->parentWidget()->window() : ventana;
    if (QScreen *p = padre->screen())
        return p;
    return QGuiApplication::primaryScreen();
}

// Fits each window once, when it is first shown: the show event comes after a dialog was placed
// over its parent and before the window system maps it.
class AjusteVentanas : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *objeto, QEvent *evento) override
    {
        if (evento->type() != QEvent::Show || !objeto->isWidgetType())
            return false;
        auto *ventana = static_cast<QWidget *>(objeto);
        const Qt::WindowType tipo = ventana->windowType();
        if (!ventana->isWindow() || (tipo != Qt::Window && tipo != Qt::Dialog) ||
            ventana->property(kAjustada).toBool())
            return false;
        ventana->setProperty(kAjustada, true);
        if (!(ventana->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)))
            ajustarAPantalla(ventana);
        return false;
    }
};

} // namespace

QRect geometriaEnPantalla(const QRect &geometria, const QMargins &marco, const QRect &disponible)
{
    if (!disponible.isValid())
        return geometria;
    const QSize maximo(std::max(1, disponible.width() - marco.left() - marco.right()),
                       std::max(1, disponible.height() - marco.top() - marco.bottom()));
    QRect r(QPoint(), geometria.size().boundedTo(maximo));
    r.moveCenter(geometria.center());
    // Into the area, frame included; the top left wins when the window is still too big.
    const int xMax = disponible.right() - marco.right() - r.width() + 1;
    const int yMax = disponible.bottom() - marco.bottom() - r.height() + 1;
    r.moveLeft(std::max(disponible.left() + marco.left(), std::min(r.left(), xMax)));
    r.moveTop(std::max(disponible.top() + marco.top(), std::min(r.top(), yMax)));
    return r;
}

void ajustarAPantalla(QWidget *ventana, const QRect &disponible)
{
    if (!ventana)
        return;
    QRect area = disponible;
    if (!area.isValid()) {
        const QScreen *pantalla = pantallaDe(ventana);
        if (!pantalla)
            return;
        area = pantalla->availableGeometry();
    }
    const QRect actual = ventana->geometry();
    QMargins marco(actual.left() - ventana->frameGeometry().left(),
                   actual.top() - ventana->frameGeometry().top(),
                   ventana->frameGeometry().right() - actual.right(),
                   ventana->frameGeometry().bottom() - actual.bottom());
    if (marco.isNull())
        marco = kMarcoEstimado;
    const QRect nueva = geometriaEnPantalla(actual, marco, area);
    if (nueva != actual)
        ventana->setGeometry(
            QRect(nueva.topLeft(), nueva.size().expandedTo(ventana->minimumSize())));
}

void ajustarVentanasAPantalla(QApplication &aplicacion)
{
    aplicacion.installEventFilter(new AjusteVentanas(&aplicacion));
}
