#include "app/sesion.h"

void SesionGlobal::reiniciar()
{
    decimales = 0;
    temaCambiado = false;
    estiloSistema.clear();
    ipPublica = QStringLiteral("1.1.1.1");
    servidor = servidorPorDefecto();
    for (auto *v : {&tablaAux1, &tablaAux2, &tablaAux3, &tablaAux4, &tablaAux5, &tablaAux6,
                    &tablaAux7, &tablaAux8, &tablaAux9, &tablaAux10, &tablaValores, &tablaClaves})
        v->clear();
    listaAux1.clear();
    listaAux2.clear();
    filtroJuegos.clear();
    filtroJuegos2.clear();
    listaLinea8.clear();
    listaLinea6.clear();
    juegos.clear();
    opciones.clear();
    datoLinea7.clear();
    nombre.clear();
    usuario.clear();
    colorRojo = QStringLiteral("color: rgb(255, 0, 0);");
    accesoPermitido = false;
    sesionIniciada = false;
    fechaActual = QDate::currentDate();
    animalitos = QStringLiteral("animalitos");
    horaActual = QTime();
}
