#include "premios/calcularpremios2.h"
#include "ui_calcularpremios2.h"

#include "app/apagado.h"
#include "app/formato.h"
#include "app/mensaje.h"
#include "app/red.h"
#include "app/sesion.h"
#include "premios/logicapremios.h"

#include <QEvent>
#include <QFile>
#include <QHash>
#include <QHeaderView>
#include <QListWidgetItem>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPixmap>
#include <QSignalBlocker>
#include <QTableWidgetItem>
#include <QTimer>

namespace {

const QString textoSinPremios = QStringLiteral(" *** NO HAY PREMIOS *** ");
const QString estiloSinPremios =
    QStringLiteral("color: rgb(255, 255, 255);background-color: rgb(224, 27, 36);");
const QString textoSinRespuestaAccion =
    QStringLiteral("El servidor no respondio\nNo se pudieron publicar los premios/resultado");

// Height of the animal picture inside the confirmation boxes, the same as the console's other
// message-box pictures.
constexpr int altoImagenConfirmacion = 128;

QTableWidgetItem *celdaMonto(double monto)
{
    auto *celda = new QTableWidgetItem(formatoMonto(monto, SesionGlobal::decimales));
    celda->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return celda;
}

} // namespace

calcularpremios2::calcularpremios2(QWidget *parent)
    : QDialog(parent), fecha(QDate::currentDate()), ui(new Ui::calcularpremios2),
      managerSorteos(new QNetworkAccessManager(this)),
      managerResultados(new QNetworkAccessManager(this)),
      managerCalculo(new QNetworkAccessManager(this)),
      managerDeshacer(new QNetworkAccessManager(this)),
      managerPublicar(new QNetworkAccessManager(this)),
      managerReserva(new QNetworkAccessManager(this))
{
    ui->setupUi(this);
    setWindowTitle(QStringLiteral("Calcular Premios"));

    ui->tableWidget_sorteos->setColumnCount(2);
    ui->tableWidget_sorteos->setHorizontalHeaderLabels(
        {QStringLiteral("Sorteo"), QStringLiteral("Resultado")});
    ui->tableWidget_sorteos->setColumnWidth(0, 80);
    ui->tableWidget_sorteos->setColumnWidth(1, 110);

    ui->tableWidget_calculo->setColumnCount(6);
    ui->tableWidget_calculo->setHorizontalHeaderLabels(
        {QStringLiteral("Banca"), QStringLiteral("Agencia"), QStringLiteral("Ticket"),
         QStringLiteral("Núm"), QStringLiteral("Jugado"), QStringLiteral("Premio")});
    const int anchos[] = {90, 135, 70, 40, 80, 110};
    for (int c = 0; c < 6; ++c)
        ui->tableWidget_calculo->setColumnWidth(c, anchos[c]);

    connect(managerSorteos, &QNetworkAccessManager::finished, this,
            &calcularpremios2::sorteosRecibidos);
    connect(managerResultados, &QNetworkAccessManager::finished, this,
            &calcularpremios2::resultadosRecibidos);
    connect(managerCalculo, &QNetworkAccessManager::finished, this,
            &calcularpremios2::calculoRecibido);
    connect(managerDeshacer, &QNetworkAccessManager::finished, this,
            &calcularpremios2::deshacerRecibido);
    connect(managerPublicar, &QNetworkAccessManager::finished, this,
            &calcularpremios2::publicarRecibido);

    // A click loads a game's draws on release (itemClicked); the current row also changes on
    // the press, which must not load them a second time. Keyboard moves load at once, and a
    // keyboard move in the draw table selects the draw as a click does.
    ui->listWidget_juegos->installEventFilter(this);
    ui->listWidget_juegos->viewport()->installEventFilter(this);
    connect(ui->listWidget_juegos, &QListWidget::currentRowChanged, this,
            &calcularpremios2::juegoCambiado);
    connect(ui->tableWidget_sorteos, &QTableWidget::currentCellChanged, this,
            &calcularpremios2::sorteoCambiado);

    auto *reloj = new QTimer(this);
    connect(reloj, &QTimer::timeout, this, &calcularpremios2::mhora);
    reloj->start(500);

    red::get(managerSorteos, QStringLiteral("sorteospremiar3.php"));

    ui->lineEdit_numero->setEnabled(false);
    ui->pushButton_calcular->setEnabled(false);
    ui->pushButton_deshacer->setEnabled(false);
    ui->pushButton_publicar->setEnabled(false);
    ui->dateEdit_fecha->setDate(SesionGlobal::fechaActual);
    ui->label_calcular->setText(QStringLiteral("Cargando Juegos"));
    ui->lineEdit_numero->setFocus();
}

