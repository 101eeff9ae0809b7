#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A temporary working directory for one test: the process changes into it while the object
// lives and back afterwards.
class DirectorioTrabajo {
public:
    DirectorioTrabajo();
    ~DirectorioTrabajo();

    QString ruta() const { return m_dir.path(); }

    // Writes a file relative to the directory (folders are created).
    void escribir(const QString &nombre, const QByteArray &contenido);

    // Writes "Tornavo.svr" with one line: the given address.
    void apuntarA(const QString &direccion);

private:
    QTemporaryDir m_dir;
    QString m_anterior;
};

// Runs this test binary again as a child process in scenario `escenario` (the child sees it in
// TORNAVO_ESCENARIO and should run it from main through correrEscenarioSiHay). Returns the
// child's exit code; -1 when it crashed or did not finish within `milisegundos`.
struct ResultadoProceso {
    int codigo = -1;
    bool terminoNormal = false;
    QByteArray salida;
    QByteArray errores;
};
ResultadoProceso ejecutarEscenario(const QString &escenario, const QStringList &entorno = {},
                                   int milisegundos = 30000, const QString &directorio = QString());

// The scenario this process was started for, "" for the normal test run.
QString escenarioActual();

// The project's source folder (set by CTest), for fixtures kept in the repository.
QString carpetaFuentes();

// The build folder (set by CTest), for the built programs.
QString carpetaBinarios();

// Resets the session record to its start values; tests call it between cases.
void reiniciarSesion();
