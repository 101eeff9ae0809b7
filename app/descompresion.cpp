#include "app/descompresion.h"

#include <vector>

#include <zlib.h>

namespace {

enum class Modo { Ninguno, Zlib, Desconocido };

constexpr std::size_t kSalida = 256 * 1024;

} // namespace

struct DecodificadorCuerpo::Estado {
    Modo modo = Modo::Ninguno;
    bool iniciado = false; // the zlib stream is initialised
    bool alFinal = false;  // the last stream came to its end and nothing followed yet
    bool fallo = false;
    bool algo = false; // some compressed byte was read
    z_stream z{};
    std::vector<unsigned char> salida;

    bool iniciar(int bitsVentana)
    {
        if (iniciado)
            inflateEnd(&z);
        z = z_stream{};
        iniciado = inflateInit2(&z, bitsVentana) == Z_OK;
        return iniciado;
    }
};

DecodificadorCuerpo::DecodificadorCuerpo(const QByteArray &codificacion) : m(new Estado)
{
    const QByteArray c = codificacion.trimmed().toLower();
    if (c.isEmpty() || c == "identity") {
        m->modo = Modo::Ninguno;
    } else if (c == "gzip" || c == "x-gzip" || c == "deflate") {
        m->modo = Modo::Zlib;
        m->salida.resize(kSalida);
        // 15 + 32: a gzip or a zlib header, whichever comes.
        if (!m->iniciar(15 + 32))
            m->fallo = true;
    } else {
        m->modo = Modo::Desconocido;
        m->fallo = true;
    }
}

DecodificadorCuerpo::~DecodificadorCuerpo()
{
    if (m->iniciado)
        inflateEnd(&m->z);
}

bool DecodificadorCuerpo::agregar(const char *p, qint64 n, const Destino &destino)
{
    Estado &e = *m;
    if (e.fallo)
        return false;
    if (n <= 0)
        return true;
    if (e.modo == Modo::Ninguno) {
        destino(p, n);
        return true;
    }
    const auto *entrada = reinterpret_cast<const unsigned char *>(p);
    while (n > 0) {
        // zlib counts in 32-bit lengths.
        const uInt trozo = uInt(qMin<qint64>(n, 1 << 30));
        e.z.next_in = const_cast<unsigned char *>(entrada);
        e.z.avail_in = trozo;
        e.algo = true;
        for (;;) {
            if (e.alFinal) {
                if (e.z.avail_in == 0)
                    break;
                // Another gzip member after the first.
                if (inflateReset(&e.z) != Z_OK) {
                    e.fallo = true;
                    return false;
                }
                e.alFinal = false;
            }
            e.z.next_out = e.salida.data();
            e.z.avail_out = uInt(e.salida.size());
            const int r = inflate(&e.z, Z_NO_FLUSH);
            const qint64 hechos = qint64(e.salida.size() - e.z.avail_out);
            if (hechos > 0)
                destino(reinterpret_cast<const char *>(e.salida.data()), hechos);
            if (r == Z_STREAM_END) {
                e.alFinal = true;
                continue;
            }
            if (r == Z_OK) {
                // A full output buffer may leave more to take out; otherwise the input is
                // used up.
                if (e.z.avail_out == 0 || e.z.avail_in > 0)
                    continue;
                break;
            }
            if (r == Z_BUF_ERROR && e.z.avail_in == 0)
                break; // waits for more input
            e.fallo = true;
            return false;
        }
        entrada += trozo;
        n -= trozo;
    }
    return true;
}

bool DecodificadorCuerpo::completo() const
{
    if (m->fallo)
        return false;
    if (m->modo == Modo::Ninguno)
        return true;
    // An empty body is whole; a compressed one must have reached the end of its stream.
    return !m->algo || m->alFinal;
}
