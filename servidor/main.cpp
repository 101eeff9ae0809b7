// tornavo-servidor: the reference back office over HTTP. The request handling lives in
// Oficina; this file only reads the options, serves the endpoints and stops on a signal.
#include "servidor/compresion.h"
#include "servidor/demo.h"
#include "servidor/oficina.h"

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

const char *const ayuda =
    "Uso: tornavo-servidor [opciones]\n"
    "\n"
    "Servidor de referencia del back office de Tornavo Super Usuario.\n"
    "La primera linea que escribe es la URL base que sirve.\n"
    "\n"
    "  --db ARCHIVO    base de datos SQLite (se crea si no existe; por omision tornavo.db)\n"
    "  --bind DIR      direccion donde escuchar (por omision 127.0.0.1)\n"
    "  --port N        puerto (0 = uno libre; por omision 8080)\n"
    "  --demo          crea la red de demostracion si la base esta vacia\n"
    "  --simular       agrega ventas a los sorteos abiertos de hoy mientras corre\n"
    "  --inactividad MIN\n"
    "                  minutos sin actividad que cierran una sesion (por omision 720)\n"
    "  --tls-cert ARCHIVO, --tls-key ARCHIVO\n"
    "                  certificado y clave privada (PEM): sirve HTTPS en lugar de HTTP\n"
    "  --proxy DIR     direccion de un proxy inverso de confianza: de sus pedidos se toma\n"
    "                  la direccion del cliente de X-Forwarded-For\n"
    "  --ahora \"yyyy-MM-dd hh:mm:ss\"\n"
    "                  hace correr el reloj del servidor desde ese momento (pruebas)\n"
    "  --help          muestra esta ayuda\n";

// Offset between the real clock and the one given with --ahora.
std::time_t desfase = 0;

servidor::Momento momentoServidor()
{
    const std::time_t t = std::time(nullptr) + desfase;
    std::tm local{};
    localtime_r(&t, &local);
    char fecha[16];
    char hora[16];
    std::strftime(fecha, sizeof fecha, "%Y-%m-%d", &local);
    std::strftime(hora, sizeof hora, "%H:%M:%S", &local);
    return {fecha, hora};
}

bool leerAhora(const std::string &texto)
{
    if (texto.size() != 19 || !servidor::fechaValida(texto.substr(0, 10)) ||
        !servidor::horaValida(texto.substr(11)))
        return false;
    std::tm t{};
    t.tm_year = std::stoi(texto.substr(0, 4)) - 1900;
    t.tm_mon = std::stoi(texto.substr(5, 2)) - 1;
    t.tm_mday = std::stoi(texto.substr(8, 2));
    t.tm_hour = std::stoi(texto.substr(11, 2));
    t.tm_min = std::stoi(texto.substr(14, 2));
    t.tm_sec = std::stoi(texto.substr(17, 2));
    t.tm_isdst = -1;
    desfase = std::mktime(&t) - std::time(nullptr);
    return true;
}

// The server compresses its replies itself (gzip at a fast level, never Brotli, whose level 11
// in the HTTP library costs far more CPU than the transfer it saves: 12.8 s for a 5.6 MB
// reply). The library must not compress again: the request's Accept-Encoding is taken away
// once read. The request object is the server's own, not a constant, so this is sound.
bool tomarCompresion(const httplib::Request &req)
{
    auto &cabeceras = const_cast<httplib::Headers &>(req.headers);
    bool gzip = false;
    for (auto it = cabeceras.find("Accept-Encoding");
         it != cabeceras.end() && it->first == "Accept-Encoding"; ++it)
        gzip = gzip || servidor::ofreceGzip(it->second);
    cabeceras.erase("Accept-Encoding");
    return gzip;
}

