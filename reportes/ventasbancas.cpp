#include "reportes/ventasbancas.h"
#include "ui_VentasBancas.h"

#include "app/celdas.h"
#include "app/formato.h"
#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"
#include "reportes/calculoreportes.h"

#include <QDate>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableWidgetItem>
#include <QTime>

namespace {

QTableWidgetItem *celdaNumero(const QString &texto)
{
    auto *celda = new QTableWidgetItem(texto);
    celda->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return celda;
}

void prepararTabla(QTableWidget *tabla, const QStringList &columnas, const QList<int> &anchos)
{
    tabla->setColumnCount(columnas.size());
    // An amount cut by its column shows whole in the cell's tooltip.
    mostrarTextoCompletoEnTooltip(tabla);
    tabla->setHorizontalHeaderLabels(columnas);
    for (int i = 0; i < anchos.size(); ++i)
        if (anchos.at(i) > 0)
            tabla->setColumnWidth(i, anchos.at(i));
}

} // namespace

VentasBancas::VentasBancas(QWidget *parent)
    : QDialog(parent), ui(new Ui::VentasBancas), m_red(new QNetworkAccessManager(this))
{
    ui->setupUi(this);
    setWindowTitle(m_titulo);
    prepararTabla(ui->tableWidget_agencias,
                  {QStringLiteral("Banca"), QStringLiteral("Agencia"),
                   QStringLiteral("Venta Bruta"), QStringLiteral("Comisión"),
                   QStringLiteral("Hora ult.\nVenta")},
                  {130, 220, 150, 150, 0});
    prepararTabla(ui->tableWidget_bancas,
                  {QStringLiteral("Banca"), QStringLiteral("Cantidad\nAgencias"),
                   QStringLiteral("Venta Bruta"), QStringLiteral("Comisión")},
                  {150, 100, 150, 150});
    // The banca table gets the room its four columns need and the agency table the rest: on a
    // laptop screen the agency table scrolls sideways rather than the dialog growing past it.
    ui->splitter->setStretchFactor(0, 3);
    ui->splitter->setStretchFactor(1, 2);
    ui->splitter->setSizes({730, 610});
    connect(m_red, &QNetworkAccessManager::finished, this, &VentasBancas::recibirVentas);
    // The machine's own date, not the server's.
    ui->dateEdit_desde->setDate(QDate::currentDate());
    ui->dateEdit_hasta->setDate(QDate::currentDate());
}

VentasBancas::~VentasBancas()
{
    delete ui;
}

void VentasBancas::on_pushButton_actualizar_clicked()
{
    ui->pushButton_actualizar->setEnabled(false);
    // The range goes as it stands, even when "desde" is after "hasta".
    red::get(m_red, QStringLiteral("ventabancas2.php"),
             {{QStringLiteral("d"), fechaServidor(ui->dateEdit_desde->date())},
              {QStringLiteral("h"), fechaServidor(ui->dateEdit_hasta->date())}});
}

void VentasBancas::recibirVentas(QNetworkReply *respuesta)
{
    ui->tableWidget_agencias->setRowCount(0);
    ui->tableWidget_bancas->setRowCount(0);

    const bool fallo = respuesta->error() != QNetworkReply::NoError;
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    if (fallo || texto.isEmpty()) {
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("No hubo respuesta del servidor"));
        m_red->clearAccessCache();
        // "Actualizar" stays disabled: the dialog has to be opened again to retry.
        return;
    }

    const ReporteVentasBancas r = calcularVentasBancas(texto);
    const int decimales = SesionGlobal::decimales;

    QTableWidget *agencias = ui->tableWidget_agencias;
    agencias->setUpdatesEnabled(false);
    agencias->setRowCount(r.agencias.size());
    for (int i = 0; i < r.agencias.size(); ++i) {
        const FilaAgencia &a = r.agencias.at(i);
        agencias->setItem(i, 0, new QTableWidgetItem(a.banca));
        agencias->setItem(i, 1, new QTableWidgetItem(a.agencia));
        agencias->setItem(i, 2, celdaNumero(formatoMonto(a.ventaBruta, decimales)));
        agencias->setItem(i, 3, celdaNumero(formatoMonto(a.comision, decimales)));
        agencias->setItem(i, 4, celdaNumero(textoHoraVenta(a.horaUltimaVenta)));
    }
    agencias->setUpdatesEnabled(true);

    QTableWidget *bancas = ui->tableWidget_bancas;
    bancas->setRowCount(r.bancas.size());
    for (int i = 0; i < r.bancas.size(); ++i) {
        const FilaBanca &b = r.bancas.at(i);
        bancas->setItem(i, 0, new QTableWidgetItem(b.clave + QLatin1Char('-') + b.nombre));
        bancas->setItem(i, 1, celdaNumero(QString::number(b.agencias)));
        bancas->setItem(i, 2, celdaNumero(formatoMonto(b.ventaBruta, decimales)));
        bancas->setItem(i, 3, celdaNumero(formatoMonto(b.comision, decimales)));
    }

    ui->label_totalventa->setText(formatoMonto(r.totalVenta, decimales));
    ui->label_totalcomision->setText(formatoMonto(r.totalComision, decimales));

    ui->pushButton_actualizar->setEnabled(true);
    setWindowTitle(m_titulo + QStringLiteral(" - ") +
                   textoConsola(QTime::currentTime(), QStringLiteral("h:mm:ss ap")));
}
