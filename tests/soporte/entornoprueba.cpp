#include "tests/soporte/entornoprueba.h"

#include "app/sesion.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>

DirectorioTrabajo::DirectorioTrabajo() : m_anterior(QDir::currentPath())
{
    QDir::setCurrent(m_dir.path());
}

DirectorioTrabajo::~DirectorioTrabajo()
{
    QDir::setCurrent(m_anterior);
}

void DirectorioTrabajo::escribir(const QString &nombre, const QByteArray &contenido)
{
    const QString ruta = m_dir.filePath(nombre);
    QDir().mkpath(QFileInfo(ruta).absolutePath());
    QFile archivo(ruta);
    if (archivo.open(QIODevice::WriteOnly | QIODevice::Truncate))
        archivo.write(contenido);
}

void DirectorioTrabajo::apuntarA(const QString &direccion)
{
    escribir(QStringLiteral("Tornavo.svr"), direccion.toLatin1() + '\n');
}

ResultadoProceso ejecutarEscenario(const QString &escenario, const QStringList &entorno,
                                   int milisegundos, const QString &directorio)
{
    QProcess proceso;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TORNAVO_ESCENARIO"), escenario);
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (const QString &par : entorno)
        env.insert(par.section(QLatin1Char('='), 0, 0), par.section(QLatin1Char('='), 1));
    proceso.setProcessEnvironment(env);
    proceso.setWorkingDirectory(directorio.isEmpty() ? QDir::currentPath() : directorio);
    proceso.start(QCoreApplication::applicationFilePath(), QStringList());
    ResultadoProceso r;
    if (!proceso.waitForFinished(milisegundos)) {
        proceso.kill();
        proceso.waitForFinished(2000);
        r.salida = proceso.readAllStandardOutput();
        r.errores = proceso.readAllStandardError();
        return r;
    }
    r.terminoNormal = proceso.exitStatus() == QProcess::NormalExit;
    r.codigo = r.terminoNormal ? proceso.exitCode() : -1;
    r.salida = proceso.readAllStandardOutput();
    r.errores = proceso.readAllStandardError();
    return r;
}

QString escenarioActual()
{
    return qEnvironmentVariable("TORNAVO_ESCENARIO");
}

QString carpetaFuentes()
{
    return qEnvironmentVariable("TORNAVO_FUENTES");
}

QString carpetaBinarios()
{
    return qEnvironmentVariable("TORNAVO_BINARIOS");
}

void reiniciarSesion()
{
    SesionGlobal::reiniciar();
}
