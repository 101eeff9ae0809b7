#include "app/celdas.h"
#include "app/idioma.h"
#include "app/pantalla.h"
#include "app/salida.h"
#include "ui/mainwindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    instalarSenalesSalida();
    QApplication aplicacion(argc, argv);
    prepararIdioma(aplicacion);
    ajustarVentanasAPantalla(aplicacion);
    mostrarTextosCortadosEnTooltips(aplicacion);
    auto *ventana = new MainWindow;
    ventana->show();
    const int codigo = aplicacion.exec();
    delete ventana;
    matarGruposHijos();
    return codigo;
}
