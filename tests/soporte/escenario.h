#pragma once

#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/servidorprueba.h"

#include <QByteArray>
#include <QDateEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTest>

#include <initializer_list>
#include <memory>
#include <utility>

class QAbstractButton;

// What a dialog under test is opened on: the fixture server with the replies given, and a
// working directory whose Tornavo.svr points at it. QNetworkReply * is registered as a meta type,
// so QSignalSpy can watch a manager's finished().
//     Escenario e{{"reportex.php", respuesta}};
struct Escenario {
    using Respuestas = std::initializer_list<std::pair<QString, QByteArray>>;

    Escenario(Respuestas respuestas = {});

    ServidorPrueba srv;
    DirectorioTrabajo dir;
};

// A working directory whose Tornavo.svr points at a port where nothing answers: the server is
// down.
struct EscenarioSinServidor {
    EscenarioSinServidor();

    DirectorioTrabajo dir;
};

// A scenario and a dialog of type D opened on it. The dialog goes before the server does.
template <typename D> struct EscenarioDialogo : Escenario {
    using Escenario::Escenario;
    ~EscenarioDialogo() { dlg.reset(); }

    std::unique_ptr<D> dlg;

    // URLs of the replies the dialog has handled, in the order it handled them.
    QStringList atendidas;

    // Builds the dialog (not shown). Replies are listed in `atendidas` once the dialog's own
    // handlers have run: this is connected after them.
    D &crear()
    {
        dlg = std::make_unique<D>();
        for (QNetworkAccessManager *m : dlg->template findChildren<QNetworkAccessManager *>())
            QObject::connect(m, &QNetworkAccessManager::finished, dlg.get(),
                             [this](QNetworkReply *r) { atendidas.append(r->url().toString()); });
        return *dlg;
    }

    // Waits until the dialog has handled a reply whose URL contains `parte`.
    bool esperarAtendida(const QString &parte, int ms = 10000)
    {
        return QTest::qWaitFor(
            [&] {
                for (const QString &u : qAsConst(atendidas))
                    if (u.contains(parte))
                        return true;
                return false;
            },
            ms);
    }

    // The dialog's child widget of that name; a missing one ends the test run, naming it.
    template <typename W> W *w(const char *nombre) const
    {
        W *widget = dlg->template findChild<W *>(QString::fromLatin1(nombre));
        if (!widget)
            qFatal("no widget %s", nombre);
        return widget;
    }
};

// A report dialog of type D, built, with its date range and the manager its query goes through.
template <typename D> struct DialogoDeFechas {
    D dlg;
    QDateEdit *desde = dlg.template findChild<QDateEdit *>(QStringLiteral("dateEdit_desde"));
    QDateEdit *hasta = dlg.template findChild<QDateEdit *>(QStringLiteral("dateEdit_hasta"));
    QNetworkAccessManager *red = dlg.template findChild<QNetworkAccessManager *>();
};

// Presses `boton` with the mouse and waits until `red` has handled a reply; false when none
// came within `milisegundos`.
bool pulsarYEsperarRespuesta(QAbstractButton *boton, QNetworkAccessManager *red,
                             int milisegundos = 5000);
