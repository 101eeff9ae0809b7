#pragma once

#include <QByteArray>
#include <QColor>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class QIODevice;
class QPrinter;
class QTableView;
class QWidget;

// Taking a table of the console to the clipboard, a CSV file, a PDF file or paper. The plain
// functions at the top work on texts and numbers; the rest reads a QTableView as it is shown
// (visible columns in their on-screen order, visible rows in their order).
namespace exportar {

// Texts of the context menu every data table gets.
inline const QString kCopiar = QStringLiteral("Copiar");
inline const QString kExportarCsv = QStringLiteral("Exportar a CSV…");
inline const QString kExportarPdf = QStringLiteral("Exportar a PDF…");
inline const QString kImprimir = QStringLiteral("Imprimir…");

// ---- Texts ----

// A shown amount as a spreadsheet reads it: "12,345.50" -> "12345.50", "-1,000" -> "-1000",
// "-0.00" -> "0.00". Only texts with group separators or decimals count as amounts, so "00"
// (a number of the game) stays as it is.
// A shown date ("23/11/2026", "lunes 23/11/2026", "23-11-2026") -> "2026-11-23".
// Any other text is returned unchanged.
QString valorPlano(const QString &texto);

// Column title in one line ("#\nJug" -> "# Jug").
QString tituloEnUnaLinea(const QString &titulo);

// Appends one CSV field, between double quotes (inner quotes doubled) when it holds a comma, a
// quote or a line break.
void agregarCampoCsv(QString &destino, const QString &campo);

// Byte-order mark that opens every CSV file, so that spreadsheets read it as UTF-8.
inline const QByteArray kBomUtf8 = QByteArrayLiteral("\xEF\xBB\xBF");

// A whole CSV file: BOM, the title row, then the rows; fields are passed through valorPlano();
// every line ends in CRLF.
QByteArray textoCsv(const QStringList &titulos, const QVector<QStringList> &filas);

// Tab-separated text for the clipboard: the title row then the rows, lines ending in "\n".
// Tabs and line breaks inside a cell become blanks.
QString textoTsv(const QStringList &titulos, const QVector<QStringList> &filas);

// ---- Page layout ----

struct Paginacion {
    int filasPorPagina = 0;
    int paginas = 0;
};

// Rows of `filas` rows of height `altoFila` on pages of usable height `altoUtil`, each page
// taking `altoArriba` on top (heading and column titles) and `altoPie` below (page number).
// At least one row per page and at least one page (an empty table prints its titles).
Paginacion paginar(int filas, double altoUtil, double altoArriba, double altoFila, double altoPie);

// Landscape when the table is wider than tall, or does not fit the width of an upright page.
bool apaisada(double anchoTabla, double altoTabla, double anchoUtilVertical);

// ---- Reading a table ----

// Logical columns that are shown, in their on-screen order.
QVector<int> columnasVisibles(const QTableView *tabla);
// Logical rows that are shown, in their on-screen order.
QVector<int> filasVisibles(const QTableView *tabla);
// Titles of those columns, in one line each.
QStringList titulos(const QTableView *tabla, const QVector<int> &columnas);
// A cell's text as the table shows it.
QString textoCelda(const QTableView *tabla, int fila, int columna);

// Called now and then while a long job runs with the rows (or pages) done and the total;
// false stops the job.
using Avance = std::function<bool(int hechas, int total)>;

// Text that "Copiar" puts on the clipboard: the selected cells (inside the rectangle of the
// selected rows and columns, unselected cells empty) or the whole table when nothing is
// selected, with the titles of those columns. "" and `*completo` false when `avance` stopped it.
QString textoCopia(const QTableView *tabla, const Avance &avance = {}, bool *completo = nullptr);
void copiar(const QTableView *tabla);

// Writes the table as CSV (see textoCsv) to `destino`. False when `avance` stopped it or the
// device failed.
bool escribirCsv(const QTableView *tabla, QIODevice &destino, const Avance &avance = {});

// What goes on top of every printed page.
struct Encabezado {
    QString titulo;    // the dialog's title
    QString contexto;  // the draw or the dates the table belongs to
    QDateTime momento; // time of printing
};

// Heading of a table inside its dialog: the window's title; as context the dialog's
// "contextoImpresion" property when it has one, otherwise its visible date fields and the
// choice boxes beside them ("Fecha: lunes 23/11/2026   Sorteo: …"); the current time.
Encabezado encabezadoDe(const QTableView *tabla);

// Draws the table on `impresora` (heading, column titles on every page, shown texts and
// colours, "Página i de n"), turning the page to landscape when the table is wider than tall.
// Only the printer's page range when it has one. Returns the pages printed, 0 when `avance`
// stopped it or the printer failed.
int imprimirTabla(const QTableView *tabla, QPrinter *impresora, const Encabezado &encabezado,
                  const Avance &avance = {});

// ---- The menu ----

// Exports with a progress box (with "Cancelar") for long tables; an existing file is only
// replaced once the new one is complete. True when the file was written.
bool exportarCsv(QTableView *tabla, const QString &ruta);
bool exportarPdf(QTableView *tabla, const QString &ruta);

// Gives every table of `dialogo`, present or added later, the context menu "Copiar",
// "Exportar a CSV…", "Exportar a PDF…", "Imprimir…". Tables with a context menu of their own
// keep it. Calling it again does nothing.
void instalarMenusTablas(QWidget *dialogo);

} // namespace exportar
