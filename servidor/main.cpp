// tornavo-servidor: the reference back office over HTTP. The request handling lives in
// Oficina; this file only reads the options, serves the endpoints and stops on a signal.
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

} // namespace

int main(int argc, char **argv)
{
    std::string rutaDb = "tornavo.db";
    std::string direccion = "127.0.0.1";
    int puerto = 8080;
    bool demo = false;
    bool simular = false;
    bool conReloj = false;
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

    std::unique_ptr<servidor::Oficina> oficina;
    try {
        oficina = std::make_unique<servidor::Oficina>(rutaDb);
        if (conReloj)
            oficina->fijarReloj(momentoServidor);
        if (demo && servidor::crearDemo(*oficina, oficina->ahora()))
            std::cerr << "Red de demostracion creada en " << rutaDb << "\n";
    } catch (const std::exception &e) {
        std::cerr << "No se pudo abrir la base de datos: " << e.what() << "\n";
        return 1;
    }

    httplib::Server http;
    http.set_keep_alive_timeout(1);
    http.Get(R"(/Tornavo/TornavoSU/([^/]+))",
             [&](const httplib::Request &req, httplib::Response &res) {
                 const std::string endpoint = req.matches[1];
                 if (!servidor::Oficina::existeEndpoint(endpoint)) {
                     res.status = 404;
                     return;
                 }
                 const size_t q = req.target.find('?');
                 const std::string consulta =
                     q == std::string::npos ? std::string() : req.target.substr(q + 1);
                 res.set_content(oficina->atenderConsulta(endpoint, consulta, req.remote_addr),
                                 "text/plain; charset=ISO-8859-1");
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
    std::cout << "http://" << anfitrion << ":" << elegido << "/Tornavo/TornavoSU/" << std::endl;

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
