#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

// Room for the large tables of a sales reply. Blocks of a megabyte or more are pages of their
// own: growing one remaps its pages instead of copying them into a second block, and freeing
// it gives the pages back to the system at once, so a table of millions of plays never needs
// room for two copies of itself and leaves no holes behind in the heap. Smaller blocks come
// from the heap. Every function throws std::bad_alloc when no room is left.
namespace memoria_plana {
void *crecer(void *bloque, std::size_t bytesViejos, std::size_t bytesNuevos);
void liberar(void *bloque, std::size_t bytes);
} // namespace memoria_plana

// A vector of plain values kept in such room. Values are moved as bytes.
template <class T> class TablaPlana {
    static_assert(std::is_trivially_copyable<T>::value, "values are moved as bytes");

public:
    TablaPlana() = default;
    TablaPlana(const TablaPlana &otra) { *this = otra; }
    TablaPlana(TablaPlana &&otra) noexcept { intercambiar(otra); }
    TablaPlana &operator=(const TablaPlana &otra)
    {
        if (this != &otra) {
            m_cantidad = 0;
            reserve(otra.m_cantidad);
            if (otra.m_cantidad > 0)
                std::memcpy(static_cast<void *>(m_datos), otra.m_datos,
                            otra.m_cantidad * sizeof(T));
            m_cantidad = otra.m_cantidad;
        }
        return *this;
    }
    TablaPlana &operator=(TablaPlana &&otra) noexcept
    {
        TablaPlana vacia;
        vacia.intercambiar(otra);
        intercambiar(vacia);
        return *this;
    }
    ~TablaPlana() { memoria_plana::liberar(m_datos, m_capacidad * sizeof(T)); }

    std::size_t size() const { return m_cantidad; }
    std::size_t capacidad() const { return m_capacidad; }
    bool empty() const { return m_cantidad == 0; }
    T *data() { return m_datos; }
    const T *data() const { return m_datos; }
    T &operator[](std::size_t i) { return m_datos[i]; }
    const T &operator[](std::size_t i) const { return m_datos[i]; }
    T *begin() { return m_datos; }
    T *end() { return m_datos + m_cantidad; }
    const T *begin() const { return m_datos; }
    const T *end() const { return m_datos + m_cantidad; }

    void reserve(std::size_t capacidad)
    {
        if (capacidad > m_capacidad)
            cambiarCapacidad(capacidad);
    }
    // New values past the old size are left as they are in memory (unset).
    void resize(std::size_t cantidad)
    {
        reserve(cantidad);
        m_cantidad = cantidad;
    }
    void push_back(const T &valor)
    {
        if (m_cantidad == m_capacidad)
            cambiarCapacidad(m_capacidad < 64 ? 64 : m_capacidad + m_capacidad / 2);
        m_datos[m_cantidad++] = valor;
    }
    // Gives back the room reserved beyond the values.
    void ajustar()
    {
        if (m_cantidad < m_capacidad)
            cambiarCapacidad(m_cantidad);
    }

private:
    void cambiarCapacidad(std::size_t capacidad)
    {
        if (capacidad > std::size_t(-1) / sizeof(T))
            throw std::bad_alloc();
        m_datos = static_cast<T *>(
            memoria_plana::crecer(m_datos, m_capacidad * sizeof(T), capacidad * sizeof(T)));
        m_capacidad = capacidad;
        if (m_cantidad > capacidad)
            m_cantidad = capacidad;
    }
    void intercambiar(TablaPlana &otra) noexcept
    {
        std::swap(m_datos, otra.m_datos);
        std::swap(m_cantidad, otra.m_cantidad);
        std::swap(m_capacidad, otra.m_capacidad);
    }

    T *m_datos = nullptr;
    std::size_t m_cantidad = 0;
    std::size_t m_capacidad = 0;
};
