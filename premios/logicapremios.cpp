#include "premios/logicapremios.h"

#include "app/formato.h"

namespace premios {

bool juegoPermitido(const QString &clave, const QStringList &juegosUsuario)
{
    if (!juegosUsuario.isEmpty() && juegosUsuario.first() == QLatin1String("root"))
        return true;
    return juegosUsuario.contains(clave, Qt::CaseInsensitive);
}

ListaSorteos analizarSorteos(const QString &texto, const QStringList &juegosUsuario)
{
    ListaSorteos lista;
    const QStringList secciones = texto.split(QStringLiteral("_FIN_"));

    const QStringList lineasJuegos = secciones.value(0).split(QLatin1Char('\n'));
    for (const QString &linea : lineasJuegos) {
        if (linea.isEmpty())
            continue;
        const QStringList campos = linea.split(QLatin1Char(';'));
        const QString clave = campos.value(0);
        if (!juegoPermitido(clave, juegosUsuario))
            continue;
        lista.juegos.append({clave, campos.value(1), campos.value(2), campos.value(3),
                             campos.value(4), campos.value(5)});
    }

    const QStringList lineasSorteos = secciones.value(1).split(QLatin1Char('\n'));
    for (const QString &linea : lineasSorteos) {
        if (linea.isEmpty())
            continue;
        const QStringList campos = linea.split(QLatin1Char(';'));
        const QString juego = campos.value(0);
        if (!juegoPermitido(juego, juegosUsuario))
            continue;
        lista.sorteos.append({juego, campos.value(1), campos.value(2)});
    }
    return lista;
}

QString nombreAnimal(const std::vector<QString> &claves, const QStringList &codigos,
                     const QStringList &nombres, const QString &juego, const QString &numero)
{
    int indice = -1;
    for (std::size_t i = 0; i < claves.size(); ++i) {
        if (claves[i] == juego)
            indice = static_cast<int>(i);
    }
    if (indice < 0)
        return QString();

    const QStringList numerosJuego = codigos.value(indice).split(QLatin1Char(','));
    const QStringList nombresJuego = nombres.value(indice).split(QLatin1Char(','));
    QString nombre;
    for (int j = 0; j < numerosJuego.size(); ++j) {
        if (numerosJuego.at(j) == numero)
            nombre = nombresJuego.value(j);
    }
    return nombre;
}

QHash<QString, QString> nombresDeJuego(const std::vector<QString> &claves,
                                       const QStringList &codigos, const QStringList &nombres,
                                       const QString &juego)
{
    QHash<QString, QString> nombresPorNumero;
    int indice = -1;
    for (std::size_t i = 0; i < claves.size(); ++i) {
        if (claves[i] == juego)
            indice = static_cast<int>(i);
    }
    if (indice < 0)
        return nombresPorNumero;
    const QStringList numerosJuego = codigos.value(indice).split(QLatin1Char(','));
    const QStringList nombresJuego = nombres.value(indice).split(QLatin1Char(','));
    for (int j = 0; j < numerosJuego.size(); ++j)
        nombresPorNumero.insert(numerosJuego.at(j), nombresJuego.value(j));
    return nombresPorNumero;
}

QVector<ResultadoSorteo> analizarResultados(const QString &texto)
{
    QVector<ResultadoSorteo> resultados;
    const QStringList lineas = texto.split(QLatin1Char('\n'));
    for (const QString &linea : lineas) {
        if (linea.isEmpty())
            continue;
        const QStringList campos = linea.split(QLatin1Char(','));
        resultados.append({campos.value(0), campos.value(1)});
    }
    return resultados;
}

QString resultadoMostrado(const QString &resultado, const QString &sinNombres, const QString &tipo,
                          const QString &nombre)
{
    if (sinNombres == QLatin1String("X") || tipo == QLatin1String("T"))
        return resultado;
    return resultado + QLatin1Char('-') + nombre;
}

Validacion validarNumero(const QString &texto, const QString &tipo,
                         const std::function<QString(const QString &)> &nombreDe)
{
    Validacion v;
    v.numero = texto;
    if (texto.toInt(nullptr, 10) > 0)
        v.numero = rellenarCeros(texto, 2);

    if (tipo != QLatin1String("A")) {
        v.valido = v.numero.size() > 2;
        if (!v.valido)
            v.error = QStringLiteral("Este número no es válido\nDebe ser de 3 dígitos");
        return v;
    }

    v.nombre = nombreDe ? nombreDe(v.numero) : QString();
    v.valido = !v.nombre.isEmpty();
    if (!v.valido)
        v.error = QStringLiteral("Este número no es válido");
    return v;
}

Calculo analizarCalculo(const QString &texto)
{
    Calculo calculo;
    const QStringList lineas = texto.split(QLatin1Char('\n'));
    for (int i = 1; i < lineas.size(); ++i) {
        const QString &linea = lineas.at(i);
        if (linea.isEmpty())
            continue;
        const QStringList campos = linea.split(QLatin1Char(','));
        Premio p;
        p.banca = campos.value(0);
        p.agencia = campos.value(1);
        p.ticket = campos.value(2);
        p.numero = campos.value(3);
        p.jugado = campos.value(4).toDouble();
        p.premio = campos.value(5).toDouble();
        calculo.total += p.premio;
        calculo.filas.append(p);
    }
    return calculo;
}

QString rutaCalculo(const QString &fecha, const QString &juego, const QString &sorteo,
                    const QString &numero)
{
    return QStringLiteral("calcularpremios4.php?&f=") + fecha + QStringLiteral("&j=") + juego +
           QStringLiteral("&s=") + sorteo + QStringLiteral("&a=") + numero;
}

QString rutaPublicar(const QString &fecha, const QString &juego, const QString &sorteo,
                     const QString &numero)
{
    return QStringLiteral("publicarPremios2.php?&f=") + fecha + QStringLiteral("&j=") + juego +
           QStringLiteral("&s=") + sorteo + QStringLiteral("&a=") + numero;
}

QString rutaDeshacer(const QString &fecha, const QString &juego, const QString &sorteo)
{
    return QStringLiteral("deshacerpremios.php?&f=") + fecha + QStringLiteral("&j=") + juego +
           QStringLiteral("&s=") + sorteo;
}

Respuesta clasificarRespuesta(const QString &texto)
{
    if (texto.isEmpty())
        return Respuesta::SinRespuesta;
    if (texto == QLatin1String("0"))
        return Respuesta::Rechazada;
    return Respuesta::Hecha;
}

} // namespace premios
