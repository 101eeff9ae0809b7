#include "monitor/monitor2.h"
#include "ui_Monitor2.h"

#include "app/descompresion.h"
#include "app/formato.h"
#include "app/red.h"
#include "app/sesion.h"
#include "monitor/modelojugadas.h"

#include <QCursor>
#include <QDebug>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLocale>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QTimer>
#include <QToolTip>
#include <QtCharts/QBarCategoryAxis>
#include <QtCharts/QBarSet>
#include <QtCharts/QChart>
#include <QtCharts/QChartView>
#include <QtCharts/QLineSeries>
#include <QtCharts/QStackedBarSeries>
#include <QtCharts/QValueAxis>

#include <algorithm>
#include <cmath>

using namespace QtCharts;

namespace {

const QString kEstiloEncabezado =
    QStringLiteral("background-color: rgb(0, 98, 147);\ncolor: rgb(255, 255, 255);");
constexpr Qt::Alignment kDerecha = Qt::AlignRight | Qt::AlignVCenter;

QString montoCentavos(std::int64_t centavos)
{
    return formatoMonto(deCentavos(centavos), SesionGlobal::decimales);
}

QList<double> enUnidades(const QVector<std::int64_t> &centavos)
{
    QList<double> r;
    r.reserve(centavos.size());
    for (std::int64_t c : centavos)
        r.append(deCentavos(c));
    return r;
}

QTableWidgetItem *celda(const QString &texto)
{
    return new QTableWidgetItem(texto);
}

QTableWidgetItem *celda(const QString &texto, Qt::Alignment alineacion)
{
    auto *item = new QTableWidgetItem(texto);
    item->setTextAlignment(int(alineacion));
    return item;
}

// A cell shown as text and sorted by a number.
class CeldaNumero : public QTableWidgetItem {
public:
    CeldaNumero(const QString &texto, double valor) : QTableWidgetItem(texto)
    {
        setData(Qt::UserRole, valor);
        setTextAlignment(int(Qt::AlignRight | Qt::AlignVCenter));
    }
    bool operator<(const QTableWidgetItem &otra) const override
    {
        return data(Qt::UserRole).toDouble() < otra.data(Qt::UserRole).toDouble();
    }
};

void anchos(QTableView *tabla, const QList<int> &valores)
{
    for (int c = 0; c < valores.size(); ++c)
        tabla->setColumnWidth(c, valores.at(c));
}

} // namespace

Monitor2::Monitor2(QWidget *parent) : QDialog(parent), ui(new Ui::Monitor2)
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Monitorear Ventas"));
    m_modelo = new ModeloJugadas(this);
    m_lugares = new ModeloLugares(this);
    configurarTablas();
    configurarRiesgo();

    m_redSorteos = new QNetworkAccessManager(this);
    connect(m_redSorteos, &QNetworkAccessManager::finished, this, &Monitor2::respuestaSorteos);
    m_redBancas = new QNetworkAccessManager(this);
    connect(m_redBancas, &QNetworkAccessManager::finished, this, &Monitor2::respuestaBancas);
    red::get(m_redBancas, QStringLiteral("bancasactivas.php"));
    m_redAgencias = new QNetworkAccessManager(this);
    connect(m_redAgencias, &QNetworkAccessManager::finished, this, &Monitor2::respuestaAgencias);
    red::get(m_redAgencias, QStringLiteral("monitoragencias.php"));
    m_redResultados = new QNetworkAccessManager(this);
    connect(m_redResultados, &QNetworkAccessManager::finished, this,
            &Monitor2::respuestaResultados);
    m_redVentas = new QNetworkAccessManager(this);
    connect(m_redVentas, &QNetworkAccessManager::finished, this, &Monitor2::respuestaVentas);

    ui->tabWidget_numeros->setCurrentIndex(1);

    m_timer = new QTimer(this);
    connect(m_timer, &QTimer::timeout, this, &Monitor2::mhora);
    m_timer->start(500);
    m_timerAuto = new QTimer(this);
    m_timerAuto->setInterval(30000);
    connect(m_timerAuto, &QTimer::timeout, this, &Monitor2::pulsarAuto);

    ui->dateEdit_fecha->setDate(SesionGlobal::fechaActual);
    cargarSoreos();
}

Monitor2::~Monitor2()
{
    // Requests still out are aborted with their managers; no reply may reach a handler of a
    // dialog that is going away.
    m_timer->stop();
    m_timerAuto->stop();
    for (QNetworkReply *reply : m_lecturas.keys())
        disconnect(reply, nullptr, this, nullptr);
    for (QNetworkAccessManager *red :
         {m_redSorteos, m_redBancas, m_redAgencias, m_redResultados, m_redVentas}) {
        disconnect(red, nullptr, this, nullptr);
        delete red;
    }
    delete ui;
}

