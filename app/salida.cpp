#include "app/salida.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <signal.h>

namespace {

// A fixed table of lock-free slots, so that a signal handler can read it without locks or
// allocation. The console runs one script at a time; the room is only a margin.
constexpr int maximoGrupos = 64;
std::atomic<pid_t> grupos[maximoGrupos];

void alRecibirSenal(int senal)
{
    matarGruposHijos();
    std::signal(senal, SIG_DFL);
    std::raise(senal);
}

} // namespace

void registrarGrupoHijo(pid_t grupo)
{
    if (grupo <= 0)
        return;
    for (auto &g : grupos) {
        pid_t libre = 0;
        if (g.compare_exchange_strong(libre, grupo))
            return;
    }
}

void olvidarGrupoHijo(pid_t grupo)
{
    if (grupo <= 0)
        return;
    for (auto &g : grupos) {
        pid_t esperado = grupo;
        g.compare_exchange_strong(esperado, 0);
    }
}

void matarGruposHijos()
{
    for (auto &g : grupos) {
        const pid_t grupo = g.exchange(0);
        if (grupo > 0)
            ::kill(-grupo, SIGKILL);
    }
}

void instalarSenalesSalida()
{
    struct sigaction accion {};
    accion.sa_handler = alRecibirSenal;
    sigemptyset(&accion.sa_mask);
    for (int senal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(senal, &accion, nullptr);
}

void terminarPrograma()
{
    matarGruposHijos();
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(1);
}
