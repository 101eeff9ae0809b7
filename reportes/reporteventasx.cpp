#include "reportes/reporteventasx.h"
#include "ui_reporteVentasX.h"

#include "app/celdas.h"
#include "app/formato.h"
#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"

#include <QBrush>
#include <QColor>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableWidgetItem>

namespace {

const QStringList kColumnasCifras = {QStringLiteral("Venta Bruta"), QStringLiteral("Comisión"),
                                     QStringLiteral("Venta Neta"),  QStringLiteral("Premios"),
                                     QStringLiteral("Utilidad"),    QStringLiteral("Participación"),
                                     QStringLiteral("Saldo")};

void prepararTabla(QTableWidget *tabla, const QString &primera)
{
    tabla->setColumnCount(1 + kColumnasCifras.size());
    // An amount cut by its column shows whole in the cell's tooltip.
    mostrarTextoCompletoEnTooltip(tabla);
    tabla->setHorizontalHeaderLabels(QStringList{primera} + kColumnasCifras);
    tabla->setColumnWidth(0, 180);
    for (int i = 1; i <= kColumnasCifras.size(); ++i)
        tabla->setColumnWidth(i, 110);
}

QTableWidgetItem *celdaMonto(double monto, bool rojo)
{
    auto *celda = new QTableWidgetItem(formatoMonto(monto, SesionGlobal::decimales));
    celda->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    if (rojo)
        celda->setForeground(QBrush(QColor(255, 0, 0)));
    return celda;
}

// Appends one row: first cell, then the seven figures. The three cells from Utilidad on are
// red either all together when the row's utility is negative (`rojoPorUtilidad`), or each on
// its own sign.
void agregarFila(QTableWidget *tabla, const QString &primera, const CifrasReporte &c,
                 bool rojoPorUtilidad)
{
    const int fila = tabla->rowCount();
    tabla->insertRow(fila);
    tabla->setItem(fila, 0, new QTableWidgetItem(primera));
    const bool utilidadNegativa = c.utilidad() < 0.0;
    const auto rojo = [&](double valor) {
        return rojoPorUtilidad ? utilidadNegativa : valor < 0.0;
    };
    tabla->setItem(fila, 1, celdaMonto(c.ventaBruta, false));
    tabla->setItem(fila, 2, celdaMonto(c.comision, false));
    tabla->setItem(fila, 3, celdaMonto(c.ventaNeta(), false));
    tabla->setItem(fila, 4, celdaMonto(c.premios, false));
    tabla->setItem(fila, 5, celdaMonto(c.utilidad(), rojo(c.utilidad())));
    tabla->setItem(fila, 6, celdaMonto(c.participacion, rojo(c.participacion)));
    tabla->setItem(fila, 7, celdaMonto(c.saldo(), rojo(c.saldo())));
}

void mostrarMonto(QLineEdit *campo, double monto, bool marcarNegativo)
{
    campo->setText(formatoMonto(monto, SesionGlobal::decimales));
    if (marcarNegativo)
        campo->setStyleSheet(monto < 0.0 ? SesionGlobal::colorRojo : QString());
}

} // namespace

reporteVentasX::reporteVentasX(QWidget *parent)
    : QDialog(parent), ui(new Ui::reporteVentasX), m_red(new QNetworkAccessManager(this))
{
    ui->setupUi(this);
    prepararTabla(ui->tableWidget_ventas, QStringLiteral("Banca"));
    prepararTabla(ui->tableWidget_detalle, QStringLiteral("Juego"));
    ui->tabWidget->setCurrentIndex(0);
    ui->lineEdit_superBanca->setText(SesionGlobal::nombre);
    ui->dateEdit_desde->setDate(SesionGlobal::fechaActual);
    ui->dateEdit_hasta->setDate(SesionGlobal::fechaActual);
    connect(m_red, &QNetworkAccessManager::finished, this, &reporteVentasX::recibirReporte);
}

reporteVentasX::~reporteVentasX()
{
    delete ui;
}

QList<double> reporteVentasX::pcomision(const QString &_cban, const QString &_cjue)
{
    return m_reporte.pcomision(_cban, _cjue);
}

QString reporteVentasX::nombreJuego(const QString &codigo)
{
    return m_reporte.nombreJuego(codigo);
}

