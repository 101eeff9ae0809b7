#pragma once

#include <string>

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

// True when an Accept-Encoding header value offers gzip ("gzip, deflate, br").
bool ofreceGzip(const std::string &aceptada);

} // namespace servidor
