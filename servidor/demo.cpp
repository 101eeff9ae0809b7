#include "servidor/demo.h"

#include "servidor/basedatos.h"

#include <cstdio>
#include <ctime>
#include <map>
#include <sstream>

namespace servidor {

namespace {

struct JuegoDemo {
    const char *clave;
    const char *nombre;
    const char *tipo;
    const char *sinNombres;
    const char *automatico;
    const char *script;
    std::vector<int> horas; // minutes after midnight
    int divisor;
    int dividendo;
    int peso; // share of the sales
};

std::vector<JuegoDemo> juegosDemo()
{
    std::vector<int> fauna, selva, rancho;
    for (int h = 8; h <= 19; ++h)
        fauna.push_back(h * 60);
    for (int h = 8; h <= 18; ++h)
        selva.push_back(h * 60 + 30);
    for (int h = 9; h <= 19; h += 2)
        rancho.push_back(h * 60);
    return {
        {"1", "Fauna Activa", "A", "", "X", "resultados_demo", fauna, 1, 30, 35},
        {"2", "Selva Dorada", "A", "", "", "", selva, 1, 30, 30},
        {"3", "Rancho Feliz", "A", "", "", "", rancho, 1, 32, 15},
        {"4", "Triple Tornavo", "N", "X", "", "", {10 * 60, 13 * 60, 16 * 60, 19 * 60}, 1, 600, 20},
    };
}

const char *const nombresBanca[] = {"Banca Oriente",   "Banca Occidente", "Banca Central",
                                    "Banca Los Andes", "Banca Llanos",    "Banca Costa Azul"};

const char *const nombresJefe[] = {
    "José Martínez", "María Fernández", "Luis Pérez",      "Ana Rodríguez",
    "Carlos Gómez",  "Rosa Díaz",       "Pedro Hernández", "Carmen López",
    "Jesús Ramírez", "Andrés Suárez",   "Beatriz Núñez",   "Ramón Peña",
    "Elena Ibáñez",  "Víctor Rojas",    "Sofía Márquez",   "Ángel Torres"};

const char *const lugares[] = {"El Sol",        "La Fortuna",  "San José",    "Los Próceres",
                               "El Trébol",     "La Estrella", "Santa Rosa",  "El Paraíso",
                               "La Candelaria", "San Martín",  "Las Acacias", "El Recreo",
                               "Bella Vista",   "La Victoria", "El Carmen",   "San Agustín",
                               "Los Samanes",   "La Pastora",  "El Valle",    "Catia"};

std::string dosDigitos(int n)
{
    char b[16];
    std::snprintf(b, sizeof b, "%02d", n);
    return b;
}

std::string tresDigitos(int n)
{
    char b[16];
    std::snprintf(b, sizeof b, "%03d", n);
    return b;
}

std::string horaDeSegundos(int s)
{
    char b[16];
    std::snprintf(b, sizeof b, "%02d:%02d:%02d", s / 3600, (s / 60) % 60, s % 60);
    return b;
}

int segundosDeHora(const std::string &hora)
{
    return std::stoi(hora.substr(0, 2)) * 3600 + std::stoi(hora.substr(3, 2)) * 60 +
           std::stoi(hora.substr(6, 2));
}

// "08:00 AM", "01:30 PM": the draw label the console shows.
std::string etiqueta(int minutos)
{
    const int h = minutos / 60;
    const int h12 = h % 12 == 0 ? 12 : h % 12;
    return dosDigitos(h12) + ":" + dosDigitos(minutos % 60) + (h < 12 ? " AM" : " PM");
}

std::string fechaMenosDias(const std::string &fecha, int dias)
{
    std::tm t{};
    t.tm_year = std::stoi(fecha.substr(0, 4)) - 1900;
    t.tm_mon = std::stoi(fecha.substr(5, 2)) - 1;
    t.tm_mday = std::stoi(fecha.substr(8, 2)) - dias;
    t.tm_hour = 12;
    t.tm_isdst = -1;
    std::mktime(&t);
    char b[16];
    std::strftime(b, sizeof b, "%Y-%m-%d", &t);
    return b;
}

long long insertar(sqlite3 *db, Sentencia &st)
{
    st.ejecutar();
    st.reiniciar();
    return sqlite3_last_insert_rowid(db);
}

struct SorteoDemo {
    long long id;
    size_t juego; // index in juegosDemo()
    int minutos;
};

} // namespace

std::vector<AnimalDemo> leerAnimales(const std::string &texto)
{
    std::vector<AnimalDemo> animales;
    std::istringstream entrada(texto);
    std::string linea;
    while (std::getline(entrada, linea)) {
        if (!linea.empty() && linea.back() == '\r')
            linea.pop_back();
        if (linea.empty() || linea[0] == '#')
            continue;
        const size_t sep = linea.find(';');
        if (sep == std::string::npos)
            continue;
        animales.push_back({linea.substr(0, sep), linea.substr(sep + 1)});
    }
    return animales;
}

bool crearDemo(Oficina &oficina, const Momento &ahora, const OpcionesDemo &op)
{
    if (!oficina.vacia())
        return false;
    oficina.crearUsuario("admin", "tornavo1", "Administrador General", true, "root", "root",
                         "01,02,03,04,05,06", "SB01", "1,2,3,4");
    oficina.crearUsuario("operador", "operador1", "Operador de Turno", true, "21,22,31", "1,4",
                         "01,02", "SB01", "1,4");

    const std::vector<AnimalDemo> animales = animalesDemo();
    const std::vector<JuegoDemo> juegos = juegosDemo();
    std::mt19937 azar(op.semilla);
    auto entre = [&azar](int a, int b) {
        return std::uniform_int_distribution<int>(a, b)(azar);
    };

    oficina.conConexion([&](sqlite3 *db) {
        Transaccion t(db);
        // Network: two super-bancas, six bancas, their group chiefs, agencies and offices.
        Sentencia sb(db, "INSERT INTO superbancas(codigo, nombre) VALUES(?1, ?2)");
        sb.bind(1, std::string("SB01")).bind(2, std::string("Super Banca Tornavo"));
        const long long sb1 = insertar(db, sb);
        sb.bind(1, std::string("SB02")).bind(2, std::string("Super Banca Aliada"));
        const long long sb2 = insertar(db, sb);

        Sentencia banca(db, "INSERT INTO bancas(codigo, nombre, superbanca_id) VALUES(?1, ?2, ?3)");
        Sentencia jefe(db, "INSERT INTO jefes(banca_id, codigo, nombre) VALUES(?1, ?2, ?3)");
        std::vector<long long> bancas, jefes;
        size_t siguienteJefe = 0;
        for (int b = 0; b < 6; ++b) {
            banca.bind(1, dosDigitos(b + 1)).bind(2, std::string(nombresBanca[b]));
            banca.bind(3, b < 5 ? sb1 : sb2);
            bancas.push_back(insertar(db, banca));
            const int cuantos = 2 + (b % 2);
            for (int j = 0; j < cuantos; ++j) {
                jefe.bind(1, bancas.back()).bind(2, dosDigitos(j + 1));
                jefe.bind(3, std::string(nombresJefe[siguienteJefe++ % 16]));
                jefes.push_back(insertar(db, jefe));
            }
        }

        // Games, animals and draws.
        Sentencia juego(db, "INSERT INTO juegos(clave, nombre, tipo, sin_nombres, automatico, "
                            "script) VALUES(?1, ?2, ?3, ?4, ?5, ?6)");
        Sentencia animal(db, "INSERT INTO animales(juego_id, orden, numero, nombre) "
                             "VALUES(?1, ?2, ?3, ?4)");
        Sentencia sorteo(db, "INSERT INTO sorteos(juego_id, clave, etiqueta, hora, divisor, "
                             "dividendo) VALUES(?1, ?2, ?3, ?4, ?5, ?6)");
        std::vector<long long> juegoIds;
        std::vector<SorteoDemo> sorteos;
        int claveSorteo = 1;
        for (size_t g = 0; g < juegos.size(); ++g) {
            const JuegoDemo &jd = juegos[g];
            juego.bind(1, std::string(jd.clave)).bind(2, std::string(jd.nombre));
            juego.bind(3, std::string(jd.tipo)).bind(4, std::string(jd.sinNombres));
            juego.bind(5, std::string(jd.automatico)).bind(6, std::string(jd.script));
            juegoIds.push_back(insertar(db, juego));
            if (std::string(jd.tipo) == "A") {
                for (size_t a = 0; a < animales.size(); ++a) {
                    animal.bind(1, juegoIds.back()).bind(2, static_cast<long long>(a));
                    animal.bind(3, animales[a].numero).bind(4, animales[a].nombre);
                    insertar(db, animal);
                }
            }
            for (const int minutos : jd.horas) {
                sorteo.bind(1, juegoIds.back()).bind(2, std::to_string(claveSorteo++));
                sorteo.bind(3, etiqueta(minutos)).bind(4, horaDeSegundos(minutos * 60));
                sorteo.bind(5, jd.divisor).bind(6, jd.dividendo);
                sorteos.push_back({insertar(db, sorteo), g, minutos});
            }
        }

        // Agencies spread over the group chiefs; most have one office, every fourth two.
        Sentencia agencia(db, "INSERT INTO agencias(jefe_id, codigo, nombre) VALUES(?1, ?2, ?3)");
        Sentencia taquilla(db, "INSERT INTO taquillas(agencia_id, codigo, nombre) "
                               "VALUES(?1, ?2, ?3)");
        Sentencia comision(db, "INSERT INTO comisiones_agencia(agencia_id, juego_id, porcentaje) "
                               "VALUES(?1, ?2, ?3)");
        std::vector<long long> taquillas;
        std::map<long long, int> porJefe;
        for (int i = 0; i < op.agencias; ++i) {
            const long long jefeId = jefes[static_cast<size_t>(i) % jefes.size()];
            const int n = ++porJefe[jefeId];
            agencia.bind(1, jefeId).bind(2, tresDigitos(n));
            agencia.bind(3, std::string(lugares[i % 20]) + " " + tresDigitos(i + 1));
            const long long agenciaId = insertar(db, agencia);
            for (int k = 1; k <= (i % 4 == 3 ? 2 : 1); ++k) {
                taquilla.bind(1, agenciaId).bind(2, dosDigitos(k));
                taquilla.bind(3, "Taquilla " + std::to_string(k));
                taquillas.push_back(insertar(db, taquilla));
            }
            for (size_t g = 0; g < juegos.size(); ++g) {
                const double pct =
                    std::string(juegos[g].tipo) == "N" ? 8.0 + (i % 3) : 10.0 + 0.5 * (i % 5);
                comision.bind(1, agenciaId).bind(2, juegoIds[g]).bind(3, pct);
                insertar(db, comision);
            }
        }
        Sentencia comisionBanca(db, "INSERT INTO comisiones_banca(banca_id, juego_id, comision, "
                                    "participacion) VALUES(?1, ?2, ?3, ?4)");
        for (size_t b = 0; b < bancas.size(); ++b) {
            for (size_t g = 0; g < juegos.size(); ++g) {
                // Banca 05 does not sell the number game under the super-banca report.
                if (b == 4 && std::string(juegos[g].tipo) == "N")
                    continue;
                comisionBanca.bind(1, bancas[b]).bind(2, juegoIds[g]);
                comisionBanca.bind(3, 12.0 + static_cast<double>(b));
                comisionBanca.bind(4, 40.0 + 5.0 * static_cast<double>(b));
                insertar(db, comisionBanca);
            }
        }

        // Sales: today's and the previous days', sold before each draw (and before now).
        Sentencia ticket(db, "INSERT INTO tickets(taquilla_id, fecha, hora, numero, serial) "
                             "VALUES(?1, ?2, ?3, ?4, ?5)");
        Sentencia jugada(db, "INSERT INTO jugadas(ticket_id, sorteo_id, fecha, hora, numero, "
                             "monto, eliminada) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
        int pesoTotal = 0;
        for (const JuegoDemo &jd : juegos)
            pesoTotal += jd.peso;
        const int ahoraSeg = segundosDeHora(ahora.hora);
        const int montosAnimal[] = {5, 10, 10, 20, 20, 25, 50, 100, 200};
        const int montosNumero[] = {1, 2, 5, 10, 20};
        for (int d = op.diasPrevios; d >= 0; --d) {
            const std::string fecha = d == 0 ? ahora.fecha : fechaMenosDias(ahora.fecha, d);
            const int limite = d == 0 ? op.jugadasHoy : op.jugadasDiaPrevio;
            std::map<long long, long long> numeroTicket;
            int hechas = 0;
            while (hechas < limite) {
                int r = entre(0, pesoTotal - 1);
                size_t g = 0;
                while (r >= juegos[g].peso)
                    r -= juegos[g++].peso;
                std::vector<const SorteoDemo *> delJuego;
                for (const SorteoDemo &s : sorteos) {
                    if (s.juego == g)
                        delJuego.push_back(&s);
                }
                const SorteoDemo &s = *delJuego[entre(0, static_cast<int>(delJuego.size()) - 1)];
                int ultimo = s.minutos * 60 - 60;
                if (d == 0 && ahoraSeg < ultimo)
                    ultimo = ahoraSeg;
                int primero = 7 * 3600;
                if (ultimo < primero)
                    primero = ultimo > 3600 ? ultimo - 3600 : 0;
                const long long taq = taquillas[entre(0, static_cast<int>(taquillas.size()) - 1)];
                const std::string hora = horaDeSegundos(entre(primero, ultimo));
                char serial[16];
                std::snprintf(serial, sizeof serial, "%08X", static_cast<unsigned>(azar()));
                ticket.bind(1, taq).bind(2, fecha).bind(3, hora).bind(4, ++numeroTicket[taq]);
                ticket.bind(5, std::string(serial));
                const long long ticketId = insertar(db, ticket);
                const int cuantas = entre(1, 4);
                const bool esNumero = std::string(juegos[g].tipo) == "N";
                for (int k = 0; k < cuantas && hechas < limite; ++k, ++hechas) {
                    const std::string numero =
                        esNumero ? tresDigitos(entre(0, 999))
                                 : animales[static_cast<size_t>(
                                                entre(0, static_cast<int>(animales.size()) - 1))]
                                       .numero;
                    const int monto =
                        esNumero ? montosNumero[entre(0, 4)] : montosAnimal[entre(0, 8)];
                    jugada.bind(1, ticketId).bind(2, s.id).bind(3, fecha).bind(4, hora);
                    jugada.bind(5, numero).bind(6, static_cast<long long>(monto) * 100);
                    jugada.bind(7, entre(0, 249) == 0 ? 1 : 0);
                    insertar(db, jugada);
                }
            }
        }

        // Results and prizes of the draws whose time has passed. Today's last past draw of the
        // automatic game stays open for the result script.
        const SorteoDemo *pendiente = nullptr;
        for (const SorteoDemo &s : sorteos) {
            if (std::string(juegos[s.juego].automatico) == "X" && s.minutos * 60 <= ahoraSeg)
                pendiente = &s;
        }
        Sentencia resultado(db, "INSERT INTO resultados(sorteo_id, fecha, resultado, hora, "
                                "usuario) VALUES(?1, ?2, ?3, ?4, 'admin')");
        Sentencia premios(db, "INSERT INTO premios(resultado_id, jugada_id, monto) "
                              "SELECT ?1, jg.id, (jg.monto * so.dividendo * 2 + so.divisor) / "
                              "(2 * so.divisor) FROM jugadas jg "
                              "JOIN sorteos so ON so.id = jg.sorteo_id "
                              "WHERE jg.sorteo_id = ?2 AND jg.fecha = ?3 AND jg.numero = ?4 "
                              "AND jg.eliminada = 0");
        for (int d = op.diasPrevios; d >= 0; --d) {
            const std::string fecha = d == 0 ? ahora.fecha : fechaMenosDias(ahora.fecha, d);
            for (const SorteoDemo &s : sorteos) {
                if (d == 0 && (s.minutos * 60 > ahoraSeg || &s == pendiente))
                    continue;
                const std::string numero =
                    std::string(juegos[s.juego].tipo) == "N"
                        ? tresDigitos(entre(0, 999))
                        : animales[static_cast<size_t>(
                                       entre(0, static_cast<int>(animales.size()) - 1))]
                              .numero;
                resultado.bind(1, s.id).bind(2, fecha).bind(3, numero);
                resultado.bind(4, horaDeSegundos(s.minutos * 60 + 120));
                const long long resultadoId = insertar(db, resultado);
                premios.bind(1, resultadoId).bind(2, s.id).bind(3, fecha).bind(4, numero);
                insertar(db, premios);
            }
        }
        // Most prizes of the earlier draws are already paid.
        ejecutarSql(db, "UPDATE jugadas SET pagada = 1 WHERE id % 10 < 6 AND id IN "
                        "(SELECT jugada_id FROM premios)");
        Sentencia auditoria(db, "INSERT INTO auditoria(momento, direccion, usuario, accion, "
                                "detalle) VALUES(?1, 'local', 'demo', 'demo', ?2)");
        auditoria.bind(1, ahora.fecha + " " + ahora.hora);
        auditoria.bind(2, "red de demostracion creada");
        auditoria.ejecutar();
        t.confirmar();
    });
    return true;
}

int simularVentas(Oficina &oficina, std::mt19937 &azar, int tickets)
{
    const Momento ahora = oficina.ahora();
    struct Abierto {
        std::string juego, sorteo, tipo;
    };
    std::vector<Abierto> abiertos;
    std::vector<long long> taquillas;
    std::vector<std::string> numeros;
    oficina.conConexion([&](sqlite3 *db) {
        Sentencia st(db, "SELECT j.clave, s.clave, j.tipo FROM sorteos s "
                         "JOIN juegos j ON j.id = s.juego_id "
                         "WHERE j.activo = 1 AND s.activo = 1 AND s.hora > ?1 AND NOT EXISTS "
                         "(SELECT 1 FROM resultados r WHERE r.sorteo_id = s.id AND r.fecha = ?2)");
        st.bind(1, ahora.hora).bind(2, ahora.fecha);
        while (st.paso())
            abiertos.push_back({st.texto(0), st.texto(1), st.texto(2)});
        Sentencia tq(db, "SELECT id FROM taquillas");
        while (tq.paso())
            taquillas.push_back(tq.entero(0));
        Sentencia an(db, "SELECT DISTINCT numero FROM animales");
        while (an.paso())
            numeros.push_back(an.texto(0));
    });
    if (abiertos.empty() || taquillas.empty())
        return 0;
    auto entre = [&azar](int a, int b) {
        return std::uniform_int_distribution<int>(a, b)(azar);
    };
    int vendidos = 0;
    for (int i = 0; i < tickets; ++i) {
        const Abierto &a =
            abiertos[static_cast<size_t>(entre(0, static_cast<int>(abiertos.size()) - 1))];
        std::vector<JugadaVenta> jugadas;
        const int cuantas = entre(1, 3);
        for (int k = 0; k < cuantas; ++k) {
            if (a.tipo == "A" && !numeros.empty())
                jugadas.push_back(
                    {numeros[static_cast<size_t>(entre(0, static_cast<int>(numeros.size()) - 1))],
                     entre(1, 10) * 500LL});
            else
                jugadas.push_back({tresDigitos(entre(0, 999)), entre(1, 10) * 100LL});
        }
        const long long taq =
            taquillas[static_cast<size_t>(entre(0, static_cast<int>(taquillas.size()) - 1))];
        if (oficina.vender(taq, a.juego, a.sorteo, ahora.fecha, ahora.hora, jugadas))
            ++vendidos;
    }
    return vendidos;
}

} // namespace servidor
