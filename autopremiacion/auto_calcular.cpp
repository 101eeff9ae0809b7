#include "autopremiacion/auto_calcular.h"
#include "ui_auto_calcular.h"

#include "app/apagado.h"
#include "app/formato.h"
#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"
#include "autopremiacion/procesoscript.h"

#include <QDir>
#include <QFile>
#include <QGraphicsBlurEffect>
#include <QHeaderView>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTableWidgetItem>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>

namespace {

// The log keeps the newest lines only; the dialog may stay open for days.
constexpr int maximoLineasRegistro = 5000;

void agregarFila(QTableWidget *tabla, const QStringList &textos)
{
    const int fila = tabla->rowCount();
    tabla->insertRow(fila);
    for (int c = 0; c < textos.size(); ++c)
        tabla->setItem(fila, c, new QTableWidgetItem(textos.at(c)));
}

bool legible(QNetworkReply *respuesta)
{
    return red::respuestaValida(respuesta);
}

} // namespace

auto_calcular::auto_calcular(QWidget *parent) : QDialog(parent), ui(new Ui::auto_calcular)
{
    fechaResultados = QDate::currentDate();
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Auto-premiación"));

    ui->tableWidget_juegos->setColumnCount(2);
    ui->tableWidget_juegos->setHorizontalHeaderLabels(
        {QStringLiteral("Juego"), QStringLiteral("Auto")});
    ui->tableWidget_juegos->setColumnWidth(0, 130);
    ui->tableWidget_juegos->setColumnWidth(1, 50);
    ui->tableWidget_resultados->setColumnCount(3);
    ui->tableWidget_resultados->setHorizontalHeaderLabels(
        {QStringLiteral("Sorteo"), QStringLiteral("Resultado"), QStringLiteral("Hora Calc")});
    ui->tableWidget_resultados->setColumnWidth(0, 160);
    ui->tableWidget_resultados->setColumnWidth(1, 110);
    ui->tableWidget_falta->setColumnCount(1);
    ui->tableWidget_falta->setHorizontalHeaderLabels({QStringLiteral("Sorteos\npor premiar")});
    ui->tableWidget_falta->setColumnWidth(0, 160);
    ui->tableWidget_txt->setColumnCount(1);
    ui->tableWidget_txt->setHorizontalHeaderLabels({QStringLiteral("Archivo")});
    ui->tableWidget_txt->setColumnWidth(0, 230);
    ui->textEdit_info->document()->setMaximumBlockCount(maximoLineasRegistro);

    qDebug("*** Windows ***");

    proceso = new ProcesoScript(this);
    redReloj = new QNetworkAccessManager(this);
    redSorteos = new QNetworkAccessManager(this);
    redResultados = new QNetworkAccessManager(this);
    redPremio = new QNetworkAccessManager(this);
    connect(redReloj, &QNetworkAccessManager::finished, this, &auto_calcular::respuestaReloj);
    connect(redSorteos, &QNetworkAccessManager::finished, this, &auto_calcular::respuestaSorteos);
    connect(redResultados, &QNetworkAccessManager::finished, this,
            &auto_calcular::respuestaResultados);
    connect(redPremio, &QNetworkAccessManager::finished, this, &auto_calcular::respuestaPremio);

    horaActual = QTime::currentTime();
    red::get(redReloj, QStringLiteral("datetime.php"));

    cuadrosEspera =
        QStringList{QStringLiteral("|..."), QStringLiteral(".|.."), QStringLiteral("..|."),
                    QStringLiteral("...|"), QStringLiteral("..|."), QStringLiteral(".|..")};

    temporizadorArchivos = new QTimer(this);
    temporizadorReloj = new QTimer(this);
    temporizadorCiclo = new QTimer(this);
    connect(temporizadorArchivos, &QTimer::timeout, this, &auto_calcular::listFilesTXT);
    connect(temporizadorReloj, &QTimer::timeout, this, &auto_calcular::mhora);
    connect(temporizadorCiclo, &QTimer::timeout, this, &auto_calcular::pyExe);
    temporizadorArchivos->start(200);
    temporizadorReloj->start(1000);
    temporizadorCiclo->start(10000);

    ui->label_mensaje->setText(QStringLiteral("Cargando Sorteos..."));
    red::get(redSorteos, QStringLiteral("cargarsorteos.php"));
}

auto_calcular::~auto_calcular()
{
    // Timers, requests and the script end here; the script process, a child, kills its group
    // when it is destroyed.
    apagarObjeto(this);
    proceso->detener();
    delete ui;
}

