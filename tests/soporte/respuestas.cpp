#include "tests/soporte/respuestas.h"

#include <zlib.h>

QByteArray enSecciones(std::initializer_list<QStringList> secciones)
{
    QByteArray r;
    bool primera = true;
    for (const QStringList &seccion : secciones) {
        if (!primera)
            r += "_FIN_\n";
        primera = false;
        for (const QString &linea : seccion)
            r += linea.toLatin1() + '\n';
    }
    return r;
}

QByteArray respuestaReporteX(const QStringList &juegos, const QStringList &comisiones,
                             const QStringList &ventas)
{
    return enSecciones({juegos, comisiones, ventas});
}

QByteArray respuestaSorteosPremiar(const QStringList &juegos, const QStringList &sorteos)
{
    return enSecciones({juegos, sorteos});
}

QByteArray comprimido(const QByteArray &cuerpo, bool zlib, int nivel)
{
    z_stream z{};
    // 15 window bits, + 16 for a gzip header and trailer instead of zlib's.
    if (deflateInit2(&z, nivel, Z_DEFLATED, zlib ? 15 : 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        qFatal("deflateInit2 failed");
    QByteArray salida(int(deflateBound(&z, uLong(cuerpo.size()))), '\0');
    z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(cuerpo.constData()));
    z.avail_in = uInt(cuerpo.size());
    z.next_out = reinterpret_cast<Bytef *>(salida.data());
    z.avail_out = uInt(salida.size());
    if (deflate(&z, Z_FINISH) != Z_STREAM_END)
        qFatal("deflate failed");
    salida.truncate(int(z.total_out));
    deflateEnd(&z);
    return salida;
}
