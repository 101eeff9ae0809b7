#include "monitor/modelojugadas.h"

#include "app/formato.h"

#include <QHash>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// Rank of each text among the distinct ones, in the locale's order; texts that compare equal
// share a rank. `cantidad`, when given, receives the number of distinct ranks.
std::vector<int> rangosDeTextos(const std::vector<QString> &textos, int *cantidad = nullptr)
{
    std::vector<int> porTexto(textos.size());
    std::iota(porTexto.begin(), porTexto.end(), 0);
    std::sort(porTexto.begin(), porTexto.end(), [&](int a, int b) {
        return textos[std::size_t(a)].localeAwareCompare(textos[std::size_t(b)]) < 0;
    });
    std::vector<int> rango(textos.size(), 0);
    int r = 0;
    for (std::size_t k = 0; k < porTexto.size(); ++k) {
        if (k > 0 && textos[std::size_t(porTexto[k - 1])].localeAwareCompare(
                         textos[std::size_t(porTexto[k])]) < 0)
            ++r;
        rango[std::size_t(porTexto[k])] = r;
    }
    if (cantidad)
        *cantidad = r + 1;
    return rango;
}

} // namespace

ModeloJugadas::ModeloJugadas(QObject *parent) : QAbstractTableModel(parent) {}

QStringList ModeloJugadas::encabezados()
{
    return {QStringLiteral("Banca"),     QStringLiteral("Agencia"), QStringLiteral("Ticket"),
            QStringLiteral("Hora"),      QStringLiteral("#"),       QStringLiteral("Nombre"),
            QStringLiteral("Monto"),     QStringLiteral("Estado"),  QStringLiteral("monto"),
            QStringLiteral("codAgencia")};
}

void ModeloJugadas::cargar(std::shared_ptr<const DatosVentas> datos, int decimales)
{
    beginResetModel();
    m_datos = std::move(datos);
    m_decimales = decimales;
    m_orden.resize(m_datos ? m_datos->jugadas.size() : 0);
    std::iota(m_orden.begin(), m_orden.end(), 0);
    m_indiceAlDia = false;
    endResetModel();
}

void ModeloJugadas::indexarNumeros() const
{
    m_indiceAlDia = true;
    const std::size_t numeros = m_datos ? m_datos->numeros.size() : 0;
    m_inicioNumero.assign(numeros + 1, 0);
    m_filasNumero.resize(m_orden.size());
    if (!m_datos)
        return;
    // The plays' numbers in table order first, so that the grouping below reads 4 bytes a row
    // in sequence.
    const auto &jugadas = m_datos->jugadas;
    std::vector<std::int32_t> numeroFila(m_orden.size());
    for (std::size_t f = 0; f < m_orden.size(); ++f)
        numeroFila[f] = jugadas[std::size_t(m_orden[f])].numero;
    agruparPorNumero(numeroFila);
}

void ModeloJugadas::agruparPorNumero(const std::vector<std::int32_t> &numeroFila) const
{
    m_indiceAlDia = true;
    const std::size_t numeros = m_datos ? m_datos->numeros.size() : 0;
    m_inicioNumero.assign(numeros + 1, 0);
    m_filasNumero.resize(numeroFila.size());
    for (std::int32_t n : numeroFila)
        ++m_inicioNumero[std::size_t(n) + 1];
    for (std::size_t k = 1; k <= numeros; ++k)
        m_inicioNumero[k] += m_inicioNumero[k - 1];
    std::vector<int> siguiente(m_inicioNumero.begin(), m_inicioNumero.end() - 1);
    for (std::size_t f = 0; f < numeroFila.size(); ++f)
        m_filasNumero[std::size_t(siguiente[std::size_t(numeroFila[f])]++)] = int(f);
}

void ModeloJugadas::filasDeNumero(int numero, const int *&desde, const int *&hasta) const
{
    desde = hasta = nullptr;
    if (!m_indiceAlDia)
        indexarNumeros();
    if (!m_datos || numero < 0 || numero + 1 >= int(m_inicioNumero.size()))
        return;
    desde = m_filasNumero.data() + m_inicioNumero[std::size_t(numero)];
    hasta = m_filasNumero.data() + m_inicioNumero[std::size_t(numero) + 1];
}

