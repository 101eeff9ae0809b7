#include "ui/acceso.h"

#include "app/sesion.h"

QString rutaLogin(const QString &usuario, const QString &clave)
{
    return QStringLiteral("validarUser.php?u=") + usuario + QStringLiteral("&p=") + clave;
}

RespuestaLogin leerRespuestaLogin(const QString &texto)
{
    QStringList lineas = texto.split(QLatin1Char('\n'));
    while (lineas.size() < 8)
        lineas.append(QString());
    const QLatin1Char coma(',');
    RespuestaLogin r;
    r.rechazado = lineas.at(0) == QLatin1String("0");
    r.nombre = lineas.at(1);
    r.accesoPermitido = lineas.at(2) == QLatin1String("X");
    r.opciones = lineas.at(3).split(coma);
    r.juegos = lineas.at(4).split(coma);
    r.listaLinea6 = lineas.at(5).split(coma);
    r.datoLinea7 = lineas.at(6);
    r.listaLinea8 = lineas.at(7).split(coma);
    return r;
}

void guardarSesion(const RespuestaLogin &respuesta, const QString &usuario)
{
    SesionGlobal::usuario = usuario;
    SesionGlobal::nombre = respuesta.nombre;
    SesionGlobal::decimales = 2;
    if (respuesta.accesoPermitido)
        SesionGlobal::accesoPermitido = true;
    SesionGlobal::opciones = respuesta.opciones;
    SesionGlobal::juegos = respuesta.juegos;
    SesionGlobal::listaLinea6 = respuesta.listaLinea6;
    SesionGlobal::listaLinea8 = respuesta.listaLinea8;
    SesionGlobal::datoLinea7 = respuesta.datoLinea7;
    SesionGlobal::sesionIniciada = SesionGlobal::accesoPermitido;
}

bool opcionActiva(const QStringList &opciones, const QString &opcion)
{
    bool activa = false;
    for (const QString &o : opciones) {
        if (o == opcion)
            activa = true;
    }
    return activa;
}

const std::vector<std::pair<QString, QString>> &tablaDerechos()
{
    static const std::vector<std::pair<QString, QString>> tabla = {
        {QStringLiteral("11"), QStringLiteral("action_Bancas")},
        {QStringLiteral("12"), QStringLiteral("action_Jefes_de_grupo")},
        {QStringLiteral("13"), QStringLiteral("actionA_gencias")},
        {QStringLiteral("14"), QStringLiteral("action_Taquillas")},
        {QStringLiteral("15"), QStringLiteral("actionJuegos")},
        {QStringLiteral("16"), QStringLiteral("actionSorteos")},
        {QStringLiteral("17"), QStringLiteral("actionIm_genes")},
        {QStringLiteral("18"), QStringLiteral("menuUsuarios")},
        {QStringLiteral("21"), QStringLiteral("actionMonitorear_Ventas")},
        {QStringLiteral("22"), QStringLiteral("actionCalcular_Premios")},
        {QStringLiteral("23"), QStringLiteral("actionDeshacer_Premiaci_n")},
        {QStringLiteral("24"), QStringLiteral("actionAuto_premiaci_n")},
        {QStringLiteral("31"), QStringLiteral("actionVentas_Bancas_2")},
    };
    return tabla;
}

QString filtroDeJuegos(const QStringList &juegos)
{
    if (juegos.isEmpty())
        return QStringLiteral("j.codJuego='vacio'");
    if (juegos.first() == QLatin1String("root"))
        return QString();
    QStringList condiciones;
    for (const QString &codigo : juegos)
        condiciones.append(QStringLiteral("j.codJuego='") + codigo + QLatin1Char('\''));
    return QStringLiteral("AND (") + condiciones.join(QStringLiteral(" or ")) + QLatin1Char(')');
}

HoraServidor leerHoraServidor(const QString &texto)
{
    const QStringList lineas = texto.split(QLatin1Char('\n'));
    HoraServidor h;
    h.fecha = QDate::fromString(lineas.value(0), QStringLiteral("yyyy-MM-dd"));
    h.hora = QTime::fromString(lineas.value(4), QStringLiteral("hh:mm:ss"));
    return h;
}
