#pragma once

#include <QProcess>

// The process that runs one result script. Scripts are outside programs: each one is started
// as the leader of its own process group, so that stopping it also stops whatever it started,
// and nothing here ever waits for it.
class ProcesoScript : public QProcess {
    Q_OBJECT

public:
    explicit ProcesoScript(QObject *parent = nullptr);
    // Kills a script still running, with its group, and collects it (it was sent SIGKILL, so
    // the wait is short).
    ~ProcesoScript() override;

    // True from start() until the end of the script has been seen.
    bool abierto() const { return state() != QProcess::NotRunning; }

    // Kills the running script and its whole group (SIGKILL) without waiting; finished()
    // follows through the event loop.
    void detener();

    // Process group of the script being run, 0 when none.
    qint64 grupo() const { return m_grupo; }

protected:
    void setupChildProcess() override;

private:
    void matarGrupo();

    qint64 m_grupo = 0;
};
