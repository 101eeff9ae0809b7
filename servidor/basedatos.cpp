#include "servidor/basedatos.h"

namespace servidor {

namespace {

[[noreturn]] void fallar(sqlite3 *db, int codigo, const char *donde)
{
    throw ErrorBaseDatos(std::string(donde) + ": " + sqlite3_errmsg(db), codigo & 0xFF);
}

} // namespace

Sentencia::Sentencia(sqlite3 *db, const char *sql) : m_db(db)
{
    const int rc = sqlite3_prepare_v2(db, sql, -1, &m_st, nullptr);
    if (rc != SQLITE_OK)
        fallar(db, rc, "prepare");
}

Sentencia::~Sentencia()
{
    sqlite3_finalize(m_st);
}

Sentencia &Sentencia::bind(int indice, const std::string &valor)
{
    const int rc = sqlite3_bind_text64(m_st, indice, valor.data(), valor.size(), SQLITE_TRANSIENT,
                                       SQLITE_UTF8);
    if (rc != SQLITE_OK)
        fallar(m_db, rc, "bind");
    return *this;
}

Sentencia &Sentencia::bind(int indice, long long valor)
{
    const int rc = sqlite3_bind_int64(m_st, indice, valor);
    if (rc != SQLITE_OK)
        fallar(m_db, rc, "bind");
    return *this;
}

Sentencia &Sentencia::bind(int indice, double valor)
{
    const int rc = sqlite3_bind_double(m_st, indice, valor);
    if (rc != SQLITE_OK)
        fallar(m_db, rc, "bind");
    return *this;
}

bool Sentencia::paso()
{
    const int rc = sqlite3_step(m_st);
    if (rc == SQLITE_ROW)
        return true;
    if (rc == SQLITE_DONE)
        return false;
    fallar(m_db, rc, "step");
}

void Sentencia::ejecutar()
{
    while (paso()) {
    }
}

void Sentencia::reiniciar()
{
    sqlite3_reset(m_st);
    sqlite3_clear_bindings(m_st);
}

std::string Sentencia::texto(int columna) const
{
    const unsigned char *t = sqlite3_column_text(m_st, columna);
    if (!t)
        return std::string();
    return std::string(reinterpret_cast<const char *>(t),
                       static_cast<size_t>(sqlite3_column_bytes(m_st, columna)));
}

std::string_view Sentencia::vista(int columna) const
{
    const unsigned char *t = sqlite3_column_text(m_st, columna);
    if (!t)
        return std::string_view();
    return std::string_view(reinterpret_cast<const char *>(t),
                            static_cast<size_t>(sqlite3_column_bytes(m_st, columna)));
}

long long Sentencia::entero(int columna) const
{
    return sqlite3_column_int64(m_st, columna);
}

double Sentencia::real(int columna) const
{
    return sqlite3_column_double(m_st, columna);
}

bool Sentencia::esNulo(int columna) const
{
    return sqlite3_column_type(m_st, columna) == SQLITE_NULL;
}

Transaccion::Transaccion(sqlite3 *db) : m_db(db)
{
    ejecutarSql(db, "BEGIN IMMEDIATE");
}

Transaccion::~Transaccion()
{
    if (!m_hecha)
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaccion::confirmar()
{
    ejecutarSql(m_db, "COMMIT");
    m_hecha = true;
}

void ejecutarSql(sqlite3 *db, const char *sql)
{
    char *error = nullptr;
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        const std::string mensaje = error ? error : "sqlite";
        sqlite3_free(error);
        throw ErrorBaseDatos(mensaje, rc & 0xFF);
    }
}

} // namespace servidor
