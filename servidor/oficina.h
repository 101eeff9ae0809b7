#pragma once

#include "servidor/texto.h"

#include <sqlite3.h>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// The back office behind every endpoint of the console: the database, the business rules and
// the replies. It knows nothing of sockets: the HTTP front end (main.cpp) hands it an endpoint
// name, the query and the client address, and sends back the bytes it returns.
namespace servidor {

// The back office's idea of "now", local time: "yyyy-MM-dd" and "hh:mm:ss".
struct Momento {
    std::string fecha;
    std::string hora;
};

// The machine's local date and time.
Momento momentoLocal();

// One play of a ticket being sold: number played (text: "0" and "00" differ) and amount in cents.
struct JugadaVenta {
    std::string numero;
    long long centimos;
};

class Oficina {
public:
    // Opens (creating when missing) the database and brings its schema up to date.
    // Throws ErrorBaseDatos when the file cannot be used.
    explicit Oficina(const std::string &rutaBaseDatos);
    ~Oficina();
    Oficina(const Oficina &) = delete;
    Oficina &operator=(const Oficina &) = delete;

    // The reply bytes (Latin-1) for a GET of `endpoint` (e.g. "validarUser.php") with the raw
    // query string `consulta` from the client at `direccion`. Unknown endpoints, refused
    // access and invalid requests give "".
    std::string atenderConsulta(const std::string &endpoint, const std::string &consulta,
                                const std::string &direccion);
    std::string atender(const std::string &endpoint, const Parametros &p,
                        const std::string &direccion);

    // True when the endpoint exists.
    static bool existeEndpoint(const std::string &endpoint);
    // True when the endpoint changes data or reads sales: only logged-in addresses may call it.
    static bool requiereSesion(const std::string &endpoint);

    // Clock of the back office (replaceable by tests; defaults to momentoLocal()).
    void fijarReloj(std::function<Momento()> reloj);
    Momento ahora() const;

    // True when the database holds no user and no game yet.
    bool vacia();

    // Sells one ticket of the sales point (taquilla) `taquillaId` with `jugadas` on the draw
    // `claveSorteo` of game `claveJuego` for `fecha` at `hora`. Refused (false, nothing stored)
    // when the draw has a result for that date, is unknown, or a number is not of the game.
    bool vender(long long taquillaId, const std::string &claveJuego, const std::string &claveSorteo,
                const std::string &fecha, const std::string &hora,
                const std::vector<JugadaVenta> &jugadas);

    // Adds a user with a password hashed by libsodium. Lists are stored as the login reply
    // sends them (e.g. "root" or "21,22,31").
    void crearUsuario(const std::string &usuario, const std::string &clave,
                      const std::string &nombre, bool acceso, const std::string &opciones,
                      const std::string &juegos, const std::string &bancas,
                      const std::string &superBanca, const std::string &juegosReporte);

    // Runs `trabajo` with the connection while holding the lock (demo data, simulator, tests).
    void conConexion(const std::function<void(sqlite3 *)> &trabajo);

private:
    std::string validarUser(const Parametros &p, const std::string &direccion);
    std::string datetime();
    std::string sorteospremiar3();
    std::string resultadosJuego(const Parametros &p);
    std::string calcularpremios4(const Parametros &p, const std::string &direccion);
    std::string publicar(const std::string &fecha, const std::string &juego,
                         const std::string &sorteo, const std::string &resultado,
                         const std::string &direccion, const char *accion);
    std::string deshacerpremios(const Parametros &p, const std::string &direccion);
    std::string cargarsorteos();
    std::string cargarresultados();
    std::string monitorsorteos2(const Parametros &p);
    std::string bancasactivas();
    std::string monitoragencias();
    std::string monitorresultados(const Parametros &p);
    std::string monitorventas(const Parametros &p);
    std::string ventabancas2(const Parametros &p);
    std::string reportex(const Parametros &p);
    std::string sorteospendientes(const Parametros &p);

    // User who last logged in from the address ("" when none).
    std::string usuarioDeDireccion(const std::string &direccion);
    // True when that user may handle the game (its game list holds the key, or "root").
    bool puedeJuego(const std::string &usuario, const std::string &claveJuego);
    void auditar(const std::string &direccion, const std::string &usuario,
                 const std::string &accion, const std::string &detalle);

    sqlite3 *m_db = nullptr;
    std::mutex m_mutex;
    std::function<Momento()> m_reloj;
};

} // namespace servidor
