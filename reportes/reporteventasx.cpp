#include "reportes/reporteventasx.h"
#include "ui_reporteVentasX.h"

reporteVentasX::reporteVentasX(QWidget *parent) : QDialog(parent), ui(new Ui::reporteVentasX)
{
    ui->setupUi(this);
}

reporteVentasX::~reporteVentasX()
{
    delete ui;
}
