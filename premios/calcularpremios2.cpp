#include "premios/calcularpremios2.h"
#include "ui_calcularpremios2.h"

calcularpremios2::calcularpremios2(QWidget *parent) : QDialog(parent), ui(new Ui::calcularpremios2)
{
    ui->setupUi(this);
}

calcularpremios2::~calcularpremios2()
{
    delete ui;
}
