#pragma once

#include "servidor/texto.h"

#include <sqlite3.h>

#include <condition_variable>
#include <functional>
#include <map>
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

// A reply as it goes out: Latin-1 bytes, or their gzip form.
struct Respuesta {
    std::string cuerpo;
    bool gzip = false;
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
    // The same reply, in gzip when the client takes it (`aceptaGzip`) and it is at least
    // minimoParaComprimir bytes long. A large sales list is compressed while it is read, by
    // the threads that read it, and never stands whole in memory uncompressed.
    Respuesta responder(const std::string &endpoint, const std::string &consulta,
                        const std::string &direccion, bool aceptaGzip);

    // True when the endpoint exists.
    static bool existeEndpoint(const std::string &endpoint);
    // True when the endpoint changes data or reads sales: only a logged-in user holding the
    // endpoint's option (opcionRequerida) may call it.
    static bool requiereSesion(const std::string &endpoint);
    // Option code a user needs for the endpoint: "22", "23", ...; "root" when only a user
    // whose first option is "root" may call it; "" when the endpoint is open to anyone.
    static std::string opcionRequerida(const std::string &endpoint);
    // True when the option list ("21,22,31", "root") grants `opcion`.
    static bool concedeOpcion(const std::string &opciones, const std::string &opcion);

    // Clock of the back office (replaceable by tests; defaults to momentoLocal()). Set it
    // before serving requests.
    void fijarReloj(std::function<Momento()> reloj);
    Momento ahora() const;

    // Idle time after which a session ends (default 12 hours).
    void fijarInactividad(long long segundos);
    // Failed logins allowed per address and per user within one minute before further
    // attempts are refused without checking the password (default 5).
    void fijarIntentosPorMinuto(int intentos);

    // Draws with at least this many plays on a date are read by two threads for the monitor
    // (default 200,000). Set it before serving requests.
    void fijarJugadasParaDosHilos(long long jugadas);

    // True when the database holds no user and no game yet.
    bool vacia();

    // Sells one ticket of the sales point (taquilla) `taquillaId` with `jugadas` on the draw
    // `claveSorteo` of game `claveJuego` for `fecha` at `hora`. Refused (false, nothing stored)
    // when the draw has a result for that date, its time has come (sales close at the draw's
    // time), it is unknown, or a number is not of the game.
    bool vender(long long taquillaId, const std::string &claveJuego, const std::string &claveSorteo,
                const std::string &fecha, const std::string &hora,
                const std::vector<JugadaVenta> &jugadas);

    // Adds a user with a password hashed by libsodium. Lists are stored as the login reply
    // sends them (e.g. "root" or "21,22,31").
    void crearUsuario(const std::string &usuario, const std::string &clave,
                      const std::string &nombre, bool acceso, const std::string &opciones,
                      const std::string &juegos, const std::string &bancas,
                      const std::string &superBanca, const std::string &juegosReporte);

    // Runs `trabajo` with a connection of its own (demo data, simulator, tests).
    void conConexion(const std::function<void(sqlite3 *)> &trabajo);

    // User of the live session of the address ("" when none or expired). Does not count as
    // activity.
    std::string usuarioDeSesion(const std::string &direccion);

private:
    class Prestamo;
    Respuesta atenderCon(const std::string &endpoint, const Parametros &p,
                         const std::string &direccion, bool gzip);
    struct Sesion {
        std::string usuario;
        long long ultimo = 0; // server seconds of the last activity
    };
    struct Limitador {
        long long ventana = 0; // server minute of the window
        int escritas = 0;
        long long omitidas = 0;
    };

    std::string validarUser(const Parametros &p, const std::string &direccion);
    std::string datetime();
    std::string sorteospremiar3(sqlite3 *db);
    std::string resultadosJuego(sqlite3 *db, const Parametros &p);
    std::string calcularpremios4(sqlite3 *db, const Parametros &p, const std::string &direccion,
                                 const std::string &usuario);
    std::string publicar(sqlite3 *db, const std::string &fecha, const std::string &juego,
                         const std::string &sorteo, const std::string &resultado,
                         const std::string &direccion, const std::string &usuario,
                         const char *accion);
    std::string deshacerpremios(sqlite3 *db, const Parametros &p, const std::string &direccion,
                                const std::string &usuario);
    std::string cargarsorteos(sqlite3 *db);
    std::string cargarresultados(sqlite3 *db);
    std::string monitorsorteos2(sqlite3 *db, const Parametros &p);
    std::string bancasactivas(sqlite3 *db);
    std::string monitoragencias(sqlite3 *db);
    std::string monitorresultados(sqlite3 *db, const Parametros &p);
    Respuesta monitorventas(sqlite3 *db, const Parametros &p, bool gzip);
    std::string ventabancas2(sqlite3 *db, const Parametros &p);
    std::string reportex(sqlite3 *db, const Parametros &p);
    std::string sorteospendientes(sqlite3 *db, const Parametros &p);

    // User of the address's live session, which the call keeps alive ("" when none).
    std::string tocarSesion(const std::string &direccion);
    // True when that user may handle the game (its game list holds the key, or "root").
    bool puedeJuego(sqlite3 *db, const std::string &usuario, const std::string &claveJuego);
    std::string opcionesDe(sqlite3 *db, const std::string &usuario);
    // Seconds of the server clock (its local time read as if it were UTC: only differences
    // matter).
    long long segundosAhora() const;
    void auditar(sqlite3 *db, const std::string &direccion, const std::string &usuario,
                 const std::string &accion, const std::string &detalle);
    // A refusal's audit row, at most a few per address and minute (and a bounded number in
    // all): the rest are counted and the count is written with the next row allowed.
    void auditarRechazo(sqlite3 *db, const std::string &direccion, const std::string &usuario,
                        const std::string &accion, const std::string &detalle);

    sqlite3 *tomarConexion();
    void devolverConexion(sqlite3 *db);

    std::string m_ruta;
    std::mutex m_mutexConexiones;
    std::vector<sqlite3 *> m_libres;
    std::vector<sqlite3 *> m_todas;

    std::function<Momento()> m_reloj;

    std::mutex m_mutexSesiones;
    std::map<std::string, Sesion> m_sesiones;
    long long m_inactividad = 12 * 3600;
    long long m_jugadasParaDosHilos = 200000;

    std::mutex m_mutexIntentos;
    std::map<std::string, std::vector<long long>> m_fallosDireccion;
    std::map<std::string, std::vector<long long>> m_fallosUsuario;
    int m_intentosPorMinuto = 5;
    std::map<std::string, Limitador> m_limitesAuditoria;
    Limitador m_limiteGlobal;
    // The password check of an unknown user runs against this hash, so that it costs the
    // same time as a wrong password.
    std::string m_hashFicticio;
    // Password checks running at once are few: each takes much memory and CPU.
    std::mutex m_mutexHash;
    std::condition_variable m_hashLibre;
    int m_hashEnCurso = 0;
};

} // namespace servidor
