#pragma once

#include <QString>

// Name of the file, in the working directory, whose first line is the server address.
inline constexpr const char *archivoServidor = "Tornavo.svr";

// Base URL of every request, ending in "/Tornavo/TornavoSU/". Reads "Tornavo.svr" anew at
// every call and leaves its first line in SesionGlobal::servidor.
QString urlBase();

// Pure form of the scheme rule: the base URL for a given server line.
QString urlBaseDe(const QString &servidor);

// First line of a text file, or "" when it cannot be opened.
QString leerPrimeraLinea(const QString &ruta);
