#pragma once

#include "autopremiacion/datos_autopremiacion.h"

#include <QDate>
#include <QDialog>
#include <QString>
#include <QStringList>

class ProcesoScript;
class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

namespace Ui {
class auto_calcular;
}

// Awards the day's draws without an operator: keeps the draw schedule and the published
// results, runs one result script per automatic game every ten seconds, reads the result
// files the scripts leave and sends each new result to the server.
//
// The state is public so that tests can look at it and drive the cycle through the slots.
class auto_calcular : public QDialog {
    Q_OBJECT

public:
    explicit auto_calcular(QWidget *parent = nullptr);
    ~auto_calcular() override;

    ListasJuego listasJuego;
    ListasSorteo listasSorteo;
    ListasResultado listasResultado;
    QStringList listaScripts; // "<script>.py" of the automatic games
    int indiceScript = 0;     // next entry of listaScripts to start
    QDate fechaResultados;    // day the loaded results belong to
    QStringList cuadrosEspera;
    int indiceEspera = 10; // the first tick wraps to frame 0
    bool esperaActiva = false;
    bool resultadosCargados = true;
    int desfaseReloj = 0; // server clock minus the console's, in seconds
    QString programaPython = QStringLiteral("python");
    ProcesoScript *proceso = nullptr;
    int pedidosResultados = 0;   // "cargarresultados.php" requests sent
    int resultadosAplicados = 0; // the newest of them whose answer was applied

    QTimer *temporizadorArchivos = nullptr; // 200 ms: listFilesTXT()
    QTimer *temporizadorReloj = nullptr;    // 1000 ms: mhora()
    QTimer *temporizadorCiclo = nullptr;    // 10000 ms: pyExe()

public slots:
    void mhora();
    void cargarResultados();
    void limpiarResultados();
    void calcular();
    void ejecutarPython();
    void on_pushButton_salir_clicked();
    void pyExe();
    void listFilesTXT();
    void blurred(bool wBlur);

private:
    void respuestaReloj(QNetworkReply *respuesta);
    void respuestaSorteos(QNetworkReply *respuesta);
    void respuestaResultados(QNetworkReply *respuesta);
    void respuestaPremio(QNetworkReply *respuesta);
    void mostrarFalta(const QStringList &etiquetas);
    void anotar(const QStringList &lineas);

    Ui::auto_calcular *ui;
    QNetworkAccessManager *redReloj = nullptr;
    QNetworkAccessManager *redSorteos = nullptr;
    QNetworkAccessManager *redResultados = nullptr;
    QNetworkAccessManager *redPremio = nullptr;
};
