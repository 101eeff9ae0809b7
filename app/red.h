#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

class QNetworkAccessManager;
class QNetworkReply;

// The one way the console talks to its server: a GET of urlBase() + endpoint on the caller's
// own access manager, whose finished() signal the caller connected to its reply handler
// beforehand. There is no time-out, retry or request bookkeeping.
namespace red {

using ItemsConsulta = QVector<QPair<QString, QString>>;

// Concatenation form: `rutaYConsulta` already carries "?" and its keys, e.g.
// "calcularpremios4.php?&f=2026-01-01&j=1". Values are appended as they are; the URL's tolerant
// parsing encodes only what must be encoded.
QString urlPeticion(const QString &rutaYConsulta);
QNetworkReply *get(QNetworkAccessManager *manager, const QString &rutaYConsulta);

// Query-object form: items added one by one, "=" between key and value, "&" between items.
QString urlPeticion(const QString &ruta, const ItemsConsulta &items);
QNetworkReply *get(QNetworkAccessManager *manager, const QString &ruta, const ItemsConsulta &items);

// Reply body as text: Latin-1, one byte per character, cut at the first NUL; a null array
// gives the empty text.
QString textoDeBytes(const QByteArray &cuerpo);

// Reads the whole reply body and turns it into text as above.
QString textoRespuesta(QNetworkReply *respuesta);

// The body cut at the first NUL, still as bytes (for replies too large to copy as text).
QByteArray bytesRespuesta(QNetworkReply *respuesta);

} // namespace red
