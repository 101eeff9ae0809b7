#include "app/idioma.h"

#include "app/formato.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

bool prepararIdioma(QCoreApplication &aplicacion, const QString &carpetaTraducciones)
{
    const QLocale locale = localeConsola();
    QLocale::setDefault(locale);

    auto *traduccion = new QTranslator(&aplicacion);
    // "qtbase_es.qm": looked up by the locale's UI languages, so "es_VE" falls back to "es".
    if (!traduccion->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                          carpetaTraducciones.isEmpty()
                              ? QLibraryInfo::location(QLibraryInfo::TranslationsPath)
                              : carpetaTraducciones)) {
        delete traduccion;
        return false;
    }
    aplicacion.installTranslator(traduccion);
    return true;
}
