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
// power-of-two table. A key of up to 16 bytes is kept in its slot, so that finding it reads
// one slot and nothing else; longer keys are found by their hash and compared in the arena
// where every key is also kept.
class Internador {
public:
    Internador() : m_tabla(64) {}

    int cantidad() const { return int(m_inicio.size()); }

    // Index of the key; `nuevo` tells whether it was added now.
    int buscar(const char *p, std::size_t n, bool &nuevo)
    {
        Ranura clave;
        clave.largo = std::uint32_t(n);
        if (n <= 16) {
            // Byte by byte into registers: the bytes past the key may lie past the buffer.
            const auto *u = reinterpret_cast<const unsigned char *>(p);
            const std::size_t enA = n < 8 ? n : 8;
            for (std::size_t i = 0; i < enA; ++i)
                clave.a |= std::uint64_t(u[i]) << (8 * i);
            for (std::size_t i = 8; i < n; ++i)
                clave.b |= std::uint64_t(u[i]) << (8 * (i - 8));
        } else {
            clave.a = hashLargo(p, n);
        }
        const std::uint64_t h = mezclar(clave.a ^ (clave.b * 0x9E3779B97F4A7C15ull) ^ n);
        const std::size_t mascara = m_tabla.size() - 1;
        std::size_t i = std::size_t(h) & mascara;
        while (true) {
            const Ranura &r = m_tabla[i];
            if (r.indice < 0)
                break;
            if (r.a == clave.a && r.b == clave.b && r.largo == clave.largo &&
                (n <= 16 ||
                 std::memcmp(m_claves.data() + m_inicio[std::size_t(r.indice)], p, n) == 0)) {
                nuevo = false;
                return r.indice;
            }
            i = (i + 1) & mascara;
        }
        nuevo = true;
        clave.indice = int(m_inicio.size());
        m_inicio.push_back(m_claves.size());
        m_largo.push_back(std::uint32_t(n));
        m_claves.append(p, n);
        m_tabla[i] = clave;
        if (m_inicio.size() * 2 > m_tabla.size())
            crecer();
        return clave.indice;
    }

    QString texto(int i) const
    {
        return QString::fromLatin1(m_claves.data() + m_inicio[std::size_t(i)],
                                   int(m_largo[std::size_t(i)]));
    }

private:
    struct Ranura {
        std::uint64_t a = 0, b = 0; // the key itself, or the hash of a long key in `a`
        std::int32_t indice = -1;   // -1: empty
        std::uint32_t largo = 0;
    };

    static std::uint64_t mezclar(std::uint64_t h)
    {
        h ^= h >> 31;
        h *= 0xBF58476D1CE4E5B9ull;
        h ^= h >> 29;
        h *= 0x94D049BB133111EBull;
        return h ^ (h >> 32);
    }

    static std::uint64_t hashLargo(const char *p, std::size_t n)
    {
        std::uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
        while (n >= 8) {
            std::uint64_t w;
            std::memcpy(&w, p, 8);
            h = mezclar(h ^ w);
            p += 8;
            n -= 8;
        }
        std::uint64_t w = 0;
        std::memcpy(&w, p, n);
        return mezclar(h ^ w);
    }

    void crecer()
    {
        std::vector<Ranura> nueva(m_tabla.size() * 2);
        const std::size_t mascara = nueva.size() - 1;
        for (const Ranura &r : m_tabla) {
            if (r.indice < 0)
                continue;
            std::size_t i =
                std::size_t(mezclar(r.a ^ (r.b * 0x9E3779B97F4A7C15ull) ^ r.largo)) & mascara;
            while (nueva[i].indice >= 0)
                i = (i + 1) & mascara;
            nueva[i] = r;
        }
        m_tabla.swap(nueva);
    }

    std::vector<Ranura> m_tabla;
    std::vector<std::size_t> m_inicio;
    std::vector<std::uint32_t> m_largo;
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
QString textoGuardado(const TablaPlana<char> &textos, std::uint32_t desde, int bytesLargo)
{
    const auto *p = reinterpret_cast<const unsigned char *>(textos.data()) + desde;
    const int largo = bytesLargo == 2 ? p[0] | (p[1] << 8) : p[0];
    return QString::fromLatin1(reinterpret_cast<const char *>(p + bytesLargo), largo);
}

// Writes a text behind its length at `w` (room checked by the caller); returns the byte after.
char *escribirTexto(char *w, const char *p, int n, int bytesLargo)
{
    n = std::min(n, bytesLargo == 2 ? 0xffff : 0xff);
    *w++ = char(n & 0xff);
    if (bytesLargo == 2)
        *w++ = char(n >> 8);
    if (n > 0)
        std::memcpy(w, p, std::size_t(n));
    return w + n;
}

// The stored texts never pass this size: their offsets are 32-bit.
constexpr std::size_t kMaximoTextos = std::size_t(std::numeric_limits<std::uint32_t>::max()) - 1024;

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
    const auto *p = reinterpret_cast<const unsigned char *>(textos.data()) + j.dato;
    return textoGuardado(textos, j.dato + 2 + std::uint32_t(p[0] | (p[1] << 8)), 1);
}

