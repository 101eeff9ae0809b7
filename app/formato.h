#pragma once

#include <QDate>
#include <QLocale>
#include <QString>
#include <QTime>

// The console's one locale, Spanish (Venezuela), whatever the machine's: every date and time
// shown to the operator is formatted through it ("lunes", "noviembre", "2:05 p. m."), because
// QDate::toString and QTime::toString with a format follow the machine's locale instead.
QLocale localeConsola();

// A date or time as the operator reads it, in the console's locale ("lunes 23/11/2026",
// "2:05 p. m."), with plain blanks where the locale puts non-breaking ones.
QString textoConsola(const QDate &fecha, const QString &formato);
QString textoConsola(const QTime &hora, const QString &formato);

// Date as the server reads it, "yyyy-MM-dd", with ASCII digits on any machine (a machine
// locale may have digits of its own).
QString fechaServidor(const QDate &fecha);

// Amount as shown everywhere in the console: fixed decimals, "." as decimal point and ","
// between groups of three digits, whatever the system locale. A negative amount keeps its
// sign even when it rounds to zero ("-0.00").
QString formatoMonto(double monto, int decimales);

// Puts "0" in front of the text until it is `ancho` characters long; never cuts.
QString rellenarCeros(const QString &texto, int ancho);

// Game name for a game key: the value in SesionGlobal::tablaValores at the index of the last
// entry of SesionGlobal::tablaClaves equal to the key; "" when none.
QString buscarValor(const QString &clave);

// Time format of the blinking clock: ";" separators on even seconds, ":" on odd ones (and
// for an invalid time).
QString formatoReloj(const QTime &hora);

// Blinking clock text: ":" between the parts in odd seconds and ";" in even ones
// ("3:05:07 p. m.", then "3;05;08 p. m."); "" for an invalid time.
QString textoReloj(const QTime &hora);

// Picture of an animal: "animales/<carpeta>/<nombre>.png" when that file exists, otherwise the
// ".jpg" path (not tested).
QString rutaImagenAnimal(const QString &carpeta, const QString &nombre);
