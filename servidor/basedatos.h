#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <string_view>

// A thin, exception-based layer over the SQLite C API: one prepared statement, one
// transaction, one connection. Every value of a request reaches SQL through bind(), never
// through the SQL text.
namespace servidor {

class ErrorBaseDatos : public std::runtime_error {
public:
    explicit ErrorBaseDatos(const std::string &mensaje, int codigo = SQLITE_ERROR)
        : std::runtime_error(mensaje), m_codigo(codigo)
    {
    }
    // The primary SQLite result code (SQLITE_CONSTRAINT, SQLITE_BUSY, ...).
    int codigo() const { return m_codigo; }

private:
    int m_codigo;
};

class Sentencia {
public:
    Sentencia(sqlite3 *db, const char *sql);
    ~Sentencia();
    Sentencia(const Sentencia &) = delete;
    Sentencia &operator=(const Sentencia &) = delete;

    // Parameters count from 1, as in SQLite.
    Sentencia &bind(int indice, const std::string &valor);
    Sentencia &bind(int indice, long long valor);
    Sentencia &bind(int indice, int valor) { return bind(indice, static_cast<long long>(valor)); }
    Sentencia &bind(int indice, double valor);

    // One step: true when a row is ready, false when the statement is done.
    bool paso();
    // Runs to the end, ignoring rows.
    void ejecutar();
    void reiniciar();

    std::string texto(int columna) const;
    // The column's text where SQLite keeps it, valid until the next step: no copy.
    std::string_view vista(int columna) const;
    long long entero(int columna) const;
    double real(int columna) const;
    bool esNulo(int columna) const;

private:
    sqlite3 *m_db;
    sqlite3_stmt *m_st = nullptr;
};

// BEGIN IMMEDIATE at construction (the write lock is taken at once, so two writers never both
// read "no result yet"); ROLLBACK at destruction unless confirmar() ran.
class Transaccion {
public:
    explicit Transaccion(sqlite3 *db);
    ~Transaccion();
    Transaccion(const Transaccion &) = delete;
    Transaccion &operator=(const Transaccion &) = delete;
    void confirmar();

private:
    sqlite3 *m_db;
    bool m_hecha = false;
};

// Runs SQL text that carries no values (schema, pragmas).
void ejecutarSql(sqlite3 *db, const char *sql);

} // namespace servidor
