#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <memory>

// Decodes a reply body piece by piece as it arrives, by its Content-Encoding: none ("" or
// "identity"), "gzip" (also "x-gzip", and several gzip members one after another) or
// "deflate" (zlib-wrapped). Used for replies too large to hold
// whole: the caller asks for gzip itself, so the network layer hands over the body as sent,
// and the decoded bytes go straight to the caller's reader in pieces.
class DecodificadorCuerpo {
public:
    using Destino = std::function<void(const char *, qint64)>;

    explicit DecodificadorCuerpo(const QByteArray &codificacion);
    ~DecodificadorCuerpo();
    DecodificadorCuerpo(const DecodificadorCuerpo &) = delete;
    DecodificadorCuerpo &operator=(const DecodificadorCuerpo &) = delete;

    // Decodes the next bytes of the body and hands what they give to `destino`. Returns false,
    // and reads nothing more, once the body proved unreadable (an unknown encoding, a broken
    // stream).
    bool agregar(const char *p, qint64 n, const Destino &destino);
    // True when the whole body was read: no failure, and a compressed stream came to its end.
    bool completo() const;

private:
    struct Estado;
    std::unique_ptr<Estado> m;
};