void Monitor2::configurarTablas()
{
    const auto preparar = [](QTableWidget *tabla, const QStringList &columnas) {
        tabla->setColumnCount(columnas.size());
        tabla->setHorizontalHeaderLabels(columnas);
    };
    preparar(ui->tableWidget_resumen_numeros, {"#", "Nombre", "Monto", "#\nJug"});
    anchos(ui->tableWidget_resumen_numeros, {50, 85, 80, 50});
    ui->tableWidget_resumen_agencias->setModel(m_lugares);
    anchos(ui->tableWidget_resumen_agencias, {90, 125, 65});

    ui->tableWidget->setModel(m_modelo);
    // Narrow columns (the number, the play count) keep the width they are given.
    ui->tableWidget->horizontalHeader()->setMinimumSectionSize(20);
    // The headers do not mark the sections the selection touches: once the plays are sorted by
    // another column, a number's plays are thousands of separate ranges, and Qt walks all of
    // them (copying them) for every header section on every repaint. They paint from a
    // selection of their own that stays empty; clicking a header still selects through the
    // table.
    for (QHeaderView *h :
         {ui->tableWidget->horizontalHeader(), ui->tableWidget->verticalHeader()}) {
        h->setHighlightSections(false);
        h->setSelectionModel(new QItemSelectionModel(m_modelo, h));
    }
    ui->tableWidget_bancas->horizontalHeader()->setMinimumSectionSize(20);
    anchos(ui->tableWidget, {100, 140, 65, 70, 30, 90, 70, 70});
    ui->tableWidget->setColumnHidden(ModeloJugadas::ColMontoOculto, true);
    ui->tableWidget->setColumnHidden(ModeloJugadas::ColCodAgencia, true);

    preparar(ui->tableWidget_bancas, {"Agencia", "#\nJug", "Monto", "Banca", "cAgencia"});
    anchos(ui->tableWidget_bancas, {140, 30, 65, 80});
    ui->tableWidget_bancas->setColumnHidden(4, true);

    preparar(ui->tableWidget_tbancas,
             {"Banca", "Vta Bruta", "Comisión", "Vta Neta", "Premios", "Utilidad"});
    // Column 4 gets its width twice and column 5 keeps the default width.
    ui->tableWidget_tbancas->setColumnWidth(0, 90);
    ui->tableWidget_tbancas->setColumnWidth(1, 85);
    ui->tableWidget_tbancas->setColumnWidth(2, 80);
    ui->tableWidget_tbancas->setColumnWidth(3, 85);
    ui->tableWidget_tbancas->setColumnWidth(4, 85);
    ui->tableWidget_tbancas->setColumnWidth(4, 85);

    for (QTableView *tabla : {static_cast<QTableView *>(ui->tableWidget_resumen_numeros),
                              static_cast<QTableView *>(ui->tableWidget_resumen_agencias),
                              ui->tableWidget, static_cast<QTableView *>(ui->tableWidget_bancas),
                              static_cast<QTableView *>(ui->tableWidget_tbancas)})
        tabla->horizontalHeader()->setStyleSheet(kEstiloEncabezado);
}

QString Monitor2::cjuegoActual() const
{
    return m_listas.codigosJuego.value(ui->comboBox->currentIndex());
}

QString Monitor2::csorteoActual() const
{
    return m_listas.codigosSorteo.value(ui->comboBox->currentIndex());
}

// ---- requests and the small replies ----

void Monitor2::cargarSoreos()
{
    ui->comboBox->addItem(QStringLiteral("Cargando sorteos..."));
    red::get(m_redSorteos, QStringLiteral("monitorsorteos2.php?&u=") + SesionGlobal::usuario);
}

void Monitor2::respuestaSorteos(QNetworkReply *reply)
{
    const QString texto = red::textoRespuesta(reply);
    reply->deleteLater();
    ui->comboBox->clear();
    const QStringList items = m_listas.cargarSorteos(texto);
    for (const QString &item : items)
        ui->comboBox->addItem(item);
}

void Monitor2::respuestaBancas(QNetworkReply *reply)
{
    const QString texto = red::textoRespuesta(reply);
    reply->deleteLater();
    const int nuevas = m_listas.cargarBancas(texto);
    for (int i = 0; i < nuevas; ++i) {
        ventaBrutaBanca.append(0.0);
        comisionBanca.append(0.0);
        ventaNetaBanca.append(0.0);
        premiosBanca.append(0.0);
        utilidadBanca.append(0.0);
    }
}

void Monitor2::respuestaAgencias(QNetworkReply *reply)
{
    const QString texto = red::textoRespuesta(reply);
    reply->deleteLater();
    m_listas.cargarAgencias(texto);
}

