#include "tests/soporte/escenario.h"

#include <QAbstractButton>
#include <QNetworkReply>
#include <QSignalSpy>

Escenario::Escenario(Respuestas respuestas)
{
    // Lets tests spy on QNetworkAccessManager::finished.
    qRegisterMetaType<QNetworkReply *>();
    dir.apuntarA(srv.direccion());
    for (const auto &r : respuestas)
        srv.responder(r.first, r.second);
}

EscenarioSinServidor::EscenarioSinServidor()
{
    dir.apuntarA(ServidorPrueba::direccionSinServidor());
}

bool pulsarYEsperarRespuesta(QAbstractButton *boton, QNetworkAccessManager *red, int milisegundos)
{
    qRegisterMetaType<QNetworkReply *>();
    QSignalSpy llegada(red, &QNetworkAccessManager::finished);
    QTest::mouseClick(boton, Qt::LeftButton);
    return llegada.wait(milisegundos) || llegada.count() > 0;
}
