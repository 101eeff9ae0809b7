#pragma once

#include <QByteArray>

// A login reply of a root user ("Administrador", every option and game).
inline constexpr char respuestaLoginAdmin[] = "1\nAdministrador\nX\nroot\nroot\n01\nSB1\n1,2\n";

// Waits for the login dialog that the main window runs and answers it: types a user and
// password and presses "Iniciar sesión" (or "Salir", or closes it by its title bar).
enum class RespuestaLogin { Iniciar, Salir, Cerrar };
void responderLogin(RespuestaLogin respuesta = RespuestaLogin::Iniciar);