void auto_calcular::mhora()
{
    ui->lineEdit_hora->setText(textoReloj(horaActual));
    if (esperaActiva && !cuadrosEspera.isEmpty()) {
        ++indiceEspera;
        if (indiceEspera >= cuadrosEspera.size())
            indiceEspera = 0;
        ui->lineEdit_contador->setText(cuadrosEspera.at(indiceEspera));
    }
}

void auto_calcular::cargarResultados()
{
    if (SesionGlobal::fechaActual != fechaResultados) {
        fechaResultados = SesionGlobal::fechaActual;
        limpiarResultados();
    }
    resultadosCargados = false;
    QNetworkReply *r = red::get(redResultados, QStringLiteral("cargarresultados.php"));
    red::anotarContexto(r, {QString::number(++pedidosResultados)});
}

void auto_calcular::limpiarResultados()
{
    ui->tableWidget_resultados->setRowCount(0);
    listasResultado.limpiar();
}

void auto_calcular::calcular()
{
    SesionGlobal::fechaActual = QDate::currentDate();
    const QString hoy = fechaServidor(SesionGlobal::fechaActual);
    QString etiqueta; // one label for the whole run
    for (int i = 0; i < listasJuego.cantidad(); ++i) {
        if (listasJuego.juegoAuto.at(i) != marcaAutomatica ||
            !nombreScriptValido(listasJuego.juegoScript.at(i)))
            continue;
        const QString archivo = listasJuego.juegoScript.at(i) + QStringLiteral(".txt");
        const QStringList lineas = leerArchivoResultado(archivo);
        QFile::remove(archivo); // each file is processed once
        QStringList rechazadas;
        const QVector<Premiacion> premiaciones = premiacionesDeArchivo(
            lineas, hoy, listasResultado, listasSorteo, etiqueta, &rechazadas);
        for (const QString &linea : rechazadas)
            anotar({QStringLiteral("Línea ignorada en ") + archivo + QStringLiteral(": ") +
                    textoVisible(linea)});
        for (const Premiacion &p : premiaciones) {
            anotar(registroPremiacion(horaActual, p));
            red::get(redPremio, consultaPremiacion(p));
        }
    }
}

void auto_calcular::ejecutarPython()
{
    listaScripts.clear();
    SesionGlobal::fechaActual = QDate::currentDate();
    listaScripts = scriptsEnHorario(listasJuego, horaActual);
}

void auto_calcular::on_pushButton_salir_clicked()
{
    close();
}

void auto_calcular::pyExe()
{
    ui->label_mensaje->clear();
    if (!listaScripts.isEmpty()) {
        // The list may have been rebuilt shorter since the last step.
        if (indiceScript < 0 || indiceScript >= listaScripts.size())
            indiceScript = 0;
        const QString script = listaScripts.at(indiceScript);
        if (proceso->abierto()) {
            // The previous script did not finish in one step: stop it and start the same
            // entry again next time.
            proceso->detener();
        } else {
            ui->label_mensaje->setText(QStringLiteral("Ejecutando ") + script);
            proceso->start(programaPython, {script}, QIODevice::ReadWrite);
            ++indiceScript;
        }
        if (indiceScript >= listaScripts.size())
            indiceScript = 0;
        calcular();
    }
    cargarResultados();
}

void auto_calcular::listFilesTXT()
{
    ui->tableWidget_txt->setRowCount(0);
    const QStringList archivos = QDir::current().entryList(
        {QStringLiteral("*.TXT"), QStringLiteral("*.txt")}, QDir::Files, QDir::Unsorted);
    for (const QString &nombre : archivos)
        agregarFila(ui->tableWidget_txt, {nombre});
}

void auto_calcular::blurred(bool wBlur)
{
    if (wBlur)
        setGraphicsEffect(new QGraphicsBlurEffect(this));
    else
        setGraphicsEffect(nullptr);
}

void auto_calcular::respuestaReloj(QNetworkReply *respuesta)
{
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    if (texto.isEmpty()) {
        mensajeSimple(this, QMessageBox::Information, QStringLiteral("Atensión"),
                      QStringLiteral("No se pudo sincronizar el reloj con el Servidor"));
        return;
    }
    desfaseReloj = desfaseServidor(texto, horaActual);
}

