#include "servidor/texto.h"

#include <cmath>
#include <cstdint>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace servidor {

namespace {

int valorHex(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::string decodificarPorciento(const std::string &texto)
{
    std::string salida;
    salida.reserve(texto.size());
    for (size_t i = 0; i < texto.size(); ++i) {
        if (texto[i] == '%' && i + 2 < texto.size()) {
            const int alto = valorHex(texto[i + 1]);
            const int bajo = valorHex(texto[i + 2]);
            if (alto >= 0 && bajo >= 0) {
                salida.push_back(static_cast<char>(alto * 16 + bajo));
                i += 2;
                continue;
            }
        }
        salida.push_back(texto[i]);
    }
    return salida;
}

bool esUtf8Valido(const std::string &texto)
{
    size_t i = 0;
    const size_t n = texto.size();
    while (i < n) {
        const unsigned char c = static_cast<unsigned char>(texto[i]);
        int extra = 0;
        unsigned int punto = 0;
        if (c < 0x80) {
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) {
            extra = 1;
            punto = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            punto = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            punto = c & 0x07;
        } else {
            return false;
        }
        if (i + extra >= n)
            return false;
        for (int k = 1; k <= extra; ++k) {
            const unsigned char s = static_cast<unsigned char>(texto[i + k]);
            if ((s & 0xC0) != 0x80)
                return false;
            punto = (punto << 6) | (s & 0x3F);
        }
        // Overlong forms, surrogates and values beyond U+10FFFF are not UTF-8.
        if ((extra == 1 && punto < 0x80) || (extra == 2 && punto < 0x800) ||
            (extra == 3 && (punto < 0x10000 || punto > 0x10FFFF)) ||
            (punto >= 0xD800 && punto <= 0xDFFF))
            return false;
        i += extra + 1;
    }
    return true;
}

std::string latin1AUtf8(const std::string &texto)
{
    std::string salida;
    salida.reserve(texto.size() * 2);
    for (const char ch : texto) {
        const unsigned char c = static_cast<unsigned char>(ch);
        if (c < 0x80) {
            salida.push_back(ch);
        } else {
            salida.push_back(static_cast<char>(0xC0 | (c >> 6)));
            salida.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return salida;
}

size_t utf8ALatin1EnSitio(char *texto, size_t n)
{
    // Latin-1 never takes more bytes than UTF-8, so the text is rewritten over itself. The
    // plain ASCII before the first other byte stays where it is, looked at eight bytes at a
    // time.
    size_t i = 0;
    for (uint64_t ocho; i + 8 <= n; i += 8) {
        std::memcpy(&ocho, texto + i, 8);
        if (ocho & 0x8080808080808080ULL)
            break;
    }
    while (i < n && static_cast<unsigned char>(texto[i]) < 0x80)
        ++i;
    size_t escrito = i;
    while (i < n) {
        const unsigned char c = static_cast<unsigned char>(texto[i]);
        if (c < 0x80) {
            texto[escrito++] = static_cast<char>(c);
            ++i;
            continue;
        }
        int extra = (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : 0;
        if (extra == 0 || i + extra >= n) {
            texto[escrito++] = '?';
            ++i;
            continue;
        }
        unsigned int punto = c & (extra == 1 ? 0x1F : extra == 2 ? 0x0F : 0x07);
        bool bien = true;
        for (int k = 1; k <= extra; ++k) {
            const unsigned char s = static_cast<unsigned char>(texto[i + k]);
            if ((s & 0xC0) != 0x80) {
                bien = false;
                break;
            }
            punto = (punto << 6) | (s & 0x3F);
        }
        if (!bien) {
            texto[escrito++] = '?';
            ++i;
            continue;
        }
        texto[escrito++] = punto <= 0xFF ? static_cast<char>(punto) : '?';
        i += extra + 1;
    }
    return escrito;
}

void utf8ALatin1EnSitio(std::string &texto)
{
    texto.resize(utf8ALatin1EnSitio(&texto[0], texto.size()));
}

std::string utf8ALatin1(const std::string &texto)
{
    std::string salida = texto;
    utf8ALatin1EnSitio(salida);
    return salida;
}

Parametros leerConsulta(const std::string &consulta)
{
    Parametros parametros;
    size_t inicio = (!consulta.empty() && consulta[0] == '?') ? 1 : 0;
    while (inicio <= consulta.size()) {
        size_t fin = consulta.find('&', inicio);
        if (fin == std::string::npos)
            fin = consulta.size();
        const std::string pieza = consulta.substr(inicio, fin - inicio);
        if (!pieza.empty()) {
            const size_t igual = pieza.find('=');
            std::string clave = decodificarPorciento(pieza.substr(0, igual));
            std::string valor = igual == std::string::npos
                                    ? std::string()
                                    : decodificarPorciento(pieza.substr(igual + 1));
            if (!esUtf8Valido(clave))
                clave = latin1AUtf8(clave);
            if (!esUtf8Valido(valor))
                valor = latin1AUtf8(valor);
            parametros[clave] = valor;
        }
        inicio = fin + 1;
    }
    return parametros;
}

std::string montoTexto(long long centimos)
{
    const bool negativo = centimos < 0;
    const unsigned long long absoluto =
        negativo ? static_cast<unsigned long long>(-(centimos + 1)) + 1 : centimos;
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%s%llu.%02llu", negativo ? "-" : "", absoluto / 100,
                  absoluto % 100);
    return buffer;
}

std::string porcentajeTexto(double porcentaje)
{
    // Hundredths counted as integers: the decimal point is always ".", whatever the locale of
    // the process (a Qt program sets the user's, where it may be ",").
    const long long centesimas = std::llround(porcentaje * 100);
    const unsigned long long absoluto =
        centesimas < 0 ? 0ULL - static_cast<unsigned long long>(centesimas) : centesimas;
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%s%llu.%02llu", centesimas < 0 ? "-" : "", absoluto / 100,
                  absoluto % 100);
    return buffer;
}

std::string campo(const std::string &texto)
{
    std::string salida = texto;
    for (char &c : salida) {
        const unsigned char u = static_cast<unsigned char>(c);
        if (c == ',' || c == ';' || u < 0x20 || u == 0x7F)
            c = ' ';
    }
    return salida;
}

void agregarCampo(std::string &destino, std::string_view texto)
{
    const size_t inicio = destino.size();
    destino.append(texto.data(), texto.size());
    for (size_t i = inicio; i < destino.size(); ++i) {
        const unsigned char u = static_cast<unsigned char>(destino[i]);
        if (u == ',' || u == ';' || u < 0x20 || u == 0x7F)
            destino[i] = ' ';
    }
}

void agregarMonto(std::string &destino, long long centimos)
{
    char b[32];
    unsigned long long v =
        centimos < 0 ? 0ULL - static_cast<unsigned long long>(centimos) : centimos;
    int n = 0;
    b[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
    b[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
    b[n++] = '.';
    do {
        b[n++] = static_cast<char>('0' + v % 10);
        v /= 10;
    } while (v);
    if (centimos < 0)
        b[n++] = '-';
    while (n)
        destino.push_back(b[--n]);
}

bool fechaValida(const std::string &fecha)
{
    if (fecha.size() != 10 || fecha[4] != '-' || fecha[7] != '-')
        return false;
    for (size_t i : {0, 1, 2, 3, 5, 6, 8, 9}) {
        if (fecha[i] < '0' || fecha[i] > '9')
            return false;
    }
    const int anio = std::atoi(fecha.substr(0, 4).c_str());
    const int mes = std::atoi(fecha.substr(5, 2).c_str());
    const int dia = std::atoi(fecha.substr(8, 2).c_str());
    if (anio < 1900 || mes < 1 || mes > 12 || dia < 1)
        return false;
    static const int dias[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int maximo = dias[mes - 1];
    if (mes == 2 && ((anio % 4 == 0 && anio % 100 != 0) || anio % 400 == 0))
        maximo = 29;
    return dia <= maximo;
}

bool horaValida(const std::string &hora)
{
    if (hora.size() != 8 || hora[2] != ':' || hora[5] != ':')
        return false;
    for (size_t i : {0, 1, 3, 4, 6, 7}) {
        if (hora[i] < '0' || hora[i] > '9')
            return false;
    }
    return std::atoi(hora.substr(0, 2).c_str()) < 24 && std::atoi(hora.substr(3, 2).c_str()) < 60 &&
           std::atoi(hora.substr(6, 2).c_str()) < 60;
}

std::vector<std::string> partir(const std::string &texto, char separador)
{
    std::vector<std::string> partes;
    size_t inicio = 0;
    while (true) {
        const size_t fin = texto.find(separador, inicio);
        if (fin == std::string::npos) {
            partes.push_back(texto.substr(inicio));
            break;
        }
        partes.push_back(texto.substr(inicio, fin - inicio));
        inicio = fin + 1;
    }
    return partes;
}

} // namespace servidor
