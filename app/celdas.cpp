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
