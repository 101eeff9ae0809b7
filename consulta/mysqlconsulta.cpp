#include "consulta/mysqlconsulta.h"
#include "ui_mysqlconsulta.h"

#include "app/mensaje.h"

mysqlconsulta::mysqlconsulta(QWidget *parent) : QDialog(parent), ui(new Ui::mysqlconsulta)
{
    ui->setupUi(this);

    abierta = abrirBaseDatos();
    if (!abierta) {
        // The box outlives the console, which goes away at once: it belongs to the window
        // that opened the console.
        mostrarMensaje(parent, QStringLiteral("Error"),
                       QStringLiteral("Error abriendo la base de datos"), IconoMensaje::Pregunta);
        salir();
        // Whoever created the console will still call show(): setVisible() ignores it and the
        // event loop disposes of the dialog.
        deleteLater();
    }

    setWindowTitle(QStringLiteral("Consultas MySql"));
    setWindowFlags(Qt::Dialog);
    ui->listWidget->addItems(consultas);
}

mysqlconsulta::~mysqlconsulta()
{
    delete ui;
}

void mysqlconsulta::setVisible(bool visible)
{
    QDialog::setVisible(visible && abierta);
}

bool mysqlconsulta::abrirBaseDatos()
{
    return false;
}

void mysqlconsulta::on_listWidget_doubleClicked(QModelIndex index)
{
    Q_UNUSED(index)
}

void mysqlconsulta::on_pushButton_ejecutar_clicked() {}

void mysqlconsulta::salir()
{
    close();
}
