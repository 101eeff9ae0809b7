#include "consulta/mysqlconsulta.h"
#include "ui_mysqlconsulta.h"

mysqlconsulta::mysqlconsulta(QWidget *parent) : QDialog(parent), ui(new Ui::mysqlconsulta)
{
    ui->setupUi(this);
}

mysqlconsulta::~mysqlconsulta()
{
    delete ui;
}
