#include "temas/themeconfig.h"
#include "ui_themeconfig.h"

#include "app/servidor.h"
#include "app/sesion.h"
#include "temas/tema.h"

#include <QFile>

themeconfig::themeconfig(QWidget *parent) : QDialog(parent), ui(new Ui::themeconfig)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Temas de Tornavo"));
    ui->listWidget_themes->addItems(nombresTemas());
    claves = clavesTemas(SesionGlobal::estiloSistema);

    // Without a theme file nothing is selected; otherwise the first row with that key.
    if (QFile::exists(QString::fromLatin1(archivoTema))) {
        const int fila = claves.indexOf(leerPrimeraLinea(QString::fromLatin1(archivoTema)));
        if (fila >= 0)
            ui->listWidget_themes->setCurrentRow(fila);
    }
}

themeconfig::~themeconfig()
{
    delete ui;
}

void themeconfig::on_listWidget_themes_doubleClicked(QModelIndex index)
{
    // Preview on this dialog only; the main window keeps its theme until one is applied.
    if (index.row() >= 0 && index.row() < claves.size())
        setStyleSheet(hojaDeEstilo(claves.at(index.row())));
}

void themeconfig::on_pushButton_guardar_clicked()
{
    // With no row chosen there is nothing to apply: the file and the flag stay as they are.
    // A row that is only current (the list got focus) but not selected does not count.
    const int fila = ui->listWidget_themes->currentRow();
    const QListWidgetItem *item = ui->listWidget_themes->currentItem();
    if (fila < 0 || fila >= claves.size() || !item || !item->isSelected())
        return;
    guardarTema(QString::fromLatin1(archivoTema), claves.at(fila));
    SesionGlobal::temaCambiado = true;
}

void themeconfig::on_pushButton_salir_clicked()
{
    close();
}