void reporteVentasX::on_pushButton_clicked()
{
    red::get(m_red, QStringLiteral("reportex.php?bx=") + SesionGlobal::datoLinea7 +
                        QStringLiteral("&j=") + SesionGlobal::listaLinea8.join(QLatin1Char(',')) +
                        QStringLiteral("&d=") + fechaServidor(ui->dateEdit_desde->date()) +
                        QStringLiteral("&h=") + fechaServidor(ui->dateEdit_hasta->date()));
}

void reporteVentasX::recibirReporte(QNetworkReply *respuesta)
{
    const bool fallo = respuesta->error() != QNetworkReply::NoError;
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    if (fallo || texto.isEmpty()) {
        // The tables keep what they showed.
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("No hubo respuesta del servidor"));
        m_red->clearAccessCache();
        return;
    }

    m_reporte.cargar(texto);
    ui->tableWidget_ventas->setRowCount(0);
    ui->tableWidget_detalle->setRowCount(0);

    if (m_reporte.sinVentas()) {
        mensajeSimple(this, QMessageBox::Warning, QStringLiteral("Atención"),
                      QStringLiteral("Sin ventas"));
        return;
    }

    QTableWidget *ventas = ui->tableWidget_ventas;
    ventas->setUpdatesEnabled(false);
    for (int i = 0; i < m_reporte.bancaClaves.size(); ++i)
        agregarFila(ventas, m_reporte.bancaNombres.at(i), m_reporte.cifrasBanca(i), true);
    ventas->setUpdatesEnabled(true);

    const CifrasReporte t = m_reporte.totales();
    mostrarMonto(ui->lineEdit_ventaBruta, t.ventaBruta, false);
    mostrarMonto(ui->lineEdit_comision, t.comision, false);
    mostrarMonto(ui->lineEdit_ventaNeta, t.ventaNeta(), false);
    mostrarMonto(ui->lineEdit_premios, t.premios, false);
    mostrarMonto(ui->lineEdit_utilidad, t.utilidad(), true);
    mostrarMonto(ui->lineEdit_participacion, t.participacion, true);
    mostrarMonto(ui->lineEdit_saldo, t.saldo(), true);
    ui->label_banca->setText(QStringLiteral("TODAS"));
}

void reporteVentasX::on_tableWidget_ventas_clicked(const QModelIndex &index)
{
    QTableWidget *ventas = ui->tableWidget_ventas;
    const int fila = index.row();
    if (fila < 0 || fila >= ventas->rowCount())
        return;
    // A click toggles the row: selected rows are only ever set here, never by the mouse.
    const QTableWidgetItem *primera = ventas->item(fila, 0);
    const bool seleccionar = !(primera && primera->isSelected());
    ventas->clearSelection();
    for (int c = 0; c < ventas->columnCount(); ++c)
        if (QTableWidgetItem *celda = ventas->item(fila, c))
            celda->setSelected(seleccionar);
    mostrarDetalle(seleccionar ? fila : -1);
}

void reporteVentasX::mostrarDetalle(int fila)
{
    QTableWidget *detalle = ui->tableWidget_detalle;
    detalle->setRowCount(0);
    CifrasReporte suma;
    if (fila >= 0 && fila < m_reporte.bancaClaves.size()) {
        ui->label_banca->setText(m_reporte.bancaNombres.at(fila));
        detalle->setUpdatesEnabled(false);
        for (int linea : m_reporte.lineasDeBanca(m_reporte.bancaClaves.at(fila))) {
            const CifrasReporte c = m_reporte.cifrasVenta(linea);
            agregarFila(detalle, nombreJuego(m_reporte.ventaJuegos.at(linea)), c, false);
            suma.sumar(c);
        }
        detalle->setUpdatesEnabled(true);
    }
    mostrarMonto(ui->lineEdit_dVentaBruta, suma.ventaBruta, false);
    mostrarMonto(ui->lineEdit_dComision, suma.comision, false);
    mostrarMonto(ui->lineEdit_dVentaNeta, suma.ventaNeta(), false);
    mostrarMonto(ui->lineEdit_dPremios, suma.premios, false);
    mostrarMonto(ui->lineEdit_dUtilidad, suma.utilidad(), true);
    mostrarMonto(ui->lineEdit_dParticipacion, suma.participacion, true);
    mostrarMonto(ui->lineEdit_dSaldo, suma.saldo(), true);
}
