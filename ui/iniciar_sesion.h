#pragma once

#include <QDialog>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

namespace Ui {
class iniciar_sesion;
}

// Login: sends the typed user and password to "validarUser.php" and, on an accepted answer,
// fills the session record and closes. The main window ends the program when no session was
// opened.
class iniciar_sesion : public QDialog {
    Q_OBJECT

public:
    explicit iniciar_sesion(QWidget *parent = nullptr);
    ~iniciar_sesion() override;

    // Full URL of the last login request.
    QString urlPeticion() const { return url; }

private slots:
    void on_pushButton_iniciar_clicked();
    void on_pushButton_salir_clicked();
    void on_lineEdit_usuario_returnPressed();
    void on_lineEdit_clave_textChanged(QString arg1);

private:
    void respuestaLogin(QNetworkReply *respuesta);

    Ui::iniciar_sesion *ui;
    QNetworkAccessManager *manager = nullptr; // a new one for every press of the login button
    QString url;
};
