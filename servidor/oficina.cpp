#include "servidor/oficina.h"

#include "servidor/basedatos.h"
#include "servidor/esquema.h"

#include <sodium.h>

#include <cmath>
#include <ctime>
#include <set>
#include <sstream>

namespace servidor {

namespace {

// Longest text kept in an audit row, so that a huge query cannot bloat the log.
constexpr size_t maximoAuditoria = 200;

std::string recortar(const std::string &texto)
{
    return texto.size() <= maximoAuditoria ? texto : texto.substr(0, maximoAuditoria) + "...";
}

// A whole reply line: only line breaks are taken out (lists keep their commas).
std::string campoLinea(const std::string &texto)
{
    std::string salida = texto;
    for (char &c : salida) {
        if (c == '\n' || c == '\r')
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

const char *const endpointsConSesion[] = {
    "calcularpremios4.php", "publicarPremios2.php", "deshacerpremios.php", "autopremiar.php",
    "monitorventas.php",    "ventabancas2.php",     "reportex.php"};

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
};

bool buscarSorteo(sqlite3 *db, const std::string &juego, const std::string &sorteo, Sorteo &s)
{
    Sentencia st(db, "SELECT s.id, j.id, j.tipo, s.hora FROM sorteos s "
                     "JOIN juegos j ON j.id = s.juego_id WHERE j.clave = ?1 AND s.clave = ?2");
    st.bind(1, juego).bind(2, sorteo);
    if (!st.paso())
        return false;
    s.id = st.entero(0);
    s.juegoId = st.entero(1);
    s.tipo = st.texto(2);
    s.hora = st.texto(3);
    return true;
}

// A result a game can have: one of its animal numbers; three digits for a number game; any
// short text without separators for a no-name game.
bool resultadoValido(sqlite3 *db, const Sorteo &s, const std::string &resultado)
{
    if (resultado.empty() || resultado.size() > 16 || campo(resultado) != resultado)
        return false;
    if (s.tipo == "A") {
        Sentencia st(db, "SELECT 1 FROM animales WHERE juego_id = ?1 AND numero = ?2");
        st.bind(1, s.juegoId).bind(2, resultado);
        return st.paso();
    }
    if (s.tipo == "N") {
        if (resultado.size() != 3)
            return false;
        for (const char c : resultado) {
            if (c < '0' || c > '9')
                return false;
        }
    }
    return true;
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

Oficina::Oficina(const std::string &rutaBaseDatos) : m_reloj(momentoLocal)
{
    if (sodium_init() < 0)
        throw ErrorBaseDatos("libsodium no pudo iniciarse");
    const int rc = sqlite3_open_v2(
        rutaBaseDatos.c_str(), &m_db,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        const std::string mensaje = m_db ? sqlite3_errmsg(m_db) : "sqlite3_open";
        sqlite3_close(m_db);
        m_db = nullptr;
        throw ErrorBaseDatos(rutaBaseDatos + ": " + mensaje, rc);
    }
    try {
        prepararEsquema(m_db);
    } catch (...) {
        sqlite3_close(m_db);
        m_db = nullptr;
        throw;
    }
}

Oficina::~Oficina()
{
    sqlite3_close_v2(m_db);
}

void Oficina::fijarReloj(std::function<Momento()> reloj)
{
    std::lock_guard<std::mutex> candado(m_mutex);
    m_reloj = std::move(reloj);
}

Momento Oficina::ahora() const
{
    return m_reloj();
}

bool Oficina::vacia()
{
    std::lock_guard<std::mutex> candado(m_mutex);
    Sentencia st(m_db, "SELECT (SELECT COUNT(*) FROM usuarios) + (SELECT COUNT(*) FROM juegos)");
    return st.paso() && st.entero(0) == 0;
}

void Oficina::conConexion(const std::function<void(sqlite3 *)> &trabajo)
{
    std::lock_guard<std::mutex> candado(m_mutex);
    trabajo(m_db);
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
    for (const char *e : endpointsConSesion) {
        if (endpoint == e)
            return true;
    }
    return false;
}

std::string Oficina::atenderConsulta(const std::string &endpoint, const std::string &consulta,
                                     const std::string &direccion)
{
    return atender(endpoint, leerConsulta(consulta), direccion);
}

std::string Oficina::atender(const std::string &endpoint, const Parametros &p,
                             const std::string &direccion)
{
    try {
        if (endpoint == "validarUser.php")
            return utf8ALatin1(validarUser(p, direccion));
        std::lock_guard<std::mutex> candado(m_mutex);
        if (requiereSesion(endpoint) && usuarioDeDireccion(direccion).empty())
            return std::string();
        std::string r;
        if (endpoint == "datetime.php")
            r = datetime();
        else if (endpoint == "sorteospremiar3.php")
            r = sorteospremiar3();
        else if (endpoint == "resultadosJuego.php")
            r = resultadosJuego(p);
        else if (endpoint == "calcularpremios4.php")
            r = calcularpremios4(p, direccion);
        else if (endpoint == "publicarPremios2.php")
            r = publicar(valor(p, "f"), valor(p, "j"), valor(p, "s"), valor(p, "a"), direccion,
                         "publicar");
        else if (endpoint == "deshacerpremios.php")
            r = deshacerpremios(p, direccion);
        else if (endpoint == "autopremiar.php")
            r = publicar(m_reloj().fecha, valor(p, "j"), valor(p, "s"), valor(p, "a"), direccion,
                         "autopremiar");
        else if (endpoint == "cargarsorteos.php")
            r = cargarsorteos();
        else if (endpoint == "cargarresultados.php")
            r = cargarresultados();
        else if (endpoint == "monitorsorteos2.php")
            r = monitorsorteos2(p);
        else if (endpoint == "bancasactivas.php")
            r = bancasactivas();
        else if (endpoint == "monitoragencias.php")
            r = monitoragencias();
        else if (endpoint == "monitorresultados.php")
            r = monitorresultados(p);
        else if (endpoint == "monitorventas.php")
            r = monitorventas(p);
        else if (endpoint == "ventabancas2.php")
            r = ventabancas2(p);
        else if (endpoint == "reportex.php")
            r = reportex(p);
        else if (endpoint == "sorteospendientes.php")
            r = sorteospendientes(p);
        return utf8ALatin1(r);
    } catch (const std::exception &) {
        // A failing database or a malformed value never brings the server down: the console
        // sees an empty reply ("no answer").
        return std::string();
    }
}

// ---- session and audit ------------------------------------------------------------------

std::string Oficina::usuarioDeDireccion(const std::string &direccion)
{
    Sentencia st(m_db, "SELECT usuario FROM sesiones WHERE direccion = ?1");
    st.bind(1, direccion);
    return st.paso() ? st.texto(0) : std::string();
}

bool Oficina::puedeJuego(const std::string &usuario, const std::string &claveJuego)
{
    Sentencia st(m_db, "SELECT juegos FROM usuarios WHERE usuario = ?1");
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

void Oficina::auditar(const std::string &direccion, const std::string &usuario,
                      const std::string &accion, const std::string &detalle)
{
    const Momento m = m_reloj();
    Sentencia st(m_db, "INSERT INTO auditoria(momento, direccion, usuario, accion, detalle) "
                       "VALUES(?1, ?2, ?3, ?4, ?5)");
    st.bind(1, m.fecha + " " + m.hora)
        .bind(2, recortar(direccion))
        .bind(3, recortar(usuario))
        .bind(4, accion)
        .bind(5, recortar(detalle));
    st.ejecutar();
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
    std::lock_guard<std::mutex> candado(m_mutex);
    Sentencia st(m_db, "INSERT INTO usuarios(usuario, clave_hash, nombre, acceso, opciones, "
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
    std::string hash;
    std::vector<std::string> lineas;
    {
        std::lock_guard<std::mutex> candado(m_mutex);
        Sentencia st(m_db, "SELECT clave_hash, nombre, acceso, opciones, juegos, bancas, "
                           "superbanca, juegos_reporte FROM usuarios WHERE usuario = ?1");
        st.bind(1, usuario);
        if (st.paso()) {
            hash = st.texto(0);
            for (int i = 1; i <= 7; ++i)
                lineas.push_back(st.texto(i));
        }
    }
    // The slow hash check runs without the lock, so a login never stalls other requests.
    const bool correcto = !hash.empty() && clave.size() < 4096 &&
                          crypto_pwhash_str_verify(hash.c_str(), clave.data(), clave.size()) == 0;
    std::lock_guard<std::mutex> candado(m_mutex);
    if (!correcto) {
        auditar(direccion, usuario, "login", "rechazado");
        return "0\n";
    }
    const Momento m = m_reloj();
    Sentencia st(m_db, "INSERT INTO sesiones(direccion, usuario, momento) VALUES(?1, ?2, ?3) "
                       "ON CONFLICT(direccion) DO UPDATE SET usuario = excluded.usuario, "
                       "momento = excluded.momento");
    st.bind(1, direccion).bind(2, usuario).bind(3, m.fecha + " " + m.hora);
    st.ejecutar();
    auditar(direccion, usuario, "login", "aceptado");
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

std::string Oficina::sorteospremiar3()
{
    std::string r;
    {
        Sentencia st(m_db, "SELECT j.clave, j.nombre, j.sin_nombres, j.tipo, "
                           "(SELECT group_concat(numero, ',') FROM "
                           "  (SELECT numero FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                           "(SELECT group_concat(nombre, ',') FROM "
                           "  (SELECT nombre FROM animales WHERE juego_id = j.id ORDER BY orden)) "
                           "FROM juegos j WHERE j.activo = 1 ORDER BY j.id");
        while (st.paso()) {
            r += campo(st.texto(0)) + ";" + campo(st.texto(1)) + ";" + st.texto(2) + ";" +
                 st.texto(4) + ";" + st.texto(5) + ";" + st.texto(3) + "\n";
        }
    }
    r += "_FIN_\n";
    Sentencia st(m_db, "SELECT j.clave, s.clave, s.etiqueta FROM sorteos s "
                       "JOIN juegos j ON j.id = s.juego_id "
                       "WHERE j.activo = 1 AND s.activo = 1 ORDER BY j.id, s.hora, s.id");
    while (st.paso())
        r += campo(st.texto(0)) + ";" + campo(st.texto(1)) + ";" + campo(st.texto(2)) + "\n";
    return r;
}

// ---- resultadosJuego.php ------------------------------------------------------------------

std::string Oficina::resultadosJuego(const Parametros &p)
{
    Sentencia st(m_db, "SELECT s.clave, r.resultado FROM resultados r "
                       "JOIN sorteos s ON s.id = r.sorteo_id JOIN juegos j ON j.id = s.juego_id "
                       "WHERE j.clave = ?1 AND r.fecha = ?2 ORDER BY s.hora, s.id");
    st.bind(1, valor(p, "j")).bind(2, valor(p, "f"));
    std::string r;
    while (st.paso())
        r += campo(st.texto(0)) + "," + st.texto(1) + "\n";
    // A game with no result yet is an answer too: a lone line break, which the console skips,
    // so that it is not taken for a server that did not answer.
    return r.empty() ? std::string("\n") : r;
}

// ---- calcularpremios4.php -----------------------------------------------------------------

std::string Oficina::calcularpremios4(const Parametros &p, const std::string &direccion)
{
    const std::string fecha = valor(p, "f");
    const std::string juego = valor(p, "j");
    Sorteo s;
    if (!fechaValida(fecha) || !buscarSorteo(m_db, juego, valor(p, "s"), s) ||
        !puedeJuego(usuarioDeDireccion(direccion), juego))
        return std::string();
    std::string r = "banca,agencia,ticket,numero,jugado,premio\n";
    Sentencia st(m_db,
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
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "," + st.texto(3) +
             "," + montoTexto(st.entero(4)) + "," + montoTexto(st.entero(5)) + "\n";
    }
    return r;
}

// ---- publicarPremios2.php and autopremiar.php ---------------------------------------------

std::string Oficina::publicar(const std::string &fecha, const std::string &juego,
                              const std::string &sorteo, const std::string &resultado,
                              const std::string &direccion, const char *accion)
{
    const std::string usuario = usuarioDeDireccion(direccion);
    const Momento m = m_reloj();
    Sorteo s;
    if (!fechaValida(fecha) || fecha > m.fecha || !buscarSorteo(m_db, juego, sorteo, s) ||
        !resultadoValido(m_db, s, resultado) || !puedeJuego(usuario, juego))
        return std::string();
    const std::string detalle =
        "fecha=" + fecha + " juego=" + juego + " sorteo=" + sorteo + " resultado=" + resultado;
    try {
        // The write lock is taken at BEGIN, so of two publishes of one draw exactly one sees
        // "no result yet"; the unique key (sorteo, fecha) backs this up across processes.
        Transaccion t(m_db);
        {
            Sentencia ya(m_db, "SELECT 1 FROM resultados WHERE sorteo_id = ?1 AND fecha = ?2");
            ya.bind(1, s.id).bind(2, fecha);
            if (ya.paso()) {
                auditar(direccion, usuario, accion, detalle + " rechazado: ya publicado");
                t.confirmar();
                return "0";
            }
        }
        Sentencia ins(m_db, "INSERT INTO resultados(sorteo_id, fecha, resultado, hora, usuario) "
                            "VALUES(?1, ?2, ?3, ?4, ?5)");
        ins.bind(1, s.id).bind(2, fecha).bind(3, resultado).bind(4, m.hora).bind(5, usuario);
        ins.ejecutar();
        const long long resultadoId = sqlite3_last_insert_rowid(m_db);
        Sentencia premios(
            m_db, "INSERT INTO premios(resultado_id, jugada_id, monto) "
                  "SELECT ?1, jg.id, (jg.monto * so.dividendo * 2 + so.divisor) / "
                  "(2 * so.divisor) FROM jugadas jg JOIN sorteos so ON so.id = jg.sorteo_id "
                  "WHERE jg.sorteo_id = ?2 AND jg.fecha = ?3 AND jg.numero = ?4 "
                  "AND jg.eliminada = 0");
        premios.bind(1, resultadoId).bind(2, s.id).bind(3, fecha).bind(4, resultado);
        premios.ejecutar();
        const int ganadoras = sqlite3_changes(m_db);
        auditar(direccion, usuario, accion,
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

std::string Oficina::deshacerpremios(const Parametros &p, const std::string &direccion)
{
    const std::string fecha = valor(p, "f");
    const std::string juego = valor(p, "j");
    const std::string sorteo = valor(p, "s");
    const std::string usuario = usuarioDeDireccion(direccion);
    Sorteo s;
    if (!fechaValida(fecha) || !buscarSorteo(m_db, juego, sorteo, s) || !puedeJuego(usuario, juego))
        return std::string();
    const std::string detalle = "fecha=" + fecha + " juego=" + juego + " sorteo=" + sorteo;
    Transaccion t(m_db);
    long long resultadoId = 0;
    std::string resultado;
    {
        Sentencia st(m_db,
                     "SELECT id, resultado FROM resultados WHERE sorteo_id = ?1 AND fecha = ?2");
        st.bind(1, s.id).bind(2, fecha);
        if (!st.paso()) {
            auditar(direccion, usuario, "deshacer", detalle + " rechazado: sin resultado");
            t.confirmar();
            return "0";
        }
        resultadoId = st.entero(0);
        resultado = st.texto(1);
    }
    Sentencia borrarPremios(m_db, "DELETE FROM premios WHERE resultado_id = ?1");
    borrarPremios.bind(1, resultadoId);
    borrarPremios.ejecutar();
    const int premios = sqlite3_changes(m_db);
    Sentencia borrar(m_db, "DELETE FROM resultados WHERE id = ?1");
    borrar.bind(1, resultadoId);
    borrar.ejecutar();
    auditar(direccion, usuario, "deshacer",
            detalle + " resultado=" + resultado + " deshecho: " + std::to_string(premios) +
                " premios retirados");
    t.confirmar();
    return "1";
}

// ---- cargarsorteos.php and cargarresultados.php -------------------------------------------

std::string Oficina::cargarsorteos()
{
    Sentencia st(m_db, "SELECT j.clave, j.nombre, s.clave, s.etiqueta, s.hora, s.divisor, "
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

std::string Oficina::cargarresultados()
{
    Sentencia st(m_db,
                 "SELECT j.clave, j.nombre, j.sin_nombres, s.clave, s.etiqueta, r.resultado, "
                 "CASE WHEN j.tipo = 'A' AND j.sin_nombres = '' THEN COALESCE((SELECT a.nombre "
                 "FROM animales a WHERE a.juego_id = j.id AND a.numero = r.resultado), '') "
                 "ELSE '' END, r.hora "
                 "FROM resultados r JOIN sorteos s ON s.id = r.sorteo_id "
                 "JOIN juegos j ON j.id = s.juego_id WHERE r.fecha = ?1 ORDER BY s.hora, j.id");
    st.bind(1, m_reloj().fecha);
    std::string r;
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "," +
             campo(st.texto(3)) + "," + campo(st.texto(4)) + "," + st.texto(5) + "," +
             campo(st.texto(6)) + "," + st.texto(7) + "\n";
    }
    return r;
}

// ---- monitor ------------------------------------------------------------------------------

std::string Oficina::monitorsorteos2(const Parametros &p)
{
    const std::string usuario = valor(p, "u");
    {
        Sentencia st(m_db, "SELECT 1 FROM usuarios WHERE usuario = ?1");
        st.bind(1, usuario);
        if (!st.paso())
            return std::string();
    }
    Sentencia st(m_db,
                 "SELECT j.clave, s.clave, j.nombre, s.hora, s.activo, s.divisor, s.dividendo, "
                 "(SELECT group_concat(numero, ',') FROM "
                 "  (SELECT numero FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                 "(SELECT group_concat(nombre, ',') FROM "
                 "  (SELECT nombre FROM animales WHERE juego_id = j.id ORDER BY orden)), "
                 "s.etiqueta FROM sorteos s JOIN juegos j ON j.id = s.juego_id "
                 "WHERE j.activo = 1 ORDER BY j.id, s.hora, s.id");
    std::string r;
    while (st.paso()) {
        const std::string juego = st.texto(0);
        if (!puedeJuego(usuario, juego))
            continue;
        r += codigoMonitor(juego, st.texto(1)) + ";" + campo(st.texto(2)) + " " +
             horaCorta(st.texto(3)) + ";" + (st.entero(4) ? "1" : "0") + ";" +
             std::to_string(st.entero(5)) + ";" + std::to_string(st.entero(6)) + ";" + st.texto(7) +
             ";" + st.texto(8) + ";" + campo(st.texto(1)) + ";" + campo(st.texto(9)) + "\n";
    }
    return r;
}

std::string Oficina::bancasactivas()
{
    Sentencia st(m_db, "SELECT codigo, nombre FROM bancas WHERE activa = 1 ORDER BY codigo");
    std::string r;
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "\n";
    return r;
}

std::string Oficina::monitoragencias()
{
    Sentencia st(m_db, "SELECT b.codigo, je.codigo, ag.codigo, tq.codigo, ag.nombre, "
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

std::string Oficina::monitorresultados(const Parametros &p)
{
    Sentencia st(m_db, "SELECT j.clave || '-' || s.clave || ':', s.clave, r.resultado "
                       "FROM resultados r JOIN sorteos s ON s.id = r.sorteo_id "
                       "JOIN juegos j ON j.id = s.juego_id WHERE r.fecha = ?1 "
                       "ORDER BY j.id, s.hora, s.id");
    st.bind(1, valor(p, "f"));
    std::string r = "cjuego,csorteo,resultado\n";
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "\n";
    return r;
}

std::string Oficina::monitorventas(const Parametros &p)
{
    // The monitor's game code names the game and the draw together: "<game key>-<draw key>".
    Sentencia st(m_db,
                 "SELECT b.codigo, jg.hora, je.codigo, ag.codigo, tq.codigo, t.numero, t.serial, "
                 "jg.numero, jg.monto, pr.monto, jg.eliminada, jg.pagada "
                 "FROM sorteos s JOIN juegos j ON j.id = s.juego_id "
                 "JOIN jugadas jg ON jg.sorteo_id = s.id AND jg.fecha = ?1 "
                 "JOIN tickets t ON t.id = jg.ticket_id "
                 "JOIN taquillas tq ON tq.id = t.taquilla_id "
                 "JOIN agencias ag ON ag.id = tq.agencia_id JOIN jefes je ON je.id = ag.jefe_id "
                 "JOIN bancas b ON b.id = je.banca_id "
                 "LEFT JOIN premios pr ON pr.jugada_id = jg.id "
                 "WHERE j.clave || '-' || s.clave || ':' = ?2 ORDER BY jg.hora, t.id, jg.id");
    st.bind(1, valor(p, "f")).bind(2, valor(p, "j"));
    std::string r;
    while (st.paso()) {
        r += campo(st.texto(0)) + "," + st.texto(1) + "," + campo(st.texto(2)) + "," +
             campo(st.texto(3)) + "," + campo(st.texto(4)) + "," + st.texto(5) + "," +
             campo(st.texto(6)) + "," + st.texto(7) + "," + montoTexto(st.entero(8)) + "," +
             (st.esNulo(9) ? std::string("0") : montoTexto(st.entero(9))) + "," +
             (st.entero(10) ? "E" : "") + "," + (st.entero(11) ? "X" : "") + "\n";
    }
    return r;
}

// ---- reports ------------------------------------------------------------------------------

std::string Oficina::ventabancas2(const Parametros &p)
{
    const std::string desde = valor(p, "d");
    const std::string hasta = valor(p, "h");
    if (!fechaValida(desde) || !fechaValida(hasta))
        return std::string();
    Sentencia st(m_db,
                 "SELECT b.codigo, b.nombre, b.codigo || je.codigo || ag.codigo, ag.nombre, "
                 "je.nombre, SUM(jg.monto), SUM(COALESCE(pr.monto, 0)), "
                 "SUM(jg.monto * COALESCE(ca.porcentaje, 0)), MAX(jg.fecha || ' ' || jg.hora) "
                 "FROM jugadas jg JOIN tickets t ON t.id = jg.ticket_id "
                 "JOIN taquillas tq ON tq.id = t.taquilla_id "
                 "JOIN agencias ag ON ag.id = tq.agencia_id JOIN jefes je ON je.id = ag.jefe_id "
                 "JOIN bancas b ON b.id = je.banca_id JOIN sorteos s ON s.id = jg.sorteo_id "
                 "LEFT JOIN premios pr ON pr.jugada_id = jg.id "
                 "LEFT JOIN comisiones_agencia ca ON ca.agencia_id = ag.id "
                 "AND ca.juego_id = s.juego_id "
                 "WHERE jg.fecha BETWEEN ?1 AND ?2 AND jg.eliminada = 0 "
                 "GROUP BY ag.id ORDER BY b.codigo, je.codigo, ag.codigo");
    st.bind(1, desde).bind(2, hasta);
    std::string r;
    while (st.paso()) {
        const long long comision = std::llround(st.real(7) / 100.0);
        const std::string ultima = st.texto(8);
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "," +
             campo(st.texto(3)) + "," + campo(st.texto(4)) + "," + montoTexto(st.entero(5)) + "," +
             montoTexto(st.entero(6)) + "," + montoTexto(comision) + "," +
             (ultima.size() >= 19 ? ultima.substr(11, 8) : std::string()) + "\n";
    }
    // A range without sales answers a lone line break: empty tables, not "no answer".
    return r.empty() ? std::string("\n") : r;
}

std::string Oficina::reportex(const Parametros &p)
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
    {
        Sentencia st(m_db, "SELECT clave, nombre FROM juegos ORDER BY id");
        while (st.paso()) {
            if (incluido(st.texto(0)))
                r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "\n";
        }
    }
    r += "_FIN_\n";
    {
        Sentencia st(m_db, "SELECT b.codigo, j.clave, cb.comision, cb.participacion "
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
    Sentencia st(m_db, "SELECT b.codigo, b.nombre, j.clave, SUM(jg.monto), "
                       "SUM(COALESCE(pr.monto, 0)) "
                       "FROM jugadas jg JOIN sorteos s ON s.id = jg.sorteo_id "
                       "JOIN juegos j ON j.id = s.juego_id "
                       "JOIN tickets t ON t.id = jg.ticket_id "
                       "JOIN taquillas tq ON tq.id = t.taquilla_id "
                       "JOIN agencias ag ON ag.id = tq.agencia_id "
                       "JOIN jefes je ON je.id = ag.jefe_id JOIN bancas b ON b.id = je.banca_id "
                       "JOIN superbancas sb ON sb.id = b.superbanca_id "
                       "LEFT JOIN premios pr ON pr.jugada_id = jg.id "
                       "WHERE sb.codigo = ?1 AND jg.fecha BETWEEN ?2 AND ?3 AND jg.eliminada = 0 "
                       "GROUP BY b.id, j.id ORDER BY b.codigo, j.id");
    st.bind(1, superBanca).bind(2, desde).bind(3, hasta);
    while (st.paso()) {
        if (incluido(st.texto(2)))
            r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + campo(st.texto(2)) + "," +
                 montoTexto(st.entero(3)) + "," + montoTexto(st.entero(4)) + "\n";
    }
    return r;
}

// ---- sorteospendientes.php (for the demo result script) -----------------------------------

std::string Oficina::sorteospendientes(const Parametros &p)
{
    const Momento m = m_reloj();
    Sentencia st(m_db, "SELECT j.clave, s.clave, s.hora FROM sorteos s "
                       "JOIN juegos j ON j.id = s.juego_id "
                       "WHERE j.activo = 1 AND s.activo = 1 AND j.automatico = 'X' "
                       "AND j.script = ?1 AND s.hora <= ?2 AND NOT EXISTS (SELECT 1 FROM "
                       "resultados r WHERE r.sorteo_id = s.id AND r.fecha = ?3) "
                       "ORDER BY s.hora, s.id");
    st.bind(1, valor(p, "g")).bind(2, m.hora).bind(3, m.fecha);
    std::string r = m.fecha + "\n";
    while (st.paso())
        r += campo(st.texto(0)) + "," + campo(st.texto(1)) + "," + st.texto(2) + "\n";
    return r;
}

// ---- sales --------------------------------------------------------------------------------

bool Oficina::vender(long long taquillaId, const std::string &claveJuego,
                     const std::string &claveSorteo, const std::string &fecha,
                     const std::string &hora, const std::vector<JugadaVenta> &jugadas)
{
    if (jugadas.empty() || !fechaValida(fecha) || !horaValida(hora))
        return false;
    std::lock_guard<std::mutex> candado(m_mutex);
    try {
        Transaccion t(m_db);
        Sorteo s;
        if (!buscarSorteo(m_db, claveJuego, claveSorteo, s))
            return false;
        for (const JugadaVenta &j : jugadas) {
            if (j.centimos <= 0 || !resultadoValido(m_db, s, j.numero))
                return false;
        }
        long long numero = 1;
        {
            Sentencia st(m_db, "SELECT COALESCE(MAX(numero), 0) + 1 FROM tickets "
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
        Sentencia ticket(m_db, "INSERT INTO tickets(taquilla_id, fecha, hora, numero, serial) "
                               "VALUES(?1, ?2, ?3, ?4, ?5)");
        ticket.bind(1, taquillaId)
            .bind(2, fecha)
            .bind(3, hora)
            .bind(4, numero)
            .bind(5, std::string(serial));
        ticket.ejecutar();
        const long long ticketId = sqlite3_last_insert_rowid(m_db);
        Sentencia jugada(m_db, "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
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