calcularpremios2::~calcularpremios2()
{
    apagarObjeto(this);
    delete ui;
}

bool calcularpremios2::eventFilter(QObject *objeto, QEvent *evento)
{
    if (objeto == ui->listWidget_juegos) {
        if (evento->type() == QEvent::KeyPress)
            teclaEnJuegos = true;
        else if (evento->type() == QEvent::KeyRelease || evento->type() == QEvent::FocusOut)
            teclaEnJuegos = false;
    } else if (objeto == ui->listWidget_juegos->viewport() &&
               evento->type() == QEvent::MouseButtonPress) {
        teclaEnJuegos = false;
    }
    return QDialog::eventFilter(objeto, evento);
}

void calcularpremios2::juegoCambiado(int fila)
{
    if (fila >= 0 && teclaEnJuegos) {
        // Arrow keys, Page keys or typing a name: load the game as a click does.
        on_listWidget_juegos_itemClicked(ui->listWidget_juegos->item(fila));
        return;
    }
    // A mouse press (its release loads the game through itemClicked), a press dragged off to
    // another row, or the list taking the focus: nothing of the previous game may stay on
    // screen to be calculated or published under the new one.
    limpiar();
    ui->tableWidget_sorteos->setRowCount(0);
    sorteosMostrados.clear();
    juegoMostrado.clear();
}

void calcularpremios2::sorteoCambiado(int fila, int columna, int filaAnterior, int columnaAnterior)
{
    Q_UNUSED(columna)
    Q_UNUSED(columnaAnterior)
    if (fila == filaAnterior)
        return;
    if (fila < 0) {
        limpiar();
        return;
    }
    on_tableWidget_sorteos_clicked(ui->tableWidget_sorteos->model()->index(fila, 0));
}

QStringList calcularpremios2::contextoJuego() const
{
    return {fechaConsulta(), claveJuegoActual()};
}

QStringList calcularpremios2::contextoSorteo() const
{
    return {fechaConsulta(), claveJuegoActual(),
            juegoMostrado == claveJuegoActual() ? sorteoActual() : QString()};
}

QStringList calcularpremios2::contextoCalculo() const
{
    return contextoSorteo() << ui->lineEdit_numero->text();
}

// ---------------------------------------------------------------------------------------------
// Current selection

int calcularpremios2::juegoActual() const
{
    const int fila = ui->listWidget_juegos->currentRow();
    if (fila < 0 || fila >= static_cast<int>(SesionGlobal::tablaClaves.size()))
        return -1;
    return fila;
}

namespace {
QString valorEn(const std::vector<QString> &tabla, int i)
{
    return i >= 0 && i < static_cast<int>(tabla.size()) ? tabla[static_cast<std::size_t>(i)]
                                                        : QString();
}
} // namespace

QString calcularpremios2::claveJuegoActual() const
{
    return valorEn(SesionGlobal::tablaClaves, juegoActual());
}

QString calcularpremios2::nombreJuegoActual() const
{
    return valorEn(SesionGlobal::tablaValores, juegoActual());
}

QString calcularpremios2::sinNombresJuegoActual() const
{
    return valorEn(SesionGlobal::tablaAux9, juegoActual());
}

QString calcularpremios2::tipoJuegoActual() const
{
    return valorEn(SesionGlobal::tablaAux10, juegoActual());
}

QString calcularpremios2::sorteoActual() const
{
    return sorteosMostrados.value(ui->tableWidget_sorteos->currentRow());
}

QString calcularpremios2::etiquetaSorteoActual() const
{
    const QTableWidgetItem *celda =
        ui->tableWidget_sorteos->item(ui->tableWidget_sorteos->currentRow(), 0);
    return celda ? celda->text() : QString();
}

QString calcularpremios2::fechaConsulta() const
{
    return fechaServidor(ui->dateEdit_fecha->date());
}

