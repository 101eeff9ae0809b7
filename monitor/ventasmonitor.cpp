#include "monitor/ventasmonitor.h"

#include "app/formato.h"
#include "monitor/listasmonitor.h"

#include <QTime>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace {

// Distinct byte strings, numbered in the order they were first seen. Open addressing over a
// power-of-two table; keys live in one arena.
class Internador {
public:
    Internador() : m_tabla(64, -1) {}

    int cantidad() const { return int(m_pos.size()); }

    // Index of the key; `nuevo` tells whether it was added now.
    int buscar(const char *p, std::size_t n, bool &nuevo)
    {
        const std::uint64_t h = hash(p, n);
        std::size_t mascara = m_tabla.size() - 1;
        std::size_t i = std::size_t(h) & mascara;
        while (true) {
            const int e = m_tabla[i];
            if (e < 0)
                break;
            const Pos &pos = m_pos[std::size_t(e)];
            if (pos.hash == h && pos.largo == n &&
                (n == 0 || std::memcmp(m_claves.data() + pos.inicio, p, n) == 0)) {
                nuevo = false;
                return e;
            }
            i = (i + 1) & mascara;
        }
        nuevo = true;
        const int indice = int(m_pos.size());
        m_pos.push_back({h, m_claves.size(), n});
        m_claves.append(p, n);
        m_tabla[i] = indice;
        if (m_pos.size() * 2 > m_tabla.size())
            crecer();
        return indice;
    }

    QString texto(int i) const
    {
        const Pos &pos = m_pos[std::size_t(i)];
        return QString::fromLatin1(m_claves.data() + pos.inicio, int(pos.largo));
    }

private:
    struct Pos {
        std::uint64_t hash;
        std::size_t inicio;
        std::size_t largo;
    };

    // Keys are short (codes of a few bytes): eight bytes at a time, then a final mix so that
    // the low bits the table uses depend on every byte.
    static std::uint64_t hash(const char *p, std::size_t n)
    {
        std::uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
        while (n >= 8) {
            std::uint64_t w;
            std::memcpy(&w, p, 8);
            h = (h ^ w) * 0xBF58476D1CE4E5B9ull;
            h ^= h >> 31;
            p += 8;
            n -= 8;
        }
        if (n > 0) {
            std::uint64_t w = 0;
            std::memcpy(&w, p, n);
            h = (h ^ w) * 0x94D049BB133111EBull;
        }
        h ^= h >> 32;
        h *= 0xD6E8FEB86659FD93ull;
        return h ^ (h >> 32);
    }

    void crecer()
    {
        std::vector<int> nueva(m_tabla.size() * 2, -1);
        const std::size_t mascara = nueva.size() - 1;
        for (std::size_t e = 0; e < m_pos.size(); ++e) {
            std::size_t i = std::size_t(m_pos[e].hash) & mascara;
            while (nueva[i] >= 0)
                i = (i + 1) & mascara;
            nueva[i] = int(e);
        }
        m_tabla.swap(nueva);
    }

    std::vector<int> m_tabla;
    std::vector<Pos> m_pos;
    std::string m_claves;
};

constexpr double kPotencias[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::int64_t kLimiteCentavos = std::int64_t(1) << 40;

struct Campo {
    const char *p;
    int n;
    QString texto() const { return QString::fromLatin1(p, n); }
    bool es(char c) const { return n == 1 && *p == c; }
};

} // namespace

double leerMonto(const char *p, int n, bool *exacto, std::int64_t *centavos)
{
    int i = 0;
    bool negativo = false;
    if (n > 0 && p[0] == '-') {
        negativo = true;
        i = 1;
    }
    std::uint64_t mantisa = 0;
    int digitos = 0;
    int decimales = 0;
    bool punto = false;
    bool rapido = true;
    for (; i < n; ++i) {
        const char c = p[i];
        if (c >= '0' && c <= '9') {
            mantisa = mantisa * 10 + std::uint64_t(c - '0');
            ++digitos;
            if (punto)
                ++decimales;
        } else if (c == '.' && !punto && digitos > 0) {
            punto = true;
        } else {
            rapido = false;
            break;
        }
    }
    if (digitos == 0 || digitos > 15 || (punto && decimales == 0))
        rapido = false;
    if (!rapido) {
        if (exacto)
            *exacto = false;
        return QString::fromLatin1(p, n).toDouble();
    }
    // Both operands are exact doubles, so the quotient is the correctly rounded value.
    double valor = double(mantisa) / kPotencias[decimales];
    if (negativo)
        valor = -valor;
    if (exacto) {
        *exacto = decimales <= 2 && !(negativo && mantisa == 0);
        if (*exacto) {
            std::int64_t c = std::int64_t(mantisa);
            for (int d = decimales; d < 2; ++d)
                c *= 10;
            if (c >= kLimiteCentavos)
                *exacto = false;
            else if (centavos)
                *centavos = negativo ? -c : c;
        }
    }
    return valor;
}

