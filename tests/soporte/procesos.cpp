#include "tests/soporte/procesos.h"

#include <QByteArray>
#include <QFile>
#include <QString>

bool procesoVivo(qint64 pid)
{
    QFile f(QStringLiteral("/proc/%1/stat").arg(pid));
    if (pid <= 0 || !f.open(QIODevice::ReadOnly))
        return false;
    // The state follows the command name, which is in parentheses and may hold anything.
    const QByteArray s = f.readAll();
    const int p = s.lastIndexOf(')');
    return p >= 0 && s.size() > p + 2 && s.at(p + 2) != 'Z';
}