void ModeloJugadas::limpiar()
{
    beginResetModel();
    m_datos.reset();
    std::vector<int>().swap(m_orden);
    std::vector<int>().swap(m_filasNumero);
    m_inicioNumero.clear();
    m_indiceAlDia = false;
    endResetModel();
}

const JugadaVenta &ModeloJugadas::jugadaEnFila(int fila) const
{
    return m_datos->jugadas[std::size_t(m_orden[std::size_t(fila)])];
}

int ModeloJugadas::numeroEnFila(int fila) const
{
    if (!m_datos || fila < 0 || fila >= int(m_orden.size()))
        return -1;
    return jugadaEnFila(fila).numero;
}

int ModeloJugadas::indiceNumero(const QString &numero) const
{
    if (!m_datos)
        return -1;
    for (std::size_t i = 0; i < m_datos->numeros.size(); ++i) {
        if (m_datos->numeros[i].texto == numero)
            return int(i);
    }
    return -1;
}

QItemSelection ModeloJugadas::seleccionDeNumero(int numero, int primera, int ultima) const
{
    QItemSelection seleccion;
    const int *f = nullptr, *fin = nullptr;
    filasDeNumero(numero, f, fin);
    while (f != fin) {
        const int inicio = *f;
        int ultimaFila = inicio;
        for (++f; f != fin && *f == ultimaFila + 1; ++f)
            ultimaFila = *f;
        seleccion.append(QItemSelectionRange(index(inicio, primera), index(ultimaFila, ultima)));
    }
    return seleccion;
}

int ModeloJugadas::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_orden.size());
}

int ModeloJugadas::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : Columnas;
}

QString ModeloJugadas::texto(int fila, int columna) const
{
    const DatosVentas &d = *m_datos;
    const JugadaVenta &j = jugadaEnFila(fila);
    switch (columna) {
    case ColBanca:
        return d.bancas[std::size_t(j.banca)].nombre;
    case ColAgencia:
        return d.agencias[std::size_t(j.agencia)].nombre;
    case ColTicket:
        return d.ticket(j);
    case ColHora:
        return textoHora(j.minuto < 0 ? -1 : j.minuto * 60);
    case ColNumero:
        return d.numeros[std::size_t(j.numero)].texto;
    case ColNombre:
        return d.numeros[std::size_t(j.numero)].nombre;
    case ColMonto:
        return formatoMonto(j.monto, m_decimales);
    case ColEstado:
        return textoEstado(j.estado);
    case ColMontoOculto:
        return QString::number(j.monto, 'g', 6);
    case ColCodAgencia:
        return d.agencias[std::size_t(j.agencia)].clave;
    default:
        return QString();
    }
}

QVariant ModeloJugadas::data(const QModelIndex &index, int role) const
{
    if (!m_datos || !index.isValid() || index.row() >= int(m_orden.size()))
        return QVariant();
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return QVariant();
    return texto(index.row(), index.column());
}

QVariant ModeloJugadas::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    if (orientation == Qt::Horizontal)
        return encabezados().value(section);
    return section + 1;
}

