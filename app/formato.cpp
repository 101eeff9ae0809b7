#include "app/formato.h"

#include "app/sesion.h"

#include <QFile>
#include <cmath>

QLocale localeConsola()
{
    return QLocale(QLocale::Spanish, QLocale::Venezuela);
}

namespace {

QString conBlancosSimples(QString texto)
{
    return texto.replace(QChar(0x00A0), QLatin1Char(' '));
}

} // namespace

QString textoConsola(const QDate &fecha, const QString &formato)
{
    return conBlancosSimples(localeConsola().toString(fecha, formato));
}

QString textoConsola(const QTime &hora, const QString &formato)
{
    return conBlancosSimples(localeConsola().toString(hora, formato));
}

QString fechaServidor(const QDate &fecha)
{
    return QLocale::c().toString(fecha, QStringLiteral("yyyy-MM-dd"));
}

QString formatoMonto(double monto, int decimales)
{
    const bool negativo = monto < 0;
    const double absoluto = std::fabs(monto);
    if (decimales < 0)
        decimales = 0;

    // QByteArray::number never looks at the locale: always "." and no grouping.
    QByteArray fijo = QByteArray::number(absoluto, 'f', decimales);

    int punto = fijo.lastIndexOf('.');
    if (punto < 0)
        punto = fijo.size();
    for (int i = punto - 3; i > 0; i -= 3)
        fijo.insert(i, ',');

    QString texto = QString::fromLatin1(fijo);
    if (negativo)
        texto.prepend(QLatin1Char('-'));
    return texto;
}

QString rellenarCeros(const QString &texto, int ancho)
{
    QString resultado = texto;
    while (resultado.size() < ancho)
        resultado.prepend(QLatin1Char('0'));
    return resultado;
}

QString buscarValor(const QString &clave)
{
    QString valor;
    const auto &claves = SesionGlobal::tablaClaves;
    const auto &valores = SesionGlobal::tablaValores;
    for (std::size_t i = 0; i < claves.size(); ++i) {
        if (claves[i] == clave && i < valores.size())
            valor = valores[i];
    }
    return valor;
}

QString formatoReloj(const QTime &hora)
{
    return hora.second() % 2 == 0 ? QStringLiteral("h;mm;ss ap") : QStringLiteral("h:mm:ss ap");
}

QString textoReloj(const QTime &hora)
{
    return textoConsola(hora, formatoReloj(hora));
}

QString rutaImagenAnimal(const QString &carpeta, const QString &nombre)
{
    const QString base = QStringLiteral("animales/") + carpeta + QLatin1Char('/') + nombre;
    const QString png = base + QStringLiteral(".png");
    if (QFile::exists(png))
        return png;
    return base + QStringLiteral(".jpg");
}
