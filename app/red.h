#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QStringList>
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

// The same for a reply of many megabytes that the caller reads while it arrives: gzip is asked
// for here, so the body comes as sent and the caller decodes it in pieces with
// DecodificadorCuerpo (by the reply's Content-Encoding), never holding it whole.
QNetworkReply *getGrande(QNetworkAccessManager *manager, const QString &rutaYConsulta);

// Query-object form: items added one by one, "=" between key and value, "&" between items.
QString urlPeticion(const QString &ruta, const ItemsConsulta &items);
QNetworkReply *get(QNetworkAccessManager *manager, const QString &ruta, const ItemsConsulta &items);

// True when the reply carries a server's answer: no network error (unreachable host, refused
// or cut connection, time-out) and no HTTP status of 400 or more. Anything else is no answer,
// whatever body came with it (an error page of a proxy or of the web server itself).
bool respuestaValida(QNetworkReply *respuesta);

// What a request was sent for (game, draw, date, number...), kept on its reply so that the
// handler can tell whether the answer still belongs to what is on screen.
void anotarContexto(QNetworkReply *respuesta, const QStringList &contexto);
QStringList contexto(QNetworkReply *respuesta);

// Reply body as text: Latin-1, one byte per character, cut at the first NUL; a null array
// gives the empty text.
QString textoDeBytes(const QByteArray &cuerpo);

// Reads the whole reply body and turns it into text as above; a reply that is not
// respuestaValida() gives the empty text, as a server that did not answer.
QString textoRespuesta(QNetworkReply *respuesta);

// The body cut at the first NUL, still as bytes (for replies too large to copy as text); empty
// for a reply that is not respuestaValida().
QByteArray bytesRespuesta(QNetworkReply *respuesta);

} // namespace red
