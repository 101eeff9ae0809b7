#pragma once

#include <sys/types.h>

// Ends the process at once with exit code 1, the code of every deliberate end of the console
// ("&Salir", the login's "Salir", a login that opened no session). Nothing is saved at exit,
// so no destructor needs to run; skipping them also avoids tearing down Qt's network and
// host-lookup threads while they still run, which could crash the process on its way out.
// Result scripts still running are killed with everything they started before the end.
[[noreturn]] void terminarPrograma();

// Process groups of the outside programs (result scripts) the console has running. Every way
// out of the process kills them first, so no script, child or grandchild of one outlives the
// console. Safe to call from any thread; the kill itself is safe inside a signal handler.
void registrarGrupoHijo(pid_t grupo);
void olvidarGrupoHijo(pid_t grupo);
void matarGruposHijos();

// SIGTERM, SIGINT and SIGHUP kill the registered groups, then end the process with the
// signal's own default action (so the exit status still tells which signal it was).
void instalarSenalesSalida();
