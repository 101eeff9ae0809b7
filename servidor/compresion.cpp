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
