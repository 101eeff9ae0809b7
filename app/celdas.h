#pragma once

#include <QStyledItemDelegate>

class QAbstractItemView;
class QApplication;

// Cells of fixed-width columns whose text does not fit are drawn cut ("12,345.…"); with this
// delegate the cell's tooltip shows the whole text. Cells with a tooltip of their own keep it.
class DelegadoTextoCompleto : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // Whether the cell's text is cut when drawn with `opcion` (its rectangle and font).
    bool textoCortado(const QStyleOptionViewItem &opcion, const QModelIndex &indice) const;

    bool helpEvent(QHelpEvent *evento, QAbstractItemView *vista, const QStyleOptionViewItem &opcion,
                   const QModelIndex &indice) override;
};

// Gives the view that delegate (owned by the view).
void mostrarTextoCompletoEnTooltip(QAbstractItemView *vista);

// The same for every table and list of the application, whatever their delegate: over a cut
// cell without a tooltip of its own, the tooltip shows the whole text. Installed at start.
void mostrarTextosCortadosEnTooltips(QApplication &aplicacion);
