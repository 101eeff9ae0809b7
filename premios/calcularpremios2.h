#pragma once

#include <QDate>
#include <QDialog>
#include <QModelIndex>
#include <QString>
#include <QStringList>

class QEvent;

class QListWidgetItem;
class QNetworkAccessManager;
class QNetworkReply;
class QPixmap;

namespace Ui {
class calcularpremios2;
}

// Prize calculation: pick a game and one of its draws of a date, type the draw's result, see
// what it pays, then publish it or undo a published one.
class calcularpremios2 : public QDialog {
    Q_OBJECT

public:
    explicit calcularpremios2(QWidget *parent = nullptr);
    ~calcularpremios2() override;

public slots:
    void mostrarResultados(QDate date, QString _juego);
    void mhora();
    QString nombreAnimal(QString _cjuego, QString _canimal);
    void limpiar();

private slots:
    void on_dateEdit_fecha_dateChanged(const QDate &date);
    void on_listWidget_juegos_itemClicked(QListWidgetItem *item);
    void on_tableWidget_sorteos_clicked(const QModelIndex &index);
    void on_pushButton_publicar_clicked();
    void on_pushButton_calcular_clicked();
    void on_pushButton_deshacer_clicked();
    void on_lineEdit_numero_returnPressed();
    void on_lineEdit_numero_textChanged(const QString &arg1);

protected:
    bool eventFilter(QObject *objeto, QEvent *evento) override;

private:
    // Keyboard moves in the game list and the draw table select what a click selects.
    void juegoCambiado(int fila);
    void sorteoCambiado(int fila, int columna, int filaAnterior, int columnaAnterior);

    // What is on screen now, in the shape each request records it was sent for: a reply is
    // applied only while these are still the same.
    QStringList contextoJuego() const;   // date, game
    QStringList contextoSorteo() const;  // date, game, draw
    QStringList contextoCalculo() const; // date, game, draw, number

    // Reply handlers, one per request kind.
    void sorteosRecibidos(QNetworkReply *respuesta);
    void resultadosRecibidos(QNetworkReply *respuesta);
    void calculoRecibido(QNetworkReply *respuesta);
    void deshacerRecibido(QNetworkReply *respuesta);
    void publicarRecibido(QNetworkReply *respuesta);

    // Index of the current game in the session's game vectors, -1 when none.
    int juegoActual() const;
    QString claveJuegoActual() const;
    QString nombreJuegoActual() const;
    QString sinNombresJuegoActual() const;
    QString tipoJuegoActual() const;
    QString sorteoActual() const;
    QString etiquetaSorteoActual() const;
    QString fechaConsulta() const;
    // Picture of an animal of the current game; null when the file is missing.
    QPixmap imagenAnimal(const QString &numero) const;
    void mostrarImagenAnimal(const QString &numero);

    QDate fecha;
    QStringList codigosAnimales;
    QStringList nombresAnimales;
    QStringList sorteoJuego;
    QStringList sorteoNombreJuego;
    QStringList sorteoCodigo;
    QStringList sorteoEtiqueta;
    QStringList sorteoExtra;
    QStringList sorteosMostrados;
    QString resultadoTexto;
    QString juegoMostrado;       // game whose draws tableWidget_sorteos holds
    QStringList calculoMostrado; // what the calculation on screen was made for
    bool teclaEnJuegos = false;  // a key is down on the game list
    Ui::calcularpremios2 *ui;
    QNetworkAccessManager *managerSorteos;
    QNetworkAccessManager *managerResultados;
    QNetworkAccessManager *managerCalculo;
    QNetworkAccessManager *managerDeshacer;
    QNetworkAccessManager *managerPublicar;
    QNetworkAccessManager *managerReserva; // created with the others, not used
};
