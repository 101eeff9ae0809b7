#include "app/servidor.h"

#include "app/sesion.h"

#include <QFile>
#include <QStringList>
#include <QTextStream>

QString urlBaseDe(const QString &s)
{
    // A dotted IPv4 address (or any text with four or more labels) goes over plain http; a
    // text that names its own scheme is kept; everything else is taken to be a host name
    // behind https.
    if (s.split(QLatin1Char('.'), Qt::KeepEmptyParts).size() > 3)
        return QStringLiteral("http://") + s + QStringLiteral("/Tornavo/TornavoSU/");
    if (s.contains(QLatin1String("http")))
        return s + QStringLiteral("/Tornavo/TornavoSU/");
    return QStringLiteral("https://") + s + QStringLiteral("/Tornavo/TornavoSU/");
}

QString urlBase()
{
    QStringList lineas;
    QFile archivo(QString::fromLatin1(archivoServidor));
    if (archivo.exists() && archivo.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream in(&archivo);
        while (!in.atEnd())
            lineas.append(in.readLine());
        archivo.close();
    }
    if (!lineas.isEmpty())
        SesionGlobal::servidor = lineas.first();
    else
        lineas.append(SesionGlobal::servidor);
    return urlBaseDe(lineas.first());
}

QString leerPrimeraLinea(const QString &ruta)
{
    QFile archivo(ruta);
    if (!archivo.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    QTextStream in(&archivo);
    const QString linea = in.readLine();
    archivo.close();
    return linea;
}