struct LectorVentas::Estado {
    DatosVentas d;          // the plays and their texts read so far
    std::size_t usados = 0; // bytes of d.textos in use; the rest is room to grow into
    Internador bancas, agencias, numeros;
    std::string resto;  // the start of a line whose end has not arrived yet
    std::string ticket; // the ticket of the previous play, as sent
    std::uint32_t ticketGuardado = 0;
    bool hayTicket = false;
    bool algo = false;    // some byte came before the first NUL
    bool cortado = false; // the first NUL was seen (or the texts are full): no more lines
    std::string clave;    // long agency code of a line too long for the stack buffer

    void linea(const char *p, const char *eol);
};

LectorVentas::LectorVentas() : m(new Estado) {}

LectorVentas::~LectorVentas() = default;

bool LectorVentas::vacio() const
{
    return !m->algo;
}

void LectorVentas::Estado::linea(const char *p, const char *eol)
{
    // Fields 0..11; with more, the twelfth ends at its comma and the rest is not read.
    Campo f[12];
    int nf = 0;
    const char *inicio = p;
    for (const char *q = p; q < eol; ++q) {
        if (*q == ',') {
            f[nf++] = {inicio, int(q - inicio)};
            inicio = q + 1;
            if (nf == 12)
                break;
        }
    }
    if (nf < 12)
        f[nf++] = {inicio, int(eol - inicio)};
    for (int k = nf; k < 12; ++k)
        f[k] = {eol, 0};

    // Room for the texts kept of this line: ticket, datum and second amount behind their
    // lengths.
    const std::size_t necesario = 5 + std::size_t(std::min(f[5].n, 0xffff)) +
                                  std::size_t(std::min(f[6].n, 0xffff)) +
                                  std::size_t(std::min(f[9].n, 0xff));
    if (usados + necesario > d.textos.capacidad()) {
        if (usados + necesario > kMaximoTextos) {
            cortado = true;
            return;
        }
        d.textos.reserve(std::min(
            kMaximoTextos, std::max<std::size_t>(usados + necesario, usados + usados / 2 + 4096)));
    }

    JugadaVenta j;
    bool nuevo = false;
    j.banca = bancas.buscar(f[0].p, std::size_t(f[0].n), nuevo);
    // The long agency code: banca, group chief, office and agency, one after the other.
    const std::size_t largoClave =
        std::size_t(f[0].n) + std::size_t(f[2].n) + std::size_t(f[3].n) + std::size_t(f[4].n);
    char corta[128];
    char *k = corta;
    if (largoClave > sizeof corta) {
        clave.resize(largoClave);
        k = &clave[0];
    }
    char *w = k;
    for (int c : {0, 2, 3, 4}) {
        if (f[c].n > 0)
            std::memcpy(w, f[c].p, std::size_t(f[c].n));
        w += f[c].n;
    }
    j.agencia = agencias.buscar(k, largoClave, nuevo);
    j.numero = numeros.buscar(f[7].p, std::size_t(f[7].n), nuevo);
    const int segundos = leerHora(f[1].p, f[1].n);
    j.minuto = std::int16_t(segundos < 0 ? -1 : segundos / 60);

    char *base = d.textos.data();
    char *t = base + usados;
    // A ticket's plays come together: they share one copy of its text.
    if (!hayTicket || std::size_t(f[5].n) != ticket.size() ||
        std::memcmp(ticket.data(), f[5].p, std::size_t(f[5].n)) != 0) {
        ticket.assign(f[5].p, std::size_t(f[5].n));
        ticketGuardado = std::uint32_t(t - base);
        hayTicket = true;
        t = escribirTexto(t, f[5].p, f[5].n, 2);
    }
    j.ticket = ticketGuardado;
    j.dato = std::uint32_t(t - base);
    t = escribirTexto(t, f[6].p, f[6].n, 2);
    t = escribirTexto(t, f[9].p, f[9].n, 1);
    usados = std::size_t(t - base);

    j.monto = leerMonto(f[8].p, f[8].n);
    if (f[10].es('E'))
        j.estado = JugadaVenta::Eliminado;
    else if (f[11].es('X'))
        j.estado = JugadaVenta::Pagado;
    d.jugadas.push_back(j);
}

