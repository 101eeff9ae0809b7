#pragma once

#include "monitor/ventasmonitor.h"

#include <QAbstractTableModel>
#include <QItemSelection>

#include <cstdint>
#include <memory>
#include <vector>

// The plays table of the sales monitor as a model over the compact plays of one sales reply.
// Cell texts are produced when a view asks for them. Sorting is stable, compares the cell texts
// like a table of text items does (locale-aware) and costs O(n) plus the sorting of the
// distinct texts of the column.
class ModeloJugadas : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Columna {
        ColBanca = 0,
        ColAgencia,
        ColTicket,
        ColHora,
        ColNumero,
        ColNombre,
        ColMonto,
        ColEstado,
        ColMontoOculto,
        ColCodAgencia,
        Columnas
    };

    explicit ModeloJugadas(QObject *parent = nullptr);

    static QStringList encabezados();

    // Shows the plays of `datos` in reply order; amounts with `decimales` decimals.
    void cargar(std::shared_ptr<const DatosVentas> datos, int decimales);
    void limpiar();

    const DatosVentas *datos() const { return m_datos.get(); }
    const JugadaVenta &jugadaEnFila(int fila) const;
    // Index in DatosVentas::jugadas of the play shown in `fila`.
    int indiceJugada(int fila) const { return m_orden[std::size_t(fila)]; }
    // Index in DatosVentas::numeros of the play shown in `fila`.
    int numeroEnFila(int fila) const;
    // Index in DatosVentas::numeros of a number text; -1 when no play has it.
    int indiceNumero(const QString &numero) const;
    // Cells of `primera`..`ultima` columns of every row whose number is `numero`, as few ranges
    // as the current order allows. Costs in proportion to the number's plays.
    QItemSelection seleccionDeNumero(int numero, int primera, int ultima) const;
    // Rows of the plays of a number, in table order: [*desde, *hasta).
    void filasDeNumero(int numero, const int *&desde, const int *&hasta) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QString texto(int fila, int columna) const;

private:
    // Rows of each number in the current order, grouped by number; built when first asked
    // for after a load or a sort.
    void indexarNumeros() const;
    // The same from the number of each row, in table order.
    void agruparPorNumero(const std::vector<std::int32_t> &numeroFila) const;

    std::shared_ptr<const DatosVentas> m_datos;
    std::vector<int> m_orden;                // table row -> play index
    mutable std::vector<int> m_inicioNumero; // number -> first entry in m_filasNumero
    mutable std::vector<int> m_filasNumero;  // rows, grouped by number, ascending within one
    mutable bool m_indiceAlDia = false;
    int m_decimales = 0;
};

// Where one number was sold: one row per play of the number that is not deleted, columns
// "Banca", "Nombre Agencia", "Monto". Sorting compares the cell texts as a table of text items
// does (stable, locale-aware), in proportion to the rows shown.
class ModeloLugares : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit ModeloLugares(QObject *parent = nullptr);

    // Shows the plays `jugadas` (indexes into datos->jugadas) in the order given.
    void mostrar(std::shared_ptr<const DatosVentas> datos, std::vector<int> jugadas, int decimales);
    void limpiar();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QString texto(int fila, int columna) const;

private:
    std::shared_ptr<const DatosVentas> m_datos;
    std::vector<int> m_jugadas;
    int m_decimales = 0;
};