void Monitor2::cargarResultados()
{
    const QString ruta =
        QStringLiteral("monitorresultados.php?&f=") + fechaServidor(ui->dateEdit_fecha->date());
    qDebug().noquote() << red::urlPeticion(ruta);
    Pedido p = pedidoActual();
    p.resultados = ++m_resultadosPedidos;
    m_pedidos.insert(red::get(m_redResultados, ruta), p);
}

void Monitor2::respuestaResultados(QNetworkReply *reply)
{
    const QString texto = red::textoRespuesta(reply);
    const Pedido p = m_pedidos.take(reply);
    reply->deleteLater();
    // Results are per date; a reply for another date, or older than the one applied, is
    // dropped.
    if (p.fecha == ui->dateEdit_fecha->date() && p.resultados > m_resultadosAplicados) {
        m_listas.cargarResultados(texto);
        m_resultadosAplicados = p.resultados;
    }
    m_resultadosAtendidos = qMax(m_resultadosAtendidos, p.resultados);
    atenderVentasEnEspera();
}

Monitor2::Pedido Monitor2::pedidoActual() const
{
    Pedido p;
    p.fecha = ui->dateEdit_fecha->date();
    p.indice = ui->comboBox->currentIndex();
    p.cjuego = cjuegoActual();
    p.csorteo = csorteoActual();
    p.resultados = m_resultadosPedidos;
    return p;
}

bool Monitor2::vigente(const Pedido &p) const
{
    const Pedido ahora = pedidoActual();
    return p.fecha == ahora.fecha && p.indice == ahora.indice && p.cjuego == ahora.cjuego &&
           p.csorteo == ahora.csorteo;
}

// ---- lookups ----

QString Monitor2::banca(QString cbanca)
{
    return m_listas.banca(cbanca);
}

QString Monitor2::agencia(QString longCodAgencia)
{
    return m_listas.agencia(longCodAgencia);
}

QString Monitor2::animal(QString cjuego, QString canimal)
{
    return m_listas.animal(cjuego, canimal);
}

bool Monitor2::hayResultado(QString cjuego, QString csorteo)
{
    return m_listas.hayResultado(cjuego, csorteo);
}

QString Monitor2::resultado(QString cjuego, QString csorteo)
{
    return m_listas.resultado(cjuego, csorteo);
}

QString Monitor2::comisionAgencia(QString agencia, QString cjuego)
{
    return m_listas.comisionAgencia(agencia, cjuego);
}

int Monitor2::indiceBanca(QString cbanca)
{
    return m_listas.indiceBanca(cbanca);
}

int Monitor2::agenciaTab2(QString agencia)
{
    return m_filaAgencia.value(agencia, -1);
}

// ---- clock and reloads ----

void Monitor2::mhora()
{
    m_hora = reloj();
    ui->label_hora->setText(textoReloj(m_hora));
}

void Monitor2::setIntervaloAuto(int milisegundos)
{
    m_timerAuto->setInterval(milisegundos);
}

int Monitor2::intervaloAuto() const
{
    return m_timerAuto->interval();
}

void Monitor2::on_checkBox_auto_toggled(bool activo)
{
    if (activo)
        m_timerAuto->start();
    else
        m_timerAuto->stop();
}

void Monitor2::pulsarAuto()
{
    // Only while no sales request is out: the button is disabled until its reply is handled.
    if (ui->pushButton_actualizar->isEnabled() && !m_ventasEnEspera)
        ui->pushButton_actualizar->click();
}

void Monitor2::mostrarFrescura(bool hayRespuesta)
{
    if (hayRespuesta) {
        // Same text on every machine, whatever its locale.
        const QLocale local(QLocale::Spanish, QLocale::Venezuela);
        ui->label_actualizado->setText(QStringLiteral("Actualizado ") +
                                       local.toString(reloj(), QStringLiteral("h:mm:ss ap")));
        ui->label_actualizado->setStyleSheet(QString());
    } else {
        ui->label_actualizado->setText(QStringLiteral("Sin respuesta del servidor"));
        ui->label_actualizado->setStyleSheet(SesionGlobal::colorRojo);
    }
}

void Monitor2::on_comboBox_currentIndexChanged(int)
{
    ui->label_actualizado->clear();
    ui->label_actualizado->setStyleSheet(QString());
    if (m_ventasEnEspera && !vigente(m_pedidoEnEspera))
        descartarVentas();
    if (ui->comboBox->count() > 0) {
        limpiar();
        cargarResultados();
    }
}

void Monitor2::on_dateEdit_fecha_dateChanged(const QDate &)
{
    ui->label_actualizado->clear();
    ui->label_actualizado->setStyleSheet(QString());
    if (m_ventasEnEspera && !vigente(m_pedidoEnEspera))
        descartarVentas();
    limpiar();
    cargarResultados();
}

