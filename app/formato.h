#pragma once

#include <QString>
#include <QTime>

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
// ("3:05:07 pm", then "3;05;08 pm"); "" for an invalid time.
QString textoReloj(const QTime &hora);

// Picture of an animal: "animales/<carpeta>/<nombre>.png" when that file exists, otherwise the
// ".jpg" path (not tested).
QString rutaImagenAnimal(const QString &carpeta, const QString &nombre);
