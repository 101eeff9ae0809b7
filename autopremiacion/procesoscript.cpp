#include "autopremiacion/procesoscript.h"

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

ProcesoScript::ProcesoScript(QObject *parent) : QProcess(parent)
{
    // Script output is not used; discarding it keeps a chatty script from filling memory.
    setStandardOutputFile(QProcess::nullDevice());
    setStandardErrorFile(QProcess::nullDevice());
    connect(this, &QProcess::started, this, [this] { m_grupo = processId(); });
    // Helpers a script left behind go with it, so none keeps running or writing afterwards.
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            [this] { matarGrupo(); });
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
    if (m_grupo > 0)
        ::kill(static_cast<pid_t>(-m_grupo), SIGKILL);
    m_grupo = 0;
}
