#include "app/red.h"

#include "app/servidor.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <QUrlQuery>
#include <QVariant>

namespace red {
namespace {

QUrl armarUrl(const QString &ruta, const ItemsConsulta &items)
{
    QUrl url(urlBase() + ruta);
    QUrlQuery consulta;
    consulta.setQueryDelimiters(QLatin1Char('='), QLatin1Char('&'));
    for (const auto &item : items)
        consulta.addQueryItem(item.first, item.second);
    url.setQuery(consulta);
    return url;
}

QByteArray cortarEnNul(QByteArray cuerpo)
{
    const int nul = cuerpo.indexOf('\0');
    if (nul >= 0)
        cuerpo.truncate(nul);
    return cuerpo;
}

} // namespace

QString urlPeticion(const QString &rutaYConsulta)
{
    return QUrl(urlBase() + rutaYConsulta).toString(QUrl::FullyEncoded);
}

QNetworkReply *get(QNetworkAccessManager *manager, const QString &rutaYConsulta)
{
    return manager->get(QNetworkRequest(QUrl(urlBase() + rutaYConsulta)));
}

QNetworkReply *getGrande(QNetworkAccessManager *manager, const QString &rutaYConsulta)
{
    QNetworkRequest peticion(QUrl(urlBase() + rutaYConsulta));
    peticion.setRawHeader("Accept-Encoding", "gzip");
    return manager->get(peticion);
}

QString urlPeticion(const QString &ruta, const ItemsConsulta &items)
{
    return armarUrl(ruta, items).toString(QUrl::FullyEncoded);
}

QNetworkReply *get(QNetworkAccessManager *manager, const QString &ruta, const ItemsConsulta &items)
{
    return manager->get(QNetworkRequest(armarUrl(ruta, items)));
}

QString textoDeBytes(const QByteArray &cuerpo)
{
    if (cuerpo.isNull())
        return QString();
    const int nul = cuerpo.indexOf('\0');
    const int largo = nul >= 0 ? nul : cuerpo.size();
    return QString::fromLatin1(cuerpo.constData(), largo);
}

bool respuestaValida(QNetworkReply *respuesta)
{
    if (!respuesta || respuesta->error() != QNetworkReply::NoError)
        return false;
    const QVariant estado = respuesta->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return !estado.isValid() || estado.toInt() < 400;
}

void anotarContexto(QNetworkReply *respuesta, const QStringList &contexto)
{
    if (respuesta)
        respuesta->setProperty("contextoPeticion", contexto);
}

QStringList contexto(QNetworkReply *respuesta)
{
    return respuesta ? respuesta->property("contextoPeticion").toStringList() : QStringList();
}

QString textoRespuesta(QNetworkReply *respuesta)
{
    if (!respuestaValida(respuesta))
        return QString();
    return textoDeBytes(respuesta->readAll());
}

QByteArray bytesRespuesta(QNetworkReply *respuesta)
{
    if (!respuestaValida(respuesta))
        return QByteArray();
    return cortarEnNul(respuesta->readAll());
}

} // namespace red
