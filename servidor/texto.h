#pragma once

#include <map>
#include <vector>
#include <string>
#include <string_view>

// Text helpers of the back office: query strings, character sets and amounts. No sockets and
// no database here.
namespace servidor {

// Query parameters of one request, already decoded (UTF-8).
using Parametros = std::map<std::string, std::string>;

// Reads a raw query string ("a=1&b=2", "&f=2026-11-22&j=1", with or without a leading "?").
// Empty pieces are skipped, a piece without "=" is a key with an empty value, "%XX" is decoded
// and "+" stays a plus sign (the console sends its values as they are typed). When a key comes
// twice the last value wins. Values that are not valid UTF-8 are taken as Latin-1.
Parametros leerConsulta(const std::string &consulta);

// Decodes "%XX" escapes; a malformed escape is kept as it stands.
std::string decodificarPorciento(const std::string &texto);

bool esUtf8Valido(const std::string &texto);
std::string latin1AUtf8(const std::string &texto);

// UTF-8 to Latin-1 bytes for the replies: characters above U+00FF become "?".
std::string utf8ALatin1(const std::string &texto);
// The same, rewriting the text where it stands (a large reply is never copied).
void utf8ALatin1EnSitio(std::string &texto);
// The same over `n` bytes at `texto`; returns the length in Latin-1. Text cut after a line
// break converts exactly as it would whole.
size_t utf8ALatin1EnSitio(char *texto, size_t n);

// Amount in cents as a plain decimal with "." and two decimals: 125000 -> "1250.00".
std::string montoTexto(long long centimos);

// Percentage with two decimals: 12.5 -> "12.50".
std::string porcentajeTexto(double porcentaje);

// A text placed inside a reply field: the separators of the replies ("," ";" and line breaks)
// and every control character, NUL included, are replaced by blanks, so that a name can never
// shift the fields of a line nor cut a reply short.
std::string campo(const std::string &texto);
// The same, appended to `destino` (no temporary text).
void agregarCampo(std::string &destino, std::string_view texto);
// montoTexto(centimos) appended to `destino`.
void agregarMonto(std::string &destino, long long centimos);

// True for a real calendar date written "yyyy-MM-dd".
bool fechaValida(const std::string &fecha);

// True for a time written "hh:mm:ss" (00:00:00 to 23:59:59).
bool horaValida(const std::string &hora);

// Splits at a separator, keeping empty parts.
std::vector<std::string> partir(const std::string &texto, char separador);

} // namespace servidor
