#include "ui/mainwindow.h"
#include "ui_MainWindow.h"

#include "app/apagado.h"
#include "app/exportartabla.h"
#include "app/formato.h"
#include "app/mensaje.h"
#include "app/salida.h"
#include "app/red.h"
#include "app/sesion.h"
#include "autopremiacion/auto_calcular.h"
#include "consulta/mysqlconsulta.h"
#include "monitor/monitor2.h"
#include "premios/calcularpremios2.h"
#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"
#include "temas/tema.h"
#include "temas/themeconfig.h"
#include "ui/acceso.h"
#include "ui/iniciar_sesion.h"

#include <QAction>
#include <QDialog>
#include <QMenu>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), ui(new Ui::MainWindow), managerMensaje(new QNetworkAccessManager(this)),
      managerActualizar(new QNetworkAccessManager(this)), timerVerHora(new QTimer(this)),
      timerActualizarHora(new QTimer(this)), timerCurrentHora(new QTimer(this))
{
    ui->setupUi(this);
    SesionGlobal::estiloSistema = styleSheet();
    setStyleSheet(cargarTema(QString::fromLatin1(archivoTema)));

    IniciarSesion();

    setWindowTitle(titulo);
    showMaximized();
    ui->label_logo->setEnabled(false);

    connect(timerVerHora, &QTimer::timeout, this, &MainWindow::ver_hora);
    timerVerHora->start(500);
    connect(timerActualizarHora, &QTimer::timeout, this, &MainWindow::actualizarHora);
    timerActualizarHora->start(5000);
    connect(timerCurrentHora, &QTimer::timeout, this, &MainWindow::currentHora);
    timerCurrentHora->start(1000);

    ui->label_usuario->setText(SesionGlobal::nombre + QStringLiteral(":/>_"));
    aplicarDerechos();

    managerHora = new QNetworkAccessManager(this);
    connect(managerHora, &QNetworkAccessManager::finished, this, &MainWindow::respuestaHora);

    // The message board's handlers are wired; the board sends no request of its own.
    cargarMensaje();
    actualizarMensaje();

    actualizarHora();
    accesoJuegos();
}

MainWindow::~MainWindow()
{
    delete ui;
}

void MainWindow::aplicarDerechos()
{
    const bool root = SesionGlobal::opciones.value(0) == QLatin1String("root");
    for (const auto &derecho : tablaDerechos()) {
        const bool activa = root || isActivar(derecho.first);
        if (auto *accion = findChild<QAction *>(derecho.second))
            accion->setEnabled(activa);
        else if (auto *menu = findChild<QMenu *>(derecho.second)) {
            menu->setEnabled(activa);
            menu->menuAction()->setEnabled(activa);
        }
    }
    if (root) {
        ui->label_usuario->setText(SesionGlobal::nombre + QStringLiteral(":/>_\nServidor : ") +
                                   SesionGlobal::servidor);
        ui->pushButton_actualizarMensaje->show();
        ui->textEdit_mensaje->setReadOnly(false);
        ui->actionMySql->setEnabled(true);
        ui->actionVentas_Bancas->setEnabled(true);
    } else {
        ui->pushButton_actualizarMensaje->hide();
        ui->textEdit_mensaje->setReadOnly(true);
    }
}

void MainWindow::cargarMensaje()
{
    connect(managerMensaje, &QNetworkAccessManager::finished, this, &MainWindow::respuestaMensaje,
            Qt::UniqueConnection);
}

void MainWindow::respuestaMensaje(QNetworkReply *respuesta)
{
    if (respuesta->isReadable())
        ui->textEdit_mensaje->setPlainText(red::textoRespuesta(respuesta));
    respuesta->deleteLater();
}

void MainWindow::actualizarMensaje()
{
    connect(managerActualizar, &QNetworkAccessManager::finished, this,
            &MainWindow::respuestaActualizacion, Qt::UniqueConnection);
}

void MainWindow::respuestaActualizacion(QNetworkReply *respuesta)
{
    if (!respuesta->isReadable())
        mostrarMensaje(this, QStringLiteral("Error"),
                       QStringLiteral("Ocurrio un error mientras se actualizaba"),
                       IconoMensaje::Error);
    else
        mostrarMensaje(this, QStringLiteral("Exito"),
                       QStringLiteral("Mensaje actualizado exitosamente"), IconoMensaje::Exito);
    respuesta->deleteLater();
}