void Monitor2::limpiar()
{
    ui->tableWidget_resumen_numeros->setRowCount(0);
    ui->tableWidget_resumen_agencias->setSortingEnabled(false);
    m_lugares->limpiar();
    ui->tableWidget_bancas->setRowCount(0);
    ui->tableWidget_tbancas->setRowCount(0);
    m_modelo->limpiar();
    m_ventas.reset();
    m_filaAgencia.clear();

    ui->lineEdit_animal->setText(QString());
    ui->lineEdit_jugadas->setText(QString());
    ui->lineEdit_monto->setText(QString());
    ui->lineEdit_premio->setText(QString());
    ui->label_juego->setText(QString());
    const QString cero = QStringLiteral("0");
    for (QLabel *l : {ui->label_jugadas, ui->label_monto, ui->label_montott, ui->label_comisiont,
                      ui->label_ventaneta, ui->label_premios, ui->label_utilidad})
        l->setText(cero);
    for (QLineEdit *e : {ui->lineEdit_vbrutaS, ui->lineEdit_comisionS, ui->lineEdit_vnetaS,
                         ui->lineEdit_premioS, ui->lineEdit_utilidadS})
        e->setText(cero);
    ui->label_utilidad->setStyleSheet(QString());
    ui->lineEdit_utilidadS->setStyleSheet(QString());
    for (QList<double> *lista :
         {&ventaBrutaBanca, &comisionBanca, &ventaNetaBanca, &premiosBanca, &utilidadBanca})
        std::fill(lista->begin(), lista->end(), 0.0);
    m_ventaBruta = 0;
    m_comision = 0;
    actualizarRiesgo();
}

// ---- sales ----

void Monitor2::on_pushButton_actualizar_clicked()
{
    cargarResultados();
    ui->pushButton_actualizar->setEnabled(false);
    QNetworkReply *reply =
        red::getGrande(m_redVentas, QStringLiteral("monitorventas.php?&f=") +
                                        fechaServidor(ui->dateEdit_fecha->date()) +
                                        QStringLiteral("&j=") + cjuegoActual());
    m_pedidos.insert(reply, pedidoActual());
    // The plays are read as they arrive: when the last byte is in, little is left to do, and
    // the reply is never held whole. What waits to be read meanwhile is still compressed. The
    // network layer is not slowed down to match: a server must never see this console stop
    // reading and drop the connection.
    m_lecturas.insert(reply, std::make_shared<LecturaVentas>());
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { leerVentas(reply); });
}

void Monitor2::leerVentas(QNetworkReply *reply)
{
    const auto lectura = m_lecturas.value(reply);
    // An error page is drained and never read as plays.
    const bool valida = lectura && red::respuestaValida(reply);
    if (valida && !lectura->decodificador)
        lectura->decodificador =
            std::make_unique<DecodificadorCuerpo>(reply->rawHeader("Content-Encoding"));
    const auto destino = [&lectura](const char *p, qint64 n) {
        lectura->lector.agregar(p, n);
    };
    char trozo[1 << 16];
    qint64 n = 0;
    while ((n = reply->read(trozo, sizeof trozo)) > 0) {
        if (valida)
            lectura->decodificador->agregar(trozo, n, destino);
    }
}

void Monitor2::respuestaVentas(QNetworkReply *reply)
{
    // What was read of a reply counts only when the reply is an answer and its body came
    // whole; anything else is no answer.
    std::shared_ptr<LectorVentas> lector;
    if (red::respuestaValida(reply)) {
        leerVentas(reply);
        const auto lectura = m_lecturas.value(reply);
        if (lectura && (!lectura->decodificador || lectura->decodificador->completo()))
            lector = std::shared_ptr<LectorVentas>(lectura, &lectura->lector);
    }
    m_lecturas.remove(reply);
    const Pedido p = m_pedidos.take(reply);
    reply->deleteLater();
    if (!vigente(p)) {
        m_ventasEnEspera = false;
        descartarVentas();
        return;
    }
    // The results sent with this press decide Premios and the winning plays: wait for them.
    if (m_resultadosAtendidos < p.resultados) {
        m_ventasEnEspera = true;
        m_lectorEnEspera = std::move(lector);
        m_pedidoEnEspera = p;
        return;
    }
    mostrarVentas(std::move(lector));
}

void Monitor2::atenderVentasEnEspera()
{
    if (!m_ventasEnEspera || m_resultadosAtendidos < m_pedidoEnEspera.resultados)
        return;
    m_ventasEnEspera = false;
    std::shared_ptr<LectorVentas> lector = std::move(m_lectorEnEspera);
    m_lectorEnEspera.reset();
    if (vigente(m_pedidoEnEspera))
        mostrarVentas(std::move(lector));
    else
        descartarVentas();
}

