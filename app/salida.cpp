#include "app/salida.h"

#include <cstdio>
#include <cstdlib>

void terminarPrograma()
{
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(1);
}