void LectorVentas::agregar(const char *p, qint64 n)
{
    Estado &e = *m;
    if (e.cortado || n <= 0 || !p)
        return;
    const char *fin = p + n;
    const void *nul = std::memchr(p, '\0', std::size_t(n));
    if (nul)
        fin = static_cast<const char *>(nul);
    if (fin > p)
        e.algo = true;
    // The end of a line begun in an earlier piece.
    if (!e.resto.empty()) {
        const char *eol = static_cast<const char *>(std::memchr(p, '\n', std::size_t(fin - p)));
        if (!eol) {
            e.resto.append(p, std::size_t(fin - p));
            p = fin;
        } else {
            e.resto.append(p, std::size_t(eol - p));
            e.linea(e.resto.data(), e.resto.data() + e.resto.size());
            e.resto.clear();
            p = eol + 1;
        }
    }
    while (p < fin && !e.cortado) {
        const char *eol = static_cast<const char *>(std::memchr(p, '\n', std::size_t(fin - p)));
        if (!eol) {
            e.resto.assign(p, std::size_t(fin - p));
            break;
        }
        if (eol != p)
            e.linea(p, eol);
        p = eol + 1;
    }
    // Past a NUL nothing is read; what came before it of its line is the reply's last line.
    if (nul)
        e.cortado = true;
}

DatosVentas LectorVentas::terminar(const ListasMonitor &listas, const QString &cjuego,
                                   const QString &csorteo, double factor)
{
    Estado &e = *m;
    // A last line without its line break still counts.
    if (!e.resto.empty()) {
        const bool cortado = e.cortado;
        e.cortado = false;
        e.linea(e.resto.data(), e.resto.data() + e.resto.size());
        e.cortado = cortado || e.cortado;
        std::string().swap(e.resto);
    }
    e.cortado = true;
    DatosVentas d = std::move(e.d);
    d.textos.resize(e.usados);
    d.textos.ajustar();
    d.jugadas.ajustar();

    const int nb = listas.indiceBancas.size();
    d.ventaBrutaBanca.fill(0, nb);
    d.comisionBanca.fill(0, nb);
    d.ventaNetaBanca.fill(0, nb);
    d.premiosBanca.fill(0, nb);
    d.utilidadBanca.fill(0, nb);
    d.hayResultado = listas.hayResultado(cjuego, csorteo);
    d.resultado = listas.resultado(cjuego, csorteo);

    // Names, commissions and the winning number, once per distinct text.
    d.bancas.reserve(std::size_t(e.bancas.cantidad()));
    for (int i = 0; i < e.bancas.cantidad(); ++i) {
        const QString codigo = e.bancas.texto(i);
        d.bancas.push_back({codigo, listas.banca(codigo), listas.indiceBanca(codigo)});
    }
    d.agencias.reserve(std::size_t(e.agencias.cantidad()));
    for (int i = 0; i < e.agencias.cantidad(); ++i) {
        const QString larga = e.agencias.texto(i);
        d.agencias.push_back(
            {larga, listas.agencia(larga), listas.comisionAgencia(larga, cjuego).toDouble() / 100});
    }
    d.numeros.reserve(std::size_t(e.numeros.cantidad()));
    for (int i = 0; i < e.numeros.cantidad(); ++i) {
        const QString numero = e.numeros.texto(i);
        d.numeros.push_back({numero, listas.animal(cjuego, numero)});
        if (d.hayResultado && d.numeroGanador < 0 && numero == d.resultado)
            d.numeroGanador = i;
    }

    // The sums, in reply order, over the plays that are not deleted.
    std::vector<int> filaResumen(d.numeros.size(), -1);
    std::vector<int> filaDeAgencia(d.agencias.size(), -1);
    for (const JugadaVenta &j : d.jugadas) {
        if (j.estado == JugadaVenta::Eliminado)
            continue;
        // Every figure in whole cents before it is summed.
        const std::int64_t cts = aCentavos(j.monto);
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

DatosVentas analizarVentas(const QByteArray &bruto, const ListasMonitor &listas,
                           const QString &cjuego, const QString &csorteo, double factor)
{
    LectorVentas lector;
    lector.agregar(bruto);
    return lector.terminar(listas, cjuego, csorteo, factor);
}
