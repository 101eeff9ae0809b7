#include "servidor/compresion.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <climits>

namespace servidor {

bool comprimirGzip(const std::string &entrada, std::string &salida, int nivel)
{
    salida.clear();
    z_stream z{};
    // 15 window bits + 16: a gzip header and trailer instead of zlib's.
    if (deflateInit2(&z, nivel, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        return false;
    // The output grows piece by piece: room is reserved, never filled in advance, so a large
    // reply does not cost its size twice while it is compressed.
    salida.reserve(entrada.size() / 4 + 64);
    char trozo[1 << 16];
    size_t leido = 0;
    int rc = Z_OK;
    do {
        const size_t entra = std::min<size_t>(entrada.size() - leido, 1u << 30);
        z.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(entrada.data() + leido));
        z.avail_in = static_cast<uInt>(entra);
        leido += entra;
        const int modo = leido == entrada.size() ? Z_FINISH : Z_NO_FLUSH;
        do {
            z.next_out = reinterpret_cast<Bytef *>(trozo);
            z.avail_out = sizeof trozo;
            rc = deflate(&z, modo);
            if (rc == Z_STREAM_ERROR)
                break;
            salida.append(trozo, sizeof trozo - z.avail_out);
        } while (z.avail_out == 0);
    } while (rc == Z_OK && leido < entrada.size());
    deflateEnd(&z);
    if (rc != Z_STREAM_END) {
        salida.clear();
        return false;
    }
    return true;
}

TramoGzip::TramoGzip(int nivel) : m_z(std::make_unique<z_stream_s>())
{
    *m_z = z_stream{};
    // Negative window bits: raw deflate data, without zlib's or gzip's framing, which
    // unirGzip() writes once around all the stretches.
    m_bien = deflateInit2(m_z.get(), nivel, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY) == Z_OK;
    if (!m_bien)
        m_z.reset();
    m_crc = crc32(0L, Z_NULL, 0);
}

TramoGzip::~TramoGzip()
{
    if (m_z)
        deflateEnd(m_z.get());
}

TramoGzip::TramoGzip(TramoGzip &&otro) noexcept = default;

TramoGzip &TramoGzip::operator=(TramoGzip &&otro) noexcept
{
    if (this != &otro) {
        if (m_z)
            deflateEnd(m_z.get());
        m_z = std::move(otro.m_z);
        m_salida = std::move(otro.m_salida);
        m_crc = otro.m_crc;
        m_longitud = otro.m_longitud;
        m_bien = otro.m_bien;
        m_terminado = otro.m_terminado;
    }
    return *this;
}

void TramoGzip::comprimir(int modo)
{
    char trozo[1 << 16];
    int rc = Z_OK;
    do {
        m_z->next_out = reinterpret_cast<Bytef *>(trozo);
        m_z->avail_out = sizeof trozo;
        rc = deflate(m_z.get(), modo);
        if (rc == Z_STREAM_ERROR) {
            m_bien = false;
            return;
        }
        m_salida.append(trozo, sizeof trozo - m_z->avail_out);
    } while (m_z->avail_out == 0);
}

void TramoGzip::agregar(const char *datos, size_t n)
{
    if (!m_bien || m_terminado)
        return;
    while (n > 0) {
        const size_t entra = std::min<size_t>(n, 1u << 30);
        m_crc = crc32_z(m_crc, reinterpret_cast<const Bytef *>(datos), entra);
        m_longitud += entra;
        m_z->next_in = reinterpret_cast<Bytef *>(const_cast<char *>(datos));
        m_z->avail_in = static_cast<uInt>(entra);
        comprimir(Z_NO_FLUSH);
        if (!m_bien)
            return;
        datos += entra;
        n -= entra;
    }
}

void TramoGzip::terminar()
{
    if (!m_bien || m_terminado)
        return;
    m_z->next_in = nullptr;
    m_z->avail_in = 0;
    // A sync flush ends the stretch on a byte boundary with an empty stored block, not the
    // final one: the next stretch's blocks follow it directly.
    comprimir(Z_SYNC_FLUSH);
    m_terminado = true;
    deflateEnd(m_z.get());
    m_z.reset();
}

std::string unirGzip(std::vector<TramoGzip *> &tramos)
{
    size_t total = 20;
    for (const TramoGzip *t : tramos) {
        if (!t->m_bien || !t->m_terminado)
            return std::string();
        total += t->m_salida.size();
    }
    // Header: magic, deflate, no flags, no time, "fastest" (as zlib writes it for level 1),
    // Unix.
    static const unsigned char cabecera[10] = {0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 4, 3};
    std::string r;
    r.reserve(total);
    r.append(reinterpret_cast<const char *>(cabecera), sizeof cabecera);
    unsigned long crc = crc32(0L, Z_NULL, 0);
    unsigned long long longitud = 0;
    for (TramoGzip *t : tramos) {
        r += t->m_salida;
        std::string().swap(t->m_salida);
        crc = crc32_combine(crc, t->m_crc, static_cast<z_off_t>(t->m_longitud));
        longitud += t->m_longitud;
    }
    // The final block, empty, with fixed codes: a set "last" bit, type 01, the end-of-block
    // code (seven zero bits), padded to the byte.
    r.push_back('\x03');
    r.push_back('\x00');
    // Trailer: CRC-32 and length modulo 2^32 of the whole text, little-endian.
    for (unsigned long v : {crc, static_cast<unsigned long>(longitud & 0xFFFFFFFFu)})
        for (int i = 0; i < 4; ++i)
            r.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
    return r;
}

bool ofreceGzip(const std::string &aceptada)
{
    // Tokens separated by commas, each maybe with ";q=...": gzip offered unless "q=0".
    size_t inicio = 0;
    while (inicio <= aceptada.size()) {
        size_t fin = aceptada.find(',', inicio);
        if (fin == std::string::npos)
            fin = aceptada.size();
        std::string token = aceptada.substr(inicio, fin - inicio);
        inicio = fin + 1;
        std::string limpio;
        for (char c : token)
            if (!std::isspace(static_cast<unsigned char>(c)))
                limpio += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const size_t pc = limpio.find(';');
        const std::string nombre = limpio.substr(0, pc);
        if (nombre != "gzip" && nombre != "x-gzip")
            continue;
        if (pc == std::string::npos)
            return true;
        const std::string parametro = limpio.substr(pc + 1);
        if (parametro.rfind("q=", 0) != 0)
            return true;
        // "q=0", "q=0.0", "q=0.000" refuse it; any other digit than 0 accepts it. No strtod:
        // its decimal point follows the process's locale.
        return parametro.find_first_of("123456789", 2) != std::string::npos;
    }
    return false;
}

} // namespace servidor
