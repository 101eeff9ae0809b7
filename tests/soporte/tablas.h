#pragma once

#include <QString>
#include <QStringList>

class QTableWidget;

// What a user reads in a table: cell texts, "<nada>" where a cell has no item.
QString textoCelda(const QTableWidget *t, int fila, int columna);
QStringList textosFila(const QTableWidget *t, int fila);
QStringList textosColumna(const QTableWidget *t, int columna);
QStringList encabezados(const QTableWidget *t);
