#include "autopremiacion/datos_autopremiacion.h"

#include "app/formato.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QPair>
#include <QSet>

void ListasResultado::limpiar()
{
    resultadoClaveJuego.clear();
    resultadoNombreJuego.clear();
    resultadoClaveSorteo.clear();
    resultadoEtiqueta.clear();
    resultadoValor.clear();
    resultadoExtra.clear();
    resultadoHora.clear();
}

QStringList lineasRespuesta(const QString &texto)
{
    return texto.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList camposLinea(const QString &linea, int minimo)
{
    QStringList campos = linea.split(QLatin1Char(','));
    while (campos.size() < minimo)
        campos.append(QString());
    return campos;
}

bool nombreScriptValido(const QString &nombre)
{
    if (nombre.isEmpty() || nombre.startsWith(QLatin1Char('.')) ||
        nombre.startsWith(QLatin1Char('-')))
        return false;
    for (const QChar c : nombre) {
        if (!c.isLetterOrNumber() && c != QLatin1Char('_') && c != QLatin1Char('-') &&
            c != QLatin1Char('.'))
            return false;
    }
    return true;
}

QString textoVisible(const QString &texto)
{
    QString visible = texto;
    for (QChar &c : visible) {
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format)
            c = QLatin1Char('?');
    }
    return visible;
}

QVector<JuegoNuevo> agregarSorteos(const QString &texto, QStringList &nombresListados,
                                   ListasJuego &juegos, ListasSorteo &sorteos,
                                   QStringList &listaScripts, QStringList *scriptsRechazados)
{
    QVector<JuegoNuevo> nuevos;
    // Names already listed, looked up in constant time: a reply may hold thousands of games.
    QSet<QString> listados(nombresListados.cbegin(), nombresListados.cend());
    const QStringList lineas = lineasRespuesta(texto);
    for (const QString &linea : lineas) {
        const QStringList c = camposLinea(linea, 8);
        if (!listados.contains(c.at(1))) {
            listados.insert(c.at(1));
            nombresListados.append(c.at(1));
            nuevos.append({c.at(1), c.at(6)});
            juegos.clavesJuego.append(c.at(0));
            juegos.juegoAuto.append(c.at(6));
            juegos.juegoScript.append(c.at(7));
            if (c.at(6) == marcaAutomatica) {
                if (nombreScriptValido(c.at(7)))
                    listaScripts.append(c.at(7) + QStringLiteral(".py"));
                else if (scriptsRechazados)
                    scriptsRechazados->append(c.at(7));
            }
        }
        sorteos.sorteoClaveJuego.append(c.at(0));
        sorteos.sorteoNombreJuego.append(c.at(1));
        sorteos.sorteoClave.append(c.at(2));
        sorteos.sorteoEtiqueta.append(c.at(3));
        sorteos.sorteoCampo4.append(c.at(4));
        sorteos.sorteoCampo5.append(c.at(5));
        sorteos.sorteoResultado.append(QString());
        sorteos.sorteoScript.append(c.at(7));
    }
    return nuevos;
}

QString etiquetaSorteo(const ListasSorteo &sorteos, int i)
{
    return sorteos.sorteoNombreJuego.value(i) + QLatin1Char('-') + sorteos.sorteoEtiqueta.value(i);
}

QStringList etiquetasSorteos(const ListasSorteo &sorteos, bool soloPendientes)
{
    QStringList etiquetas;
    for (int i = 0; i < sorteos.cantidad(); ++i) {
        if (soloPendientes && !sorteos.sorteoResultado.value(i).isEmpty())
            continue;
        etiquetas.append(etiquetaSorteo(sorteos, i));
    }
    return etiquetas;
}

QStringList archivosResultado(const ListasJuego &juegos)
{
    QStringList archivos;
    for (int i = 0; i < juegos.cantidad(); ++i) {
        if (juegos.juegoAuto.value(i) == marcaAutomatica &&
            nombreScriptValido(juegos.juegoScript.value(i)))
            archivos.append(juegos.juegoScript.value(i) + QStringLiteral(".txt"));
    }
    return archivos;
}

QStringList scriptsEnHorario(const ListasJuego &juegos, const QTime &hora)
{
    QStringList scripts;
    const int t = hora.hour() * 10000 + hora.minute() * 100 + hora.second();
    if (!hora.isValid() || t <= 83000 || t >= 210000)
        return scripts;
    for (int i = 0; i < juegos.cantidad(); ++i) {
        if (juegos.juegoAuto.value(i) == marcaAutomatica &&
            nombreScriptValido(juegos.juegoScript.value(i)))
            scripts.append(juegos.juegoScript.value(i) + QStringLiteral(".py"));
    }
    return scripts;
}

