#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

// A fixture HTTP server on 127.0.0.1 for tests: canned replies per endpoint, and the full
// request target of every request, byte for byte, in arrival order.
class ServidorPrueba {
public:
    ServidorPrueba();
    ~ServidorPrueba();
    ServidorPrueba(const ServidorPrueba &) = delete;
    ServidorPrueba &operator=(const ServidorPrueba &) = delete;

    int puerto() const { return m_puerto; }

    // "127.0.0.1:<port>", the line a test writes to Tornavo.svr.
    QString direccion() const;

    // Base URL the console builds from direccion().
    QString urlBase() const;

    // Reply body for requests to `endpoint` (the last path segment, e.g. "validarUser.php").
    // Bodies may be empty or hold NUL bytes. Endpoints without a reply answer 200 with an
    // empty body.
    void responder(const QString &endpoint, const QByteArray &cuerpo);

    // Reply computed from the request target (path and query, undecoded).
    using Generador = std::function<QByteArray(const QString &objetivo)>;
    void responderCon(const QString &endpoint, Generador generador);

    // HTTP status of the replies to `endpoint` (200 unless set), with whatever body they have.
    void estado(const QString &endpoint, int codigo);

    // Holds replies to `endpoint` for `milisegundos` before answering.
    void demorar(const QString &endpoint, int milisegundos);

    // Replies to `endpoint` go out as they are given, with this Content-Encoding: the test
    // hands over a body it compressed (or broke) itself, and the server compresses nothing.
    // An empty encoding goes back to plain replies.
    void codificacion(const QString &endpoint, const QByteArray &contentEncoding);

    // A header of the last request to `endpoint` ("" when it had none).
    QByteArray cabeceraPedida(const QString &endpoint, const QByteArray &nombre) const;

    // Full request targets ("/Tornavo/TornavoSU/x.php?&f=..."), in arrival order.
    QStringList peticiones() const;

    // Targets of the requests to one endpoint only.
    QStringList peticionesA(const QString &endpoint) const;

    // Forgets recorded requests.
    void limpiarPeticiones();

    // "127.0.0.1:<port>" of a port that was just closed: a server that does not answer.
    static QString direccionSinServidor();

private:
    std::unique_ptr<httplib::Server> m_servidor;
    std::thread m_hilo;
    int m_puerto = 0;
    mutable std::mutex m_mutex;
    std::map<std::string, std::string> m_respuestas;
    std::map<std::string, Generador> m_generadores;
    std::map<std::string, int> m_demoras;
    std::map<std::string, int> m_estados;
    std::map<std::string, std::string> m_codificaciones;
    std::map<std::string, std::multimap<std::string, std::string>> m_cabeceras;
    QStringList m_peticiones;
};
