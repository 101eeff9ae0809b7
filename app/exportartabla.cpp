#include "app/exportartabla.h"

#include "app/mensaje.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDate>
#include <QDateEdit>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLayout>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTemporaryFile>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <vector>

namespace exportar {

// ---- Texts ----

namespace {

bool esDigito(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

// Reads `cuantos` (a range) digits from p[i]; the number read, -1 when there are not enough.
int leerEntero(const QChar *p, int &i, int fin, int minimo, int maximo)
{
    int valor = 0, leidos = 0;
    while (i < fin && leidos < maximo && esDigito(p[i])) {
        valor = valor * 10 + (p[i].unicode() - '0');
        ++i;
        ++leidos;
    }
    return leidos >= minimo ? valor : -1;
}

// "12,345.50" -> "12345.50"; an empty string when the text is no amount with groups or
// decimals. Checks first and builds a new text only when something changes.
QString montoPlano(const QString &texto, int a, int b)
{
    const QChar *p = texto.constData();
    int i = a;
    const bool negativo = p[i] == QLatin1Char('-');
    if (negativo)
        ++i;
    int primero = 0;
    bool cero = true;
    while (i < b && esDigito(p[i])) {
        cero = cero && p[i] == QLatin1Char('0');
        ++i;
        ++primero;
    }
    if (primero == 0)
        return QString();
    bool grupos = false;
    if (i < b && p[i] == QLatin1Char(',')) {
        if (primero > 3)
            return QString();
        while (i < b && p[i] == QLatin1Char(',')) {
            ++i;
            int n = 0;
            while (i < b && esDigito(p[i]) && n < 4) {
                cero = cero && p[i] == QLatin1Char('0');
                ++i;
                ++n;
            }
            if (n != 3)
                return QString();
            grupos = true;
        }
    }
    bool decimales = false;
    if (i < b && p[i] == QLatin1Char('.')) {
        ++i;
        const int inicio = i;
        while (i < b && esDigito(p[i])) {
            cero = cero && p[i] == QLatin1Char('0');
            ++i;
        }
        if (i == inicio)
            return QString();
        decimales = true;
    }
    // Plain integers are left alone, except a negative zero ("-0").
    if (i != b || !(grupos || decimales || (negativo && cero)))
        return QString();
    const bool signo = negativo && !cero;
    if (!grupos && (signo || !negativo) && a == 0 && b == texto.size())
        return texto; // already plain
    QString plano;
    plano.reserve(b - a);
    if (signo)
        plano += QLatin1Char('-');
    for (int k = negativo ? a + 1 : a; k < b; ++k) {
        if (p[k] != QLatin1Char(','))
            plano += p[k];
    }
    return plano;
}

// "lunes 23/11/2026", "23/11/2026" or "23-11-2026" -> "2026-11-23"; empty when it is none.
QString fechaPlana(const QChar *p, int a, int b)
{
    int inicio = b;
    while (inicio > a && p[inicio - 1] != QLatin1Char(' '))
        --inicio;
    for (int k = a; k < inicio; ++k) {
        if (esDigito(p[k]))
            return QString();
    }
    int i = inicio;
    const int dia = leerEntero(p, i, b, 1, 2);
    if (dia < 0 || i >= b)
        return QString();
    const QChar separador = p[i];
    if (separador != QLatin1Char('/') && separador != QLatin1Char('-'))
        return QString();
    ++i;
    const int mes = leerEntero(p, i, b, 1, 2);
    if (mes < 0 || i >= b || p[i] != separador)
        return QString();
    ++i;
    const int anio = leerEntero(p, i, b, 4, 4);
    if (anio < 0 || i != b)
        return QString();
    const QDate fecha(anio, mes, dia);
    return fecha.isValid() ? fecha.toString(Qt::ISODate) : QString();
}

} // namespace

QString valorPlano(const QString &texto)
{
    const QChar *p = texto.constData();
    int a = 0, b = texto.size();
    while (a < b && p[a] == QLatin1Char(' '))
        ++a;
    while (b > a && p[b - 1] == QLatin1Char(' '))
        --b;
    // Amounts and dates end in a digit; most texts are neither.
    if (b - a < 2 || !esDigito(p[b - 1]))
        return texto;
    if (esDigito(p[a]) || p[a] == QLatin1Char('-')) {
        const QString monto = montoPlano(texto, a, b);
        if (!monto.isEmpty())
            return monto;
    }
    const QString fecha = fechaPlana(p, a, b);
    return fecha.isEmpty() ? texto : fecha;
}

QString tituloEnUnaLinea(const QString &titulo)
{
    QString t = titulo;
    t.replace(QLatin1String("\r\n"), QLatin1String(" "));
    t.replace(QLatin1Char('\n'), QLatin1Char(' '));
    t.replace(QLatin1Char('\r'), QLatin1Char(' '));
    return t;
}

void agregarCampoCsv(QString &destino, const QString &campo)
{
    bool comillas = false;
    for (QChar c : campo) {
        const ushort u = c.unicode();
        if (u == ',' || u == '"' || u == '\n' || u == '\r') {
            comillas = true;
            break;
        }
    }
    if (!comillas) {
        destino += campo;
        return;
    }
    destino += QLatin1Char('"');
    for (QChar c : campo) {
        if (c == QLatin1Char('"'))
            destino += QLatin1Char('"');
        destino += c;
    }
    destino += QLatin1Char('"');
}

namespace {

void agregarLineaCsv(QString &destino, const QStringList &campos, bool normalizar)
{
    for (int i = 0; i < campos.size(); ++i) {
        if (i > 0)
            destino += QLatin1Char(',');
        agregarCampoCsv(destino, normalizar ? valorPlano(campos.at(i)) : campos.at(i));
    }
    destino += QLatin1String("\r\n");
}

QString celdaTsv(const QString &texto)
{
    QString t = texto;
    for (QChar &c : t) {
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            c = QLatin1Char(' ');
    }
    return t;
}

void agregarLineaTsv(QString &destino, const QStringList &campos)
{
    for (int i = 0; i < campos.size(); ++i) {
        if (i > 0)
            destino += QLatin1Char('\t');
        destino += celdaTsv(campos.at(i));
    }
    destino += QLatin1Char('\n');
}

} // namespace

QByteArray textoCsv(const QStringList &titulos, const QVector<QStringList> &filas)
{
    QString texto;
    QStringList enUnaLinea;
    for (const QString &t : titulos)
        enUnaLinea << tituloEnUnaLinea(t);
    agregarLineaCsv(texto, enUnaLinea, false);
    for (const QStringList &fila : filas)
        agregarLineaCsv(texto, fila, true);
    return kBomUtf8 + texto.toUtf8();
}

QString textoTsv(const QStringList &titulos, const QVector<QStringList> &filas)
{
    QString texto;
    QStringList enUnaLinea;
    for (const QString &t : titulos)
        enUnaLinea << tituloEnUnaLinea(t);
    agregarLineaTsv(texto, enUnaLinea);
    for (const QStringList &fila : filas)
        agregarLineaTsv(texto, fila);
    return texto;
}

// ---- Page layout ----

Paginacion paginar(int filas, double altoUtil, double altoArriba, double altoFila, double altoPie)
{
    Paginacion p;
    const double libre = altoUtil - altoArriba - altoPie;
    p.filasPorPagina = altoFila > 0 ? std::max(1, int(std::floor(libre / altoFila + 1e-9))) : 1;
    p.paginas = std::max(1, (std::max(filas, 0) + p.filasPorPagina - 1) / p.filasPorPagina);
    return p;
}

bool apaisada(double anchoTabla, double altoTabla, double anchoUtilVertical)
{
    return anchoTabla > altoTabla || anchoTabla > anchoUtilVertical;
}

// ---- Reading a table ----

QVector<int> columnasVisibles(const QTableView *tabla)
{
    QVector<int> columnas;
    const QAbstractItemModel *modelo = tabla->model();
    if (!modelo)
        return columnas;
    const QHeaderView *cabecera = tabla->horizontalHeader();
    const int total = modelo->columnCount(tabla->rootIndex());
    for (int v = 0; v < total; ++v) {
        const int c = cabecera->logicalIndex(v);
        if (c >= 0 && !tabla->isColumnHidden(c))
            columnas << c;
    }
    return columnas;
}

QVector<int> filasVisibles(const QTableView *tabla)
{
    QVector<int> filas;
    const QAbstractItemModel *modelo = tabla->model();
    if (!modelo)
        return filas;
    const QHeaderView *cabecera = tabla->verticalHeader();
    const int total = modelo->rowCount(tabla->rootIndex());
    filas.reserve(total);
    const bool movidas = cabecera->sectionsMoved();
    const bool ocultas = cabecera->hiddenSectionCount() > 0;
    for (int v = 0; v < total; ++v) {
        const int f = movidas ? cabecera->logicalIndex(v) : v;
        if (!ocultas || !tabla->isRowHidden(f))
            filas << f;
    }
    return filas;
}

QStringList titulos(const QTableView *tabla, const QVector<int> &columnas)
{
    QStringList t;
    const QAbstractItemModel *modelo = tabla->model();
    for (int c : columnas)
        t << tituloEnUnaLinea(modelo->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString());
    return t;
}

namespace {

QString textoDeValor(const QTableView *tabla, const QVariant &valor, int columna)
{
    if (valor.userType() == QMetaType::QString)
        return valor.toString();
    if (!valor.isValid())
        return QString();
    if (auto *delegado = qobject_cast<QStyledItemDelegate *>(
            tabla->itemDelegateForColumn(columna) ? tabla->itemDelegateForColumn(columna)
                                                  : tabla->itemDelegate()))
        return delegado->displayText(valor, tabla->locale());
    return valor.toString();
}

// What the CSV gets for a cell: numbers and dates kept by the model as such are written plainly,
// texts go through valorPlano().
QString valorCsv(const QVariant &valor)
{
    switch (valor.userType()) {
    case QMetaType::QString:
        return valorPlano(valor.toString());
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(valor.toDouble(), 'g', 15);
    case QMetaType::QDate:
        return valor.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return valor.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    default:
        return valor.isValid() ? valorPlano(valor.toString()) : QString();
    }
}

} // namespace

QString textoCelda(const QTableView *tabla, int fila, int columna)
{
    const QAbstractItemModel *modelo = tabla->model();
    const QModelIndex i = modelo->index(fila, columna, tabla->rootIndex());
    return textoDeValor(tabla, modelo->data(i, Qt::DisplayRole), columna);
}

QString textoCopia(const QTableView *tabla, const Avance &avance, bool *completo)
{
    if (completo)
        *completo = true;
    const QAbstractItemModel *modelo = tabla->model();
    if (!modelo)
        return QString();
    QVector<int> columnas = columnasVisibles(tabla);
    QVector<int> filas;
    const QItemSelectionModel *sel = tabla->selectionModel();
    const QItemSelection seleccion = sel ? sel->selection() : QItemSelection();

    // Marks of the selected cells, row by row, over the visible columns.
    const int nColumnas = modelo->columnCount(tabla->rootIndex());
    std::vector<std::vector<bool>> marcas;
    std::vector<int> filaDeMarca; // model row -> index in marcas, -1 when none
    if (!seleccion.isEmpty()) {
        const int nFilas = modelo->rowCount(tabla->rootIndex());
        filaDeMarca.assign(std::size_t(std::max(nFilas, 0)), -1);
        std::vector<bool> columnaUsada(std::size_t(std::max(nColumnas, 0)), false);
        for (const QItemSelectionRange &r : seleccion) {
            if (r.parent() != tabla->rootIndex())
                continue;
            for (int f = std::max(r.top(), 0); f <= r.bottom() && f < nFilas; ++f) {
                if (tabla->isRowHidden(f))
                    continue;
                int &m = filaDeMarca[std::size_t(f)];
                if (m < 0) {
                    m = int(marcas.size());
                    marcas.emplace_back(std::size_t(nColumnas), false);
                }
                for (int c = std::max(r.left(), 0); c <= r.right() && c < nColumnas; ++c) {
                    marcas[std::size_t(m)][std::size_t(c)] = true;
                    columnaUsada[std::size_t(c)] = true;
                }
            }
        }
        QVector<int> usadas;
        for (int c : qAsConst(columnas)) {
            if (columnaUsada[std::size_t(c)])
                usadas << c;
        }
        columnas = usadas;
        const QHeaderView *cabecera = tabla->verticalHeader();
        for (int v = 0; v < nFilas; ++v) {
            const int f = cabecera->logicalIndex(v);
            if (f >= 0 && filaDeMarca[std::size_t(f)] >= 0)
                filas << f;
        }
    }
    // Nothing (visible) selected: the whole table.
    if (columnas.isEmpty() || filas.isEmpty()) {
        columnas = columnasVisibles(tabla);
        filas = filasVisibles(tabla);
        marcas.clear();
    }

    QString texto;
    agregarLineaTsv(texto, titulos(tabla, columnas));
    QStringList celdas;
    QElapsedTimer reloj;
    reloj.start();
    for (int i = 0; i < filas.size(); ++i) {
        const int f = filas.at(i);
        celdas.clear();
        const std::vector<bool> *marca =
            marcas.empty() ? nullptr : &marcas[std::size_t(filaDeMarca[std::size_t(f)])];
        for (int c : qAsConst(columnas))
            celdas << (!marca || (*marca)[std::size_t(c)] ? textoCelda(tabla, f, c) : QString());
        agregarLineaTsv(texto, celdas);
        // Every ~30 ms of work the caller may show progress or stop.
        if (avance && (i + 1) % 256 == 0 && reloj.elapsed() >= 30) {
            if (!avance(i + 1, filas.size())) {
                if (completo)
                    *completo = false;
                return QString();
            }
            reloj.restart();
        }
    }
    return texto;
}

void copiar(const QTableView *tabla)
{
    QApplication::clipboard()->setText(textoCopia(tabla));
}

bool escribirCsv(const QTableView *tabla, QIODevice &destino, const Avance &avance)
{
    const QAbstractItemModel *modelo = tabla->model();
    const QVector<int> columnas = columnasVisibles(tabla);
    const QVector<int> filas = filasVisibles(tabla);
    const QModelIndex raiz = tabla->rootIndex();

    QString bloque;
    QStringList enUnaLinea = titulos(tabla, columnas);
    agregarLineaCsv(bloque, enUnaLinea, false);
    if (destino.write(kBomUtf8) != kBomUtf8.size())
        return false;

    // Rows go out in blocks of about 30 ms of work; between blocks the caller may show
    // progress, let events through or stop.
    constexpr int kFilasEntreMiradas = 256;
    constexpr qint64 kMsPorBloque = 30;
    bloque.reserve(1 << 20);
    QElapsedTimer reloj;
    reloj.start();
    const int total = filas.size();
    for (int i = 0; i < total; ++i) {
        const int f = filas.at(i);
        for (int k = 0; k < columnas.size(); ++k) {
            if (k > 0)
                bloque += QLatin1Char(',');
            agregarCampoCsv(bloque, valorCsv(modelo->data(modelo->index(f, columnas.at(k), raiz))));
        }
        bloque += QLatin1String("\r\n");
        if ((i + 1) % kFilasEntreMiradas == 0 && i + 1 < total && reloj.elapsed() >= kMsPorBloque) {
            const QByteArray bytes = bloque.toUtf8();
            if (destino.write(bytes) != bytes.size())
                return false;
            bloque.resize(0);
            if (avance && !avance(i + 1, total))
                return false;
            reloj.restart();
        }
    }
    const QByteArray bytes = bloque.toUtf8();
    if (destino.write(bytes) != bytes.size())
        return false;
    return !avance || avance(total, total);
}

// ---- Heading ----

namespace {

QString textoEtiqueta(const QLabel *etiqueta)
{
    QString t = etiqueta->text();
    t.remove(QLatin1Char('&'));
    t = t.trimmed();
    while (t.endsWith(QLatin1Char(':')))
        t = t.left(t.size() - 1).trimmed();
    return t;
}

// The label of a field: a label whose buddy it is, else the label just before it in its layout.
QString etiquetaDe(QWidget *dialogo, QWidget *campo)
{
    const auto etiquetas = dialogo->findChildren<QLabel *>();
    for (QLabel *l : etiquetas) {
        if (l->buddy() == campo)
            return textoEtiqueta(l);
    }
    const auto disenos = dialogo->findChildren<QLayout *>();
    for (QLayout *d : disenos) {
        const int i = d->indexOf(campo);
        if (i > 0) {
            if (auto *l = qobject_cast<QLabel *>(d->itemAt(i - 1)->widget()))
                return textoEtiqueta(l);
        }
        if (i >= 0)
            break;
    }
    return QString();
}

QString contextoDe(QWidget *dialogo)
{
    const QString propio = dialogo->property("contextoImpresion").toString();
    if (!propio.isEmpty())
        return propio;
    QStringList partes;
    QList<QWidget *> padres;
    const auto agregar = [&](QWidget *campo, const QString &texto) {
        if (texto.trimmed().isEmpty())
            return;
        const QString etiqueta = etiquetaDe(dialogo, campo);
        partes << (etiqueta.isEmpty() ? texto : etiqueta + QStringLiteral(": ") + texto);
    };
    const auto fechas = dialogo->findChildren<QDateEdit *>();
    for (QDateEdit *f : fechas) {
        if (!f->isVisibleTo(dialogo))
            continue;
        agregar(f, f->text());
        padres << f->parentWidget();
    }
    // Choice boxes beside the date fields are the dialog's filter too (the monitor's draw).
    const auto combos = dialogo->findChildren<QComboBox *>();
    for (QComboBox *c : combos) {
        if (c->isVisibleTo(dialogo) && padres.contains(c->parentWidget()))
            agregar(c, c->currentText());
    }
    return partes.join(QStringLiteral("   "));
}

} // namespace

Encabezado encabezadoDe(const QTableView *tabla)
{
    Encabezado e;
    QWidget *dialogo = tabla->window();
    e.titulo = dialogo->windowTitle();
    e.contexto = contextoDe(dialogo);
    e.momento = QDateTime::currentDateTime();
    return e;
}

// ---- Printing ----

int imprimirTabla(const QTableView *tabla, QPrinter *impresora, const Encabezado &encabezado,
                  const Avance &avance)
{
    const QAbstractItemModel *modelo = tabla->model();
    if (!modelo)
        return 0;
    const QVector<int> columnas = columnasVisibles(tabla);
    const QVector<int> filas = filasVisibles(tabla);
    const QStringList nombres = titulos(tabla, columnas);
    const QModelIndex raiz = tabla->rootIndex();

    impresora->setPageMargins(QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
    impresora->setPageOrientation(QPageLayout::Portrait);

    QFont fuente = tabla->font();
    fuente.setPointSizeF(8);
    QFont negrita = fuente;
    negrita.setBold(true);
    QFont grande = negrita;
    grande.setPointSizeF(12);
    const QFontMetricsF fm(fuente, impresora);
    const QFontMetricsF fmNegrita(negrita, impresora);
    const QFontMetricsF fmGrande(grande, impresora);

    const double margen = fm.height() * 0.4;
    const double altoFila = fm.height() * 1.5;
    const double altoTitulos = fmNegrita.height() * 1.6;
    const double altoEncabezado = fmGrande.height() * 1.3 + fm.height() * 2.6;
    const double altoArriba = altoEncabezado + altoTitulos;
    const double altoPie = fm.height() * 2;

    // Column widths from the titles and the texts (of the first rows of a very long table; a
    // longer text further down is cut with "…").
    constexpr int kFilasMedidas = 2000;
    QVector<double> anchos;
    for (int k = 0; k < columnas.size(); ++k) {
        double ancho = fmNegrita.horizontalAdvance(nombres.at(k));
        for (int i = 0; i < filas.size() && i < kFilasMedidas; ++i)
            ancho = std::max(ancho,
                             fm.horizontalAdvance(textoCelda(tabla, filas.at(i), columnas.at(k))));
        anchos << std::ceil(ancho + 2 * margen + fm.height() * 0.2);
    }
    double anchoTabla = 0;
    for (double a : qAsConst(anchos))
        anchoTabla += a;
    const double altoTabla = altoTitulos + filas.size() * altoFila;

    const double anchoVertical = impresora->pageRect(QPrinter::DevicePixel).width();
    if (apaisada(anchoTabla, altoTabla, anchoVertical))
        impresora->setPageOrientation(QPageLayout::Landscape);
    const QRectF util = impresora->pageRect(QPrinter::DevicePixel);
    // A table wider than the page is drawn smaller.
    const double escala = anchoTabla > util.width() ? util.width() / anchoTabla : 1.0;
    const double ancho = util.width() / escala;
    const double alto = util.height() / escala;
    const Paginacion pag = paginar(filas.size(), alto, altoArriba, altoFila, altoPie);

    const QString impreso =
        QStringLiteral("Impreso: ") +
        QLocale().toString(encabezado.momento, QStringLiteral("dd/MM/yyyy h:mm:ss ap"));
    const QColor gris(190, 190, 190);
    const QColor fondoTitulos(225, 225, 225);

    QPainter p;
    if (!p.begin(impresora))
        return 0;
    p.scale(escala, escala);
    const double anchoDibujo = std::min(anchoTabla, ancho);
    // The pages the print dialog asked for, when it asked for some.
    int desde = 0, hasta = pag.paginas - 1;
    if (impresora->printRange() == QPrinter::PageRange && impresora->fromPage() > 0) {
        desde = std::min(impresora->fromPage(), pag.paginas) - 1;
        hasta = std::max(desde, std::min(impresora->toPage(), pag.paginas) - 1);
    }
    for (int pagina = desde; pagina <= hasta; ++pagina) {
        if (pagina > desde && !impresora->newPage()) {
            p.end();
            return 0;
        }
        // Heading.
        double y = 0;
        p.setPen(Qt::black);
        p.setFont(grande);
        p.drawText(QRectF(0, y, ancho, fmGrande.height()), Qt::AlignLeft | Qt::AlignVCenter,
                   fmGrande.elidedText(encabezado.titulo, Qt::ElideRight, ancho));
        y += fmGrande.height() * 1.3;
        p.setFont(fuente);
        p.drawText(QRectF(0, y, ancho, fm.height()), Qt::AlignLeft | Qt::AlignVCenter,
                   fm.elidedText(encabezado.contexto, Qt::ElideRight, ancho));
        y += fm.height() * 1.2;
        p.drawText(QRectF(0, y, ancho, fm.height()), Qt::AlignLeft | Qt::AlignVCenter, impreso);
        y = altoEncabezado;

        // Column titles.
        p.setFont(negrita);
        p.fillRect(QRectF(0, y, anchoDibujo, altoTitulos), fondoTitulos);
        double x = 0;
        for (int k = 0; k < columnas.size(); ++k) {
            const QRectF celda(x, y, anchos.at(k), altoTitulos);
            p.setPen(Qt::black);
            p.drawText(
                celda.adjusted(margen, 0, -margen, 0), Qt::AlignCenter,
                fmNegrita.elidedText(nombres.at(k), Qt::ElideRight, anchos.at(k) - 2 * margen));
            x += anchos.at(k);
        }
        const double inicioFilas = y;
        y += altoTitulos;

        // Rows, with their colours and alignment.
        p.setFont(fuente);
        const int primera = pagina * pag.filasPorPagina;
        const int ultima = std::min(filas.size(), primera + pag.filasPorPagina);
        for (int i = primera; i < ultima; ++i) {
            x = 0;
            for (int k = 0; k < columnas.size(); ++k) {
                const QModelIndex indice = modelo->index(filas.at(i), columnas.at(k), raiz);
                const QRectF celda(x, y, anchos.at(k), altoFila);
                const QVariant fondo = modelo->data(indice, Qt::BackgroundRole);
                if (fondo.canConvert<QBrush>() && fondo.value<QBrush>().style() != Qt::NoBrush)
                    p.fillRect(celda, fondo.value<QBrush>());
                const QVariant frente = modelo->data(indice, Qt::ForegroundRole);
                p.setPen(frente.canConvert<QBrush>() &&
                                 frente.value<QBrush>().style() != Qt::NoBrush
                             ? frente.value<QBrush>().color()
                             : QColor(Qt::black));
                const QVariant alineacion = modelo->data(indice, Qt::TextAlignmentRole);
                Qt::Alignment a = alineacion.isValid() ? Qt::Alignment(alineacion.toInt())
                                                       : Qt::Alignment(Qt::AlignLeft);
                a = (a & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
                p.drawText(celda.adjusted(margen, 0, -margen, 0), a,
                           fm.elidedText(textoDeValor(tabla, modelo->data(indice), columnas.at(k)),
                                         Qt::ElideRight, anchos.at(k) - 2 * margen));
                x += anchos.at(k);
            }
            y += altoFila;
        }

        // Grid.
        p.setPen(QPen(gris, 0));
        p.drawLine(QPointF(0, inicioFilas), QPointF(anchoDibujo, inicioFilas));
        for (double ly = inicioFilas + altoTitulos; ly <= y + 0.5; ly += altoFila)
            p.drawLine(QPointF(0, ly), QPointF(anchoDibujo, ly));
        x = 0;
        p.drawLine(QPointF(0, inicioFilas), QPointF(0, y));
        for (double a : qAsConst(anchos)) {
            x += a;
            p.drawLine(QPointF(x, inicioFilas), QPointF(x, y));
        }

        // Page number.
        p.setPen(Qt::black);
        p.drawText(QRectF(0, alto - fm.height(), ancho, fm.height()),
                   Qt::AlignRight | Qt::AlignVCenter,
                   QStringLiteral("Página %1 de %2").arg(pagina + 1).arg(pag.paginas));

        if (avance && !avance(pagina - desde + 1, hasta - desde + 1)) {
            p.end();
            return 0;
        }
    }
    if (!p.end())
        return 0;
    return hasta - desde + 1;
}

// ---- Long jobs run from the menu ----

namespace {

// Progress box for a long export, and the guard that stops it when the table changes under it
// (a new sales load while the box lets events through).
class Trabajo : public QObject {
public:
    Trabajo(QTableView *tabla, const QString &texto, int umbral)
        : m_tabla(tabla), m_modelo(tabla->model()), m_texto(texto), m_umbral(umbral)
    {
        if (QAbstractItemModel *m = m_modelo) {
            const auto cambio = [this] {
                m_cambio = true;
            };
            connect(m, &QAbstractItemModel::modelAboutToBeReset, this, cambio);
            connect(m, &QAbstractItemModel::layoutAboutToBeChanged, this, cambio);
            connect(m, &QAbstractItemModel::rowsAboutToBeInserted, this, cambio);
            connect(m, &QAbstractItemModel::rowsAboutToBeRemoved, this, cambio);
            connect(m, &QAbstractItemModel::columnsAboutToBeInserted, this, cambio);
            connect(m, &QAbstractItemModel::columnsAboutToBeRemoved, this, cambio);
            connect(m, &QAbstractItemModel::rowsAboutToBeMoved, this, cambio);
            connect(m, &QAbstractItemModel::columnsAboutToBeMoved, this, cambio);
        }
    }

    ~Trabajo() override { delete m_progreso; }

    Avance avance()
    {
        return [this](int hechas, int total) {
            return seguir(hechas, total);
        };
    }

    bool cambio() const { return m_cambio || !m_tabla || !m_modelo; }
    bool cancelado() const { return m_cancelado; }

private:
    bool seguir(int hechas, int total)
    {
        if (!m_progreso && total >= m_umbral && hechas < total && m_tabla) {
            m_progreso = new QProgressDialog(m_texto, QStringLiteral("Cancelar"), 0, total,
                                             m_tabla->window());
            m_progreso->setWindowTitle(m_tabla->window()->windowTitle());
            m_progreso->setWindowModality(Qt::WindowModal);
            m_progreso->setMinimumDuration(300);
            m_progreso->setAutoClose(false);
            m_progreso->setAutoReset(false);
        }
        if (m_progreso) {
            m_progreso->setValue(hechas);
            QCoreApplication::processEvents();
            // The box goes with its dialog when the dialog is deleted meanwhile.
            if (m_progreso && m_progreso->wasCanceled())
                m_cancelado = true;
        }
        return !m_cancelado && !cambio();
    }

    QPointer<QTableView> m_tabla;
    QPointer<QAbstractItemModel> m_modelo;
    QString m_texto;
    int m_umbral;
    QPointer<QProgressDialog> m_progreso;
    bool m_cambio = false;
    bool m_cancelado = false;
};

// After a job that did not finish: says why, unless the user cancelled it.
void avisarCambio(QWidget *padre, const QString &texto)
{
    mostrarMensaje(padre, QStringLiteral("Exportar"), texto, IconoMensaje::Advertencia);
}

void avisarFallo(QWidget *padre, const Trabajo &t, const QString &ruta, const QString &error)
{
    if (t.cancelado())
        return;
    if (t.cambio())
        avisarCambio(padre, QStringLiteral("La tabla cambió mientras se exportaba; no se guardó "
                                           "nada. Vuelva a intentarlo."));
    else
        mostrarMensaje(
            padre, QStringLiteral("Error"),
            QStringLiteral("No se pudo escribir %1: %2").arg(QDir::toNativeSeparators(ruta), error),
            IconoMensaje::Error);
}

// Prints with a progress box; the pages printed, 0 when it stopped.
int imprimirConAvance(QTableView *tabla, QPrinter *impresora, Trabajo &trabajo)
{
    return imprimirTabla(tabla, impresora, encabezadoDe(tabla), trabajo.avance());
}

} // namespace

bool exportarCsv(QTableView *tabla, const QString &ruta)
{
    // The dialog may go away while a long job lets events through.
    const QPointer<QWidget> padre = tabla->window();
    QSaveFile archivo(ruta);
    Trabajo trabajo(tabla, QStringLiteral("Exportando a CSV…"), 20000);
    if (!archivo.open(QIODevice::WriteOnly)) {
        avisarFallo(padre, trabajo, ruta, archivo.errorString());
        return false;
    }
    if (!escribirCsv(tabla, archivo, trabajo.avance())) {
        const QString error = archivo.errorString();
        archivo.cancelWriting();
        avisarFallo(padre, trabajo, ruta, error);
        return false;
    }
    if (!archivo.commit()) {
        avisarFallo(padre, trabajo, ruta, archivo.errorString());
        return false;
    }
    return true;
}

bool exportarPdf(QTableView *tabla, const QString &ruta)
{
    // The dialog may go away while a long job lets events through.
    const QPointer<QWidget> padre = tabla->window();
    Trabajo trabajo(tabla, QStringLiteral("Exportando a PDF…"), 5);
    // The printer writes a file of its own; it replaces `ruta` only once it is complete.
    QTemporaryFile temporal(QFileInfo(ruta).absolutePath() + QStringLiteral("/.exportar-XXXXXX"));
    if (!temporal.open()) {
        avisarFallo(padre, trabajo, ruta, temporal.errorString());
        return false;
    }
    temporal.close();
    {
        QPrinter impresora(QPrinter::HighResolution);
        impresora.setOutputFormat(QPrinter::PdfFormat);
        impresora.setOutputFileName(temporal.fileName());
        impresora.setDocName(padre->windowTitle());
        if (imprimirConAvance(tabla, &impresora, trabajo) == 0) {
            avisarFallo(padre, trabajo, ruta, QStringLiteral("no se pudo generar el PDF"));
            return false;
        }
    }
    QSaveFile archivo(ruta);
    if (!temporal.open() || !archivo.open(QIODevice::WriteOnly)) {
        avisarFallo(padre, trabajo, ruta, archivo.errorString());
        return false;
    }
    while (!temporal.atEnd()) {
        const QByteArray trozo = temporal.read(1 << 20);
        if (archivo.write(trozo) != trozo.size())
            break;
    }
    if (!temporal.atEnd() || !archivo.commit()) {
        const QString error = archivo.errorString();
        archivo.cancelWriting();
        avisarFallo(padre, trabajo, ruta, error);
        return false;
    }
    return true;
}

// ---- The menu ----

namespace {

QString carpetaAnterior;

// Asks where to save, suggesting the dialog's title as name; "" when the user cancelled.
QString pedirRuta(QTableView *tabla, const QString &titulo, const QString &extension,
                  const QString &filtro)
{
    QString nombre = tabla->window()->windowTitle().trimmed();
    static const QString prohibidos = QStringLiteral("/\\:*?\"<>|");
    for (QChar &c : nombre) {
        if (prohibidos.contains(c))
            c = QLatin1Char('_');
    }
    if (nombre.isEmpty())
        nombre = QStringLiteral("tabla");
    if (carpetaAnterior.isEmpty()) {
        carpetaAnterior = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        if (carpetaAnterior.isEmpty() || !QDir(carpetaAnterior).exists())
            carpetaAnterior = QDir::homePath();
    }
    QString ruta = QFileDialog::getSaveFileName(
        tabla->window(), titulo,
        carpetaAnterior + QLatin1Char('/') + nombre + QLatin1Char('.') + extension, filtro);
    if (ruta.isEmpty())
        return ruta;
    if (QFileInfo(ruta).suffix().isEmpty())
        ruta += QLatin1Char('.') + extension;
    carpetaAnterior = QFileInfo(ruta).absolutePath();
    return ruta;
}

// Copies with a progress box for long tables; the clipboard keeps what it had when the copy
// does not finish.
void accionCopiar(QTableView *tabla)
{
    const QPointer<QWidget> padre = tabla->window();
    Trabajo trabajo(tabla, QStringLiteral("Copiando…"), 20000);
    bool completo = false;
    const QString texto = textoCopia(tabla, trabajo.avance(), &completo);
    if (completo)
        QApplication::clipboard()->setText(texto);
    else if (!trabajo.cancelado())
        avisarCambio(padre, QStringLiteral("La tabla cambió mientras se copiaba; no se "
                                           "copió nada. Vuelva a intentarlo."));
}

void accionCsv(QTableView *tabla)
{
    const QString ruta = pedirRuta(tabla, QStringLiteral("Exportar a CSV"), QStringLiteral("csv"),
                                   QStringLiteral("Archivos CSV (*.csv)"));
    if (!ruta.isEmpty())
        exportarCsv(tabla, ruta);
}

void accionPdf(QTableView *tabla)
{
    const QString ruta = pedirRuta(tabla, QStringLiteral("Exportar a PDF"), QStringLiteral("pdf"),
                                   QStringLiteral("Archivos PDF (*.pdf)"));
    if (!ruta.isEmpty())
        exportarPdf(tabla, ruta);
}

void accionImprimir(QTableView *tabla)
{
    QPrinter impresora(QPrinter::HighResolution);
    QPointer<QTableView> vigilada(tabla);
    QPrintDialog dialogo(&impresora, tabla->window());
    dialogo.setWindowTitle(QStringLiteral("Imprimir"));
    if (dialogo.exec() != QDialog::Accepted || !vigilada)
        return;
    const QPointer<QWidget> padre = tabla->window();
    Trabajo trabajo(tabla, QStringLiteral("Imprimiendo…"), 5);
    if (imprimirConAvance(tabla, &impresora, trabajo) == 0 && !trabajo.cancelado())
        avisarFallo(padre, trabajo, impresora.printerName(),
                    QStringLiteral("la impresora no aceptó el trabajo"));
}

void mostrarMenu(QTableView *tabla, const QPoint &dondeGlobal)
{
    QMenu menu(tabla);
    const QPointer<QTableView> vigilada(tabla);
    // Each entry runs once the menu has closed.
    const auto entrada = [&](const QString &texto, void (*accion)(QTableView *)) {
        QAction *a = menu.addAction(texto);
        QObject::connect(a, &QAction::triggered, tabla, [vigilada, accion] {
            QTimer::singleShot(0, vigilada.data(), [vigilada, accion] {
                if (vigilada)
                    accion(vigilada.data());
            });
        });
    };
    entrada(kCopiar, accionCopiar);
    entrada(kExportarCsv, accionCsv);
    entrada(kExportarPdf, accionPdf);
    entrada(kImprimir, accionImprimir);
    menu.exec(dondeGlobal);
}

// Catches the context-menu requests that the tables of a dialog leave unanswered (a table with
// the default policy ignores them, so they reach the dialog).
class FiltroMenus : public QObject {
public:
    explicit FiltroMenus(QWidget *dialogo) : QObject(dialogo), m_dialogo(dialogo)
    {
        setObjectName(QStringLiteral("exportar_filtroMenus"));
    }

    bool eventFilter(QObject *objeto, QEvent *evento) override
    {
        if (objeto != m_dialogo || evento->type() != QEvent::ContextMenu)
            return false;
        auto *e = static_cast<QContextMenuEvent *>(evento);
        QWidget *w = e->reason() == QContextMenuEvent::Keyboard ? QApplication::focusWidget()
                                                                : m_dialogo->childAt(e->pos());
        QTableView *tabla = nullptr;
        for (; w && w != m_dialogo; w = w->parentWidget()) {
            if ((tabla = qobject_cast<QTableView *>(w)))
                break;
        }
        if (!tabla || tabla->window() != m_dialogo ||
            tabla->contextMenuPolicy() != Qt::DefaultContextMenu)
            return false;
        e->accept();
        mostrarMenu(tabla, e->reason() == QContextMenuEvent::Keyboard
                               ? tabla->viewport()->mapToGlobal(
                                     tabla->visualRect(tabla->currentIndex()).center())
                               : e->globalPos());
        return true;
    }

private:
    QWidget *m_dialogo;
};

} // namespace

void instalarMenusTablas(QWidget *dialogo)
{
    if (!dialogo || dialogo->findChild<QObject *>(QStringLiteral("exportar_filtroMenus"),
                                                  Qt::FindDirectChildrenOnly))
        return;
    dialogo->installEventFilter(new FiltroMenus(dialogo));
}

} // namespace exportar
