#include "temas/themeconfig.h"
#include "ui_themeconfig.h"

themeconfig::themeconfig(QWidget *parent) : QDialog(parent), ui(new Ui::themeconfig)
{
    ui->setupUi(this);
}

themeconfig::~themeconfig()
{
    delete ui;
}