void MainWindow::currentHora()
{
    horaActual = horaActual.addSecs(1);
}

void MainWindow::actualizarHora()
{
    if (managerHora)
        red::get(managerHora, QStringLiteral("datetime.php"));
}

void MainWindow::respuestaHora(QNetworkReply *respuesta)
{
    const QString texto = red::textoRespuesta(respuesta);
    if (!texto.isEmpty()) {
        const HoraServidor h = leerHoraServidor(texto);
        SesionGlobal::fechaActual = h.fecha;
        horaActual = h.hora;
    }
    respuesta->deleteLater();
}

void MainWindow::IniciarSesion()
{
    iniciar_sesion login(this);
    login.setWindowFlags(Qt::Dialog);
    login.setModal(false);
    login.exec();
    if (!SesionGlobal::sesionIniciada)
        terminarPrograma();
}

bool MainWindow::isActivar(QString opcion)
{
    return opcionActiva(SesionGlobal::opciones, opcion);
}

void MainWindow::accesoJuegos()
{
    SesionGlobal::filtroJuegos = filtroDeJuegos(SesionGlobal::juegos);
    SesionGlobal::filtroJuegos2 = SesionGlobal::filtroJuegos;
}

void MainWindow::ver_hora()
{
    const QString formato = formatoReloj(horaActual);
    if (horaActual.second() % 2 == 0)
        ui->calendarWidget->setSelectedDate(SesionGlobal::fechaActual);
    reloj = textoConsola(horaActual, formato);

    if (SesionGlobal::temaCambiado) {
        setStyleSheet(cargarTema(QString::fromLatin1(archivoTema)));
        SesionGlobal::temaCambiado = false;
    }
}

// Every dialog is a new, non-modal child of this window, and closing it (its own button,
// Escape or the title bar) destroys it with its timers, requests and script. The moment it
// is closed it is quieted, so nothing it started acts in the short time before the deferred
// deletion. Message boxes never run a nested event loop on a handler's stack (see
// mostrarMensaje), and the confirmations guard their parent, so a dialog may die under a box.
void MainWindow::abrirDialogo(QWidget *dialogo)
{
    dialogo->setAttribute(Qt::WA_DeleteOnClose);
    if (auto *d = qobject_cast<QDialog *>(dialogo))
        connect(d, &QDialog::finished, d, [d] { apagarObjeto(d); });
    exportar::instalarMenusTablas(dialogo);
    dialogo->show();
}

void MainWindow::on_action_Salir_triggered()
{
    terminarPrograma();
}

void MainWindow::on_actionMonitorear_Ventas_triggered()
{
    abrirDialogo(new Monitor2(this));
}

void MainWindow::on_actionCalcular_Premios_triggered()
{
    abrirDialogo(new calcularpremios2(this));
}

void MainWindow::on_actionMySql_triggered()
{
    abrirDialogo(new mysqlconsulta(this));
}

void MainWindow::on_actionTemas_de_Tornavo_triggered()
{
    themeconfig temas(this);
    temas.exec();
    setStyleSheet(cargarTema(QString::fromLatin1(archivoTema)));
}

void MainWindow::on_actionAuto_premiaci_n_triggered()
{
    abrirDialogo(new auto_calcular(this));
}

void MainWindow::on_actionVentas_Bancas_triggered()
{
    abrirDialogo(new VentasBancas(this));
}

void MainWindow::on_actionVentas_Bancas_2_triggered()
{
    auto *reporte = new reporteVentasX(this);
    reporte->setWindowTitle(QStringLiteral("Reporte de Ventas Super Banca"));
    abrirDialogo(reporte);
}

// Entries that are present but do nothing yet.
void MainWindow::on_action_Bancas_triggered() {}
void MainWindow::on_actionJuegos_triggered() {}
void MainWindow::on_actionSorteos_triggered() {}
void MainWindow::on_actionIm_genes_triggered() {}
void MainWindow::on_actionBanca_triggered() {}
void MainWindow::on_actionDeshacer_Premiaci_n_triggered() {}
void MainWindow::on_pushButton_actualizarMensaje_clicked() {}
void MainWindow::on_actionURL_triggered() {}