void ModeloJugadas::sort(int column, Qt::SortOrder order)
{
    if (!m_datos || column < 0 || column >= Columnas || m_orden.size() < 2)
        return;
    const DatosVentas &d = *m_datos;
    const std::size_t n = d.jugadas.size();

    // Every play gets a class (plays of one class show the same text), each class a text.
    std::vector<int> clase(n);
    std::vector<QString> textos;
    switch (column) {
    case ColBanca:
        for (const auto &b : d.bancas)
            textos.push_back(b.nombre);
        for (std::size_t i = 0; i < n; ++i)
            clase[i] = d.jugadas[i].banca;
        break;
    case ColAgencia:
    case ColCodAgencia:
        for (const auto &a : d.agencias)
            textos.push_back(column == ColAgencia ? a.nombre : a.clave);
        for (std::size_t i = 0; i < n; ++i)
            clase[i] = d.jugadas[i].agencia;
        break;
    case ColNumero:
    case ColNombre:
        for (const auto &num : d.numeros)
            textos.push_back(column == ColNumero ? num.texto : num.nombre);
        for (std::size_t i = 0; i < n; ++i)
            clase[i] = d.jugadas[i].numero;
        break;
    case ColEstado:
        for (std::uint8_t e = 0; e < 3; ++e)
            textos.push_back(textoEstado(e));
        for (std::size_t i = 0; i < n; ++i)
            clase[i] = d.jugadas[i].estado;
        break;
    case ColHora:
        textos.push_back(textoHora(-1));
        for (int m = 0; m < 24 * 60; ++m)
            textos.push_back(textoHora(m * 60));
        for (std::size_t i = 0; i < n; ++i)
            clase[i] = d.jugadas[i].minuto < 0 ? 0 : 1 + d.jugadas[i].minuto;
        break;
    case ColTicket: {
        QHash<QString, int> vistos;
        for (std::size_t i = 0; i < n; ++i) {
            const QString t = d.ticket(d.jugadas[i]);
            auto it = vistos.constFind(t);
            if (it == vistos.cend()) {
                it = vistos.insert(t, int(textos.size()));
                textos.push_back(t);
            }
            clase[i] = it.value();
        }
        break;
    }
    default: { // amounts, by their bit pattern
        QHash<quint64, int> vistos;
        for (std::size_t i = 0; i < n; ++i) {
            quint64 bits;
            std::memcpy(&bits, &d.jugadas[i].monto, sizeof bits);
            auto it = vistos.constFind(bits);
            if (it == vistos.cend()) {
                const double m = d.jugadas[i].monto;
                it = vistos.insert(bits, int(textos.size()));
                textos.push_back(column == ColMonto ? formatoMonto(m, m_decimales)
                                                    : QString::number(m, 'g', 6));
            }
            clase[i] = it.value();
        }
        break;
    }
    }

    // Rank the distinct texts; texts that compare equal share a rank.
    int rangos = 0;
    std::vector<int> rango = rangosDeTextos(textos, &rangos);
    if (order == Qt::DescendingOrder) {
        for (int &x : rango)
            x = rangos - 1 - x;
    }

    // Stable counting sort of the current order by rank. The numbers of the plays are written
    // down in their new rows on the way, so that where each number's plays now stand is known
    // as soon as the order is: a click then costs in proportion to the number's plays.
    std::vector<int> inicio(std::size_t(rangos) + 1, 0);
    for (int i : m_orden)
        ++inicio[std::size_t(rango[std::size_t(clase[std::size_t(i)])]) + 1];
    for (std::size_t k = 1; k < inicio.size(); ++k)
        inicio[k] += inicio[k - 1];
    std::vector<int> nuevo(m_orden.size());
    std::vector<std::int32_t> numeroFila(m_orden.size());
    for (std::size_t f = 0; f < m_orden.size(); ++f) {
        const int i = m_orden[f];
        const int destino = inicio[std::size_t(rango[std::size_t(clase[std::size_t(i)])])]++;
        nuevo[std::size_t(destino)] = i;
        numeroFila[std::size_t(destino)] = d.jugadas[std::size_t(i)].numero;
    }
    std::vector<int>().swap(clase);

    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList viejos = persistentIndexList();
    if (!viejos.isEmpty()) {
        // New row of each play, for the indexes the views keep (selection, current cell).
        std::vector<int> filaDeJugada(m_orden.size());
        for (std::size_t f = 0; f < nuevo.size(); ++f)
            filaDeJugada[std::size_t(nuevo[f])] = int(f);
        QModelIndexList nuevos;
        nuevos.reserve(viejos.size());
        for (const QModelIndex &v : viejos)
            nuevos.append(
                index(filaDeJugada[std::size_t(m_orden[std::size_t(v.row())])], v.column()));
        changePersistentIndexList(viejos, nuevos);
    }
    m_orden.swap(nuevo);
    agruparPorNumero(numeroFila);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

// ---- where a number was sold ----

ModeloLugares::ModeloLugares(QObject *parent) : QAbstractTableModel(parent) {}

void ModeloLugares::mostrar(std::shared_ptr<const DatosVentas> datos, std::vector<int> jugadas,
                            int decimales)
{
    beginResetModel();
    m_datos = std::move(datos);
    m_jugadas = std::move(jugadas);
    m_decimales = decimales;
    endResetModel();
}

void ModeloLugares::limpiar()
{
    beginResetModel();
    m_datos.reset();
    std::vector<int>().swap(m_jugadas);
    endResetModel();
}

int ModeloLugares::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_datos ? 0 : int(m_jugadas.size());
}

