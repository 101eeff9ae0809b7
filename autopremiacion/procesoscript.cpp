#include "autopremiacion/procesoscript.h"

#include "app/salida.h"

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

ProcesoScript::ProcesoScript(QObject *parent) : QProcess(parent)
{
    // Script output is not used; discarding it keeps a chatty script from filling memory.
    setStandardOutputFile(QProcess::nullDevice());
    setStandardErrorFile(QProcess::nullDevice());
    connect(this, &QProcess::started, this, [this] {
        m_grupo = processId();
        // Known to every way out of the console, so that none leaves the script behind.
        registrarGrupoHijo(static_cast<pid_t>(m_grupo));
    });
    // Helpers a script left behind go with it, so none keeps running or writing afterwards.
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this] { matarGrupo(); });
}

ProcesoScript::~ProcesoScript()
{
    // Whoever destroys the process (its dialog closing) ends the script and its helpers.
    detener();
    if (state() != QProcess::NotRunning)
        waitForFinished(1000);
}

void ProcesoScript::setupChildProcess()
{
    // Runs in the child between fork and exec: the script leads a new process group.
    ::setpgid(0, 0);
}

void ProcesoScript::detener()
{
    if (!abierto())
        return;
    if (m_grupo <= 0)
        m_grupo = processId();
    matarGrupo();
    kill();
}

void ProcesoScript::matarGrupo()
{
    if (m_grupo > 0) {
        ::kill(static_cast<pid_t>(-m_grupo), SIGKILL);
        olvidarGrupoHijo(static_cast<pid_t>(m_grupo));
    }
    m_grupo = 0;
}
