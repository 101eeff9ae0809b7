#pragma once

#include <QDialog>

class QNetworkAccessManager;
class QNetworkReply;

namespace Ui {
class VentasBancas;
}

// Sales of every agency over a range of dates, per agency and per banca, with the totals.
// Read-only; each update replaces everything shown.
class VentasBancas : public QDialog {
    Q_OBJECT

public:
    explicit VentasBancas(QWidget *parent = nullptr);
    ~VentasBancas() override;

private slots:
    void on_pushButton_actualizar_clicked();

private:
    void recibirVentas(QNetworkReply *respuesta);

    Ui::VentasBancas *ui;
    QNetworkAccessManager *m_red;
    QString m_titulo = QStringLiteral("Ventas Bancas");
};
