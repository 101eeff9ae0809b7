#include "monitor/monitor2.h"
#include "ui_Monitor2.h"

Monitor2::Monitor2(QWidget *parent) : QDialog(parent), ui(new Ui::Monitor2)
{
    ui->setupUi(this);
}

Monitor2::~Monitor2()
{
    delete ui;
}