int ModeloLugares::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 3;
}

QString ModeloLugares::texto(int fila, int columna) const
{
    const DatosVentas &d = *m_datos;
    const JugadaVenta &j = d.jugadas[std::size_t(m_jugadas[std::size_t(fila)])];
    switch (columna) {
    case 0:
        return d.bancas[std::size_t(j.banca)].nombre;
    case 1:
        return d.agencias[std::size_t(j.agencia)].nombre;
    case 2:
        return formatoMonto(j.monto, m_decimales);
    default:
        return QString();
    }
}

QVariant ModeloLugares::data(const QModelIndex &index, int role) const
{
    if (!m_datos || !index.isValid() || index.row() >= int(m_jugadas.size()))
        return QVariant();
    if (role == Qt::DisplayRole || role == Qt::EditRole)
        return texto(index.row(), index.column());
    if (role == Qt::TextAlignmentRole && index.column() == 2)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return QVariant();
}

QVariant ModeloLugares::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    if (orientation == Qt::Horizontal) {
        static const QStringList titulos = {
            QStringLiteral("Banca"), QStringLiteral("Nombre Agencia"), QStringLiteral("Monto")};
        return titulos.value(section);
    }
    return section + 1;
}

void ModeloLugares::sort(int column, Qt::SortOrder order)
{
    if (!m_datos || column < 0 || column > 2 || m_jugadas.size() < 2)
        return;
    const DatosVentas &d = *m_datos;
    // The distinct texts of the column among the rows shown, ranked once.
    QHash<quint64, int> clases;
    std::vector<QString> textos;
    std::vector<int> clase(m_jugadas.size());
    for (std::size_t r = 0; r < m_jugadas.size(); ++r) {
        const JugadaVenta &j = d.jugadas[std::size_t(m_jugadas[r])];
        quint64 clave = 0;
        if (column == 0)
            clave = quint64(j.banca);
        else if (column == 1)
            clave = quint64(j.agencia);
        else
            std::memcpy(&clave, &j.monto, sizeof clave);
        auto it = clases.constFind(clave);
        if (it == clases.cend()) {
            it = clases.insert(clave, int(textos.size()));
            textos.push_back(texto(int(r), column));
        }
        clase[r] = it.value();
    }
    std::vector<int> rango = rangosDeTextos(textos);
    if (order == Qt::DescendingOrder)
        for (int &r : rango)
            r = -r;
    std::vector<int> filas(m_jugadas.size());
    std::iota(filas.begin(), filas.end(), 0);
    std::stable_sort(filas.begin(), filas.end(), [&](int a, int b) {
        return rango[std::size_t(clase[std::size_t(a)])] <
               rango[std::size_t(clase[std::size_t(b)])];
    });
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    std::vector<int> nuevo(m_jugadas.size());
    std::vector<int> filaNueva(m_jugadas.size());
    for (std::size_t k = 0; k < filas.size(); ++k) {
        nuevo[k] = m_jugadas[std::size_t(filas[k])];
        filaNueva[std::size_t(filas[k])] = int(k);
    }
    const QModelIndexList viejos = persistentIndexList();
    QModelIndexList nuevos;
    for (const QModelIndex &v : viejos)
        nuevos.append(index(filaNueva[std::size_t(v.row())], v.column()));
    m_jugadas.swap(nuevo);
    changePersistentIndexList(viejos, nuevos);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}
