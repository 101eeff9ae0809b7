#include "autopremiacion/auto_calcular.h"
#include "ui_auto_calcular.h"

auto_calcular::auto_calcular(QWidget *parent) : QDialog(parent), ui(new Ui::auto_calcular)
{
    ui->setupUi(this);
}

auto_calcular::~auto_calcular()
{
    delete ui;
}
