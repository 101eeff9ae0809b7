#include "app/apagado.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTimer>

void apagarObjeto(QObject *raiz)
{
    if (!raiz)
        return;
    for (QTimer *t : raiz->findChildren<QTimer *>())
        t->stop();
    for (QNetworkAccessManager *m : raiz->findChildren<QNetworkAccessManager *>()) {
        // Handlers first, so that the aborts below reach nobody.
        QObject::disconnect(m, nullptr, nullptr, nullptr);
        for (QNetworkReply *r : m->findChildren<QNetworkReply *>())
            r->abort();
    }
    for (QProcess *p : raiz->findChildren<QProcess *>()) {
        // The process class of the result scripts kills the script's whole group when it
        // sees the end of the script it started.
        if (p->state() != QProcess::NotRunning)
            p->kill();
    }
}
