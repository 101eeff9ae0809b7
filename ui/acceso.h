#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>

#include <utility>
#include <vector>

// What the login, the rights and the clock of the main window compute, without widgets.

// Endpoint and query of the login request: user and password appended as typed.
QString rutaLogin(const QString &usuario, const QString &clave);

// The login reply, line by line (lines counted from 1; missing lines read as empty).
struct RespuestaLogin {
    bool rechazado = false;       // line 1 is "0": wrong user or password
    QString nombre;               // line 2
    bool accesoPermitido = false; // line 3 is exactly "X"
    QStringList opciones;         // line 4 split by ","
    QStringList juegos;           // line 5 split by ","
    QStringList listaLinea6;      // line 6 split by ","
    QString datoLinea7;           // line 7
    QStringList listaLinea8;      // line 8 split by ","
};

// Reads a non-empty login reply text.
RespuestaLogin leerRespuestaLogin(const QString &texto);

// Writes an accepted reply into the session record, `usuario` being the typed user name.
void guardarSesion(const RespuestaLogin &respuesta, const QString &usuario);

// True when `opcion` equals one of `opciones` exactly.
bool opcionActiva(const QStringList &opciones, const QString &opcion);

// Option code and object name (action or menu) of each restricted menu entry.
const std::vector<std::pair<QString, QString>> &tablaDerechos();

// Game filter for the session's game codes.
QString filtroDeJuegos(const QStringList &juegos);

// Server clock reply: date from line 1 ("yyyy-MM-dd"), time from line 5 ("hh:mm:ss"); what
// cannot be parsed (or is missing) comes out invalid.
struct HoraServidor {
    QDate fecha;
    QTime hora;
};
HoraServidor leerHoraServidor(const QString &texto);
