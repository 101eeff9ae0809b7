#pragma once

#include <QDialog>

namespace Ui {
class VentasBancas;
}

class VentasBancas : public QDialog {
    Q_OBJECT

public:
    explicit VentasBancas(QWidget *parent = nullptr);
    ~VentasBancas() override;

private:
    Ui::VentasBancas *ui;
};
