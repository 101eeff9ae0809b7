#pragma once

#include <QMainWindow>
#include <QNetworkInterface>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

namespace Ui {
class MainWindow;
}

// The console's frame: runs the login, applies the saved theme, shows who is logged in,
// keeps the server-synchronised clock, grants the menu entries the user's option codes allow,
// builds the game filter and opens every dialog from its menus.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Text of the blinking clock at the last 500 ms tick (not shown by this window).
    QString textoReloj() const { return reloj; }

public slots:
    void cargarMensaje();
    void currentHora();
    void actualizarHora();
    void actualizarMensaje();
    void IniciarSesion();
    bool isActivar(QString opcion);
    void accesoJuegos();
    void ver_hora();

private slots:
    void on_action_Bancas_triggered();
    void on_action_Salir_triggered();
    void on_actionJuegos_triggered();
    void on_actionSorteos_triggered();
    void on_actionIm_genes_triggered();
    void on_actionBanca_triggered();
    void on_actionMonitorear_Ventas_triggered();
    void on_actionCalcular_Premios_triggered();
    void on_actionDeshacer_Premiaci_n_triggered();
    void on_actionMySql_triggered();
    void on_actionTemas_de_Tornavo_triggered();
    void on_actionAuto_premiaci_n_triggered();
    void on_actionVentas_Bancas_triggered();
    void on_pushButton_actualizarMensaje_clicked();
    void on_actionVentas_Bancas_2_triggered();
    void on_actionURL_triggered();

private:
    void respuestaHora(QNetworkReply *respuesta);
    void respuestaMensaje(QNetworkReply *respuesta);
    void respuestaActualizacion(QNetworkReply *respuesta);
    void aplicarDerechos();
    void abrirDialogo(QWidget *dialogo);

    Ui::MainWindow *ui;
    const QString titulo = QStringLiteral("Tornavo Super Usuario");
    QNetworkInterface interfazRed;            // kept, never used
    QNetworkAccessManager *managerMensaje;    // message board: load
    QNetworkAccessManager *managerActualizar; // message board: update
    QNetworkAccessManager *managerHora = nullptr;
    QTimer *timerVerHora;
    QTimer *timerActualizarHora;
    QTimer *timerCurrentHora;
    QString reloj;
};
