#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>
#include <QVector>

// The automatic awarding's data, kept apart from its dialog: the day's games and draws as
// parallel lists, the published results, the result files the scripts leave and the award
// requests built from them. Nothing here touches widgets, the network or processes.

// Flag of a game whose draws are awarded automatically (compared case-sensitively).
inline const QString marcaAutomatica = QStringLiteral("X");

// One entry per game, filled once from the draw list.
struct ListasJuego {
    QStringList clavesJuego; // game key
    QStringList juegoAuto;   // "Auto" flag; "X" means awarded automatically
    QStringList juegoScript; // base name of the game's script and result file

    int cantidad() const { return clavesJuego.size(); }
};

// One entry per line of "cargarsorteos.php", in reply order.
struct ListasSorteo {
    QStringList sorteoClaveJuego;
    QStringList sorteoNombreJuego;
    QStringList sorteoClave;
    QStringList sorteoEtiqueta;
    QStringList sorteoCampo4;
    QStringList sorteoCampo5;
    QStringList sorteoResultado; // "" until a published result names the draw
    QStringList sorteoScript;

    int cantidad() const { return sorteoClave.size(); }
};

// One entry per line of "cargarresultados.php".
struct ListasResultado {
    QStringList resultadoClaveJuego;
    QStringList resultadoNombreJuego;
    QStringList resultadoClaveSorteo;
    QStringList resultadoEtiqueta;
    QStringList resultadoValor;
    QStringList resultadoExtra;
    QStringList resultadoHora;

    int cantidad() const { return resultadoClaveSorteo.size(); }
    void limpiar();
};

// Lines of a reply split at "\n", empty lines left out.
QStringList lineasRespuesta(const QString &texto);

// Fields of a line split at ",", with missing fields given as "" up to `minimo`.
QStringList camposLinea(const QString &linea, int minimo);

// A game seen for the first time in the draw list: the row it gets in the games table.
struct JuegoNuevo {
    QString nombre;
    QString marca;
};

// Whether a script base name from the server may be used: a plain file name of the working
// folder (letters, digits, "_", "-", "."; not starting with "." or "-"), so that no name can
// reach another folder, a hidden file or be read as an option by the interpreter.
bool nombreScriptValido(const QString &nombre);

// The text of a name or line as it can be shown in the log: control characters as "?".
QString textoVisible(const QString &texto);

// Adds the draw lines of a "cargarsorteos.php" reply. A game whose name is not yet in
// `nombresListados` is new: it enters the game lists (and `listaScripts` as "<script>.py"
// when its flag is "X") and its name is added to `nombresListados`. Every line enters the
// draw lists. Returns the new games in reply order. An automatic game whose script name is not
// nombreScriptValido() stays out of `listaScripts`, and its name goes to `scriptsRechazados`.
QVector<JuegoNuevo> agregarSorteos(const QString &texto, QStringList &nombresListados,
                                   ListasJuego &juegos, ListasSorteo &sorteos,
                                   QStringList &listaScripts,
                                   QStringList *scriptsRechazados = nullptr);

// Text a draw is shown with: game name + "-" + draw label.
QString etiquetaSorteo(const ListasSorteo &sorteos, int i);

// Texts of every draw, or only of those still without a result, in draw order.
QStringList etiquetasSorteos(const ListasSorteo &sorteos, bool soloPendientes);

// Result files ("<script>.txt") of the games awarded automatically whose script name is valid.
QStringList archivosResultado(const ListasJuego &juegos);

// Scripts of the automatic games for a time of day: only strictly after 08:30:00 and strictly
// before 21:00:00, otherwise none. Invalid script names are never listed.
QStringList scriptsEnHorario(const ListasJuego &juegos, const QTime &hora);

// One row of the results table.
struct FilaResultado {
    QString sorteo;
    QString resultado;
    QString hora;
};

// Replaces the published results with those of a "cargarresultados.php" reply, marks the
// draws they name in `sorteoResultado` (every other draw goes back to "") and returns the
// rows of the results table.
QVector<FilaResultado> aplicarResultados(const QString &texto, ListasResultado &resultados,
                                         ListasSorteo &sorteos);

// Seconds from the console's clock to the server time on the fifth line of a "datetime.php"
// reply (0 when that line is missing or is no time).
int desfaseServidor(const QString &texto, const QTime &reloj);

// Result files are written by outside programs: only this much of one is read, and only this
// many record lines after the date line are looked at.
inline constexpr qint64 limiteBytesArchivo = 4 * 1024 * 1024;
inline constexpr int limiteLineasArchivo = 1000;

// Lines of a result file (without their "\n" or "\r\n"); empty when the file is missing, is
// no plain file (a folder or a pipe would block or fail) or cannot be opened. A file longer
// than `limiteBytes` is cut there and the line the cut went through is dropped.
QStringList leerArchivoResultado(const QString &ruta, qint64 limiteBytes = limiteBytesArchivo);

// One award to send.
struct Premiacion {
    QString juego;    // j
    QString sorteo;   // s
    QString valor;    // a
    QString etiqueta; // label shown in the log
};

// Awards from the lines of one result file. Nothing when the first line is not `fechaHoy`
// ("yyyy-MM-dd") or there is no record line. A record "game,draw,result" is skipped when the
// draw is among the published results or its result is empty. The label is the one of the
// last draw matched in the whole run: `etiqueta` comes in and goes out with it, so a record
// whose draw is unknown carries the label of the previous matched record. A record whose game,
// draw or result holds a character that would change the award request's shape ("&", "#",
// "?", "=", white space or a control character) is skipped, and its line goes to `rechazadas`.
QVector<Premiacion> premiacionesDeArchivo(const QStringList &lineas, const QString &fechaHoy,
                                          const ListasResultado &resultados,
                                          const ListasSorteo &sorteos, QString &etiqueta,
                                          QStringList *rechazadas = nullptr);

// Whether a value may be appended as it stands to an award request.
bool valorPremiacionValido(const QString &valor);

// Request path and query of an award, values as they stand.
QString consultaPremiacion(const Premiacion &premiacion);

// The two lines an award writes in the log.
QStringList registroPremiacion(const QTime &hora, const Premiacion &premiacion);
