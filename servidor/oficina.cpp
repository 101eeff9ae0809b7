#include "servidor/oficina.h"

#include "servidor/basedatos.h"
#include "servidor/compresion.h"
#include "servidor/esquema.h"

#include <sodium.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <unordered_map>

namespace servidor {

namespace {

// Longest text kept in an audit row, so that a huge query cannot bloat the log.
constexpr size_t maximoAuditoria = 200;
// Refusal rows written per address and minute, and in all per minute.
constexpr int rechazosPorDireccion = 10;
constexpr int rechazosEnTotal = 300;
// Password checks at once (each takes 64 MiB and most of a core).
constexpr int hashesSimultaneos = 2;
// Longest user name and password looked at; longer ones are refused without hashing.
constexpr size_t maximoCredencial = 256;

std::string recortar(const std::string &texto)
{
    return texto.size() <= maximoAuditoria ? texto : texto.substr(0, maximoAuditoria) + "...";
}

// A whole reply line: only line breaks and control characters are taken out (lists keep
// their commas).
std::string campoLinea(const std::string &texto)
{
    std::string salida = texto;
    for (char &c : salida) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (u < 0x20 || u == 0x7F)
            c = ' ';
    }
    return salida;
}

// The monitor's game code names the game and the draw together. It ends in ":" so that
// game code + animal code stays unambiguous ("1-1:" + "10" is not "1-11:" + "0").
std::string codigoMonitor(const std::string &juego, const std::string &sorteo)
{
    return campo(juego) + "-" + campo(sorteo) + ":";
}

std::string valor(const Parametros &p, const char *clave)
{
    const auto it = p.find(clave);
    return it == p.end() ? std::string() : it->second;
}

std::tm tmDeFecha(const std::string &fecha, const std::string &hora)
{
    std::tm t{};
    t.tm_year = std::stoi(fecha.substr(0, 4)) - 1900;
    t.tm_mon = std::stoi(fecha.substr(5, 2)) - 1;
    t.tm_mday = std::stoi(fecha.substr(8, 2));
    if (horaValida(hora)) {
        t.tm_hour = std::stoi(hora.substr(0, 2));
        t.tm_min = std::stoi(hora.substr(3, 2));
        t.tm_sec = std::stoi(hora.substr(6, 2));
    }
    t.tm_isdst = -1;
    return t;
}

// Short draw time for the monitor's draw names: "08:00:00" -> "8AM", "08:30:00" -> "8:30AM".
std::string horaCorta(const std::string &hora)
{
    if (!horaValida(hora))
        return hora;
    int h = std::stoi(hora.substr(0, 2));
    const std::string minutos = hora.substr(3, 2);
    const char *sufijo = h < 12 ? "AM" : "PM";
    h = h % 12 == 0 ? 12 : h % 12;
    return std::to_string(h) + (minutos == "00" ? std::string() : ":" + minutos) + sufijo;
}

std::set<std::string> listaComoConjunto(const std::string &lista)
{
    std::set<std::string> conjunto;
    for (const std::string &parte : partir(lista, ','))
        conjunto.insert(parte);
    return conjunto;
}

// Endpoints that need a session, with the option code their user must hold ("root": only a
// user whose first option is "root").
const struct {
    const char *endpoint;
    const char *opcion;
} endpointsConSesion[] = {{"calcularpremios4.php", "22"}, {"publicarPremios2.php", "22"},
                          {"deshacerpremios.php", "23"},  {"autopremiar.php", "24"},
                          {"monitorventas.php", "21"},    {"reportex.php", "31"},
                          {"ventabancas2.php", "root"}};

const char *const endpointsLibres[] = {
    "validarUser.php",     "datetime.php",          "sorteospremiar3.php",  "resultadosJuego.php",
    "cargarsorteos.php",   "cargarresultados.php",  "monitorsorteos2.php",  "bancasactivas.php",
    "monitoragencias.php", "monitorresultados.php", "sorteospendientes.php"};

// A draw found by its game key and draw key.
struct Sorteo {
    long long id = 0;
    long long juegoId = 0;
    std::string tipo;
    std::string hora;
    int cifras = 3;
};

bool buscarSorteo(sqlite3 *db, const std::string &juego, const std::string &sorteo, Sorteo &s)
{
    Sentencia st(db, "SELECT s.id, j.id, j.tipo, s.hora, j.cifras FROM sorteos s "
                     "JOIN juegos j ON j.id = s.juego_id WHERE j.clave = ?1 AND s.clave = ?2");
    st.bind(1, juego).bind(2, sorteo);
    if (!st.paso())
        return false;
    s.id = st.entero(0);
    s.juegoId = st.entero(1);
    s.tipo = st.texto(2);
    s.hora = st.texto(3);
    s.cifras = static_cast<int>(st.entero(4));
    return true;
}

bool soloCifras(const std::string &texto)
{
    return !texto.empty() &&
           std::all_of(texto.begin(), texto.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// A result (or a number played) a game can have: one of its animal numbers for an animal
// game; otherwise exactly the game's count of digits. Nothing else ever reaches the
// database: no control character, no separator, no blank.
bool resultadoValido(sqlite3 *db, const Sorteo &s, const std::string &resultado)
{
    if (resultado.empty() || resultado.size() > 16)
        return false;
    if (s.tipo == "A") {
        Sentencia st(db, "SELECT 1 FROM animales WHERE juego_id = ?1 AND numero = ?2");
        st.bind(1, s.juegoId).bind(2, resultado);
        return st.paso();
    }
    return resultado.size() == static_cast<size_t>(s.cifras) && soloCifras(resultado);
}

long long segundosDe(const Momento &m)
{
    if (!fechaValida(m.fecha))
        return 0;
    std::tm t = tmDeFecha(m.fecha, m.hora);
    t.tm_isdst = 0;
    return static_cast<long long>(timegm(&t));
}

std::vector<long long> &podar(std::vector<long long> &fallos, long long ahora)
{
    fallos.erase(std::remove_if(fallos.begin(), fallos.end(),
                                [ahora](long long t) { return t <= ahora - 60 || t > ahora; }),
                 fallos.end());
    return fallos;
}

} // namespace

Momento momentoLocal()
{
    const std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    char fecha[16];
    char hora[16];
    std::strftime(fecha, sizeof fecha, "%Y-%m-%d", &local);
    std::strftime(hora, sizeof hora, "%H:%M:%S", &local);
    return {fecha, hora};
}

// A connection lent for one request and given back to the pool afterwards.
class Oficina::Prestamo {
public:
    explicit Prestamo(Oficina &o) : m_oficina(o), m_db(o.tomarConexion()) {}
    ~Prestamo() { m_oficina.devolverConexion(m_db); }
    Prestamo(const Prestamo &) = delete;
    Prestamo &operator=(const Prestamo &) = delete;
    sqlite3 *db() const { return m_db; }

private:
    Oficina &m_oficina;
    sqlite3 *m_db;
};

Oficina::Oficina(const std::string &rutaBaseDatos) : m_ruta(rutaBaseDatos), m_reloj(momentoLocal)
{
    if (sodium_init() < 0)
        throw ErrorBaseDatos("libsodium no pudo iniciarse");
    sqlite3 *db = tomarConexion();
    try {
        prepararEsquema(db);
    } catch (...) {
        devolverConexion(db);
        for (sqlite3 *c : m_todas)
            sqlite3_close_v2(c);
        throw;
    }
    devolverConexion(db);
    char hash[crypto_pwhash_STRBYTES];
    unsigned char azar[16];
    randombytes_buf(azar, sizeof azar);
    if (crypto_pwhash_str(hash, reinterpret_cast<const char *>(azar), sizeof azar,
                          crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        throw ErrorBaseDatos("sin memoria para la clave");
    m_hashFicticio = hash;
}

Oficina::~Oficina()
{
    for (sqlite3 *c : m_todas)
        sqlite3_close_v2(c);
}

sqlite3 *Oficina::tomarConexion()
{
    {
        std::lock_guard<std::mutex> candado(m_mutexConexiones);
        if (!m_libres.empty()) {
            sqlite3 *db = m_libres.back();
            m_libres.pop_back();
            return db;
        }
    }
    // Each request has a connection of its own, so that readers never wait for each other
    // and WAL lets them read while one writes.
    sqlite3 *db = nullptr;
    const int rc =
        sqlite3_open_v2(m_ruta.c_str(), &db,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        const std::string mensaje = db ? sqlite3_errmsg(db) : "sqlite3_open";
        sqlite3_close(db);
        throw ErrorBaseDatos(m_ruta + ": " + mensaje, rc);
    }
    try {
        sqlite3_busy_timeout(db, 10000);
        ejecutarSql(db, "PRAGMA foreign_keys=ON");
        ejecutarSql(db, "PRAGMA synchronous=NORMAL");
        ejecutarSql(db, "PRAGMA cache_size=-16384");
        // Pages are read through the operating system's cache mapped into memory, shared by
        // every connection, instead of being copied into each connection's own cache.
        ejecutarSql(db, "PRAGMA mmap_size=4294967296");
    } catch (...) {
        sqlite3_close(db);
        throw;
    }
    std::lock_guard<std::mutex> candado(m_mutexConexiones);
    m_todas.push_back(db);
    return db;
}

void Oficina::devolverConexion(sqlite3 *db)
{
    std::lock_guard<std::mutex> candado(m_mutexConexiones);
    m_libres.push_back(db);
}

void Oficina::fijarReloj(std::function<Momento()> reloj)
{
    m_reloj = std::move(reloj);
}

Momento Oficina::ahora() const
{
    return m_reloj();
}

long long Oficina::segundosAhora() const
{
    return segundosDe(m_reloj());
}

void Oficina::fijarInactividad(long long segundos)
{
    std::lock_guard<std::mutex> candado(m_mutexSesiones);
    m_inactividad = segundos;
}

void Oficina::fijarJugadasParaDosHilos(long long jugadas)
{
    m_jugadasParaDosHilos = jugadas;
}

void Oficina::fijarIntentosPorMinuto(int intentos)
{
    std::lock_guard<std::mutex> candado(m_mutexIntentos);
    m_intentosPorMinuto = intentos;
}

bool Oficina::vacia()
{
    Prestamo c(*this);
    Sentencia st(c.db(), "SELECT (SELECT COUNT(*) FROM usuarios) + (SELECT COUNT(*) FROM juegos)");
    return st.paso() && st.entero(0) == 0;
}

void Oficina::conConexion(const std::function<void(sqlite3 *)> &trabajo)
{
    Prestamo c(*this);
    trabajo(c.db());
}

bool Oficina::existeEndpoint(const std::string &endpoint)
{
    for (const char *e : endpointsLibres) {
        if (endpoint == e)
            return true;
    }
    return requiereSesion(endpoint);
}

bool Oficina::requiereSesion(const std::string &endpoint)
{
    return !opcionRequerida(endpoint).empty();
}

std::string Oficina::opcionRequerida(const std::string &endpoint)
{
    for (const auto &e : endpointsConSesion) {
        if (endpoint == e.endpoint)
            return e.opcion;
    }
    return std::string();
}

bool Oficina::concedeOpcion(const std::string &opciones, const std::string &opcion)
{
    const std::vector<std::string> lista = partir(opciones, ',');
    if (!lista.empty() && lista.front() == "root")
        return true;
    if (opcion.empty() || opcion == "root")
        return false;
    return std::find(lista.begin(), lista.end(), opcion) != lista.end();
}

std::string Oficina::atenderConsulta(const std::string &endpoint, const std::string &consulta,
                                     const std::string &direccion)
{
    return atender(endpoint, leerConsulta(consulta), direccion);
}

std::string Oficina::atender(const std::string &endpoint, const Parametros &p,
                             const std::string &direccion)
{
    return atenderCon(endpoint, p, direccion, false).cuerpo;
}

Respuesta Oficina::responder(const std::string &endpoint, const std::string &consulta,
                             const std::string &direccion, bool aceptaGzip)
{
    Respuesta r = atenderCon(endpoint, leerConsulta(consulta), direccion, aceptaGzip);
    if (aceptaGzip && !r.gzip && r.cuerpo.size() >= minimoParaComprimir) {
        std::string comprimida;
        if (comprimirGzip(r.cuerpo, comprimida)) {
            r.cuerpo.swap(comprimida);
            r.gzip = true;
        }
    }
    return r;
}

Respuesta Oficina::atenderCon(const std::string &endpoint, const Parametros &p,
                              const std::string &direccion, bool gzip)
{
    auto texto = [](std::string latin1) {
        Respuesta r;
        r.cuerpo = std::move(latin1);
        return r;
    };
    try {
        if (endpoint == "validarUser.php")
            return texto(utf8ALatin1(validarUser(p, direccion)));
        // The clock needs no database: it never waits for anything.
        if (endpoint == "datetime.php")
            return texto(utf8ALatin1(datetime()));
        if (!existeEndpoint(endpoint))
            return Respuesta();
        Prestamo c(*this);
        sqlite3 *db = c.db();
        std::string usuario;
        const std::string opcion = opcionRequerida(endpoint);
        if (!opcion.empty()) {
            usuario = tocarSesion(direccion);
            if (usuario.empty()) {
                auditarRechazo(db, direccion, "", endpoint, "rechazado: sin sesion");
                return Respuesta();
            }
            if (!concedeOpcion(opcionesDe(db, usuario), opcion)) {
                auditarRechazo(db, direccion, usuario, endpoint,
                               "rechazado: sin la opcion " + opcion);
                return Respuesta();
            }
        }
        // The sales list comes already in Latin-1 (and in gzip when the client takes it).
        if (endpoint == "monitorventas.php")
            return monitorventas(db, p, gzip);
        std::string r;
        if (endpoint == "sorteospremiar3.php")
            r = sorteospremiar3(db);
        else if (endpoint == "resultadosJuego.php")
            r = resultadosJuego(db, p);
        else if (endpoint == "calcularpremios4.php")
            r = calcularpremios4(db, p, direccion, usuario);
        else if (endpoint == "publicarPremios2.php")
            r = publicar(db, valor(p, "f"), valor(p, "j"), valor(p, "s"), valor(p, "a"), direccion,
                         usuario, "publicar");
        else if (endpoint == "deshacerpremios.php")
            r = deshacerpremios(db, p, direccion, usuario);
        else if (endpoint == "autopremiar.php")
            r = publicar(db, m_reloj().fecha, valor(p, "j"), valor(p, "s"), valor(p, "a"),
                         direccion, usuario, "autopremiar");
        else if (endpoint == "cargarsorteos.php")
            r = cargarsorteos(db);
        else if (endpoint == "cargarresultados.php")
            r = cargarresultados(db);
        else if (endpoint == "monitorsorteos2.php")
            r = monitorsorteos2(db, p);
        else if (endpoint == "bancasactivas.php")
            r = bancasactivas(db);
        else if (endpoint == "monitoragencias.php")
            r = monitoragencias(db);
        else if (endpoint == "monitorresultados.php")
            r = monitorresultados(db, p);
        else if (endpoint == "ventabancas2.php")
            r = ventabancas2(db, p);
        else if (endpoint == "reportex.php")
            r = reportex(db, p);
        else if (endpoint == "sorteospendientes.php")
            r = sorteospendientes(db, p);
        utf8ALatin1EnSitio(r);
        return texto(std::move(r));
    } catch (const std::exception &) {
        // A failing database or a malformed value never brings the server down: the console
        // sees an empty reply ("no answer").
        return Respuesta();
    }
}

// ---- session and audit ------------------------------------------------------------------

std::string Oficina::usuarioDeSesion(const std::string &direccion)
{
    const long long ahora = segundosAhora();
    std::lock_guard<std::mutex> candado(m_mutexSesiones);
    const auto it = m_sesiones.find(direccion);
    if (it == m_sesiones.end() || ahora - it->second.ultimo >= m_inactividad)
        return std::string();
    return it->second.usuario;
}

std::string Oficina::tocarSesion(const std::string &direccion)
{
    const long long ahora = segundosAhora();
    std::lock_guard<std::mutex> candado(m_mutexSesiones);
    const auto it = m_sesiones.find(direccion);
    if (it == m_sesiones.end())
        return std::string();
    if (ahora - it->second.ultimo >= m_inactividad) {
        m_sesiones.erase(it);
        return std::string();
    }
    it->second.ultimo = std::max(it->second.ultimo, ahora);
    return it->second.usuario;
}

std::string Oficina::opcionesDe(sqlite3 *db, const std::string &usuario)
{
    Sentencia st(db, "SELECT opciones FROM usuarios WHERE usuario = ?1");
    st.bind(1, usuario);
    return st.paso() ? st.texto(0) : std::string();
}

bool Oficina::puedeJuego(sqlite3 *db, const std::string &usuario, const std::string &claveJuego)
{
    Sentencia st(db, "SELECT juegos FROM usuarios WHERE usuario = ?1");
    st.bind(1, usuario);
    if (!st.paso())
        return false;
    const std::vector<std::string> juegos = partir(st.texto(0), ',');
    if (!juegos.empty() && juegos.front() == "root")
        return true;
    for (const std::string &j : juegos) {
        if (j == claveJuego)
            return true;
    }
    return false;
}

void Oficina::auditar(sqlite3 *db, const std::string &direccion, const std::string &usuario,
                      const std::string &accion, const std::string &detalle)
{
    const Momento m = m_reloj();
    Sentencia st(db, "INSERT INTO auditoria(momento, direccion, usuario, accion, detalle) "
                     "VALUES(?1, ?2, ?3, ?4, ?5)");
    st.bind(1, m.fecha + " " + m.hora)
        .bind(2, campoLinea(recortar(direccion)))
        .bind(3, campoLinea(recortar(usuario)))
        .bind(4, campoLinea(recortar(accion)))
        .bind(5, campoLinea(recortar(detalle)));
    st.ejecutar();
}

void Oficina::auditarRechazo(sqlite3 *db, const std::string &direccion, const std::string &usuario,
                             const std::string &accion, const std::string &detalle)
{
    const long long minuto = segundosAhora() / 60;
    long long omitidas = 0;
    {
        std::lock_guard<std::mutex> candado(m_mutexIntentos);
        if (m_limitesAuditoria.size() > 10000) {
            for (auto it = m_limitesAuditoria.begin(); it != m_limitesAuditoria.end();)
                it = it->second.ventana != minuto && it->second.omitidas == 0
                         ? m_limitesAuditoria.erase(it)
                         : std::next(it);
        }
        Limitador &l = m_limitesAuditoria[recortar(direccion)];
        if (l.ventana != minuto) {
            l.ventana = minuto;
            l.escritas = 0;
        }
        if (m_limiteGlobal.ventana != minuto) {
            m_limiteGlobal.ventana = minuto;
            m_limiteGlobal.escritas = 0;
        }
        if (l.escritas >= rechazosPorDireccion || m_limiteGlobal.escritas >= rechazosEnTotal) {
            ++l.omitidas;
            return;
        }
        ++l.escritas;
        ++m_limiteGlobal.escritas;
        omitidas = l.omitidas;
        l.omitidas = 0;
    }
    auditar(db, direccion, usuario, accion,
            omitidas ? detalle + " (y " + std::to_string(omitidas) +
                           " rechazos anteriores sin registrar)"
                     : detalle);
}

void Oficina::crearUsuario(const std::string &usuario, const std::string &clave,
                           const std::string &nombre, bool acceso, const std::string &opciones,
                           const std::string &juegos, const std::string &bancas,
                           const std::string &superBanca, const std::string &juegosReporte)
{
    char hash[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(hash, clave.data(), clave.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0)
        throw ErrorBaseDatos("sin memoria para la clave");
    Prestamo c(*this);
    Sentencia st(c.db(), "INSERT INTO usuarios(usuario, clave_hash, nombre, acceso, opciones, "
                         "juegos, bancas, superbanca, juegos_reporte) "
                         "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
    st.bind(1, usuario)
        .bind(2, std::string(hash))
        .bind(3, nombre)
        .bind(4, std::string(acceso ? "X" : ""))
        .bind(5, opciones)
        .bind(6, juegos)
        .bind(7, bancas)
        .bind(8, superBanca)
        .bind(9, juegosReporte);
    st.ejecutar();
}

// ---- validarUser.php ----------------------------------------------------------------------

std::string Oficina::validarUser(const Parametros &p, const std::string &direccion)
{
    const std::string usuario = valor(p, "u");
    const std::string clave = valor(p, "p");
    const long long ahora = segundosAhora();
    const std::string claveUsuario = recortar(usuario);

    // Too many failures from this address or for this user within the last minute: refused at
    // once, without looking at the password.
    bool frenado = usuario.size() > maximoCredencial || clave.size() > maximoCredencial;
    {
        std::lock_guard<std::mutex> candado(m_mutexIntentos);
        for (auto *mapa : {&m_fallosDireccion, &m_fallosUsuario}) {
            if (mapa->size() > 10000) {
                for (auto it = mapa->begin(); it != mapa->end();)
                    it = podar(it->second, ahora).empty() ? mapa->erase(it) : std::next(it);
            }
        }
        if (static_cast<int>(podar(m_fallosDireccion[direccion], ahora).size()) >=
                m_intentosPorMinuto ||
            static_cast<int>(podar(m_fallosUsuario[claveUsuario], ahora).size()) >=
                m_intentosPorMinuto)
            frenado = true;
    }
    if (frenado) {
        Prestamo c(*this);
        auditarRechazo(c.db(), direccion, usuario, "login", "rechazado: demasiados intentos");
        return "0\n";
    }

    std::string hash;
    std::vector<std::string> lineas;
    {
        Prestamo c(*this);
        Sentencia st(c.db(), "SELECT clave_hash, nombre, acceso, opciones, juegos, bancas, "
                             "superbanca, juegos_reporte FROM usuarios WHERE usuario = ?1");
        st.bind(1, usuario);
        if (st.paso()) {
            hash = st.texto(0);
            for (int i = 1; i <= 7; ++i)
                lineas.push_back(st.texto(i));
        }
    }
    // An unknown user is checked against a hash of the same cost, so that the time of the
    // answer does not tell which names exist. Checks run outside every other lock.
    const bool existe = !hash.empty();
    {
        std::unique_lock<std::mutex> candado(m_mutexHash);
        m_hashLibre.wait(candado, [this] { return m_hashEnCurso < hashesSimultaneos; });
        ++m_hashEnCurso;
    }
    const bool coincide = crypto_pwhash_str_verify(existe ? hash.c_str() : m_hashFicticio.c_str(),
                                                   clave.data(), clave.size()) == 0;
    {
        std::lock_guard<std::mutex> candado(m_mutexHash);
        --m_hashEnCurso;
    }
    m_hashLibre.notify_one();
    const bool correcto = existe && coincide;

    Prestamo c(*this);
    if (!correcto) {
        {
            std::lock_guard<std::mutex> candado(m_mutexIntentos);
            m_fallosDireccion[direccion].push_back(ahora);
            m_fallosUsuario[claveUsuario].push_back(ahora);
        }
        auditarRechazo(c.db(), direccion, usuario, "login", "rechazado");
        return "0\n";
    }
    {
        std::lock_guard<std::mutex> candado(m_mutexSesiones);
        if (m_sesiones.size() > 10000) {
            for (auto it = m_sesiones.begin(); it != m_sesiones.end();)
                it = ahora - it->second.ultimo >= m_inactividad ? m_sesiones.erase(it)
                                                                : std::next(it);
        }
        m_sesiones[direccion] = Sesion{usuario, ahora};
    }
    {
        std::lock_guard<std::mutex> candado(m_mutexIntentos);
        m_fallosDireccion.erase(direccion);
    }
    auditar(c.db(), direccion, usuario, "login", "aceptado");
    std::string r = "1\n";
    for (const std::string &l : lineas)
        r += campoLinea(l) + "\n";
    return r;
}

// ---- datetime.php -------------------------------------------------------------------------

std::string Oficina::datetime()
{
    static const char *const dias[] = {"domingo", "lunes",   "martes", "miércoles",
                                       "jueves",  "viernes", "sábado"};
    const Momento m = m_reloj();
    std::tm t = tmDeFecha(m.fecha, m.hora);
    const std::time_t epoca = std::mktime(&t);
    char desfase[16];
    std::strftime(desfase, sizeof desfase, "%z", &t);
    return m.fecha + "\n" + dias[t.tm_wday % 7] + "\n" + desfase + "\n" +
           std::to_string(static_cast<long long>(epoca)) + "\n" + m.hora + "\n";
}

// ---- sorteospremiar3.php ------------------------------------------------------------------

std::string Oficina::sorteospremiar3(sqlite3 *db)
{
    std::string r;
    {
        Sentencia st(db, "SELECT j.clave, j.nombre, j.sin_nombres, j.tipo, "
                         "(SELECT group_concat(numero, ',') FROM "
                         "  (SELECT numero FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                         "(SELECT group_concat(nombre, ',') FROM "
                         "  (SELECT nombre FROM animales WHERE juego_id = j.id ORDER BY orden)) "
                         "FROM juegos j WHERE j.activo = 1 ORDER BY j.id");
        while (st.paso()) {
            r += campo(st.texto(0)) + ";" + campo(st.texto(1)) + ";" + campo(st.texto(2)) + ";" +
                 campoLinea(st.texto(4)) + ";" + campoLinea(st.texto(5)) + ";" +
                 campo(st.texto(3)) + "\n";
        }
    }
    r += "_FIN_\n";
    Sentencia st(db, "SELECT j.clave, s.clave, s.etiqueta FROM sorteos s "
                     "JOIN juegos j ON j.id = s.juego_id "
                     "WHERE j.activo = 1 AND s.activo = 1 ORDER BY j.id, s.hora, s.id");
    while (st.paso())
        r += campo(st.texto(0)) + ";" + campo(st.texto(1)) + ";" + campo(st.texto(2)) + "\n";
    return r;
}

// ---- resultadosJuego.php ------------------------------------------------------------------

std::string Oficina::resultadosJuego(sqlite3 *db, const Parametros &p)
{
    Sentencia st(db, "SELECT s.clave, r.resultado FROM resultados r "
                     "JOIN sorteos s ON s.id = r.sorteo_id JOIN juegos j ON j.id = s.juego_id "
                     "WHERE j.clave = ?1 AND r.fecha = ?2 ORDER BY s.hora, s.id");
    st.bind(1, valor(p, "j")).bind(2, valor(p, "f"));
    std::string r;
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "\n";
    // A game with no result yet is an answer too: a lone line break, which the console skips,
    // so that it is not taken for a server that did not answer.
    return r.empty() ? std::string("\n") : r;
}

// ---- calcularpremios4.php -----------------------------------------------------------------

std::string Oficina::calcularpremios4(sqlite3 *db, const Parametros &p,
                                      const std::string &direccion, const std::string &usuario)
{
    const std::string fecha = valor(p, "f");
    const std::string juego = valor(p, "j");
    Sorteo s;
    if (!fechaValida(fecha) || !buscarSorteo(db, juego, valor(p, "s"), s))
        return std::string();
    if (!puedeJuego(db, usuario, juego)) {
        auditarRechazo(db, direccion, usuario, "calcularpremios4.php",
                       "juego=" + juego + " rechazado: juego no permitido al usuario");
        return std::string();
    }
    std::string r = "banca,agencia,ticket,numero,jugado,premio\n";
    Sentencia st(db,
                 "SELECT b.nombre, ag.nombre, t.numero, jg.numero, jg.monto, "
                 "(jg.monto * so.dividendo * 2 + so.divisor) / (2 * so.divisor) "
                 "FROM jugadas jg JOIN sorteos so ON so.id = jg.sorteo_id "
                 "JOIN tickets t ON t.id = jg.ticket_id "
                 "JOIN taquillas tq ON tq.id = t.taquilla_id "
                 "JOIN agencias ag ON ag.id = tq.agencia_id JOIN jefes je ON je.id = ag.jefe_id "
                 "JOIN bancas b ON b.id = je.banca_id "
                 "WHERE jg.sorteo_id = ?1 AND jg.fecha = ?2 AND jg.numero = ?3 "
                 "AND jg.eliminada = 0 "
                 "ORDER BY b.codigo, je.codigo, ag.codigo, tq.codigo, t.numero, jg.id");
    st.bind(1, s.id).bind(2, fecha).bind(3, valor(p, "a"));
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "," +
             campo(st.texto(3)) + "," + montoTexto(st.entero(4)) + "," + montoTexto(st.entero(5)) +
             "\n";
    }
    return r;
}

// ---- publicarPremios2.php and autopremiar.php ---------------------------------------------

std::string Oficina::publicar(sqlite3 *db, const std::string &fecha, const std::string &juego,
                              const std::string &sorteo, const std::string &resultado,
                              const std::string &direccion, const std::string &usuario,
                              const char *accion)
{
    const Momento m = m_reloj();
    const std::string detalle =
        "fecha=" + fecha + " juego=" + juego + " sorteo=" + sorteo + " resultado=" + resultado;
    auto rechazar = [&](const std::string &motivo) {
        auditarRechazo(db, direccion, usuario, accion, detalle + " rechazado: " + motivo);
        return std::string();
    };
    Sorteo s;
    if (!fechaValida(fecha))
        return rechazar("fecha no valida");
    if (fecha > m.fecha)
        return rechazar("fecha futura");
    if (!buscarSorteo(db, juego, sorteo, s))
        return rechazar("sorteo desconocido");
    if (!puedeJuego(db, usuario, juego))
        return rechazar("juego no permitido al usuario");
    if (fecha == m.fecha && s.hora > m.hora)
        return rechazar("el sorteo de las " + s.hora + " aun no llega");
    if (!resultadoValido(db, s, resultado))
        return rechazar("resultado no valido para el juego");
    try {
        // The write lock is taken at BEGIN, so of two publishes of one draw exactly one sees
        // "no result yet"; the unique key (sorteo, fecha) backs this up across processes.
        Transaccion t(db);
        {
            Sentencia ya(db, "SELECT 1 FROM resultados WHERE sorteo_id = ?1 AND fecha = ?2");
            ya.bind(1, s.id).bind(2, fecha);
            if (ya.paso()) {
                auditar(db, direccion, usuario, accion, detalle + " rechazado: ya publicado");
                t.confirmar();
                return "0";
            }
        }
        Sentencia ins(db, "INSERT INTO resultados(sorteo_id, fecha, resultado, hora, usuario) "
                          "VALUES(?1, ?2, ?3, ?4, ?5)");
        ins.bind(1, s.id).bind(2, fecha).bind(3, resultado).bind(4, m.hora).bind(5, usuario);
        ins.ejecutar();
        const long long resultadoId = sqlite3_last_insert_rowid(db);
        Sentencia premios(
            db, "INSERT INTO premios(resultado_id, jugada_id, monto) "
                "SELECT ?1, jg.id, (jg.monto * so.dividendo * 2 + so.divisor) / "
                "(2 * so.divisor) FROM jugadas jg JOIN sorteos so ON so.id = jg.sorteo_id "
                "WHERE jg.sorteo_id = ?2 AND jg.fecha = ?3 AND jg.numero = ?4 "
                "AND jg.eliminada = 0");
        premios.bind(1, resultadoId).bind(2, s.id).bind(3, fecha).bind(4, resultado);
        premios.ejecutar();
        const int ganadoras = sqlite3_changes(db);
        auditar(db, direccion, usuario, accion,
                detalle + " publicado: " + std::to_string(ganadoras) + " jugadas premiadas");
        t.confirmar();
        return "1";
    } catch (const ErrorBaseDatos &e) {
        if (e.codigo() == SQLITE_CONSTRAINT)
            return "0";
        throw;
    }
}

// ---- deshacerpremios.php ------------------------------------------------------------------

std::string Oficina::deshacerpremios(sqlite3 *db, const Parametros &p, const std::string &direccion,
                                     const std::string &usuario)
{
    const std::string fecha = valor(p, "f");
    const std::string juego = valor(p, "j");
    const std::string sorteo = valor(p, "s");
    const std::string detalle = "fecha=" + fecha + " juego=" + juego + " sorteo=" + sorteo;
    Sorteo s;
    if (!fechaValida(fecha) || !buscarSorteo(db, juego, sorteo, s)) {
        auditarRechazo(db, direccion, usuario, "deshacer", detalle + " rechazado: no valido");
        return std::string();
    }
    if (!puedeJuego(db, usuario, juego)) {
        auditarRechazo(db, direccion, usuario, "deshacer",
                       detalle + " rechazado: juego no permitido al usuario");
        return std::string();
    }
    Transaccion t(db);
    long long resultadoId = 0;
    std::string resultado;
    {
        Sentencia st(db,
                     "SELECT id, resultado FROM resultados WHERE sorteo_id = ?1 AND fecha = ?2");
        st.bind(1, s.id).bind(2, fecha);
        if (!st.paso()) {
            auditar(db, direccion, usuario, "deshacer", detalle + " rechazado: sin resultado");
            t.confirmar();
            return "0";
        }
        resultadoId = st.entero(0);
        resultado = st.texto(1);
    }
    {
        // A prize already paid out cannot be taken back by withdrawing the result.
        Sentencia pagados(db, "SELECT COUNT(*) FROM premios p JOIN jugadas j ON j.id = "
                              "p.jugada_id WHERE p.resultado_id = ?1 AND j.pagada = 1");
        pagados.bind(1, resultadoId);
        const long long n = pagados.paso() ? pagados.entero(0) : 0;
        if (n > 0) {
            auditar(db, direccion, usuario, "deshacer",
                    detalle + " resultado=" + resultado + " rechazado: " + std::to_string(n) +
                        " premios ya pagados");
            t.confirmar();
            return "0";
        }
    }
    Sentencia borrarPremios(db, "DELETE FROM premios WHERE resultado_id = ?1");
    borrarPremios.bind(1, resultadoId);
    borrarPremios.ejecutar();
    const int premios = sqlite3_changes(db);
    Sentencia borrar(db, "DELETE FROM resultados WHERE id = ?1");
    borrar.bind(1, resultadoId);
    borrar.ejecutar();
    auditar(db, direccion, usuario, "deshacer",
            detalle + " resultado=" + resultado + " deshecho: " + std::to_string(premios) +
                " premios retirados");
    t.confirmar();
    return "1";
}

// ---- cargarsorteos.php and cargarresultados.php -------------------------------------------

std::string Oficina::cargarsorteos(sqlite3 *db)
{
    Sentencia st(db, "SELECT j.clave, j.nombre, s.clave, s.etiqueta, s.hora, s.divisor, "
                     "s.dividendo, j.automatico, j.script FROM sorteos s "
                     "JOIN juegos j ON j.id = s.juego_id "
                     "WHERE j.activo = 1 AND s.activo = 1 ORDER BY s.hora, j.id, s.id");
    std::string r;
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "," +
             campo(st.texto(3)) + "," + st.texto(4) + "," + std::to_string(st.entero(5)) + "/" +
             std::to_string(st.entero(6)) + "," + st.texto(7) + "," + campo(st.texto(8)) + "\n";
    }
    return r;
}

std::string Oficina::cargarresultados(sqlite3 *db)
{
    Sentencia st(db, "SELECT j.clave, j.nombre, j.sin_nombres, s.clave, s.etiqueta, r.resultado, "
                     "CASE WHEN j.tipo = 'A' AND j.sin_nombres = '' THEN COALESCE((SELECT a.nombre "
                     "FROM animales a WHERE a.juego_id = j.id AND a.numero = r.resultado), '') "
                     "ELSE '' END, r.hora "
                     "FROM resultados r JOIN sorteos s ON s.id = r.sorteo_id "
                     "JOIN juegos j ON j.id = s.juego_id WHERE r.fecha = ?1 ORDER BY s.hora, j.id");
    st.bind(1, m_reloj().fecha);
    std::string r;
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "," +
             campo(st.texto(3)) + "," + campo(st.texto(4)) + "," + campo(st.texto(5)) + "," +
             campo(st.texto(6)) + "," + campo(st.texto(7)) + "\n";
    }
    return r;
}

// ---- monitor ------------------------------------------------------------------------------

std::string Oficina::monitorsorteos2(sqlite3 *db, const Parametros &p)
{
    const std::string usuario = valor(p, "u");
    {
        Sentencia st(db, "SELECT 1 FROM usuarios WHERE usuario = ?1");
        st.bind(1, usuario);
        if (!st.paso())
            return std::string();
    }
    Sentencia st(db, "SELECT j.clave, s.clave, j.nombre, s.hora, s.activo, s.divisor, s.dividendo, "
                     "(SELECT group_concat(numero, ',') FROM "
                     "  (SELECT numero FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                     "(SELECT group_concat(nombre, ',') FROM "
                     "  (SELECT nombre FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                     "s.etiqueta FROM sorteos s JOIN juegos j ON j.id = s.juego_id "
                     "WHERE j.activo = 1 ORDER BY j.id, s.hora, s.id");
    std::string r;
    while (st.paso()) {
        const std::string juego = st.texto(0);
        if (!puedeJuego(db, usuario, juego))
            continue;
        r += codigoMonitor(juego, st.texto(1)) + ";" + campo(st.texto(2)) + " " +
             horaCorta(st.texto(3)) + ";" + (st.entero(4) ? "1" : "0") + ";" +
             std::to_string(st.entero(5)) + ";" + std::to_string(st.entero(6)) + ";" + st.texto(7) +
             ";" + st.texto(8) + ";" + campo(st.texto(1)) + ";" + campo(st.texto(9)) + "\n";
    }
    return r;
}

std::string Oficina::bancasactivas(sqlite3 *db)
{
    Sentencia st(db, "SELECT codigo, nombre FROM bancas WHERE activa = 1 ORDER BY codigo");
    std::string r;
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "\n";
    return r;
}

std::string Oficina::monitoragencias(sqlite3 *db)
{
    Sentencia st(db, "SELECT b.codigo, je.codigo, ag.codigo, tq.codigo, ag.nombre, "
                     "j.clave || '-' || s.clave || ':', ca.porcentaje "
                     "FROM taquillas tq JOIN agencias ag ON ag.id = tq.agencia_id "
                     "JOIN jefes je ON je.id = ag.jefe_id JOIN bancas b ON b.id = je.banca_id "
                     "JOIN comisiones_agencia ca ON ca.agencia_id = ag.id "
                     "JOIN juegos j ON j.id = ca.juego_id "
                     "JOIN sorteos s ON s.juego_id = j.id "
                     "WHERE j.activo = 1 "
                     "ORDER BY b.codigo, je.codigo, ag.codigo, tq.codigo, j.id, s.hora, s.id");
    std::string r;
    r.reserve(1 << 20);
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "," +
             campo(st.texto(3)) + "," + campo(st.texto(4)) + "," + campo(st.texto(5)) + "," +
             porcentajeTexto(st.real(6)) + "\n";
    }
    return r;
}

std::string Oficina::monitorresultados(sqlite3 *db, const Parametros &p)
{
    Sentencia st(db, "SELECT j.clave || '-' || s.clave || ':', s.clave, r.resultado "
                     "FROM resultados r JOIN sorteos s ON s.id = r.sorteo_id "
                     "JOIN juegos j ON j.id = s.juego_id WHERE r.fecha = ?1 "
                     "ORDER BY j.id, s.hora, s.id");
    st.bind(1, valor(p, "f"));
    std::string r = "cjuego,csorteo,resultado\n";
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "\n";
    return r;
}

namespace {

// What one thread writes of a sales list. Every so often, at the end of a line, the text
// written so far is turned into Latin-1 and, when the client takes gzip, compressed and
// dropped: a large list never stands whole in memory uncompressed, and each thread compresses
// its own part while the other one reads.
//
// A thread that reads backwards (from the last play) writes its lines in reverse order; each
// piece is put back in order before it is converted, and its pieces come out last first.
class SalidaVentas {
public:
    SalidaVentas(bool gzip, bool haciaAtras) : m_gzip(gzip), m_haciaAtras(haciaAtras)
    {
        if (m_gzip && !m_haciaAtras)
            m_comprimidos.emplace_back();
    }

    // The lines are appended here (UTF-8), then lineaHecha().
    std::string texto;

    void lineaHecha()
    {
        if (m_haciaAtras) {
            m_finales.push_back(texto.size());
            if (texto.size() >= piezaHaciaAtras)
                cerrarPiezaHaciaAtras();
        } else if (texto.size() - m_convertido >= piezaHaciaAdelante) {
            avanzar();
        }
    }
    // Everything written is converted; read backwards, also compressed. Reading forwards,
    // the rest is compressed by comprimirResto(), once the reply is known to go in gzip: a
    // short one goes as it is.
    void terminar()
    {
        if (m_haciaAtras) {
            cerrarPiezaHaciaAtras();
            std::string().swap(texto);
        } else {
            const size_t n = utf8ALatin1EnSitio(&texto[m_convertido], texto.size() - m_convertido);
            texto.resize(m_convertido + n);
            m_convertido = texto.size();
        }
    }
    void comprimirResto()
    {
        if (!m_gzip || m_haciaAtras)
            return;
        m_comprimidos.back().agregar(texto.data(), texto.size());
        std::string().swap(texto);
        m_convertido = 0;
        m_comprimidos.back().terminar();
    }
    bool algoComprimido() const
    {
        for (const TramoGzip &z : m_comprimidos)
            if (z.longitud() > 0)
                return true;
        return false;
    }

    // Bytes of Latin-1 text in all.
    unsigned long long longitud() const
    {
        unsigned long long n = texto.size();
        for (const TramoGzip &z : m_comprimidos)
            n += z.longitud();
        for (const std::string &t : m_planos)
            n += t.size();
        return n;
    }
    // The pieces in the order of the text, after terminar(): compressed or plain.
    void piezas(std::vector<TramoGzip *> &comprimidos, std::vector<std::string *> &planos)
    {
        if (m_haciaAtras) {
            for (auto z = m_comprimidos.rbegin(); z != m_comprimidos.rend(); ++z)
                comprimidos.push_back(&*z);
            for (auto t = m_planos.rbegin(); t != m_planos.rend(); ++t)
                planos.push_back(&*t);
        } else {
            for (TramoGzip &z : m_comprimidos)
                comprimidos.push_back(&z);
            planos.push_back(&texto);
        }
    }

private:
    static constexpr size_t piezaHaciaAdelante = 128 * 1024;
    // Each piece read backwards is compressed by itself: large enough that starting afresh
    // costs little of the compression.
    static constexpr size_t piezaHaciaAtras = 1024 * 1024;

    void avanzar()
    {
        const size_t n = utf8ALatin1EnSitio(&texto[m_convertido], texto.size() - m_convertido);
        texto.resize(m_convertido + n);
        m_convertido = texto.size();
        if (m_gzip && !texto.empty()) {
            m_comprimidos.back().agregar(texto.data(), texto.size());
            texto.clear();
            m_convertido = 0;
        }
    }

    void cerrarPiezaHaciaAtras()
    {
        if (m_finales.empty())
            return;
        std::string pieza;
        pieza.reserve(texto.size());
        for (size_t i = m_finales.size(); i-- > 0;) {
            const size_t inicio = i == 0 ? 0 : m_finales[i - 1];
            pieza.append(texto, inicio, m_finales[i] - inicio);
        }
        texto.clear();
        m_finales.clear();
        pieza.resize(utf8ALatin1EnSitio(&pieza[0], pieza.size()));
        if (m_gzip) {
            m_comprimidos.emplace_back();
            m_comprimidos.back().agregar(pieza.data(), pieza.size());
            m_comprimidos.back().terminar();
        } else {
            m_planos.push_back(std::move(pieza));
        }
    }

    bool m_gzip;
    bool m_haciaAtras;
    size_t m_convertido = 0;
    std::vector<size_t> m_finales;
    std::vector<TramoGzip> m_comprimidos;
    std::vector<std::string> m_planos;
};

// Where the two threads of a large draw meet. The one reading forwards takes each time of
// sale before it writes its plays, the one reading backwards likewise from the other end; a
// time taken by one is never taken by the other, and each stops at the first time the other
// one already holds. So every play is written once, whatever the speed of each thread, and
// neither waits for the other.
class Encuentro {
public:
    bool tomarHaciaAdelante(std::string_view hora)
    {
        std::lock_guard<std::mutex> candado(m_mutex);
        if (m_hayAtras && hora >= m_desdeAtras)
            return false;
        m_hastaAdelante.assign(hora.data(), hora.size());
        m_hayAdelante = true;
        return true;
    }
    bool tomarHaciaAtras(std::string_view hora)
    {
        std::lock_guard<std::mutex> candado(m_mutex);
        if (m_hayAdelante && hora <= m_hastaAdelante)
            return false;
        m_desdeAtras.assign(hora.data(), hora.size());
        m_hayAtras = true;
        return true;
    }

private:
    std::mutex m_mutex;
    std::string m_hastaAdelante, m_desdeAtras;
    bool m_hayAdelante = false, m_hayAtras = false;
};

// The codes of a ticket office as they go in a line: the banca's before the time of sale,
// the chief's, agency's and office's after it.
struct CodigosOficina {
    std::string banca;
    std::string resto = ",,,";
};

// The fields of the tickets a draw's plays name ("number,serial" and the office's codes).
// A ticket is looked up by its id while few of its neighbours were asked for; once a block of
// neighbouring ids has been asked for often, the whole block is read in one pass in id order,
// several times cheaper per ticket than a search each. A large draw reads most of the day's
// tickets in blocks, a small one looks up its few tickets one by one.
class TicketsDeVentas {
public:
    struct Ticket {
        long long taquilla = 0;
        // Found when the ticket is first used: a block holds many tickets of other draws.
        const CodigosOficina *oficina = nullptr;
        std::string texto = ",";
    };

    explicit TicketsDeVentas(sqlite3 *db)
        : m_uno(db, "SELECT taquilla_id, numero, serial FROM tickets WHERE id = ?1"),
          m_bloque(db, "SELECT id, taquilla_id, numero, serial FROM tickets "
                       "WHERE id >= ?1 AND id < ?2"),
          m_codigos(db, "SELECT b.codigo, je.codigo, ag.codigo, tq.codigo "
                        "FROM taquillas tq JOIN agencias ag ON ag.id = tq.agencia_id "
                        "JOIN jefes je ON je.id = ag.jefe_id JOIN bancas b ON b.id = je.banca_id "
                        "WHERE tq.id = ?1")
    {
    }

    // The ticket with its office's codes.
    const Ticket &de(long long id)
    {
        Ticket &t = buscar(id);
        if (!t.oficina)
            t.oficina = &oficina(t.taquilla);
        return t;
    }

private:
    Ticket &buscar(long long id)
    {
        const long long numeroBloque = id >= 0 ? id / porBloque : -1 - (-1 - id) / porBloque;
        Bloque &b = bloque(numeroBloque);
        const long long base = numeroBloque * porBloque;
        if (!b.tickets.empty())
            return b.tickets[static_cast<size_t>(id - base)];
        const auto suelto = m_sueltos.find(id);
        if (suelto != m_sueltos.end())
            return suelto->second;
        if (++b.buscados < buscadosAntesDelBloque) {
            m_uno.reiniciar();
            m_uno.bind(1, id);
            Ticket t = m_ninguno;
            if (m_uno.paso())
                t = leer(m_uno, 0);
            return m_sueltos.emplace(id, std::move(t)).first->second;
        }
        b.tickets.assign(porBloque, m_ninguno);
        m_bloque.reiniciar();
        m_bloque.bind(1, base).bind(2, base + porBloque);
        while (m_bloque.paso())
            b.tickets[static_cast<size_t>(m_bloque.entero(0) - base)] = leer(m_bloque, 1);
        return b.tickets[static_cast<size_t>(id - base)];
    }

    static constexpr long long porBloque = 1024;
    // A search costs about what reading 150 tickets in order does: a block is read once a
    // good part of it is bound to be used.
    static constexpr int buscadosAntesDelBloque = 48;

    struct Bloque {
        int buscados = 0;
        std::vector<Ticket> tickets;
    };

    // Blocks of the usual ids (up to a few billion) sit in a plain array by number.
    Bloque &bloque(long long numero)
    {
        if (numero < 0 || numero >= (1LL << 22))
            return m_bloquesRaros[numero];
        const size_t i = static_cast<size_t>(numero);
        if (i >= m_bloques.size())
            m_bloques.resize(i + 1);
        if (!m_bloques[i])
            m_bloques[i] = std::make_unique<Bloque>();
        return *m_bloques[i];
    }

    // The codes of an office, read once per office seen (the map keeps them in place).
    const CodigosOficina &oficina(long long taquilla)
    {
        auto it = m_oficinas.find(taquilla);
        if (it != m_oficinas.end())
            return it->second;
        m_codigos.reiniciar();
        m_codigos.bind(1, taquilla);
        CodigosOficina c;
        if (m_codigos.paso()) {
            c.banca = campo(m_codigos.texto(0));
            c.resto = campo(m_codigos.texto(1)) + "," + campo(m_codigos.texto(2)) + "," +
                      campo(m_codigos.texto(3)) + ",";
        }
        return m_oficinas.emplace(taquilla, std::move(c)).first->second;
    }

    static Ticket leer(const Sentencia &st, int primera)
    {
        Ticket t;
        t.taquilla = st.entero(primera);
        char numero[24];
        const auto fin = std::to_chars(numero, numero + sizeof numero, st.entero(primera + 1)).ptr;
        t.texto.assign(numero, fin);
        t.texto += ',';
        agregarCampo(t.texto, st.vista(primera + 2));
        return t;
    }

    Sentencia m_uno;
    Sentencia m_bloque;
    Sentencia m_codigos;
    std::unordered_map<long long, CodigosOficina> m_oficinas;
    Ticket m_ninguno;
    std::vector<std::unique_ptr<Bloque>> m_bloques;
    std::unordered_map<long long, Bloque> m_bloquesRaros;
    std::unordered_map<long long, Ticket> m_sueltos;
};

// The monitor's lines of one draw and date, written to `salida`: every play, or with
// `encuentro` those of the times of sale this thread takes first, reading forwards or (when
// `salida` goes backwards) from the last play.
void lineasDeVentas(sqlite3 *db, long long sorteoId, const std::string &fecha,
                    const std::unordered_map<long long, long long> &premios, bool haciaAtras,
                    Encuentro *encuentro, SalidaVentas &salida)
{
    // The plays from the index alone, in the order of the reply (or its reverse); their
    // ticket is looked up once per ticket, since a ticket's plays come one after the other.
    Sentencia st(db, haciaAtras ? "SELECT hora, ticket_id, numero, monto, id, eliminada, pagada "
                                  "FROM jugadas INDEXED BY jugadas_sorteo_hora "
                                  "WHERE sorteo_id = ?1 AND fecha = ?2 "
                                  "ORDER BY hora DESC, ticket_id DESC, id DESC"
                                : "SELECT hora, ticket_id, numero, monto, id, eliminada, pagada "
                                  "FROM jugadas INDEXED BY jugadas_sorteo_hora "
                                  "WHERE sorteo_id = ?1 AND fecha = ?2 "
                                  "ORDER BY hora, ticket_id, id");
    st.bind(1, sorteoId).bind(2, fecha);
    TicketsDeVentas tickets(db);
    long long ultimoTicket = 0;
    const TicketsDeVentas::Ticket *ticket = nullptr;
    std::string horaTomada;
    bool hayHora = false;
    std::string &r = salida.texto;
    while (st.paso()) {
        const std::string_view hora = st.vista(0);
        if (encuentro && (!hayHora || hora != horaTomada)) {
            if (!(haciaAtras ? encuentro->tomarHaciaAtras(hora)
                             : encuentro->tomarHaciaAdelante(hora)))
                break;
            horaTomada.assign(hora.data(), hora.size());
            hayHora = true;
        }
        const long long ticketId = st.entero(1);
        if (ticketId != ultimoTicket || !ticket) {
            ultimoTicket = ticketId;
            ticket = &tickets.de(ticketId);
        }
        // Appended field by field from SQLite's own buffers: a million lines, no temporaries.
        r += ticket->oficina->banca;
        r += ',';
        agregarCampo(r, st.vista(0));
        r += ',';
        r += ticket->oficina->resto;
        r += ticket->texto;
        r += ',';
        agregarCampo(r, st.vista(2));
        r += ',';
        agregarMonto(r, st.entero(3));
        r += ',';
        const auto premio = premios.empty() ? premios.end() : premios.find(st.entero(4));
        if (premio == premios.end())
            r += '0';
        else
            agregarMonto(r, premio->second);
        r += st.entero(5) ? ",E," : ",,";
        r += st.entero(6) ? "X\n" : "\n";
        salida.lineaHecha();
    }
    salida.terminar();
}

// The reply made of what the threads wrote, in the order of the text.
Respuesta juntarVentas(std::vector<SalidaVentas *> salidas, bool gzip)
{
    unsigned long long total = 0;
    bool comprimido = false;
    for (const SalidaVentas *s : salidas) {
        total += s->longitud();
        comprimido = comprimido || s->algoComprimido();
    }
    Respuesta r;
    // A draw without sales answers a lone line break: an empty body means "no answer" to
    // the console, which would report a server failure for a draw nobody played yet.
    if (total == 0) {
        r.cuerpo = "\n";
        return r;
    }
    // A short list goes as it is, like any other short reply.
    gzip = gzip && (comprimido || total >= minimoParaComprimir);
    if (gzip)
        for (SalidaVentas *s : salidas)
            s->comprimirResto();
    std::vector<TramoGzip *> comprimidos;
    std::vector<std::string *> planos;
    for (SalidaVentas *s : salidas)
        s->piezas(comprimidos, planos);
    if (!gzip) {
        r.cuerpo.reserve(static_cast<size_t>(total));
        for (std::string *t : planos) {
            r.cuerpo += *t;
            std::string().swap(*t);
        }
        return r;
    }
    r.cuerpo = unirGzip(comprimidos);
    if (r.cuerpo.empty())
        throw ErrorBaseDatos("monitorventas: zlib fallo");
    r.gzip = true;
    return r;
}

} // namespace

Respuesta Oficina::monitorventas(sqlite3 *db, const Parametros &p, bool gzip)
{
    // The monitor's game code names the game and the draw together: "<game key>-<draw key>:".
    // The draw is found first among the few draws, so that its plays come straight from the
    // index (draw, date, time of sale) in the order of the reply, without sorting.
    const std::string fecha = valor(p, "f");
    long long sorteoId = 0;
    {
        Sentencia st(db, "SELECT s.id FROM sorteos s JOIN juegos j ON j.id = s.juego_id "
                         "WHERE j.clave || '-' || s.clave || ':' = ?1");
        st.bind(1, valor(p, "j"));
        if (!st.paso())
            return Respuesta();
        sorteoId = st.entero(0);
    }
    // Whether the draw has that many plays at all: counted only up to there.
    bool grande = false;
    {
        Sentencia st(db, "SELECT 1 FROM jugadas WHERE sorteo_id = ?1 AND fecha = ?2 "
                         "LIMIT 1 OFFSET ?3");
        st.bind(1, sorteoId).bind(2, fecha).bind(3, std::max(m_jugadasParaDosHilos - 1, 0LL));
        grande = st.paso();
    }
    // The prizes of the draw's result that day, if it has one: a few winners, looked up by
    // play in memory instead of once per play in the database.
    std::unordered_map<long long, long long> premios;
    {
        Sentencia st(db, "SELECT p.jugada_id, p.monto FROM resultados r "
                         "JOIN premios p ON p.resultado_id = r.id "
                         "WHERE r.sorteo_id = ?1 AND r.fecha = ?2");
        st.bind(1, sorteoId).bind(2, fecha);
        while (st.paso())
            premios[st.entero(0)] = st.entero(1);
    }
    SalidaVentas adelante(gzip, false);
    if (!grande) {
        lineasDeVentas(db, sorteoId, fecha, premios, false, nullptr, adelante);
        return juntarVentas({&adelante}, gzip);
    }
    // A large draw is read from both ends at once, the later part backwards on a second
    // connection in a second thread, so that both cores work on it; the threads meet wherever
    // they do, without counting the plays first.
    SalidaVentas atras(gzip, true);
    Encuentro encuentro;
    bool fallo = false;
    std::thread otra([&] {
        try {
            Prestamo conexion(*this);
            lineasDeVentas(conexion.db(), sorteoId, fecha, premios, true, &encuentro, atras);
        } catch (const std::exception &) {
            fallo = true;
        }
    });
    try {
        lineasDeVentas(db, sorteoId, fecha, premios, false, &encuentro, adelante);
    } catch (...) {
        otra.join();
        throw;
    }
    otra.join();
    if (fallo)
        throw ErrorBaseDatos("monitorventas: la segunda parte fallo");
    return juntarVentas({&adelante, &atras}, gzip);
}

// ---- reports ------------------------------------------------------------------------------

namespace {

// The summary rows of a date range, added up per key in memory: the small tables (offices,
// agencies, bancas, commissions) are read whole, so each of the many summary rows costs one
// hash lookup instead of a chain of joins.
struct Suma {
    long long ventas = 0;
    long long premios = 0;
    double comision = 0; // Σ cents × percentage
    std::string ultima;  // "yyyy-MM-dd hh:mm:ss" of the last sale
};

} // namespace

std::string Oficina::ventabancas2(sqlite3 *db, const Parametros &p)
{
    const std::string desde = valor(p, "d");
    const std::string hasta = valor(p, "h");
    if (!fechaValida(desde) || !fechaValida(hasta))
        return std::string();
    struct Agencia {
        std::string orden; // banca, group chief and agency codes, for the order of the lines
        std::string linea; // the five first fields
        Suma suma;
    };
    std::unordered_map<long long, Agencia> agencias;
    {
        Sentencia st(db, "SELECT ag.id, b.codigo, b.nombre, je.codigo, ag.codigo, ag.nombre, "
                         "je.nombre FROM agencias ag JOIN jefes je ON je.id = ag.jefe_id "
                         "JOIN bancas b ON b.id = je.banca_id");
        while (st.paso()) {
            Agencia &a = agencias[st.entero(0)];
            a.orden = st.texto(1) + '\x01' + st.texto(3) + '\x01' + st.texto(4);
            a.linea = campo(st.texto(1)) + "," + campo(st.texto(2)) + "," +
                      campo(st.texto(1) + st.texto(3) + st.texto(4)) + "," + campo(st.texto(5)) +
                      "," + campo(st.texto(6));
        }
    }
    // Ticket office → (its agency, the agency's id).
    std::unordered_map<long long, std::pair<Agencia *, long long>> deTaquilla;
    {
        Sentencia st(db, "SELECT id, agencia_id FROM taquillas");
        while (st.paso()) {
            const auto it = agencias.find(st.entero(1));
            if (it != agencias.end())
                deTaquilla[st.entero(0)] = {&it->second, st.entero(1)};
        }
    }
    std::map<std::pair<long long, long long>, double> porcentajes;
    {
        Sentencia st(db, "SELECT agencia_id, juego_id, porcentaje FROM comisiones_agencia");
        while (st.paso())
            porcentajes[{st.entero(0), st.entero(1)}] = st.real(2);
    }
    // Commission: Σ amount × the agency's percentage for the play's game.
    Sentencia st(db, "SELECT taquilla_id, juego_id, ventas, premios, fecha, ultima "
                     "FROM ventas_resumen WHERE fecha BETWEEN ?1 AND ?2");
    st.bind(1, desde).bind(2, hasta);
    while (st.paso()) {
        const long long taquilla = st.entero(0);
        const auto a = deTaquilla.find(taquilla);
        if (a == deTaquilla.end())
            continue;
        Suma &s = a->second.first->suma;
        const long long ventas = st.entero(2);
        s.ventas += ventas;
        s.premios += st.entero(3);
        const auto pct = porcentajes.find({a->second.second, st.entero(1)});
        if (pct != porcentajes.end())
            s.comision += static_cast<double>(ventas) * pct->second;
        if (!st.esNulo(5)) {
            const std::string momento = st.texto(4) + " " + st.texto(5);
            if (momento > s.ultima)
                s.ultima = momento;
        }
    }
    std::vector<const Agencia *> conVentas;
    for (const auto &a : agencias)
        if (a.second.suma.ventas > 0)
            conVentas.push_back(&a.second);
    std::sort(conVentas.begin(), conVentas.end(),
              [](const Agencia *x, const Agencia *y) { return x->orden < y->orden; });
    std::string r;
    for (const Agencia *a : conVentas) {
        const long long comision = std::llround(a->suma.comision / 100.0);
        r += a->linea + "," + montoTexto(a->suma.ventas) + "," + montoTexto(a->suma.premios) + "," +
             montoTexto(comision) + "," +
             (a->suma.ultima.size() >= 19 ? campo(a->suma.ultima.substr(11, 8)) : std::string()) +
             "\n";
    }
    // A range without sales answers a lone line break: empty tables, not "no answer".
    return r.empty() ? std::string("\n") : r;
}

std::string Oficina::reportex(sqlite3 *db, const Parametros &p)
{
    const std::string superBanca = valor(p, "bx");
    const std::string desde = valor(p, "d");
    const std::string hasta = valor(p, "h");
    if (!fechaValida(desde) || !fechaValida(hasta))
        return std::string();
    const std::set<std::string> pedidos = listaComoConjunto(valor(p, "j"));
    const bool todos = pedidos.count("root") > 0;
    auto incluido = [&](const std::string &clave) {
        return todos || pedidos.count(clave) > 0;
    };

    std::string r;
    std::unordered_map<long long, std::pair<long long, std::string>> juegos; // id → (order, key)
    {
        Sentencia st(db, "SELECT id, clave, nombre FROM juegos ORDER BY id");
        while (st.paso()) {
            if (!incluido(st.texto(1)))
                continue;
            juegos[st.entero(0)] = {st.entero(0), st.texto(1)};
            r += campo(st.texto(1)) + "," + campo(st.texto(2)) + "\n";
        }
    }
    r += "_FIN_\n";
    {
        Sentencia st(db, "SELECT b.codigo, j.clave, cb.comision, cb.participacion "
                         "FROM comisiones_banca cb JOIN bancas b ON b.id = cb.banca_id "
                         "JOIN superbancas sb ON sb.id = b.superbanca_id "
                         "JOIN juegos j ON j.id = cb.juego_id "
                         "WHERE sb.codigo = ?1 ORDER BY b.codigo, j.id");
        st.bind(1, superBanca);
        while (st.paso()) {
            if (incluido(st.texto(1)))
                r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," +
                     porcentajeTexto(st.real(2)) + "," + porcentajeTexto(st.real(3)) + "\n";
        }
    }
    r += "_FIN_\n";
    // The bancas of the super-banca, and the banca of each of their ticket offices.
    struct Banca {
        std::string codigo, nombre;
    };
    std::unordered_map<long long, Banca> bancas;
    std::unordered_map<long long, long long> bancaDeTaquilla;
    {
        Sentencia st(db, "SELECT tq.id, b.id, b.codigo, b.nombre FROM taquillas tq "
                         "JOIN agencias ag ON ag.id = tq.agencia_id "
                         "JOIN jefes je ON je.id = ag.jefe_id JOIN bancas b ON b.id = je.banca_id "
                         "JOIN superbancas sb ON sb.id = b.superbanca_id WHERE sb.codigo = ?1");
        st.bind(1, superBanca);
        while (st.paso()) {
            bancaDeTaquilla[st.entero(0)] = st.entero(1);
            bancas[st.entero(1)] = {st.texto(2), st.texto(3)};
        }
    }
    std::map<std::pair<long long, long long>, Suma> sumas; // (banca, game)
    Sentencia st(db, "SELECT taquilla_id, juego_id, ventas, premios "
                     "FROM ventas_resumen WHERE fecha BETWEEN ?1 AND ?2");
    st.bind(1, desde).bind(2, hasta);
    while (st.paso()) {
        const auto b = bancaDeTaquilla.find(st.entero(0));
        if (b == bancaDeTaquilla.end() || !juegos.count(st.entero(1)))
            continue;
        Suma &s = sumas[{b->second, st.entero(1)}];
        s.ventas += st.entero(2);
        s.premios += st.entero(3);
    }
    std::vector<std::pair<std::pair<std::string, long long>, std::string>> lineas;
    for (const auto &[clave, s] : sumas) {
        if (s.ventas <= 0)
            continue;
        const Banca &b = bancas[clave.first];
        lineas.push_back({{b.codigo, juegos[clave.second].first},
                          campo(b.codigo) + "," + campo(b.nombre) + "," +
                              campo(juegos[clave.second].second) + "," + montoTexto(s.ventas) +
                              "," + montoTexto(s.premios) + "\n"});
    }
    std::sort(lineas.begin(), lineas.end());
    for (const auto &l : lineas)
        r += l.second;
    return r;
}

// ---- sorteospendientes.php (for the demo result script) -----------------------------------

std::string Oficina::sorteospendientes(sqlite3 *db, const Parametros &p)
{
    const Momento m = m_reloj();
    Sentencia st(db, "SELECT j.clave, s.clave, s.hora FROM sorteos s "
                     "JOIN juegos j ON j.id = s.juego_id "
                     "WHERE j.activo = 1 AND s.activo = 1 AND j.automatico = 'X' "
                     "AND j.script = ?1 AND s.hora <= ?2 AND NOT EXISTS (SELECT 1 FROM "
                     "resultados r WHERE r.sorteo_id = s.id AND r.fecha = ?3) "
                     "ORDER BY s.hora, s.id");
    st.bind(1, valor(p, "g")).bind(2, m.hora).bind(3, m.fecha);
    std::string r = m.fecha + "\n";
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "\n";
    return r;
}

// ---- sales --------------------------------------------------------------------------------

bool Oficina::vender(long long taquillaId, const std::string &claveJuego,
                     const std::string &claveSorteo, const std::string &fecha,
                     const std::string &hora, const std::vector<JugadaVenta> &jugadas)
{
    if (jugadas.empty() || !fechaValida(fecha) || !horaValida(hora))
        return false;
    Prestamo c(*this);
    sqlite3 *db = c.db();
    try {
        Transaccion t(db);
        Sorteo s;
        if (!buscarSorteo(db, claveJuego, claveSorteo, s) || hora >= s.hora)
            return false;
        for (const JugadaVenta &j : jugadas) {
            if (j.centimos <= 0 || !resultadoValido(db, s, j.numero))
                return false;
        }
        long long numero = 1;
        {
            Sentencia st(db, "SELECT COALESCE(MAX(numero), 0) + 1 FROM tickets "
                             "WHERE taquilla_id = ?1 AND fecha = ?2");
            st.bind(1, taquillaId).bind(2, fecha);
            if (st.paso())
                numero = st.entero(0);
        }
        unsigned char azar[4];
        randombytes_buf(azar, sizeof azar);
        char serial[16];
        std::snprintf(serial, sizeof serial, "%02X%02X%02X%02X", azar[0], azar[1], azar[2],
                      azar[3]);
        Sentencia ticket(db, "INSERT INTO tickets(taquilla_id, fecha, hora, numero, serial) "
                             "VALUES(?1, ?2, ?3, ?4, ?5)");
        ticket.bind(1, taquillaId)
            .bind(2, fecha)
            .bind(3, hora)
            .bind(4, numero)
            .bind(5, std::string(serial));
        ticket.ejecutar();
        const long long ticketId = sqlite3_last_insert_rowid(db);
        Sentencia jugada(db, "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
                             "monto) VALUES(?1, ?2, ?3, ?4, ?5, ?6)");
        for (const JugadaVenta &j : jugadas) {
            jugada.reiniciar();
            jugada.bind(1, ticketId).bind(2, s.id).bind(3, fecha).bind(4, hora).bind(5, j.numero);
            jugada.bind(6, j.centimos);
            jugada.ejecutar();
        }
        t.confirmar();
        return true;
    } catch (const ErrorBaseDatos &) {
        // Among others: the draw got its result (the trigger refuses the play).
        return false;
    }
}

} // namespace servidor
