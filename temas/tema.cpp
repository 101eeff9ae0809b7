#include "temas/tema.h"

#include "app/servidor.h"

#include <QFile>
#include <QTextStream>

#include <cstdio>

namespace {

struct Tema {
    const char *nombre;
    const char *clave;
    const char *ruta;
};

// Row 0 (the platform look) has no key of its own and no style sheet.
const Tema temas[cantidadTemas] = {
    {"Tema del Sistema", nullptr, nullptr},
    {"Tema Claro", "light", ":TornavoThemes/qlightstyle/style.qss"},
    {"Tema Gris", "grey", ":TornavoThemes/qgreystyle/style.qss"},
    {"Tema Oscuro", "dark", ":TornavoThemes/qdarkstyle/style.qss"},
    {"Tema Oscuro gold", "darkgold", ":TornavoThemes/Combinear/combinear.qss"},
    {"Tema Cielo claro", "cieloclaro", ":TornavoThemes/Medize/Medize.qss"},
    {"Tema Material Oscuro", "materialdark", ":TornavoThemes/materialdark/materialdark.qss"},
    {"Tema MacOS", "MacOS", ":TornavoThemes/MacOS/MacOS.qss"},
    {"Tema Oscuro verde", "darkgreen", ":TornavoThemes/DarkGreen/darkgreen.qss"},
    {"Tema Oscuro rojo", "darkred", ":TornavoThemes/DarkRed/darkred.qss"},
    {"Tema Menta", "menta", ":TornavoThemes/Menta/menta.qss"},
};

} // namespace

QStringList nombresTemas()
{
    QStringList nombres;
    for (const Tema &t : temas)
        nombres.append(QString::fromUtf8(t.nombre));
    return nombres;
}

QStringList clavesTemas(const QString &estiloSistema)
{
    QStringList claves;
    for (const Tema &t : temas)
        claves.append(t.clave ? QString::fromLatin1(t.clave) : estiloSistema);
    return claves;
}

QString rutaHojaDeEstilo(const QString &clave)
{
    for (const Tema &t : temas) {
        if (t.clave && clave == QLatin1String(t.clave))
            return QString::fromLatin1(t.ruta);
    }
    return QString();
}

QString hojaDeEstilo(const QString &clave)
{
    const QString ruta = rutaHojaDeEstilo(clave);
    QFile archivo(ruta);
    if (ruta.isEmpty() || !archivo.exists()) {
        // The one line the console ever writes to standard output.
        std::fputs("Unable to set stylesheet, file not found\n", stdout);
        std::fflush(stdout);
        return QString();
    }
    if (!archivo.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    QTextStream flujo(&archivo);
    flujo.setCodec("UTF-8");
    return flujo.readAll();
}

QString cargarTema(const QString &ruta)
{
    return hojaDeEstilo(leerPrimeraLinea(ruta));
}

bool guardarTema(const QString &ruta, const QString &clave)
{
    QFile::remove(ruta);
    QFile archivo(ruta);
    if (!archivo.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream flujo(&archivo);
    flujo << clave << '\n';
    flujo.flush();
    return flujo.status() == QTextStream::Ok;
}