void Monitor2::descartarVentas()
{
    m_ventasEnEspera = false;
    m_lectorEnEspera.reset();
    ui->pushButton_actualizar->setEnabled(true);
    emit ventasDescartadas();
}

void Monitor2::mostrarVentas(std::shared_ptr<LectorVentas> lector)
{
    ui->tableWidget->setSortingEnabled(false);
    ui->tableWidget_resumen_numeros->setSortingEnabled(false);
    limpiar();
    ui->pushButton_actualizar->setEnabled(true);
    ui->tableWidget_bancas->setSortingEnabled(false);
    const int indice = ui->comboBox->currentIndex();
    ui->label_juego->setText(m_listas.nombresSorteo.value(indice));
    const QString cjuego = cjuegoActual();

    // No reader: an error or no answer at all, shown as an empty reply.
    const bool hayRespuesta = lector && !lector->vacio();
    auto datos = std::make_shared<DatosVentas>(
        lector ? lector->terminar(m_listas, cjuego, csorteoActual(),
                                  m_listas.factoresSorteo.value(indice))
               : DatosVentas());
    lector.reset();
    mostrarFrescura(hayRespuesta);
    if (datos->jugadas.empty()) {
        ui->pushButton_actualizar->setFocus();
        emit ventasMostradas();
        return;
    }
    m_ventas = datos;
    const DatosVentas &d = *datos;
    m_modelo->cargar(datos, SesionGlobal::decimales);

    // Per-number summary, in the order the numbers were first played.
    QTableWidget *resumen = ui->tableWidget_resumen_numeros;
    resumen->setRowCount(int(d.resumen.size()));
    for (int f = 0; f < int(d.resumen.size()); ++f) {
        const DatosVentas::FilaResumen &fila = d.resumen[std::size_t(f)];
        const DatosVentas::Numero &num = d.numeros[std::size_t(fila.numero)];
        resumen->setItem(f, 0, celda(num.texto));
        resumen->setItem(f, 1, celda(num.nombre));
        resumen->setItem(f, 2, celda(fila.monto, kDerecha));
        resumen->setItem(f, 3, celda(QString::number(fila.jugadas), kDerecha));
    }

    // Per-agency rows. A row written more than once carries the alignment of the rewrite.
    QTableWidget *agencias = ui->tableWidget_bancas;
    agencias->setRowCount(int(d.filasAgencia.size()));
    m_filaAgencia.reserve(int(d.filasAgencia.size()));
    for (int f = 0; f < int(d.filasAgencia.size()); ++f) {
        const DatosVentas::FilaAgencia &fila = d.filasAgencia[std::size_t(f)];
        const DatosVentas::Agencia &ag = d.agencias[std::size_t(fila.agencia)];
        agencias->setItem(f, 0, celda(ag.nombre));
        if (fila.jugadas > 1) {
            agencias->setItem(f, 1, celda(QString::number(fila.jugadas), Qt::AlignCenter));
            agencias->setItem(f, 2, celda(montoCentavos(fila.centavos), kDerecha));
        } else {
            agencias->setItem(f, 1, celda(QStringLiteral("1")));
            agencias->setItem(f, 2, celda(montoCentavos(fila.centavos)));
        }
        agencias->setItem(f, 3, celda(d.bancas[std::size_t(fila.banca)].nombre));
        agencias->setItem(f, 4, celda(ag.clave));
        m_filaAgencia.insert(ag.clave, f);
    }

    ventaBrutaBanca = enUnidades(d.ventaBrutaBanca);
    comisionBanca = enUnidades(d.comisionBanca);
    ventaNetaBanca = enUnidades(d.ventaNetaBanca);
    premiosBanca = enUnidades(d.premiosBanca);
    utilidadBanca = enUnidades(d.utilidadBanca);

    m_ventaBruta = d.ventaBruta;
    m_comision = d.comision;
    mostrarTotales();

    // Banca totals.
    QTableWidget *tbancas = ui->tableWidget_tbancas;
    const int nb = m_listas.indiceBancas.size();
    tbancas->setRowCount(nb);
    for (int b = 0; b < nb; ++b) {
        tbancas->setItem(b, 0, celda(m_listas.nombresBanca.value(b), kDerecha));
        tbancas->setItem(b, 1, celda(montoCentavos(d.ventaBrutaBanca.value(b)), kDerecha));
        tbancas->setItem(b, 2, celda(montoCentavos(d.comisionBanca.value(b)), kDerecha));
        tbancas->setItem(b, 3, celda(montoCentavos(d.ventaNetaBanca.value(b)), kDerecha));
        tbancas->setItem(b, 4, celda(montoCentavos(d.premiosBanca.value(b)), kDerecha));
        QTableWidgetItem *utilidad = celda(montoCentavos(d.utilidadBanca.value(b)), kDerecha);
        if (d.utilidadBanca.value(b) < 0)
            utilidad->setForeground(QBrush(Qt::red));
        tbancas->setItem(b, 5, utilidad);
    }

    // Sorting back on; the indicator first, so that each table is sorted once.
    ui->tableWidget->horizontalHeader()->setSortIndicator(4, Qt::AscendingOrder);
    ui->tableWidget->setSortingEnabled(true);
    resumen->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    resumen->setSortingEnabled(true);
    agencias->horizontalHeader()->setSortIndicator(4, Qt::AscendingOrder);
    agencias->setSortingEnabled(true);
    ui->pushButton_actualizar->setEnabled(true);
    ui->pushButton_actualizar->setFocus();

    actualizarRiesgo();

    if (d.hayResultado) {
        ui->lineEdit_animal->setText(animal(cjuego, d.resultado));
        ui->tableWidget->selectionModel()->select(
            m_modelo->seleccionDeNumero(d.numeroGanador, 0, ModeloJugadas::ColEstado),
            QItemSelectionModel::Select);
    }
    emit ventasMostradas();
}

