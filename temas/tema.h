#pragma once

#include <QString>
#include <QStringList>

// The console's colour themes: one Qt style sheet per theme key, compiled into the theme
// bundle. The chosen key lives on the first line of "Tornavo.thm" in the working directory.

// Name of the theme file, relative to the working directory.
inline constexpr const char *archivoTema = "Tornavo.thm";

// Number of themes offered (row 0 is the platform's own look).
inline constexpr int cantidadTemas = 11;

// Display names, in list order.
QStringList nombresTemas();

// Keys, in list order; row 0 carries `estiloSistema`, the key that means "no theme".
QStringList clavesTemas(const QString &estiloSistema);

// Resource path of a key's style sheet; "" for the system theme and for unknown keys.
// Keys compare exactly, case included.
QString rutaHojaDeEstilo(const QString &clave);

// Style sheet text of a key. When there is no file for it, prints
// "Unable to set stylesheet, file not found" on standard output and returns "".
QString hojaDeEstilo(const QString &clave);

// Style sheet of the key on the first line of the file at `ruta` (an unreadable file gives
// the empty key).
QString cargarTema(const QString &ruta);

// Rewrites the theme file with `clave` and a line end; false when it could not be written.
bool guardarTema(const QString &ruta, const QString &clave);
