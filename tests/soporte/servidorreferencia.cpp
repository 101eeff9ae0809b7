#include "tests/soporte/servidorreferencia.h"

#include "tests/soporte/entornoprueba.h"

#include <QElapsedTimer>
#include <QUrl>

ServidorReferencia::ServidorReferencia(const QStringList &opciones)
{
    QStringList args{QStringLiteral("--db"), rutaBaseDatos(), QStringLiteral("--port"),
                     QStringLiteral("0")};
    args += opciones;
    m_proceso.setProcessChannelMode(QProcess::SeparateChannels);
    m_proceso.start(carpetaBinarios() + QStringLiteral("/tornavo-servidor"), args);
    if (!m_proceso.waitForStarted(10000))
        return;
    QElapsedTimer reloj;
    reloj.start();
    while (reloj.elapsed() < 60000) {
        if (m_proceso.canReadLine() || m_proceso.waitForReadyRead(200)) {
            if (!m_proceso.canReadLine())
                continue;
            const QString linea = QString::fromLatin1(m_proceso.readLine()).trimmed();
            m_salida += linea + QLatin1Char('\n');
            if (linea.startsWith(QLatin1String("http://"))) {
                m_urlBase = linea;
                const QUrl url(linea);
                m_direccion = url.host() + QLatin1Char(':') + QString::number(url.port());
                return;
            }
        }
        if (m_proceso.state() == QProcess::NotRunning)
            return;
    }
}

ServidorReferencia::~ServidorReferencia()
{
    if (m_proceso.state() != QProcess::NotRunning) {
        m_proceso.terminate();
        if (!m_proceso.waitForFinished(5000)) {
            m_proceso.kill();
            m_proceso.waitForFinished(2000);
        }
    }
}

QString ServidorReferencia::rutaBaseDatos() const
{
    return m_dir.filePath(QStringLiteral("tornavo.db"));
}
