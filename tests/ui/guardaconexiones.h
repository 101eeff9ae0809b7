#pragma once

#include <QString>
#include <QStringList>
#include <QTest>
#include <QtGlobal>

// Catches the warning that a form's object was renamed and its on_<object>_<signal> slot lost
// its signal ("QMetaObject::connectSlotsByName: No matching signal for ..."). Install it in
// initTestCase(); call verificarConexiones() in cleanup().
inline QStringList &conexionesPerdidas()
{
    static QStringList lista;
    return lista;
}

inline QtMessageHandler &manejadorAnterior()
{
    static QtMessageHandler anterior = nullptr;
    return anterior;
}

inline void vigilarConexiones(QtMsgType tipo, const QMessageLogContext &contexto,
                              const QString &mensaje)
{
    if (mensaje.contains(QLatin1String("No matching signal")))
        conexionesPerdidas().append(mensaje);
    if (manejadorAnterior())
        manejadorAnterior()(tipo, contexto, mensaje);
}

inline void instalarGuardaConexiones()
{
    manejadorAnterior() = qInstallMessageHandler(vigilarConexiones);
}

// Fails the case that just ran when a form lost one of its connections while it ran.
inline void verificarConexiones()
{
    QVERIFY2(conexionesPerdidas().isEmpty(), qPrintable(conexionesPerdidas().join('\n')));
}