int leerHora(const char *p, int n)
{
    auto dig = [p](int i) {
        return p[i] >= '0' && p[i] <= '9';
    };
    if (n == 8 && dig(0) && dig(1) && p[2] == ':' && dig(3) && dig(4) && p[5] == ':' && dig(6) &&
        dig(7)) {
        const int h = (p[0] - '0') * 10 + (p[1] - '0');
        const int m = (p[3] - '0') * 10 + (p[4] - '0');
        const int s = (p[6] - '0') * 10 + (p[7] - '0');
        if (h < 24 && m < 60 && s < 60)
            return h * 3600 + m * 60 + s;
    }
    const QTime t = QTime::fromString(QString::fromLatin1(p, n), QStringLiteral("hh:mm:ss"));
    return t.isValid() ? t.msecsSinceStartOfDay() / 1000 : -1;
}

QString textoHora(int segundos)
{
    if (segundos < 0)
        return textoConsola(QTime(), QStringLiteral("h:mm ap"));
    static std::vector<QString> cache(24 * 60);
    const int minuto = segundos / 60;
    QString &t = cache[std::size_t(minuto)];
    if (t.isNull())
        t = textoConsola(QTime(minuto / 60, minuto % 60), QStringLiteral("h:mm ap"));
    return t;
}

QString textoEstado(std::uint8_t estado)
{
    switch (estado) {
    case JugadaVenta::Eliminado:
        return QStringLiteral("Eliminado");
    case JugadaVenta::Pagado:
        return QStringLiteral("Pagado");
    default:
        return QString();
    }
}

namespace {

// A text of DatosVentas::textos: its length in `bytesLargo` bytes (little-endian), then itself.
QString textoGuardado(const QByteArray &textos, std::uint32_t desde, int bytesLargo)
{
    const auto *p = reinterpret_cast<const unsigned char *>(textos.constData()) + desde;
    const int largo = bytesLargo == 2 ? p[0] | (p[1] << 8) : p[0];
    return QString::fromLatin1(reinterpret_cast<const char *>(p + bytesLargo), largo);
}

std::uint32_t guardarTexto(QByteArray &textos, const char *p, int n, int bytesLargo)
{
    const auto desde = std::uint32_t(textos.size());
    n = std::min(n, bytesLargo == 2 ? 0xffff : 0xff);
    textos.append(char(n & 0xff));
    if (bytesLargo == 2)
        textos.append(char(n >> 8));
    textos.append(p, n);
    return desde;
}

} // namespace

QString DatosVentas::ticket(const JugadaVenta &j) const
{
    return textoGuardado(textos, j.ticket, 2);
}

QString DatosVentas::dato(const JugadaVenta &j) const
{
    return textoGuardado(textos, j.dato, 2);
}

QString DatosVentas::segundoMonto(const JugadaVenta &j) const
{
    const auto *p = reinterpret_cast<const unsigned char *>(textos.constData()) + j.dato;
    return textoGuardado(textos, j.dato + 2 + std::uint32_t(p[0] | (p[1] << 8)), 1);
}