void Monitor2::mostrarTotales()
{
    const std::int64_t neta = m_ventaBruta - m_comision;
    const std::int64_t premios = m_ventas ? m_ventas->premios : 0;
    const std::int64_t utilidad = neta - premios;
    ui->label_jugadas->setText(QString::number(m_ventas ? m_ventas->cantidad : 0));
    ui->label_monto->setText(montoCentavos(m_ventaBruta));
    ui->lineEdit_vbrutaS->setText(montoCentavos(m_ventaBruta));
    ui->label_montott->setText(montoCentavos(m_ventaBruta));
    ui->lineEdit_comisionS->setText(montoCentavos(m_comision));
    ui->label_comisiont->setText(montoCentavos(m_comision));
    ui->lineEdit_vnetaS->setText(montoCentavos(neta));
    ui->label_ventaneta->setText(montoCentavos(neta));
    ui->lineEdit_premioS->setText(montoCentavos(premios));
    ui->label_premios->setText(montoCentavos(premios));
    mostrarUtilidad(utilidad);
}

void Monitor2::mostrarUtilidad(std::int64_t utilidad)
{
    ui->lineEdit_utilidadS->setText(montoCentavos(utilidad));
    ui->label_utilidad->setText(montoCentavos(utilidad));
    ui->label_utilidad->setStyleSheet(utilidad < 0 ? SesionGlobal::colorRojo : QString());
}

void Monitor2::actualizar_resumen(QString _numero, double _monto)
{
    QTableWidget *tabla = ui->tableWidget_resumen_numeros;
    int fila = -1;
    for (int f = 0; f < tabla->rowCount(); ++f) {
        const QTableWidgetItem *item = tabla->item(f, 0);
        if (item && item->text() == _numero)
            fila = f;
    }
    if (fila >= 0) {
        const QTableWidgetItem *montoItem = tabla->item(fila, 2);
        const QTableWidgetItem *jugItem = tabla->item(fila, 3);
        // Both figures in whole cents, so the sum is exact.
        const std::int64_t suma =
            aCentavos(montoItem ? montoItem->text().toDouble() : 0.0) + aCentavos(_monto);
        const int jugadas = (jugItem ? jugItem->text().toInt() : 0) + 1;
        tabla->setItem(fila, 2, celda(QString::number(deCentavos(suma), 'f', 2), kDerecha));
        tabla->setItem(fila, 3, celda(QString::number(jugadas), kDerecha));
        return;
    }
    fila = tabla->rowCount();
    tabla->insertRow(fila);
    tabla->setItem(fila, 0, celda(_numero));
    tabla->setItem(fila, 1, celda(animal(cjuegoActual(), _numero)));
    tabla->setItem(fila, 2,
                   celda(QString::number(deCentavos(aCentavos(_monto)), 'f', 2), kDerecha));
    tabla->setItem(fila, 3, celda(QStringLiteral("1"), kDerecha));
}