void auto_calcular::respuestaSorteos(QNetworkReply *respuesta)
{
    if (!legible(respuesta)) {
        ui->label_mensaje->clear();
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("No hubo respuesta del servidor\nNo se pudieron cargar los "
                                     "Sorteos"));
        respuesta->deleteLater();
        return;
    }
    const QString texto = red::textoRespuesta(respuesta);
    esperaActiva = true;

    QStringList nombresListados;
    for (int f = 0; f < ui->tableWidget_juegos->rowCount(); ++f) {
        const QTableWidgetItem *item = ui->tableWidget_juegos->item(f, 0);
        nombresListados.append(item ? item->text() : QString());
    }
    QStringList rechazados;
    const QVector<JuegoNuevo> nuevos = agregarSorteos(texto, nombresListados, listasJuego,
                                                      listasSorteo, listaScripts, &rechazados);
    QTableWidget *juegos = ui->tableWidget_juegos;
    juegos->setUpdatesEnabled(false);
    int fila = juegos->rowCount();
    juegos->setRowCount(fila + nuevos.size());
    for (const JuegoNuevo &juego : nuevos) {
        juegos->setItem(fila, 0, new QTableWidgetItem(juego.nombre));
        juegos->setItem(fila, 1, new QTableWidgetItem(juego.marca));
        ++fila;
    }
    juegos->setUpdatesEnabled(true);
    for (const QString &nombre : rechazados)
        anotar({QStringLiteral("Script no permitido: ") + textoVisible(nombre)});

    mostrarFalta(etiquetasSorteos(listasSorteo, false));

    // Files left from an earlier run would be taken for today's results.
    for (const QString &archivo : archivosResultado(listasJuego))
        QFile::remove(archivo);

    ui->label_mensaje->clear();
    respuesta->deleteLater();
}

void auto_calcular::respuestaResultados(QNetworkReply *respuesta)
{
    // With a slow server, an older answer arriving after a newer one would bring back draws
    // that have been awarded since.
    const int pedido = red::contexto(respuesta).value(0).toInt();
    if (pedido < resultadosAplicados) {
        respuesta->deleteLater();
        return;
    }
    resultadosAplicados = pedido;
    if (!legible(respuesta)) {
        ui->tableWidget_resultados->setEnabled(false);
        resultadosCargados = true;
        respuesta->deleteLater();
        return;
    }
    const QString texto = red::textoRespuesta(respuesta);
    ui->tableWidget_resultados->setEnabled(true);
    limpiarResultados();
    const QVector<FilaResultado> filas = aplicarResultados(texto, listasResultado, listasSorteo);
    QTableWidget *tabla = ui->tableWidget_resultados;
    tabla->setUpdatesEnabled(false);
    tabla->setRowCount(filas.size());
    for (int f = 0; f < filas.size(); ++f) {
        tabla->setItem(f, 0, new QTableWidgetItem(filas.at(f).sorteo));
        tabla->setItem(f, 1, new QTableWidgetItem(filas.at(f).resultado));
        tabla->setItem(f, 2, new QTableWidgetItem(filas.at(f).hora));
    }
    tabla->setUpdatesEnabled(true);
    mostrarFalta(etiquetasSorteos(listasSorteo, true));
    resultadosCargados = true;
    respuesta->deleteLater();
}

void auto_calcular::respuestaPremio(QNetworkReply *respuesta)
{
    // The reply text is not used: whether the award took effect shows at the next results
    // reply, when the draw leaves the waiting list.
    if (legible(respuesta))
        red::textoRespuesta(respuesta);
    respuesta->deleteLater();
}

void auto_calcular::mostrarFalta(const QStringList &etiquetas)
{
    QTableWidget *tabla = ui->tableWidget_falta;
    tabla->setUpdatesEnabled(false);
    tabla->setRowCount(0);
    tabla->setRowCount(etiquetas.size());
    for (int f = 0; f < etiquetas.size(); ++f)
        tabla->setItem(f, 0, new QTableWidgetItem(etiquetas.at(f)));
    tabla->setUpdatesEnabled(true);
}

void auto_calcular::anotar(const QStringList &lineas)
{
    // Plain text inserted as it is: a label holding "<" must not be taken for markup.
    QTextCursor cursor(ui->textEdit_info->document());
    cursor.movePosition(QTextCursor::End);
    for (const QString &linea : lineas) {
        if (!ui->textEdit_info->document()->isEmpty())
            cursor.insertBlock();
        cursor.insertText(linea);
    }
    ui->textEdit_info->moveCursor(QTextCursor::End);
    ui->textEdit_info->ensureCursorVisible();
}