DatosVentas analizarVentas(const QByteArray &bruto, const ListasMonitor &listas,
                           const QString &cjuego, const QString &csorteo, double factor)
{
    DatosVentas d;
    const int nb = listas.indiceBancas.size();
    d.ventaBrutaBanca.fill(0, nb);
    d.comisionBanca.fill(0, nb);
    d.ventaNetaBanca.fill(0, nb);
    d.premiosBanca.fill(0, nb);
    d.utilidadBanca.fill(0, nb);
    d.hayResultado = listas.hayResultado(cjuego, csorteo);
    d.resultado = listas.resultado(cjuego, csorteo);

    const char *base = bruto.constData();
    const char *p = base;
    const char *fin = base + bruto.size();
    // Room for every line at once: counting them is cheaper than regrowing, and nothing is
    // reserved twice.
    std::size_t lineas = 1;
    for (const char *q = p;
         (q = static_cast<const char *>(std::memchr(q, '\n', std::size_t(fin - q)))) != nullptr;
         ++q)
        ++lineas;
    d.jugadas.reserve(lineas);
    // The kept texts never exceed the reply plus their lengths: reserving that bound never
    // copies the block, and pages never written are never resident.
    d.textos.reserve(int(std::min<qint64>(qint64(bruto.size()) + 5 * qint64(lineas),
                                          std::numeric_limits<int>::max() - 64)));
    // The ticket of the previous play: a ticket's plays come together and share its text.
    const char *ticketAnterior = nullptr;
    int largoAnterior = -1;
    std::uint32_t ticketGuardado = 0;

    Internador bancas, agencias, numeros;
    std::vector<int> filaResumen;
    std::vector<int> filaDeAgencia;
    std::string clave;
    Campo f[12];

    while (p < fin) {
        const char *eol = static_cast<const char *>(std::memchr(p, '\n', std::size_t(fin - p)));
        if (!eol)
            eol = fin;
        if (eol == p) {
            ++p;
            continue;
        }
        int nf = 0;
        const char *c = p;
        while (nf < 12) {
            const char *coma = static_cast<const char *>(std::memchr(c, ',', std::size_t(eol - c)));
            if (!coma) {
                f[nf++] = {c, int(eol - c)};
                break;
            }
            f[nf++] = {c, int(coma - c)};
            c = coma + 1;
        }
        for (int k = nf; k < 12; ++k)
            f[k] = {eol, 0};
        p = eol + 1;

        JugadaVenta j;
        bool nuevo = false;
        j.banca = bancas.buscar(f[0].p, std::size_t(f[0].n), nuevo);
        if (nuevo) {
            const QString codigo = f[0].texto();
            d.bancas.push_back({codigo, listas.banca(codigo), listas.indiceBanca(codigo)});
        }
        clave.assign(f[0].p, std::size_t(f[0].n));
        clave.append(f[2].p, std::size_t(f[2].n));
        clave.append(f[3].p, std::size_t(f[3].n));
        clave.append(f[4].p, std::size_t(f[4].n));
        j.agencia = agencias.buscar(clave.data(), clave.size(), nuevo);
        if (nuevo) {
            const QString larga = QString::fromLatin1(clave.data(), int(clave.size()));
            d.agencias.push_back({larga, listas.agencia(larga),
                                  listas.comisionAgencia(larga, cjuego).toDouble() / 100});
            filaDeAgencia.push_back(-1);
        }
        j.numero = numeros.buscar(f[7].p, std::size_t(f[7].n), nuevo);
        if (nuevo) {
            const QString numero = f[7].texto();
            d.numeros.push_back({numero, listas.animal(cjuego, numero)});
            filaResumen.push_back(-1);
            if (d.hayResultado && numero == d.resultado)
                d.numeroGanador = j.numero;
        }
        const int segundos = leerHora(f[1].p, f[1].n);
        j.minuto = std::int16_t(segundos < 0 ? -1 : segundos / 60);
        if (f[5].n != largoAnterior ||
            std::memcmp(ticketAnterior, f[5].p, std::size_t(f[5].n)) != 0) {
            ticketGuardado = guardarTexto(d.textos, f[5].p, f[5].n, 2);
            ticketAnterior = f[5].p;
            largoAnterior = f[5].n;
        }
        j.ticket = ticketGuardado;
        j.dato = guardarTexto(d.textos, f[6].p, f[6].n, 2);
        guardarTexto(d.textos, f[9].p, f[9].n, 1);
        bool exacto = false;
        std::int64_t centavos = 0;
        j.monto = leerMonto(f[8].p, f[8].n, &exacto, &centavos);
        if (f[10].es('E'))
            j.estado = JugadaVenta::Eliminado;
        else if (f[11].es('X'))
            j.estado = JugadaVenta::Pagado;
        d.jugadas.push_back(j);
        if (j.estado == JugadaVenta::Eliminado)
            continue;

        // Every figure in whole cents before it is summed.
        const std::int64_t cts = exacto ? centavos : aCentavos(j.monto);
        const std::int64_t comision =
            centavosCercanos(d.agencias[std::size_t(j.agencia)].comision * double(cts));
        const std::int64_t premioSiSale = centavosCercanos(factor * double(cts));

        // Per-number summary.
        DatosVentas::Numero &num = d.numeros[std::size_t(j.numero)];
        int &fr = filaResumen[std::size_t(j.numero)];
        if (fr < 0) {
            fr = int(d.resumen.size());
            d.resumen.push_back({j.numero, QString(), 0});
        }
        ++d.resumen[std::size_t(fr)].jugadas;
        ++num.jugadas;
        num.centavos += cts;
        num.premio += premioSiSale;

        // Per-agency row.
        int &fila = filaDeAgencia[std::size_t(j.agencia)];
        if (fila < 0) {
            fila = int(d.filasAgencia.size());
            d.filasAgencia.push_back({j.agencia, j.banca, 1, cts});
        } else {
            DatosVentas::FilaAgencia &fa = d.filasAgencia[std::size_t(fila)];
            ++fa.jugadas;
            fa.centavos += cts;
        }

        d.ventaBruta += cts;
        d.comision += comision;
        ++d.cantidad;
        if (d.hayResultado) {
            d.ventaBrutaResultado += cts;
            d.comisionResultado += comision;
            const std::int64_t premio = j.numero == d.numeroGanador ? premioSiSale : 0;
            d.premios += premio;
            const int ib = d.bancas[std::size_t(j.banca)].indiceBanca;
            if (ib >= 0) {
                d.ventaBrutaBanca[ib] += cts;
                d.comisionBanca[ib] += comision;
                d.ventaNetaBanca[ib] += cts - comision;
                d.premiosBanca[ib] += premio;
                d.utilidadBanca[ib] += cts - comision - premio;
            }
        }
    }
    for (auto &fila : d.resumen)
        fila.monto =
            QString::number(deCentavos(d.numeros[std::size_t(fila.numero)].centavos), 'f', 2);
    return d;
}
