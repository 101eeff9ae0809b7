#pragma once

#include <QDialog>

namespace Ui {
class reporteVentasX;
}

class reporteVentasX : public QDialog {
    Q_OBJECT

public:
    explicit reporteVentasX(QWidget *parent = nullptr);
    ~reporteVentasX() override;

private:
    Ui::reporteVentasX *ui;
};
