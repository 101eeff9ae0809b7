#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// The reference back-office server (build/tornavo-servidor) started for one test on a free
// loopback port with a fresh database in a temporary folder. Its first line of output is the
// base URL it serves.
class ServidorReferencia {
public:
    // `opciones` are passed on, e.g. {"--demo"}.
    explicit ServidorReferencia(const QStringList &opciones = {QStringLiteral("--demo")});
    ~ServidorReferencia();

    bool iniciado() const { return !m_urlBase.isEmpty(); }
    QString urlBase() const { return m_urlBase; }     // "http://127.0.0.1:P/Tornavo/TornavoSU/"
    QString direccion() const { return m_direccion; } // "127.0.0.1:P" for Tornavo.svr
    QString rutaBaseDatos() const;
    QString salida() const { return m_salida; } // what it printed until it started

private:
    QTemporaryDir m_dir;
    QProcess m_proceso;
    QString m_urlBase;
    QString m_direccion;
    QString m_salida;
};