QPixmap calcularpremios2::imagenAnimal(const QString &numero) const
{
    const QString ruta = rutaImagenAnimal(nombreJuegoActual(), numero);
    if (!QFile::exists(ruta))
        return QPixmap();
    return QPixmap(ruta);
}

void calcularpremios2::mostrarImagenAnimal(const QString &numero)
{
    const QPixmap imagen = imagenAnimal(numero);
    if (imagen.isNull()) {
        ui->label_imageAnimal->clear();
        return;
    }
    ui->label_imageAnimal->setPixmap(imagen.scaled(ui->label_imageAnimal->size(),
                                                   Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

// ---------------------------------------------------------------------------------------------
// Slots

void calcularpremios2::mostrarResultados(QDate date, QString _juego)
{
    Q_UNUSED(date)
    Q_UNUSED(_juego)
}

void calcularpremios2::mhora()
{
    ui->lineEdit_hora->setText(textoReloj(horaActual));
}

QString calcularpremios2::nombreAnimal(QString _cjuego, QString _canimal)
{
    return premios::nombreAnimal(SesionGlobal::tablaClaves, codigosAnimales, nombresAnimales,
                                 _cjuego, _canimal);
}

void calcularpremios2::limpiar()
{
    ui->label_calcular->setStyleSheet(QString());
    ui->lineEdit_numero->setEnabled(false);
    ui->pushButton_calcular->setEnabled(false);
    ui->pushButton_deshacer->setEnabled(false);
    ui->pushButton_publicar->setEnabled(false);
    ui->tableWidget_calculo->setRowCount(0);
    ui->lineEdit_numero->clear();
    ui->lineEdit_nombre->clear();
    ui->label_calcular->clear();
    ui->label_publicar->clear();
    ui->lineEdit_totalPremios->clear();
}

void calcularpremios2::on_dateEdit_fecha_dateChanged(const QDate &date)
{
    if (date > SesionGlobal::fechaActual) {
        ui->dateEdit_fecha->setDate(SesionGlobal::fechaActual);
        return;
    }
    limpiar();
}

void calcularpremios2::on_listWidget_juegos_itemClicked(QListWidgetItem *item)
{
    Q_UNUSED(item)
    limpiar();
    ui->tableWidget_sorteos->setRowCount(0);
    sorteosMostrados.clear();
    juegoMostrado.clear();
    QNetworkReply *r = red::get(
        managerResultados, QStringLiteral("resultadosJuego.php"),
        {{QStringLiteral("f"), fechaConsulta()}, {QStringLiteral("j"), claveJuegoActual()}});
    red::anotarContexto(r, contextoJuego());
}

void calcularpremios2::on_tableWidget_sorteos_clicked(const QModelIndex &index)
{
    limpiar();
    const int fila = index.row();
    const QTableWidgetItem *etiqueta = ui->tableWidget_sorteos->item(fila, 0);
    ui->label_calcular->setText(nombreJuegoActual() + QLatin1Char('-') +
                                (etiqueta ? etiqueta->text() : QString()));
    const QTableWidgetItem *resultado = ui->tableWidget_sorteos->item(fila, 1);
    if (!resultado || resultado->text().isEmpty()) {
        ui->lineEdit_numero->setEnabled(true);
        ui->pushButton_deshacer->setEnabled(false);
        ui->lineEdit_numero->setFocus();
    } else {
        ui->lineEdit_numero->setEnabled(false);
        ui->pushButton_deshacer->setEnabled(true);
    }
}

void calcularpremios2::on_lineEdit_numero_textChanged(const QString &arg1)
{
    ui->label_calcular->setStyleSheet(QString());
    ui->label_calcular->setText(nombreJuegoActual() + QLatin1Char('-') + etiquetaSorteoActual());
    ui->pushButton_calcular->setEnabled(false);
    ui->pushButton_publicar->setEnabled(false);
    ui->tableWidget_calculo->setRowCount(0);
    ui->label_publicar->clear();
    ui->lineEdit_totalPremios->clear();
    if (!sinNombresJuegoActual().isEmpty())
        ui->lineEdit_nombre->setText(QString());
    else
        ui->lineEdit_nombre->setText(nombreAnimal(claveJuegoActual(), arg1));
    mostrarImagenAnimal(ui->lineEdit_numero->text());
    ui->lineEdit_numero->setFocus();
}

void calcularpremios2::on_lineEdit_numero_returnPressed()
{
    const QString texto = ui->lineEdit_numero->text();
    if (texto.isEmpty())
        return;

    const QString clave = claveJuegoActual();
    const premios::Validacion v =
        premios::validarNumero(texto, tipoJuegoActual(),
                               [&](const QString &numero) { return nombreAnimal(clave, numero); });
    if (v.numero != texto)
        ui->lineEdit_numero->setText(v.numero);
    if (tipoJuegoActual() == QLatin1String("A"))
        ui->lineEdit_nombre->setText(v.nombre);

    if (!v.valido) {
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"), v.error);
        limpiar();
        ui->lineEdit_numero->setEnabled(true);
        ui->lineEdit_numero->setFocus();
        return;
    }
    ui->pushButton_calcular->setEnabled(true);
    mostrarImagenAnimal(v.numero);
}

void calcularpremios2::on_pushButton_calcular_clicked()
{
    const QString numero = ui->lineEdit_numero->text();
    const QString clave = claveJuegoActual();
    // Only a draw of the game whose draws are on screen can be calculated.
    if (juegoMostrado != clave || sorteoActual().isEmpty())
        return;
    resultadoTexto = numero;
    if (sinNombresJuegoActual().isEmpty())
        resultadoTexto = numero + QLatin1Char('-') + nombreAnimal(clave, numero);
    QNetworkReply *r = red::get(
        managerCalculo, premios::rutaCalculo(fechaConsulta(), clave, sorteoActual(), numero));
    red::anotarContexto(r, contextoCalculo() << resultadoTexto);
}

void calcularpremios2::on_pushButton_publicar_clicked()
{
    // Publishing is only ever of the calculation on screen: the date, game, draw and number it
    // was made for must still be the ones shown.
    const QStringList calculo = contextoCalculo();
    if (!ui->pushButton_publicar->isEnabled() || calculoMostrado != calculo ||
        calculo.contains(QString()))
        return;
    const QString f = fechaConsulta();
    const QString j = claveJuegoActual();
    const QString s = sorteoActual();
    const QString a = ui->lineEdit_numero->text();
    const QString nombreJuego = nombreJuegoActual();
    const QString etiqueta = etiquetaSorteoActual();
    QString resultado = a;
    if (sinNombresJuegoActual() != QLatin1String("X"))
        resultado = a + QLatin1Char('-') + nombreAnimal(j, a);

    QPixmap icono = imagenAnimal(a);
    if (!icono.isNull())
        icono = icono.scaledToHeight(altoImagenConfirmacion, Qt::SmoothTransformation);
    const QString texto = QStringLiteral("Fecha = ") +
                          textoConsola(ui->dateEdit_fecha->date(), "dddd dd-MM-yyyy") +
                          QStringLiteral("\nSorteo = ") + nombreJuego + QLatin1Char(' ') +
                          etiqueta + QStringLiteral("\nResultado = ") + resultado;
    if (!confirmarAccion(this, QStringLiteral("Publicar resultado"), texto,
                         QStringLiteral("¿ Esta seguro ?"), icono, QStringLiteral("Cancelar"),
                         QStringLiteral("Publicar")))
        return;
    // Replies handled while the confirmation was up may have changed what is on screen.
    if (contextoCalculo() != calculo || calculoMostrado != calculo ||
        !ui->pushButton_publicar->isEnabled())
        return;

    ui->label_calcular->setText(QStringLiteral("Publicando..."));
    QNetworkReply *r = red::get(managerPublicar, premios::rutaPublicar(f, j, s, a));
    red::anotarContexto(r, {f, j, s, resultadoTexto});
}

void calcularpremios2::on_pushButton_deshacer_clicked()
{
    const QStringList sorteo = contextoSorteo();
    if (!ui->pushButton_deshacer->isEnabled() || sorteo.contains(QString()))
        return;
    const QString f = fechaConsulta();
    const QString j = claveJuegoActual();
    const QString s = sorteoActual();
    const QString nombreJuego = nombreJuegoActual();
    const QString etiqueta = etiquetaSorteoActual();
    const QTableWidgetItem *celda =
        ui->tableWidget_sorteos->item(ui->tableWidget_sorteos->currentRow(), 1);
    const QString mostrado = celda ? celda->text() : QString();

    QPixmap icono = imagenAnimal(mostrado.section(QLatin1Char('-'), 0, 0));
    if (!icono.isNull())
        icono = icono.scaledToHeight(altoImagenConfirmacion, Qt::SmoothTransformation);
    const QString texto =
        nombreJuego + QLatin1Char(' ') + etiqueta + QStringLiteral(" = ") + mostrado;
    if (!confirmarAccion(this, QStringLiteral("Deshacer resultado"), texto,
                         QStringLiteral("¿ Esta seguro de deshacer esta premiación ?"), icono,
                         QStringLiteral("Cancelar"), QStringLiteral("Deshacer")))
        return;
    if (contextoSorteo() != sorteo || !ui->pushButton_deshacer->isEnabled())
        return;

    QNetworkReply *r = red::get(managerDeshacer, premios::rutaDeshacer(f, j, s));
    red::anotarContexto(r, {f, j, s, resultadoTexto});
}

// ---------------------------------------------------------------------------------------------
// Replies

void calcularpremios2::sorteosRecibidos(QNetworkReply *respuesta)
{
    const QString texto = red::textoRespuesta(respuesta);
    if (texto.isEmpty()) {
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("¡ No hubo respuesta del servidor !"));
        respuesta->deleteLater();
        return;
    }

    const premios::ListaSorteos lista = premios::analizarSorteos(texto, SesionGlobal::juegos);
    SesionGlobal::tablaClaves.clear();
    SesionGlobal::tablaValores.clear();
    SesionGlobal::tablaAux10.clear();
    SesionGlobal::tablaAux9.clear();
    for (const premios::JuegoPremiar &juego : lista.juegos) {
        auto *item = new QListWidgetItem(juego.nombre, ui->listWidget_juegos);
        item->setSizeHint(QSize(175, 23));
        SesionGlobal::tablaClaves.push_back(juego.clave);
        SesionGlobal::tablaValores.push_back(juego.nombre);
        SesionGlobal::tablaAux10.push_back(juego.tipo);
        SesionGlobal::tablaAux9.push_back(juego.sinNombres);
        codigosAnimales.append(juego.codigos);
        nombresAnimales.append(juego.nombres);
    }
    // Game names by key, the last game of a key winning as in buscarValor().
    QHash<QString, QString> nombresJuego;
    for (std::size_t i = 0; i < SesionGlobal::tablaClaves.size(); ++i)
        nombresJuego.insert(SesionGlobal::tablaClaves[i], SesionGlobal::tablaValores[i]);
    for (const premios::SorteoPremiar &sorteo : lista.sorteos) {
        sorteoJuego.append(sorteo.juego);
        sorteoNombreJuego.append(nombresJuego.value(sorteo.juego));
        sorteoCodigo.append(sorteo.codigo);
        sorteoEtiqueta.append(sorteo.etiqueta);
        sorteoExtra.append(QString());
    }

    ui->label_calcular->clear();
    ui->listWidget_juegos->setFocus();
    respuesta->deleteLater();
}

void calcularpremios2::resultadosRecibidos(QNetworkReply *respuesta)
{
    const QStringList pedido = red::contexto(respuesta);
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    // The answer for a game or date no longer selected would mark another game's draws.
    if (pedido != contextoJuego())
        return;
    if (texto.isEmpty()) {
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("No hubo respuesta del servidor"));
        ui->listWidget_juegos->clearSelection();
        return;
    }

    const QString clave = claveJuegoActual();
    QTableWidget *tabla = ui->tableWidget_sorteos;
    {
        // Rows are filled before their results are known: selecting one meanwhile would open
        // number entry on a draw that turns out published.
        const QSignalBlocker bloqueo(tabla);
        tabla->setRowCount(0);
        sorteosMostrados.clear();
        QHash<QString, QVector<int>> filasDeSorteo;
        for (int i = 0; i < sorteoJuego.size(); ++i) {
            if (sorteoJuego.at(i) != clave)
                continue;
            const int fila = tabla->rowCount();
            tabla->insertRow(fila);
            tabla->setItem(fila, 0, new QTableWidgetItem(sorteoEtiqueta.at(i)));
            tabla->setItem(fila, 1, new QTableWidgetItem(QString()));
            sorteosMostrados.append(sorteoCodigo.at(i));
            filasDeSorteo[sorteoCodigo.at(i)].append(fila);
        }
        juegoMostrado = clave;

        const QString sinNombres = sinNombresJuegoActual();
        const QString tipo = tipoJuegoActual();
        const QHash<QString, QString> nombres = premios::nombresDeJuego(
            SesionGlobal::tablaClaves, codigosAnimales, nombresAnimales, clave);
        for (const premios::ResultadoSorteo &r : premios::analizarResultados(texto)) {
            const auto filas = filasDeSorteo.constFind(r.sorteo);
            if (filas == filasDeSorteo.constEnd())
                continue;
            const QString mostrado = premios::resultadoMostrado(r.resultado, sinNombres, tipo,
                                                                nombres.value(r.resultado));
            for (int fila : *filas)
                tabla->item(fila, 1)->setText(mostrado);
        }
        tabla->setCurrentCell(-1, -1);
    }
    limpiar();

    int pendiente = -1;
    for (int fila = 0; fila < sorteosMostrados.size(); ++fila) {
        if (tabla->item(fila, 1)->text().isEmpty()) {
            pendiente = fila;
            break;
        }
    }
    if (pendiente >= 0) {
        tabla->setCurrentCell(pendiente, 0);
        on_tableWidget_sorteos_clicked(tabla->model()->index(pendiente, 0));
    } else {
        ui->lineEdit_numero->setFocus();
    }
}

void calcularpremios2::calculoRecibido(QNetworkReply *respuesta)
{
    const QStringList pedido = red::contexto(respuesta);
    const QString texto = red::textoRespuesta(respuesta);
    // A calculation for a number, draw, game or date no longer on screen would show its
    // winners under the current entry and let "Publicar" publish the current number.
    if (pedido.mid(0, 4) != contextoCalculo()) {
        respuesta->deleteLater();
        managerCalculo->clearAccessCache();
        return;
    }
    if (texto.isEmpty()) {
        mensajeSimple(this, QMessageBox::Critical, QStringLiteral("Error"),
                      QStringLiteral("El servidor no responde"));
        respuesta->deleteLater();
        managerCalculo->clearAccessCache();
        return;
    }

    ui->tableWidget_calculo->setRowCount(0);
    const premios::Calculo calculo = premios::analizarCalculo(texto);
    for (const premios::Premio &p : calculo.filas) {
        const int fila = ui->tableWidget_calculo->rowCount();
        ui->tableWidget_calculo->insertRow(fila);
        ui->tableWidget_calculo->setItem(fila, 0, new QTableWidgetItem(p.banca));
        ui->tableWidget_calculo->setItem(fila, 1, new QTableWidgetItem(p.agencia));
        ui->tableWidget_calculo->setItem(fila, 2, new QTableWidgetItem(p.ticket));
        ui->tableWidget_calculo->setItem(fila, 3, new QTableWidgetItem(p.numero));
        ui->tableWidget_calculo->setItem(fila, 4, celdaMonto(p.jugado));
        ui->tableWidget_calculo->setItem(fila, 5, celdaMonto(p.premio));
    }

    resultadoTexto = pedido.value(4);
    calculoMostrado = pedido.mid(0, 4);
    ui->label_publicar->setText(ui->label_calcular->text() + QStringLiteral(" => ") +
                                resultadoTexto);
    ui->pushButton_publicar->setEnabled(true);
    ui->lineEdit_totalPremios->setText(formatoMonto(calculo.total, SesionGlobal::decimales));
    if (calculo.total == 0.0) {
        ui->label_calcular->setText(textoSinPremios);
        ui->label_calcular->setStyleSheet(estiloSinPremios);
    }
    respuesta->deleteLater();
    managerCalculo->clearAccessCache();
}

namespace {
// Row of a draw in the draw table; -1 when it is not there.
int filaDeSorteo(const QStringList &sorteos, const QString &sorteo)
{
    return sorteo.isEmpty() ? -1 : sorteos.indexOf(sorteo);
}
} // namespace

void calcularpremios2::publicarRecibido(QNetworkReply *respuesta)
{
    // Sent for: date, game, draw, result text.
    const QStringList pedido = red::contexto(respuesta);
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    const bool actual = pedido.mid(0, 3) == contextoSorteo();
    const bool mismoJuego = pedido.value(0) == fechaConsulta() && pedido.value(1) == juegoMostrado;
    switch (premios::clasificarRespuesta(texto)) {
    case premios::Respuesta::SinRespuesta:
        mostrarMensaje(this, QStringLiteral("Error"), textoSinRespuestaAccion, IconoMensaje::Error);
        return;
    case premios::Respuesta::Rechazada:
        if (actual)
            ui->label_calcular->clear();
        mostrarMensaje(this, QStringLiteral("Atención"),
                       QStringLiteral("Este sorteo ya fué publicado"), IconoMensaje::Advertencia);
        return;
    case premios::Respuesta::Hecha:
        break;
    }
    if (!actual) {
        // The server did publish; the selection moved on meanwhile. Mark the draw where it is
        // still listed and leave the current entry alone.
        const int fila = mismoJuego ? filaDeSorteo(sorteosMostrados, pedido.value(2)) : -1;
        if (QTableWidgetItem *celda = ui->tableWidget_sorteos->item(fila, 1))
            celda->setText(pedido.value(3));
        mostrarMensaje(this, QStringLiteral("Exito"),
                       QStringLiteral("Se publicó exitosamente el resultado"), IconoMensaje::Exito);
        return;
    }
    ui->label_calcular->clear();
    if (QTableWidgetItem *celda =
            ui->tableWidget_sorteos->item(ui->tableWidget_sorteos->currentRow(), 1))
        celda->setText(pedido.value(3));
    mostrarMensaje(this, QStringLiteral("Exito"),
                   QStringLiteral("Se publicó exitosamente el resultado"), IconoMensaje::Exito,
                   [this] { limpiar(); });
}

void calcularpremios2::deshacerRecibido(QNetworkReply *respuesta)
{
    const QStringList pedido = red::contexto(respuesta);
    const QString texto = red::textoRespuesta(respuesta);
    respuesta->deleteLater();
    const bool actual = pedido.mid(0, 3) == contextoSorteo();
    const bool mismoJuego = pedido.value(0) == fechaConsulta() && pedido.value(1) == juegoMostrado;
    if (actual)
        ui->label_calcular->clear();
    switch (premios::clasificarRespuesta(texto)) {
    case premios::Respuesta::SinRespuesta:
        mostrarMensaje(this, QStringLiteral("Error"), textoSinRespuestaAccion, IconoMensaje::Error);
        if (actual)
            ui->lineEdit_numero->setFocus();
        return;
    case premios::Respuesta::Rechazada:
        mostrarMensaje(this, QStringLiteral("Atención"),
                       QStringLiteral("Algo salio mal, vuelva a intentarlo"),
                       IconoMensaje::Advertencia);
        return;
    case premios::Respuesta::Hecha:
        break;
    }
    if (!actual) {
        const int fila = mismoJuego ? filaDeSorteo(sorteosMostrados, pedido.value(2)) : -1;
        if (QTableWidgetItem *celda = ui->tableWidget_sorteos->item(fila, 1))
            celda->setText(QString());
        mostrarMensaje(this, QStringLiteral("Exito"), QStringLiteral("Se deshizo el resultado"),
                       IconoMensaje::Exito);
        return;
    }
    const int fila = ui->tableWidget_sorteos->currentRow();
    if (fila >= 0)
        ui->tableWidget_sorteos->setItem(fila, 1, new QTableWidgetItem(resultadoTexto));
    // The button goes off at once: the draw is no longer published for this dialog.
    ui->pushButton_deshacer->setEnabled(false);
    const QString sorteo = pedido.value(2);
    mostrarMensaje(this, QStringLiteral("Exito"), QStringLiteral("Se deshizo el resultado"),
                   IconoMensaje::Exito, [this, sorteo] {
                       const int f = filaDeSorteo(sorteosMostrados, sorteo);
                       if (QTableWidgetItem *celda = ui->tableWidget_sorteos->item(f, 1))
                           celda->setText(QString());
                   });
}
