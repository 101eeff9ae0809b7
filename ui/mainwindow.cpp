#include "ui/mainwindow.h"
#include "ui_MainWindow.h"

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent), ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Tornavo Super Usuario"));
}

MainWindow::~MainWindow()
{
    delete ui;
}
