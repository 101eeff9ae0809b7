#pragma once

#include <QString>

class QCoreApplication;

// Puts the whole console in Spanish at start: the default locale of every widget (date edits,
// calendars) becomes localeConsola(), and Qt's own Spanish texts (standard buttons, calendar
// tooltips, context menus) are installed from "qtbase_es.qm" in `carpetaTraducciones` (Qt's
// translations folder when empty). Without that file the console keeps Qt's English button
// texts and still uses the Spanish locale. Returns whether the translations were found.
bool prepararIdioma(QCoreApplication &aplicacion, const QString &carpetaTraducciones = QString());
