#pragma once

#include <memory>
#include <string>
#include <vector>

struct z_stream_s;

// Compression of the replies. The server compresses itself, at a level chosen for the cost of
// the CPU against the transfer it saves, instead of letting the HTTP library pick its own.
namespace servidor {

// Replies shorter than this go out as they are: a packet or two either way.
constexpr size_t minimoParaComprimir = 1400;

// zlib's fastest level: about five times smaller for the sales lists, at a few hundred MB/s,
// so it pays on any link slower than about a gigabit.
constexpr int nivelGzip = 1;

// `entrada` compressed in the gzip format at `nivel` (1..9) into `salida`. False (and `salida`
// empty) when zlib fails.
bool comprimirGzip(const std::string &entrada, std::string &salida, int nivel = nivelGzip);

// One stretch of a gzip reply, compressed by itself: deflate blocks of its own text that end
// on a byte boundary (a sync flush) and are never the final block. Stretches compressed apart,
// on different threads and in any order, and joined in the order of their text by unirGzip()
// make a single gzip member holding a single deflate stream, which every gzip reader takes as
// it takes any other (it never has to handle several members).
class TramoGzip {
public:
    explicit TramoGzip(int nivel = nivelGzip);
    ~TramoGzip();
    TramoGzip(TramoGzip &&) noexcept;
    TramoGzip &operator=(TramoGzip &&) noexcept;
    TramoGzip(const TramoGzip &) = delete;
    TramoGzip &operator=(const TramoGzip &) = delete;

    // Compresses `n` more bytes of the stretch's text.
    void agregar(const char *datos, size_t n);
    // Ends the stretch. Nothing may be added afterwards.
    void terminar();

    // False when zlib failed: the reply must not be sent from these stretches.
    bool bien() const { return m_bien; }
    // Bytes of text taken in.
    unsigned long long longitud() const { return m_longitud; }

private:
    friend std::string unirGzip(std::vector<TramoGzip *> &tramos);
    void comprimir(int modo);

    std::unique_ptr<z_stream_s> m_z;
    std::string m_salida;
    unsigned long m_crc = 0;
    unsigned long long m_longitud = 0;
    bool m_bien = true;
    bool m_terminado = false;
};

// The gzip member of ended stretches given in the order of their text: header, their deflate
// data, an empty final block, trailer. The stretches are emptied as they are copied. "" when
// one of them failed.
std::string unirGzip(std::vector<TramoGzip *> &tramos);

// True when an Accept-Encoding header value offers gzip ("gzip, deflate, br").
bool ofreceGzip(const std::string &aceptada);

} // namespace servidor
