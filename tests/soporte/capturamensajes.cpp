#include "tests/soporte/capturamensajes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>

CapturaMensajes::CapturaMensajes(QObject *parent) : QObject(parent)
{
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &CapturaMensajes::revisar);
    m_timer.start();
}

void CapturaMensajes::responder(const QString &textoBoton)
{
    m_respuestas.append(textoBoton);
}

bool CapturaMensajes::esperar(int n, int milisegundos)
{
    QElapsedTimer reloj;
    reloj.start();
    while (m_vistos.size() < n && reloj.elapsed() < milisegundos)
        QTest::qWait(10);
    return m_vistos.size() >= n;
}

void CapturaMensajes::revisar()
{
    auto *caja = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    if (!caja || !caja->isVisible() || caja->property("capturada").toBool())
        return;
    caja->setProperty("capturada", true);

    MensajeVisto visto;
    visto.titulo = caja->windowTitle();
    visto.texto = caja->text();
    visto.informativo = caja->informativeText();
    visto.icono = caja->icon();
    visto.rutaIcono = caja->property("rutaIcono").toString();
    visto.altoIcono = caja->iconPixmap().height();
    QAbstractButton *elegido = nullptr;
    QAbstractButton *primeroAceptar = nullptr;
    const QString deseado = m_respuestas.isEmpty() ? QString() : m_respuestas.takeFirst();
    for (QAbstractButton *b : caja->buttons()) {
        visto.botones.append(b->text());
        const auto rol = caja->buttonRole(b);
        visto.roles.append(rol);
        visto.anchosBotones.append(b->minimumWidth() == b->maximumWidth() ? b->minimumWidth() : 0);
        if (!deseado.isEmpty() && b->text() == deseado)
            elegido = b;
        if (!primeroAceptar && (rol == QMessageBox::AcceptRole || rol == QMessageBox::YesRole))
            primeroAceptar = b;
    }
    if (!elegido)
        elegido = primeroAceptar ? primeroAceptar : caja->buttons().value(0);
    visto.pulsado = elegido ? elegido->text() : QString();
    m_vistos.append(visto);
    if (elegido)
        QMetaObject::invokeMethod(elegido, "click", Qt::QueuedConnection);
    else
        QMetaObject::invokeMethod(caja, "reject", Qt::QueuedConnection);
}