QVector<FilaResultado> aplicarResultados(const QString &texto, ListasResultado &resultados,
                                         ListasSorteo &sorteos)
{
    resultados.limpiar();
    for (QString &r : sorteos.sorteoResultado)
        r.clear();

    // Draws by game key and draw key: each result marks every draw it names, a later result
    // of the same draw overwriting an earlier one, in time linear in the reply.
    QHash<QPair<QString, QString>, QVector<int>> sorteosPorClave;
    sorteosPorClave.reserve(sorteos.cantidad());
    for (int i = 0; i < sorteos.cantidad(); ++i)
        sorteosPorClave[qMakePair(sorteos.sorteoClaveJuego.at(i), sorteos.sorteoClave.at(i))]
            .append(i);

    QVector<FilaResultado> filas;
    const QStringList lineas = lineasRespuesta(texto);
    filas.reserve(lineas.size());
    for (const QString &linea : lineas) {
        const QStringList c = camposLinea(linea, 8);
        FilaResultado fila;
        fila.sorteo = c.at(1) + QLatin1Char(' ') + c.at(4);
        fila.resultado =
            c.at(2) == marcaAutomatica ? c.at(5) : c.at(5) + QLatin1Char('-') + c.at(6);
        fila.hora = textoConsola(QTime::fromString(c.at(7)), QStringLiteral("h:mm ap"));
        filas.append(fila);

        resultados.resultadoClaveJuego.append(c.at(0));
        resultados.resultadoNombreJuego.append(c.at(1));
        resultados.resultadoClaveSorteo.append(c.at(3));
        resultados.resultadoEtiqueta.append(c.at(4));
        resultados.resultadoValor.append(c.at(5));
        resultados.resultadoExtra.append(c.at(6));
        resultados.resultadoHora.append(c.at(7));

        const auto marcados = sorteosPorClave.constFind(qMakePair(c.at(0), c.at(3)));
        if (marcados != sorteosPorClave.constEnd()) {
            for (int i : *marcados)
                sorteos.sorteoResultado[i] = c.at(5);
        }
    }
    return filas;
}

int desfaseServidor(const QString &texto, const QTime &reloj)
{
    const QTime servidor =
        QTime::fromString(texto.split(QLatin1Char('\n')).value(4), QStringLiteral("hh:mm:ss"));
    if (!servidor.isValid() || !reloj.isValid())
        return 0;
    return reloj.secsTo(servidor);
}

QStringList leerArchivoResultado(const QString &ruta, qint64 limiteBytes)
{
    // Only plain files: opening a pipe left under the name would wait for a writer.
    const QFileInfo info(ruta);
    if (!info.exists() || !info.isFile())
        return {};
    QFile archivo(ruta);
    if (!archivo.open(QIODevice::ReadOnly))
        return {};
    QByteArray datos = archivo.read(limiteBytes + 1);
    archivo.close();
    if (datos.size() > limiteBytes) {
        // Cut by the limit: the last line is incomplete, keep only whole lines.
        datos.truncate(limiteBytes);
        const int fin = datos.lastIndexOf('\n');
        datos.truncate(fin < 0 ? 0 : fin + 1);
    }
    if (datos.isEmpty())
        return {};
    if (datos.endsWith('\n'))
        datos.chop(1);
    QStringList lineas =
        QString::fromUtf8(datos.constData(), datos.size()).split(QLatin1Char('\n'));
    for (QString &linea : lineas) {
        if (linea.endsWith(QLatin1Char('\r')))
            linea.chop(1);
    }
    return lineas;
}

bool valorPremiacionValido(const QString &valor)
{
    for (const QChar c : valor) {
        if (c == QLatin1Char('&') || c == QLatin1Char('#') || c == QLatin1Char('?') ||
            c == QLatin1Char('=') || c.isSpace() || c.category() == QChar::Other_Control ||
            c.category() == QChar::Other_Format)
            return false;
    }
    return true;
}

QVector<Premiacion> premiacionesDeArchivo(const QStringList &lineas, const QString &fechaHoy,
                                          const ListasResultado &resultados,
                                          const ListasSorteo &sorteos, QString &etiqueta,
                                          QStringList *rechazadas)
{
    QVector<Premiacion> premiaciones;
    if (lineas.size() < 2 || lineas.first() != fechaHoy)
        return premiaciones;

    // A draw counts as awarded when its game key and draw key, written one after the other,
    // equal those of a published result written the same way.
    QSet<QString> publicados;
    for (int r = 0; r < resultados.cantidad(); ++r)
        publicados.insert(resultados.resultadoClaveJuego.at(r) +
                          resultados.resultadoClaveSorteo.at(r));
    // The label of a draw is the one of its last line in the draw list.
    QHash<QPair<QString, QString>, int> ultimoSorteo;
    for (int i = 0; i < sorteos.cantidad(); ++i)
        ultimoSorteo.insert(qMakePair(sorteos.sorteoClaveJuego.at(i), sorteos.sorteoClave.at(i)),
                            i);

    const int ultima = qMin(lineas.size(), limiteLineasArchivo + 1);
    for (int n = 1; n < ultima; ++n) {
        const QStringList c = camposLinea(lineas.at(n), 3);
        const QString &j = c.at(0);
        const QString &s = c.at(1);
        const QString &a = c.at(2);

        if (publicados.contains(j + s) || a.isEmpty())
            continue;
        if (!valorPremiacionValido(j) || !valorPremiacionValido(s) || !valorPremiacionValido(a)) {
            if (rechazadas)
                rechazadas->append(lineas.at(n));
            continue;
        }

        const auto i = ultimoSorteo.constFind(qMakePair(j, s));
        if (i != ultimoSorteo.constEnd())
            etiqueta = etiquetaSorteo(sorteos, *i);
        premiaciones.append({j, s, a, etiqueta});
    }
    return premiaciones;
}

QString consultaPremiacion(const Premiacion &premiacion)
{
    return QStringLiteral("autopremiar.php?&j=") + premiacion.juego + QStringLiteral("&s=") +
           premiacion.sorteo + QStringLiteral("&a=") + premiacion.valor;
}

QStringList registroPremiacion(const QTime &hora, const Premiacion &premiacion)
{
    return {QLatin1Char('<') + textoConsola(hora, QStringLiteral("h:mm ap")) +
                QStringLiteral("> ") + QStringLiteral("Premiando :"),
            premiacion.etiqueta + QStringLiteral(" -> ") + premiacion.valor};
}