void Monitor2::click_numero(QString numero)
{
    // Clearing first, then selecting into an empty selection, keeps the selection model's
    // bookkeeping in proportion to the number's plays.
    const int n = m_modelo->indiceNumero(numero);
    QItemSelectionModel *seleccion = ui->tableWidget->selectionModel();
    seleccion->clearSelection();
    if (n >= 0)
        seleccion->select(m_modelo->seleccionDeNumero(n, 0, ModeloJugadas::ColEstado),
                          QItemSelectionModel::Select);

    const QString cjuego = cjuegoActual();
    ui->lineEdit_animal->setText(animal(cjuego, numero));
    // The prize is the draw's factor times each play, each rounded to the cent, summed.
    const DatosVentas::Numero vacio;
    const DatosVentas::Numero &num = n >= 0 ? m_ventas->numeros[std::size_t(n)] : vacio;
    ui->lineEdit_jugadas->setText(QString::number(num.jugadas));
    ui->lineEdit_monto->setText(montoCentavos(num.centavos));
    ui->lineEdit_premio->setText(montoCentavos(num.premio));

    const QString csorteo = csorteoActual();
    if (hayResultado(cjuego, csorteo) && resultado(cjuego, csorteo) == numero) {
        ui->lineEdit_premioS->setText(montoCentavos(num.premio));
        ui->label_premios->setText(montoCentavos(num.premio));
        mostrarUtilidad(m_ventaBruta - m_comision - num.premio);
    }
}

void Monitor2::on_tableWidget_clicked(const QModelIndex &index)
{
    if (!index.isValid() || index.row() >= m_modelo->rowCount())
        return;
    const bool seleccionada = ui->tableWidget->selectionModel()->isSelected(index);
    const QString numero = m_modelo->texto(index.row(), ModeloJugadas::ColNumero);
    click_numero(numero);
    // click_numero left exactly the number's plays selected; deselecting them clears it all.
    if (!seleccionada)
        ui->tableWidget->selectionModel()->clearSelection();
}

void Monitor2::on_tableWidget_resumen_numeros_clicked(const QModelIndex &index)
{
    QTableView *lista = ui->tableWidget_resumen_agencias;
    lista->setSortingEnabled(false);
    m_lugares->limpiar();
    const QTableWidgetItem *item = ui->tableWidget_resumen_numeros->item(index.row(), 0);
    if (!item)
        return;
    const QString numero = item->text();

    // One row per play of the number that is not deleted, in the plays table's order.
    const int n = m_modelo->indiceNumero(numero);
    if (n >= 0) {
        const int *f = nullptr, *fin = nullptr;
        m_modelo->filasDeNumero(n, f, fin);
        std::vector<int> jugadas;
        jugadas.reserve(std::size_t(fin - f));
        for (; f != fin; ++f) {
            const int i = m_modelo->indiceJugada(*f);
            if (m_ventas->jugadas[std::size_t(i)].estado != JugadaVenta::Eliminado)
                jugadas.push_back(i);
        }
        m_lugares->mostrar(m_ventas, std::move(jugadas), SesionGlobal::decimales);
    }
    // click_numero leaves exactly the plays of the number selected.
    click_numero(numero);
    lista->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    lista->setSortingEnabled(true);
}

// ---- risk page ----

void Monitor2::configurarRiesgo()
{
    QTableWidget *tabla = ui->tableWidget_riesgo;
    tabla->setColumnCount(6);
    tabla->setHorizontalHeaderLabels({QStringLiteral("#"), QStringLiteral("Nombre"),
                                      QStringLiteral("Jugado"), QStringLiteral("Premio si sale"),
                                      QStringLiteral("% Venta Neta"),
                                      QStringLiteral("Resultado si sale")});
    anchos(tabla, {36, 75, 80, 110, 100, 125});
    tabla->verticalHeader()->hide();
    tabla->horizontalHeader()->setStyleSheet(kEstiloEncabezado);
    ui->splitter_riesgo->setStretchFactor(0, 3);
    ui->splitter_riesgo->setStretchFactor(1, 2);
    tabla->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto *grafico = new QChart;
    grafico->legend()->hide();
    grafico->setMargins(QMargins(4, 4, 4, 4));
    grafico->setBackgroundRoundness(0);
    m_graficoRiesgo = new QChartView(grafico, ui->widget_graficoRiesgo);
    m_graficoRiesgo->setObjectName(QStringLiteral("chartView_riesgo"));
    m_graficoRiesgo->setRenderHint(QPainter::Antialiasing);
    ui->layout_graficoRiesgo->addWidget(m_graficoRiesgo);
}

void Monitor2::on_spinBox_limite_valueChanged(int)
{
    actualizarRiesgo();
}

