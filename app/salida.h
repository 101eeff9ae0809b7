#pragma once

// Ends the process at once with exit code 1, the code of every deliberate end of the console
// ("&Salir", the login's "Salir", a login that opened no session). Nothing is saved at exit,
// so no destructor needs to run; skipping them also avoids tearing down Qt's network and
// host-lookup threads while they still run, which could crash the process on its way out.
[[noreturn]] void terminarPrograma();
