#include "tests/soporte/respuestas.h"

QByteArray enSecciones(std::initializer_list<QStringList> secciones)
{
    QByteArray r;
    bool primera = true;
    for (const QStringList &seccion : secciones) {
        if (!primera)
            r += "_FIN_\n";
        primera = false;
        for (const QString &linea : seccion)
            r += linea.toLatin1() + '\n';
    }
    return r;
}

QByteArray respuestaReporteX(const QStringList &juegos, const QStringList &comisiones,
                             const QStringList &ventas)
{
    return enSecciones({juegos, comisiones, ventas});
}

QByteArray respuestaSorteosPremiar(const QStringList &juegos, const QStringList &sorteos)
{
    return enSecciones({juegos, sorteos});
}
