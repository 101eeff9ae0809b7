#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTime>
#include <vector>

// Process-wide session record. It exists before main() runs and lives until exit; the login
// fills it and every dialog reads it directly. Everything runs on the GUI thread, so there is
// no lock.
struct SesionGlobal {
    static inline int decimales = 0;
    static inline bool temaCambiado = false;
    static inline QString estiloSistema;
    static inline QString ipPublica = QStringLiteral("1.1.1.1");
    static inline QString servidor = QStringLiteral("127.0.0.1");
    static inline std::vector<QString> tablaAux1;
    static inline std::vector<QString> tablaAux2;
    static inline std::vector<QString> tablaAux3;
    static inline std::vector<QString> tablaAux4;
    static inline std::vector<QString> tablaAux5;
    static inline std::vector<QString> tablaAux6;
    static inline std::vector<QString> tablaAux7;
    static inline std::vector<QString> tablaAux8;
    static inline std::vector<QString> tablaAux9;
    static inline std::vector<QString> tablaAux10;
    static inline std::vector<QString> tablaValores;
    static inline std::vector<QString> tablaClaves;
    static inline QStringList listaAux1;
    static inline QStringList listaAux2;
    static inline QString filtroJuegos;
    static inline QString filtroJuegos2;
    static inline QStringList listaLinea8;
    static inline QStringList listaLinea6;
    static inline QStringList juegos;
    static inline QStringList opciones;
    static inline QString datoLinea7;
    static inline QString nombre;
    static inline QString usuario;
    static inline QString colorRojo = QStringLiteral("color: rgb(255, 0, 0);");
    static inline bool accesoPermitido = false;
    static inline bool sesionIniciada = false;
    static inline QDate fechaActual = QDate::currentDate();
    static inline QString animalitos = QStringLiteral("animalitos");

    // Built-in server address used while "Tornavo.svr" gives none.
    static QString servidorPorDefecto() { return QStringLiteral("127.0.0.1"); }

    // Puts every field back to its initial value (used when a session must start over).
    static void reiniciar();
};

// The console's clock: advanced by the main window, shown by every dialog with a clock.
inline QTime horaActual;