void Monitor2::actualizarRiesgo()
{
    const int indice = ui->comboBox->currentIndex();
    m_riesgo = m_ventas ? calcularRiesgo(*m_ventas, m_listas.factoresSorteo.value(indice),
                                         ui->spinBox_limite->value())
                        : Riesgo();
    const Riesgo &r = m_riesgo;
    ui->label_riesgo->setText(r.resumen(SesionGlobal::decimales));

    QTableWidget *tabla = ui->tableWidget_riesgo;
    tabla->setSortingEnabled(false);
    tabla->setRowCount(int(r.filas.size()));
    QFont negrita = tabla->font();
    negrita.setBold(true);
    for (int f = 0; f < int(r.filas.size()); ++f) {
        const FilaRiesgo &fila = r.filas[std::size_t(f)];
        double p = 0;
        const bool hayP = r.porcentaje(fila, p);
        QTableWidgetItem *celdas[6] = {
            celda(fila.numero),
            celda(fila.nombre),
            new CeldaNumero(montoCentavos(fila.jugado), double(fila.jugado)),
            new CeldaNumero(montoCentavos(fila.premio), double(fila.premio)),
            new CeldaNumero(hayP ? QString::number(std::llround(p)) + QStringLiteral(" %")
                                 : QString(),
                            hayP ? p : 0.0),
            new CeldaNumero(montoCentavos(fila.resultado), double(fila.resultado))};
        for (int c = 0; c < 6; ++c) {
            QTableWidgetItem *item = celdas[c];
            if (fila.sobreLimite)
                item->setForeground(QBrush(Qt::red));
            if (fila.ganador) {
                item->setFont(negrita);
                item->setBackground(QBrush(QColor(255, 236, 179)));
                item->setToolTip(QStringLiteral("Resultado del sorteo"));
            }
            tabla->setItem(f, c, item);
        }
    }
    tabla->horizontalHeader()->setSortIndicator(3, Qt::DescendingOrder);
    tabla->setSortingEnabled(true);
    dibujarRiesgo();
}

void Monitor2::dibujarRiesgo()
{
    QChart *grafico = m_graficoRiesgo->chart();
    grafico->removeAllSeries();
    for (QAbstractAxis *eje : grafico->axes()) {
        grafico->removeAxis(eje);
        delete eje;
    }
    const Riesgo &r = m_riesgo;
    if (r.filas.empty())
        return;

    // One bar per number, in the table's order; the part over the limit line in red.
    auto *normal = new QBarSet(QStringLiteral("Jugado"));
    auto *sobre = new QBarSet(QStringLiteral("Sobre el límite"));
    normal->setColor(QColor(0, 98, 147));
    sobre->setColor(Qt::red);
    QStringList categorias;
    double maximo = std::max(0.0, r.jugadoLimite / 100.0);
    for (const FilaRiesgo &f : r.filas) {
        const double jugado = deCentavos(f.jugado);
        *normal << (f.sobreLimite ? 0.0 : jugado);
        *sobre << (f.sobreLimite ? jugado : 0.0);
        categorias << f.numero;
        maximo = std::max(maximo, jugado);
    }
    auto *barras = new QStackedBarSeries;
    barras->append(normal);
    barras->append(sobre);
    barras->setBarWidth(0.8);
    grafico->addSeries(barras);
    connect(barras, &QStackedBarSeries::hovered, this, [this](bool dentro, int i, QBarSet *) {
        if (!dentro || i < 0 || i >= int(m_riesgo.filas.size())) {
            QToolTip::hideText();
            return;
        }
        const FilaRiesgo &f = m_riesgo.filas[std::size_t(i)];
        QToolTip::showText(QCursor::pos(), f.numero + QLatin1Char('-') + f.nombre +
                                               QStringLiteral(": ") + montoCentavos(f.jugado));
    });

    // The amount whose prize equals the limit.
    auto *limite = new QLineSeries;
    limite->setName(QStringLiteral("Límite"));
    const double y = r.jugadoLimite / 100.0;
    limite->append(-0.5, y);
    limite->append(double(r.filas.size()) - 0.5, y);
    QPen lapiz(QColor(160, 0, 0));
    lapiz.setWidth(2);
    lapiz.setStyle(Qt::DashLine);
    limite->setPen(lapiz);
    grafico->addSeries(limite);

    auto *ejeX = new QBarCategoryAxis;
    ejeX->append(categorias);
    QFont chica = ejeX->labelsFont();
    chica.setPointSize(7);
    ejeX->setLabelsFont(chica);
    // Past a score of numbers the labels no longer fit; the bars then tell their number on
    // hover.
    ejeX->setLabelsVisible(categorias.size() <= 20);
    grafico->addAxis(ejeX, Qt::AlignBottom);
    barras->attachAxis(ejeX);
    limite->attachAxis(ejeX);
    auto *ejeY = new QValueAxis;
    ejeY->setRange(0, maximo > 0 ? maximo * 1.1 : 1.0);
    ejeY->setLabelFormat(QStringLiteral("%.0f"));
    ejeY->setLabelsFont(chica);
    grafico->addAxis(ejeY, Qt::AlignLeft);
    barras->attachAxis(ejeY);
    limite->attachAxis(ejeY);
}
