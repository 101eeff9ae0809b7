#include "app/celdas.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QStyle>
#include <QToolTip>

bool DelegadoTextoCompleto::textoCortado(const QStyleOptionViewItem &opcion,
                                         const QModelIndex &indice) const
{
    QStyleOptionViewItem o = opcion;
    initStyleOption(&o, indice);
    if (o.text.isEmpty())
        return false;
    const QWidget *widget = o.widget;
    const QStyle *estilo = widget ? widget->style() : QApplication::style();
    // The item text is laid out inside its sub-rectangle less a margin on each side.
    const int margen = estilo->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 1;
    const QRect rect = estilo->subElementRect(QStyle::SE_ItemViewItemText, &o, widget);
    const int ancho = rect.width() - 2 * margen;
    for (const QString &linea : o.text.split(QLatin1Char('\n')))
        if (o.fontMetrics.horizontalAdvance(linea) > ancho)
            return true;
    return false;
}

bool DelegadoTextoCompleto::helpEvent(QHelpEvent *evento, QAbstractItemView *vista,
                                      const QStyleOptionViewItem &opcion, const QModelIndex &indice)
{
    if (evento && evento->type() == QEvent::ToolTip && indice.isValid() &&
        !indice.data(Qt::ToolTipRole).isValid()) {
        if (textoCortado(opcion, indice)) {
            QToolTip::showText(evento->globalPos(), indice.data(Qt::DisplayRole).toString(), vista,
                               opcion.rect);
        } else {
            QToolTip::hideText();
            evento->ignore();
        }
        return true;
    }
    return QStyledItemDelegate::helpEvent(evento, vista, opcion, indice);
}

void mostrarTextoCompletoEnTooltip(QAbstractItemView *vista)
{
    if (vista)
        vista->setItemDelegate(new DelegadoTextoCompleto(vista));
}

namespace {

// Answers tooltip requests over the cells of item views whose delegate does not: the option
// a view would paint the cell with is rebuilt from the view (font, elide mode, rectangle).
class TooltipsDeCeldas : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *objeto, QEvent *evento) override
    {
        if (evento->type() != QEvent::ToolTip || !objeto->isWidgetType())
            return false;
        auto *vista = qobject_cast<QAbstractItemView *>(objeto->parent());
        if (!vista || vista->viewport() != objeto)
            return false;
        const auto *ayuda = static_cast<QHelpEvent *>(evento);
        const QModelIndex indice = vista->indexAt(ayuda->pos());
        if (!indice.isValid() || indice.data(Qt::ToolTipRole).isValid() ||
            qobject_cast<DelegadoTextoCompleto *>(vista->itemDelegate(indice)))
            return false;

        QStyleOptionViewItem opcion;
        opcion.initFrom(vista->viewport());
        opcion.widget = vista;
        opcion.rect = vista->visualRect(indice);
        opcion.font = vista->font();
        opcion.fontMetrics = QFontMetrics(opcion.font);
        opcion.textElideMode = vista->textElideMode();
        opcion.decorationSize = vista->iconSize().isValid()
                                    ? vista->iconSize()
                                    : QSize(vista->style()->pixelMetric(QStyle::PM_SmallIconSize),
                                            vista->style()->pixelMetric(QStyle::PM_SmallIconSize));
        const DelegadoTextoCompleto medidor;
        if (!medidor.textoCortado(opcion, indice))
            return false;
        QToolTip::showText(ayuda->globalPos(), indice.data(Qt::DisplayRole).toString(), vista,
                           opcion.rect);
        return true;
    }
};

} // namespace

void mostrarTextosCortadosEnTooltips(QApplication &aplicacion)
{
    aplicacion.installEventFilter(new TooltipsDeCeldas(&aplicacion));
}
