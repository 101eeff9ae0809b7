#include "monitor/tablaplana.h"

#include <algorithm>
#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace memoria_plana {
namespace {

constexpr std::size_t kUmbral = std::size_t(1) << 20;

bool enPaginas(std::size_t bytes)
{
#if defined(__linux__)
    return bytes >= kUmbral;
#else
    (void)bytes;
    return false;
#endif
}

} // namespace

void *crecer(void *bloque, std::size_t bytesViejos, std::size_t bytesNuevos)
{
    if (bytesNuevos == 0) {
        liberar(bloque, bytesViejos);
        return nullptr;
    }
    if (!bloque)
        bytesViejos = 0;
#if defined(__linux__)
    const bool antes = bloque && enPaginas(bytesViejos);
    const bool despues = enPaginas(bytesNuevos);
    if (antes && despues) {
        void *p = mremap(bloque, bytesViejos, bytesNuevos, MREMAP_MAYMOVE);
        if (p == MAP_FAILED)
            throw std::bad_alloc();
        return p;
    }
    if (antes || despues) {
        // From the heap to pages of its own or back: one copy of what is kept.
        void *p = nullptr;
        if (despues) {
            p = mmap(nullptr, bytesNuevos, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                     0);
            if (p == MAP_FAILED)
                throw std::bad_alloc();
        } else {
            p = std::malloc(bytesNuevos);
            if (!p)
                throw std::bad_alloc();
        }
        if (bloque)
            std::memcpy(p, bloque, std::min(bytesViejos, bytesNuevos));
        liberar(bloque, bytesViejos);
        return p;
    }
#endif
    void *p = std::realloc(bloque, bytesNuevos);
    if (!p)
        throw std::bad_alloc();
    return p;
}

void liberar(void *bloque, std::size_t bytes)
{
    if (!bloque)
        return;
#if defined(__linux__)
    if (enPaginas(bytes)) {
        munmap(bloque, bytes);
        return;
    }
#endif
    std::free(bloque);
}

} // namespace memoria_plana