// The address a session belongs to: the peer's, or behind the trusted reverse proxy the
// client address that proxy appended last to X-Forwarded-For (earlier entries come from the
// client itself and prove nothing).
std::string direccionCliente(const httplib::Request &req, const std::string &proxy)
{
    if (proxy.empty() || req.remote_addr != proxy || !req.has_header("X-Forwarded-For"))
        return req.remote_addr;
    std::string cadena = req.get_header_value("X-Forwarded-For");
    const size_t coma = cadena.rfind(',');
    if (coma != std::string::npos)
        cadena = cadena.substr(coma + 1);
    const size_t inicio = cadena.find_first_not_of(" \t");
    const size_t fin = cadena.find_last_not_of(" \t");
    if (inicio == std::string::npos)
        return req.remote_addr;
    return cadena.substr(inicio, fin - inicio + 1);
}

} // namespace

int main(int argc, char **argv)
{
    std::string rutaDb = "tornavo.db";
    std::string direccion = "127.0.0.1";
    int puerto = 8080;
    bool demo = false;
    bool simular = false;
    bool conReloj = false;
    long long inactividad = 720;
    std::string certificado, clavePrivada, proxy;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto siguiente = [&](std::string &destino) {
            if (i + 1 >= argc) {
                std::cerr << "Falta el valor de " << a << "\n";
                std::exit(2);
            }
            destino = argv[++i];
        };
        std::string v;
        if (a == "--help" || a == "-h") {
            std::cout << ayuda;
            return 0;
        } else if (a == "--db") {
            siguiente(rutaDb);
        } else if (a == "--bind") {
            siguiente(direccion);
        } else if (a == "--port") {
            siguiente(v);
            char *fin = nullptr;
            const long p = std::strtol(v.c_str(), &fin, 10);
            if (v.empty() || *fin != '\0' || p < 0 || p > 65535) {
                std::cerr << "Puerto no valido: " << v << "\n";
                return 2;
            }
            puerto = static_cast<int>(p);
        } else if (a == "--inactividad") {
            siguiente(v);
            char *fin = nullptr;
            const long long m = std::strtoll(v.c_str(), &fin, 10);
            if (v.empty() || *fin != '\0' || m <= 0 || m > 525600) {
                std::cerr << "Minutos de inactividad no validos: " << v << "\n";
                return 2;
            }
            inactividad = m;
        } else if (a == "--proxy") {
            siguiente(proxy);
        } else if (a == "--tls-cert") {
            siguiente(certificado);
        } else if (a == "--tls-key") {
            siguiente(clavePrivada);
        } else if (a == "--demo") {
            demo = true;
        } else if (a == "--simular") {
            simular = true;
        } else if (a == "--ahora") {
            siguiente(v);
            if (!leerAhora(v)) {
                std::cerr << "Momento no valido (yyyy-MM-dd hh:mm:ss): " << v << "\n";
                return 2;
            }
            conReloj = true;
        } else {
            std::cerr << "Opcion desconocida: " << a << "\n\n" << ayuda;
            return 2;
        }
    }

    // SIGINT and SIGTERM are taken by one waiting thread (below), never by whichever thread
    // the kernel picks; block them before any thread starts.
    sigset_t senales;
    sigemptyset(&senales);
    sigaddset(&senales, SIGINT);
    sigaddset(&senales, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &senales, nullptr);

    if (certificado.empty() != clavePrivada.empty()) {
        std::cerr << "--tls-cert y --tls-key van juntas\n";
        return 2;
    }

    std::unique_ptr<servidor::Oficina> oficina;
    bool demoCreada = false;
    try {
        oficina = std::make_unique<servidor::Oficina>(rutaDb);
        if (conReloj)
            oficina->fijarReloj(momentoServidor);
        oficina->fijarInactividad(inactividad * 60);
        if (demo)
            demoCreada = servidor::crearDemo(*oficina, oficina->ahora());
    } catch (const std::exception &e) {
        std::cerr << "No se pudo abrir la base de datos: " << e.what() << "\n";
        return 1;
    }

    std::unique_ptr<httplib::Server> servidorHttp;
    if (!certificado.empty()) {
        auto seguro =
            std::make_unique<httplib::SSLServer>(certificado.c_str(), clavePrivada.c_str());
        if (!seguro->is_valid()) {
            std::cerr << "No se pudo usar el certificado " << certificado << " con la clave "
                      << clavePrivada << "\n";
            return 1;
        }
        servidorHttp = std::move(seguro);
    } else {
        servidorHttp = std::make_unique<httplib::Server>();
    }
    httplib::Server &http = *servidorHttp;
    http.set_keep_alive_timeout(1);
    // A reply goes out at once, not after the client's delayed acknowledgement.
    http.set_tcp_nodelay(true);
    // Every console keeps a connection open for its clock: enough workers that slow reports
    // and password checks never leave a clock request waiting for one.
    http.new_task_queue = [] {
        return new httplib::ThreadPool(64);
    };
    http.Get(R"(/Tornavo/TornavoSU/([^/]+))",
             [&](const httplib::Request &req, httplib::Response &res) {
                 const std::string endpoint = req.matches[1];
                 if (!servidor::Oficina::existeEndpoint(endpoint)) {
                     res.status = 404;
                     return;
                 }
                 const bool gzip = tomarCompresion(req);
                 const size_t q = req.target.find('?');
                 const std::string consulta =
                     q == std::string::npos ? std::string() : req.target.substr(q + 1);
                 // The reply is moved into the response, never copied: a large sales list
                 // costs its size once.
                 servidor::Respuesta r =
                     oficina->responder(endpoint, consulta, direccionCliente(req, proxy), gzip);
                 res.body = std::move(r.cuerpo);
                 res.set_header("Content-Type", "text/plain; charset=ISO-8859-1");
                 if (r.gzip)
                     res.set_header("Content-Encoding", "gzip");
             });

    int elegido = puerto;
    if (puerto == 0) {
        elegido = http.bind_to_any_port(direccion);
        if (elegido < 0) {
            std::cerr << "No se pudo escuchar en " << direccion << "\n";
            return 1;
        }
    } else if (!http.bind_to_port(direccion, puerto)) {
        std::cerr << "No se pudo escuchar en " << direccion << ":" << puerto << "\n";
        return 1;
    }

    const std::string anfitrion = direccion == "0.0.0.0" ? "127.0.0.1" : direccion;
    std::cout << (certificado.empty() ? "http://" : "https://") << anfitrion << ":" << elegido
              << "/Tornavo/TornavoSU/" << std::endl;
    if (demoCreada)
        std::cerr << "Red de demostracion creada en " << rutaDb << "\n";

    std::mutex mutexFin;
    std::condition_variable fin;
    bool terminar = false;
    std::atomic<bool> escuchaTerminada{false};

    std::thread vigia([&] {
        int senal = 0;
        sigwait(&senales, &senal);
        {
            std::lock_guard<std::mutex> c(mutexFin);
            terminar = true;
        }
        fin.notify_all();
        // A signal that arrives between the first line and the start of listening must still
        // stop the server: wait until it listens (or gave up) before stopping it.
        while (!http.is_running() && !escuchaTerminada)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        http.stop();
    });

    std::thread simulador;
    if (simular) {
        simulador = std::thread([&] {
            std::mt19937 azar(static_cast<unsigned>(std::time(nullptr)));
            std::unique_lock<std::mutex> c(mutexFin);
            while (!fin.wait_for(c, std::chrono::milliseconds(1500), [&] { return terminar; })) {
                c.unlock();
                try {
                    servidor::simularVentas(*oficina, azar, 1 + static_cast<int>(azar() % 4));
                } catch (const std::exception &e) {
                    std::cerr << "Simulador: " << e.what() << "\n";
                }
                c.lock();
            }
        });
    }

    http.listen_after_bind();
    escuchaTerminada = true;

    // listen_after_bind() also returns when the socket fails: make the watcher end too.
    {
        std::lock_guard<std::mutex> c(mutexFin);
        if (!terminar)
            pthread_kill(vigia.native_handle(), SIGTERM);
    }
    vigia.join();
    if (simulador.joinable())
        simulador.join();
    std::cerr << "Servidor detenido\n";
    return 0;
}
