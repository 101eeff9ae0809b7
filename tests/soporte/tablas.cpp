#include "tests/soporte/tablas.h"

#include <QTableWidget>

QString textoCelda(const QTableWidget *t, int fila, int columna)
{
    const QTableWidgetItem *i = t->item(fila, columna);
    return i ? i->text() : QStringLiteral("<nada>");
}

QStringList textosFila(const QTableWidget *t, int fila)
{
    QStringList r;
    for (int c = 0; c < t->columnCount(); ++c)
        r << textoCelda(t, fila, c);
    return r;
}

QStringList textosColumna(const QTableWidget *t, int columna)
{
    QStringList r;
    for (int f = 0; f < t->rowCount(); ++f)
        r << textoCelda(t, f, columna);
    return r;
}

QStringList encabezados(const QTableWidget *t)
{
    QStringList r;
    for (int c = 0; c < t->columnCount(); ++c)
        r << t->horizontalHeaderItem(c)->text();
    return r;
}
