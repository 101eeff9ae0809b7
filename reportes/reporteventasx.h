#pragma once

#include "reportes/calculoreportes.h"

#include <QDialog>
#include <QList>
#include <QModelIndex>

class QLineEdit;
class QNetworkAccessManager;
class QNetworkReply;
class QTableWidget;

namespace Ui {
class reporteVentasX;
}

// Sales of the bancas under the logged-in super banca over a range of dates: gross, commission,
// net, prizes, utility, the super banca's participation and the balance, per banca and, for
// the banca picked in the summary, per game.
class reporteVentasX : public QDialog {
    Q_OBJECT

public:
    explicit reporteVentasX(QWidget *parent = nullptr);
    ~reporteVentasX() override;

public slots:
    QList<double> pcomision(const QString &_cban, const QString &_cjue);
    QString nombreJuego(const QString &codigo);

private slots:
    void on_pushButton_clicked();
    void on_tableWidget_ventas_clicked(const QModelIndex &index);

private:
    void recibirReporte(QNetworkReply *respuesta);
    void mostrarDetalle(int fila);

    Ui::reporteVentasX *ui;
    QNetworkAccessManager *m_red;
    ReporteSuperBanca m_reporte;
};
