#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <vector>

// Reply parsing, lookups and checks of the prize calculation dialog. Nothing here touches a
// widget; the dialog moves the results into its form.
namespace premios {

// One game line of "sorteospremiar3.php": "key;name;noNamesFlag;n1,n2,...;name1,...;type".
struct JuegoPremiar {
    QString clave;
    QString nombre;
    QString sinNombres; // "X" when the game's numbers carry no animal name
    QString codigos;    // animal numbers joined by ","
    QString nombres;    // animal names joined by ",", same order as the numbers
    QString tipo;       // "A" animal game, "T" results without name, anything else numbers
};

// One draw line: "gameKey;drawKey;label".
struct SorteoPremiar {
    QString juego;
    QString codigo;
    QString etiqueta;
};

struct ListaSorteos {
    QVector<JuegoPremiar> juegos;
    QVector<SorteoPremiar> sorteos;
};

// Whether a user with this game list may see the game: a list starting with exactly "root"
// sees every game, otherwise the key must be in the list (letters compared without case).
bool juegoPermitido(const QString &clave, const QStringList &juegosUsuario);

// Games (before "_FIN_") and draws (after it) that the user may see, in reply order. Empty
// lines are skipped; missing fields read as "".
ListaSorteos analizarSorteos(const QString &texto, const QStringList &juegosUsuario);

// Animal name of a number in a game: the number and name lists of the last game whose key is
// `juego`; among them the last position whose number equals `numero` exactly ("5" and "05"
// differ). "" when the game or the number is unknown.
QString nombreAnimal(const std::vector<QString> &claves, const QStringList &codigos,
                     const QStringList &nombres, const QString &juego, const QString &numero);

// Every number of a game with its animal name, by the same rules as nombreAnimal (last game
// with the key, last position of a number), for handlers that name many results at once.
QHash<QString, QString> nombresDeJuego(const std::vector<QString> &claves,
                                       const QStringList &codigos, const QStringList &nombres,
                                       const QString &juego);

// One line of "resultadosJuego.php": "drawKey,result".
struct ResultadoSorteo {
    QString sorteo;
    QString resultado;
};
QVector<ResultadoSorteo> analizarResultados(const QString &texto);

// How a result is shown in the draw table: as it stands for games without names ("X" flag) or
// of type "T", otherwise "number-name" (the name may be empty: "05-").
QString resultadoMostrado(const QString &resultado, const QString &sinNombres, const QString &tipo,
                          const QString &nombre);

// Result entry check. `nombreDe` gives the animal name of a number in the current game.
struct Validacion {
    QString numero; // the text after padding ("7" → "07"), to be written back
    bool valido = false;
    QString error;  // message of the refusal
    QString nombre; // animal name (animal games only)
};
Validacion validarNumero(const QString &texto, const QString &tipo,
                         const std::function<QString(const QString &)> &nombreDe);

// Winning tickets of "calcularpremios4.php": line 0 is a header and is skipped, empty lines
// too; amounts that are not numbers count as 0.
struct Premio {
    QString banca;
    QString agencia;
    QString ticket;
    QString numero;
    double jugado = 0;
    double premio = 0;
};
struct Calculo {
    QVector<Premio> filas;
    double total = 0;
};
Calculo analizarCalculo(const QString &texto);

// Request targets, values appended as they stand.
QString rutaCalculo(const QString &fecha, const QString &juego, const QString &sorteo,
                    const QString &numero);
QString rutaPublicar(const QString &fecha, const QString &juego, const QString &sorteo,
                     const QString &numero);
QString rutaDeshacer(const QString &fecha, const QString &juego, const QString &sorteo);

// What a publish or undo reply means: no answer, "0" (already published / nothing undone) or
// done (any other text).
enum class Respuesta { SinRespuesta, Rechazada, Hecha };
Respuesta clasificarRespuesta(const QString &texto);

} // namespace premios
