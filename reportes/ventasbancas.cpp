#include "reportes/ventasbancas.h"
#include "ui_VentasBancas.h"

VentasBancas::VentasBancas(QWidget *parent) : QDialog(parent), ui(new Ui::VentasBancas)
{
    ui->setupUi(this);
}

VentasBancas::~VentasBancas()
{
    delete ui;
}
