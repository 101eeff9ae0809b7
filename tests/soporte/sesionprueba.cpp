#include "tests/soporte/sesionprueba.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

void responderLogin(RespuestaLogin respuesta)
{
    auto *sondeo = new QTimer;
    QObject::connect(sondeo, &QTimer::timeout, [sondeo, respuesta] {
        QWidget *login = QApplication::activeModalWidget();
        if (!login || !login->inherits("iniciar_sesion"))
            return;
        sondeo->stop();
        sondeo->deleteLater();
        login->findChild<QLineEdit *>("lineEdit_usuario")->setText("admin");
        login->findChild<QLineEdit *>("lineEdit_clave")->setText("tornavo1");
        if (respuesta == RespuestaLogin::Iniciar)
            login->findChild<QPushButton *>("pushButton_iniciar")->click();
        else if (respuesta == RespuestaLogin::Salir)
            login->findChild<QPushButton *>("pushButton_salir")->click();
        else
            login->close();
    });
    sondeo->start(10);
}
