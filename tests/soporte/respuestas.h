#pragma once

#include <QByteArray>
#include <QStringList>

#include <initializer_list>

// Replies of the back office built from their lines, encoded as it sends them (ISO-8859-1).

// A reply in sections: each line ended by "\n", sections separated by a "_FIN_" line.
QByteArray enSecciones(std::initializer_list<QStringList> secciones);

// reportex.php: the games ("key,name"), the commission and participation of each banca in each
// game ("banca,game,commission %,participation %") and the sales ("banca,name,game,sold,prizes").
QByteArray respuestaReporteX(const QStringList &juegos, const QStringList &comisiones,
                             const QStringList &ventas);

// sorteospremiar3.php: the games ("key;name;flag;numbers;animal names;kind") and their draws
// ("game;draw;time").
QByteArray respuestaSorteosPremiar(const QStringList &juegos, const QStringList &sorteos);

// A body compressed as a server sends it: gzip (`zlib` false) or a zlib stream (the HTTP
// "deflate" encoding), at compression level `nivel`.
QByteArray comprimido(const QByteArray &cuerpo, bool zlib = false, int nivel = 6);
