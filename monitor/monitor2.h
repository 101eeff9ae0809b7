#pragma once

#include "monitor/listasmonitor.h"
#include "monitor/riesgo.h"
#include "monitor/ventasmonitor.h"
#include "app/descompresion.h"

#include <QDate>
#include <QDialog>
#include <QHash>
#include <QList>
#include <QModelIndex>
#include <QString>
#include <QTime>

#include <functional>
#include <memory>

class ModeloJugadas;
class ModeloLugares;
class QNetworkAccessManager;
class QNetworkReply;
class QTimer;

namespace QtCharts {
class QChartView;
}

namespace Ui {
class Monitor2;
}

// Sales monitor: every play of one date and draw, summed per number, per agency and per banca,
// with the draw's result and the money totals. Reply parsing, lookups and sums live in
// ListasMonitor and analizarVentas(); the plays table is a view over ModeloJugadas.
class Monitor2 : public QDialog {
    Q_OBJECT

public:
    explicit Monitor2(QWidget *parent = nullptr);
    ~Monitor2() override;

    const ListasMonitor &listas() const { return m_listas; }
    ModeloJugadas *modeloJugadas() const { return m_modelo; }
    // The risk figures on the "Riesgo" page, as last computed.
    const Riesgo &riesgo() const { return m_riesgo; }

    // Banca totals, one entry per entry of ListasMonitor::indiceBancas.
    QList<double> ventaBrutaBanca, comisionBanca, ventaNetaBanca, premiosBanca, utilidadBanca;

    // How often "Auto" presses "Actualizar", in milliseconds (30 s unless changed).
    void setIntervaloAuto(int milisegundos);
    int intervaloAuto() const;

    // Where the clock takes the time from (the system clock unless replaced).
    std::function<QTime()> reloj = [] {
        return QTime::currentTime();
    };

public slots:
    void cargarSoreos();
    void limpiar();
    void mhora();
    QString banca(QString cbanca);
    QString agencia(QString longCodAgencia);
    QString animal(QString cjuego, QString canimal);
    bool hayResultado(QString cjuego, QString csorteo);
    QString resultado(QString cjuego, QString csorteo);
    void cargarResultados();
    QString comisionAgencia(QString agencia, QString cjuego);
    int indiceBanca(QString cbanca);
    int agenciaTab2(QString agencia);
    void on_pushButton_actualizar_clicked();
    void on_tableWidget_clicked(const QModelIndex &index);
    void on_comboBox_currentIndexChanged(int index);
    void on_dateEdit_fecha_dateChanged(const QDate &date);
    void actualizar_resumen(QString _numero, double _monto);
    void on_tableWidget_resumen_numeros_clicked(const QModelIndex &index);
    void click_numero(QString numero);
    void on_checkBox_auto_toggled(bool activo);
    void on_spinBox_limite_valueChanged(int limite);

signals:
    // Emitted when a sales reply has been shown completely (tables filled and sorted).
    void ventasMostradas();
    // Emitted when a sales reply was dropped because the date or draw changed meanwhile.
    void ventasDescartadas();

private:
    // What a request was sent for: a reply counts only while these are still the current ones.
    struct Pedido {
        QDate fecha;
        int indice = -1;
        QString cjuego;
        QString csorteo;
        quint64 resultados = 0; // the results request sent with it (its number)
    };
    Pedido pedidoActual() const;
    bool vigente(const Pedido &p) const;
    void mostrarVentas(std::shared_ptr<LectorVentas> lector);
    void leerVentas(QNetworkReply *reply);
    void descartarVentas();
    void atenderVentasEnEspera();
    void pulsarAuto();
    void mostrarFrescura(bool hayRespuesta);

    void respuestaSorteos(QNetworkReply *reply);
    void respuestaBancas(QNetworkReply *reply);
    void respuestaAgencias(QNetworkReply *reply);
    void respuestaResultados(QNetworkReply *reply);
    void respuestaVentas(QNetworkReply *reply);

    void configurarTablas();
    void configurarRiesgo();
    void actualizarRiesgo();
    void dibujarRiesgo();
    void mostrarTotales();
    void mostrarUtilidad(std::int64_t utilidad);
    QString cjuegoActual() const;
    QString csorteoActual() const;

    Ui::Monitor2 *ui;
    ModeloJugadas *m_modelo = nullptr;
    ModeloLugares *m_lugares = nullptr;
    ListasMonitor m_listas;
    std::shared_ptr<const DatosVentas> m_ventas;
    QHash<QString, int> m_filaAgencia; // long agency code -> per-agency position

    QNetworkAccessManager *m_redSorteos = nullptr;
    QNetworkAccessManager *m_redBancas = nullptr;
    QNetworkAccessManager *m_redAgencias = nullptr;
    QNetworkAccessManager *m_redResultados = nullptr;
    QNetworkAccessManager *m_redVentas = nullptr;
    QTimer *m_timer = nullptr;
    QTimer *m_timerAuto = nullptr;
    QtCharts::QChartView *m_graficoRiesgo = nullptr;
    Riesgo m_riesgo;
    QTime m_hora;

    // Results requests are numbered; a results reply older than the one applied is dropped,
    // and a sales reply waits until the results reply sent with it has been handled.
    quint64 m_resultadosPedidos = 0;
    quint64 m_resultadosAplicados = 0;
    quint64 m_resultadosAtendidos = 0;
    QHash<QNetworkReply *, Pedido> m_pedidos;
    // A sales reply is read while it arrives, each by its own decoder and reader.
    struct LecturaVentas {
        std::unique_ptr<DecodificadorCuerpo> decodificador; // made when the headers are in
        LectorVentas lector;
    };
    QHash<QNetworkReply *, std::shared_ptr<LecturaVentas>> m_lecturas;
    bool m_ventasEnEspera = false;
    std::shared_ptr<LectorVentas> m_lectorEnEspera;
    Pedido m_pedidoEnEspera;

    std::int64_t m_ventaBruta = 0; // cents
    std::int64_t m_comision = 0;
};
