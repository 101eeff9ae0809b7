#pragma once

#include "tests/soporte/entornoprueba.h"

#include <QApplication>
#include <QTest>

// Test entry point. When the binary was started again by ejecutarEscenario(), it runs the
// scenario (a static `int Clase::correrEscenario(const QString &)`) instead of the tests and
// exits with its result.
#define TORNAVO_PRUEBA_MAIN(Clase)                                                                 \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        QApplication app(argc, argv);                                                              \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                   \
        if (!escenarioActual().isEmpty())                                                          \
            return Clase::correrEscenario(escenarioActual());                                      \
        Clase prueba;                                                                              \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&prueba, argc, argv);                                                  \
    }
