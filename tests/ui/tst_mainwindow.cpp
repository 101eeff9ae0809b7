#include "app/sesion.h"
#include "autopremiacion/auto_calcular.h"
#include "consulta/mysqlconsulta.h"
#include "monitor/monitor2.h"
#include "premios/calcularpremios2.h"
#include "reportes/reporteventasx.h"
#include "reportes/ventasbancas.h"
#include "temas/themeconfig.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/sesionprueba.h"
#include "tests/ui/guardaconexiones.h"
#include "ui/iniciar_sesion.h"
#include "ui/mainwindow.h"

#include <QAction>
#include <QCalendarWidget>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>
#include <QToolBar>

#include <memory>

namespace {

const QByteArray respuestaAdmin = respuestaLoginAdmin;
const QByteArray respuestaOperador = "1\nOperador\nX\n11,21\n1,5\n\n\n\n";
const QByteArray lineaImpresa = "Unable to set stylesheet, file not found\n";

// Runs `accion` on the theme dialog once the main window has opened it modally.
void enDialogoDeTemas(std::function<void(themeconfig *)> accion)
{
    auto *sondeo = new QTimer;
    QObject::connect(sondeo, &QTimer::timeout, [sondeo, accion] {
        auto *temas = qobject_cast<themeconfig *>(QApplication::activeModalWidget());
        if (!temas)
            return;
        sondeo->stop();
        sondeo->deleteLater();
        accion(temas);
    });
    sondeo->start(10);
}

QString hojaDe(const QString &recurso)
{
    QFile f(recurso);
    return f.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(f.readAll())
                                                         : QString();
}

QStringList textosDeMenu(const QList<QAction *> &acciones)
{
    QStringList textos;
    for (QAction *a : acciones)
        textos << (a->isSeparator() ? QStringLiteral("---") : a->text());
    return textos;
}

const QStringList entradasDeLaTabla = {"action_Bancas",          "action_Jefes_de_grupo",
                                       "actionA_gencias",        "action_Taquillas",
                                       "actionJuegos",           "actionSorteos",
                                       "actionIm_genes",         "actionMonitorear_Ventas",
                                       "actionCalcular_Premios", "actionDeshacer_Premiaci_n",
                                       "actionAuto_premiaci_n",  "actionVentas_Bancas_2"};

} // namespace

// The main window after a login against the fixture server.
class TstMainWindow : public QObject {
    Q_OBJECT

    std::unique_ptr<ServidorPrueba> srv;
    std::unique_ptr<DirectorioTrabajo> dir;

    // A logged-in main window; the fixture answers the login with `respuesta`.
    std::unique_ptr<MainWindow> abrir(const QByteArray &respuesta = respuestaAdmin)
    {
        srv->responder("validarUser.php", respuesta);
        responderLogin();
        auto ventana = std::make_unique<MainWindow>();
        ventana->show();
        return ventana;
    }

    QAction *accion(MainWindow &v, const QString &nombre) { return v.findChild<QAction *>(nombre); }

    template <typename Dialogo>
    void abreNuevoNoModal(MainWindow &v, const QString &nombreAccion, const QString &titulo = {})
    {
        const int antes = v.findChildren<Dialogo *>(QString(), Qt::FindDirectChildrenOnly).size();
        accion(v, nombreAccion)->trigger();
        accion(v, nombreAccion)->trigger();
        const auto dialogos = v.findChildren<Dialogo *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(dialogos.size(), antes + 2);
        for (Dialogo *d : dialogos) {
            QVERIFY(d->isVisible());
            QVERIFY(!d->isModal());
            QCOMPARE(d->windowModality(), Qt::NonModal);
            QVERIFY(d->testAttribute(Qt::WA_DeleteOnClose));
            if (!titulo.isEmpty())
                QCOMPARE(d->windowTitle(), titulo);
        }
        QVERIFY(dialogos.at(0) != dialogos.at(1));
        for (Dialogo *d : dialogos)
            QCOMPARE(d->parentWidget(), &v);
    }

public:
    // Child processes: each builds the main window against the parent's fixture server and
    // returns 0 only when the process was not ended on the way.
    static int correrEscenario(const QString &nombre)
    {
        if (nombre == QLatin1String("salirEnLogin")) {
            responderLogin(RespuestaLogin::Salir);
            MainWindow ventana;
            return 0;
        }
        if (nombre == QLatin1String("cerrarLogin")) {
            responderLogin(RespuestaLogin::Cerrar);
            MainWindow ventana;
            return 0;
        }
        if (nombre == QLatin1String("loginSinSesion")) {
            responderLogin(RespuestaLogin::Iniciar);
            MainWindow ventana;
            return 0;
        }
        if (nombre == QLatin1String("menuSalir")) {
            responderLogin(RespuestaLogin::Iniciar);
            MainWindow ventana;
            ventana.show();
            QTimer::singleShot(0, [&] { ventana.findChild<QAction *>("action_Salir")->trigger(); });
            return QApplication::exec() == 0 ? 0 : 5;
        }
        if (nombre == QLatin1String("cerrarVentana")) {
            responderLogin(RespuestaLogin::Iniciar);
            auto *ventana = new MainWindow;
            ventana->show();
            QTimer::singleShot(0, ventana, &QWidget::close);
            const int codigo = QApplication::exec();
            delete ventana;
            return codigo == 0 ? 7 : 5;
        }
        return 2;
    }

private slots:
    void initTestCase() { instalarGuardaConexiones(); }

    void init()
    {
        reiniciarSesion();
        horaActual = QTime();
        srv = std::make_unique<ServidorPrueba>();
        dir = std::make_unique<DirectorioTrabajo>();
        dir->apuntarA(srv->direccion());
    }

    void cleanup()
    {
        dir.reset();
        srv.reset();
        verificarConexiones();
    }

    void arranqueRoot()
    {
        srv->responder("datetime.php", "2026-11-22\nDomingo\n-04:00\n0\n10:15:31\n");
        auto v = abrir();
        QCOMPARE(v->windowTitle(), QStringLiteral("Tornavo Super Usuario"));
        QVERIFY(v->isMaximized());
        QVERIFY(!v->windowIcon().isNull());
        QVERIFY(!v->findChild<QLabel *>("label_logo")->isEnabled());
        QCOMPARE(v->findChild<QLabel *>("label_usuario")->text(),
                 "Administrador:/>_\nServidor : " + srv->direccion());
        QCOMPARE(v->findChild<QLabel *>("label_usuario")->font().family(),
                 QStringLiteral("Fixedsys"));
        QVERIFY(v->findChild<QPushButton *>("pushButton_actualizarMensaje")->isVisible());
        QCOMPARE(v->findChild<QPushButton *>("pushButton_actualizarMensaje")->text(),
                 QStringLiteral("Actualizar mensaje"));
        QVERIFY(!v->findChild<QTextEdit *>("textEdit_mensaje")->isReadOnly());
        for (const QString &n : entradasDeLaTabla)
            QVERIFY2(accion(*v, n)->isEnabled(), qPrintable(n));
        QVERIFY(v->findChild<QMenu *>("menuUsuarios")->isEnabled());
        QVERIFY(v->findChild<QMenu *>("menuUsuarios")->menuAction()->isEnabled());
        QVERIFY(accion(*v, "actionMySql")->isEnabled());
        QVERIFY(accion(*v, "actionVentas_Bancas")->isEnabled());
        QCOMPARE(SesionGlobal::filtroJuegos, QString());
        QCOMPARE(SesionGlobal::filtroJuegos2, QString());

        // The login, then the clock at once; the message board asks nothing.
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticiones().size(), 2, 5000);
        QCOMPARE(srv->peticiones(),
                 (QStringList{"/Tornavo/TornavoSU/validarUser.php?u=admin&p=tornavo1",
                              "/Tornavo/TornavoSU/datetime.php"}));
        QTRY_COMPARE_WITH_TIMEOUT(horaActual, QTime(10, 15, 31), 5000);
        QCOMPARE(SesionGlobal::fechaActual, QDate(2026, 11, 22));
    }

    void derechosDeUnOperador()
    {
        auto v = abrir(respuestaOperador);
        for (const QString &n : entradasDeLaTabla) {
            const bool esperado = n == "action_Bancas" || n == "actionMonitorear_Ventas";
            QVERIFY2(accion(*v, n)->isEnabled() == esperado, qPrintable(n));
        }
        QVERIFY(!v->findChild<QMenu *>("menuUsuarios")->isEnabled());
        QVERIFY(!v->findChild<QMenu *>("menuUsuarios")->menuAction()->isEnabled());
        QVERIFY(!accion(*v, "actionMySql")->isEnabled());
        QVERIFY(!accion(*v, "actionVentas_Bancas")->isEnabled());
        QVERIFY(accion(*v, "action_Salir")->isEnabled());
        QVERIFY(accion(*v, "actionTemas_de_Tornavo")->isEnabled());
        QVERIFY(accion(*v, "actionURL")->isEnabled());
        QCOMPARE(v->findChild<QLabel *>("label_usuario")->text(), QStringLiteral("Operador:/>_"));
        QVERIFY(!v->findChild<QPushButton *>("pushButton_actualizarMensaje")->isVisible());
        QVERIFY(v->findChild<QTextEdit *>("textEdit_mensaje")->isReadOnly());
        QCOMPARE(SesionGlobal::filtroJuegos,
                 QStringLiteral("AND (j.codJuego='1' or j.codJuego='5')"));
        QCOMPARE(SesionGlobal::filtroJuegos2, SesionGlobal::filtroJuegos);
        QVERIFY(v->isActivar("21"));
        QVERIFY(!v->isActivar("2"));
    }

    void todosLosCodigosSinRoot()
    {
        auto v = abrir("1\nJefe\nX\n11,12,13,14,15,16,17,18,21,22,23,24,31\n7\n\n\n\n");
        for (const QString &n : entradasDeLaTabla)
            QVERIFY2(accion(*v, n)->isEnabled(), qPrintable(n));
        QVERIFY(v->findChild<QMenu *>("menuUsuarios")->menuAction()->isEnabled());
        // No code opens these two: only "root" does.
        QVERIFY(!accion(*v, "actionMySql")->isEnabled());
        QVERIFY(!accion(*v, "actionVentas_Bancas")->isEnabled());
        QCOMPARE(SesionGlobal::filtroJuegos, QStringLiteral("AND (j.codJuego='7')"));
    }

    void rootNoPrimeroNoEsRoot()
    {
        auto v = abrir("1\nX\nX\n18,root\n\n\n\n\n");
        QVERIFY(!accion(*v, "action_Bancas")->isEnabled());
        QVERIFY(v->findChild<QMenu *>("menuUsuarios")->menuAction()->isEnabled());
        QVERIFY(!accion(*v, "actionMySql")->isEnabled());
    }

    void filtroSinJuegos()
    {
        auto v = abrir();
        SesionGlobal::juegos.clear();
        v->accesoJuegos();
        QCOMPARE(SesionGlobal::filtroJuegos, QStringLiteral("j.codJuego='vacio'"));
        QCOMPARE(SesionGlobal::filtroJuegos2, QStringLiteral("j.codJuego='vacio'"));
        SesionGlobal::juegos = QStringList{"7"};
        v->accesoJuegos();
        QCOMPARE(SesionGlobal::filtroJuegos, QStringLiteral("AND (j.codJuego='7')"));
        QCOMPARE(SesionGlobal::filtroJuegos2, QStringLiteral("AND (j.codJuego='7')"));
    }

    void menus()
    {
        auto v = abrir();
        QStringList titulos;
        for (QAction *a : v->menuBar()->actions())
            titulos << a->text();
        QCOMPARE(titulos, (QStringList{"Archivos", "Procesos", "Reportes", "Consultas"}));
        QCOMPARE(v->findChild<QMenu *>("menuVer")->title(), QStringLiteral("Procesos"));
        QCOMPARE(textosDeMenu(v->findChild<QMenu *>("menuArchivos")->actions()),
                 (QStringList{"&Bancas", "&Jefes de grupo", "A&gencias", "&Taquillas", "---",
                              "Juegos", "Sorteos", "Animales/Imágenes", "Usuarios",
                              "Temas de Tornavo", "---", "&Salir"}));
        QCOMPARE(v->findChild<QMenu *>("menuArchivos")->actions().at(8),
                 v->findChild<QMenu *>("menuUsuarios")->menuAction());
        QCOMPARE(textosDeMenu(v->findChild<QMenu *>("menuUsuarios")->actions()),
                 (QStringList{"Banca", "Jefes de Grupo", "Agencias", "Taquillas"}));
        QCOMPARE(v->findChild<QMenu *>("menuUsuarios")->actions().at(2),
                 accion(*v, "actionAgencia"));
        QCOMPARE(textosDeMenu(v->findChild<QMenu *>("menuVer")->actions()),
                 (QStringList{"Monitorear Ventas", "---", "Calcular Premios", "Deshacer Premiación",
                              "Auto-premiación"}));
        QCOMPARE(v->findChild<QMenu *>("menuReportes")->actions(),
                 QList<QAction *>{accion(*v, "actionVentas_Bancas_2")});
        QCOMPARE(v->findChild<QMenu *>("menuConsultas")->actions(),
                 (QList<QAction *>{accion(*v, "actionMySql"), accion(*v, "actionVentas_Bancas"),
                                   accion(*v, "actionURL")}));
        QCOMPARE(v->findChild<QToolBar *>("mainToolBar")->actions(),
                 QList<QAction *>{accion(*v, "actionMonitorear_Ventas")});

        QCOMPARE(accion(*v, "action_Salir")->toolTip(), QStringLiteral("Salir"));
        QCOMPARE(accion(*v, "action_Salir")->shortcut(), QKeySequence("Ctrl+S"));
        QCOMPARE(accion(*v, "actionMonitorear_Ventas")->shortcut(), QKeySequence("Ctrl+M"));
        QVERIFY(!accion(*v, "actionMonitorear_Ventas")->icon().isNull());
        QVERIFY(!QIcon(":/Imagenes/monitorear.ico").pixmap(32).isNull());
        QCOMPARE(accion(*v, "actionTaquilla")->text(), QStringLiteral("Taquillas"));
        QCOMPARE(accion(*v, "actionJefes_de_Grupo")->text(), QStringLiteral("Jefes de Grupo"));
        QCOMPARE(accion(*v, "actionBanca")->text(), QStringLiteral("Banca"));
        QCOMPARE(accion(*v, "actionURL")->text(), QStringLiteral("URL"));
        QCOMPARE(accion(*v, "actionMySql")->text(), QStringLiteral("MySql"));
        QCOMPARE(accion(*v, "actionVentas_Bancas")->text(), QStringLiteral("Ventas Bancas"));
        QCOMPARE(accion(*v, "actionVentas_Bancas_2")->text(), QStringLiteral("Ventas Bancas"));
        QVERIFY(v->findChild<QCalendarWidget *>("calendarWidget"));
    }

    void tresTemporizadores()
    {
        auto v = abrir();
        QList<int> intervalos;
        for (QTimer *t : v->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            QVERIFY(t->isActive());
            intervalos << t->interval();
        }
        std::sort(intervalos.begin(), intervalos.end());
        QCOMPARE(intervalos, (QList<int>{500, 1000, 5000}));
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticionesA("datetime.php").size(), 1, 5000);

        // Each timer drives its own step.
        srv->responder("datetime.php", "");
        horaActual = QTime(8, 0, 0);
        SesionGlobal::temaCambiado = true;
        for (QTimer *t : v->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (t->interval() == 1000)
                QMetaObject::invokeMethod(t, "timeout");
        }
        QCOMPARE(horaActual, QTime(8, 0, 1));
        QVERIFY(SesionGlobal::temaCambiado);
        for (QTimer *t : v->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (t->interval() == 500)
                QMetaObject::invokeMethod(t, "timeout");
        }
        QVERIFY(!SesionGlobal::temaCambiado);
        QCOMPARE(srv->peticionesA("datetime.php").size(), 1);
        for (QTimer *t : v->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (t->interval() == 5000)
                QMetaObject::invokeMethod(t, "timeout");
        }
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticionesA("datetime.php").size(), 2, 5000);
        QCOMPARE(srv->peticionesA("datetime.php").at(1),
                 QStringLiteral("/Tornavo/TornavoSU/datetime.php"));
    }

    void relojDelServidor()
    {
        srv->responder("datetime.php", "2026-03-04\na\nb\nc\n23:59:58\n");
        auto v = abrir();
        QTRY_COMPARE_WITH_TIMEOUT(horaActual, QTime(23, 59, 58), 5000);
        QCOMPARE(SesionGlobal::fechaActual, QDate(2026, 3, 4));

        // An empty reply changes nothing and says nothing.
        CapturaMensajes captura;
        srv->responder("datetime.php", "");
        v->actualizarHora();
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticionesA("datetime.php").size(), 2, 5000);
        QTest::qWait(50);
        QCOMPARE(horaActual, QTime(23, 59, 58));
        QCOMPARE(SesionGlobal::fechaActual, QDate(2026, 3, 4));
        QCOMPARE(captura.cantidad(), 0);

        // Fewer than five lines: the time becomes invalid and stays so while counting.
        srv->responder("datetime.php", "2026-03-05\na\nb\n");
        v->actualizarHora();
        QTRY_VERIFY_WITH_TIMEOUT(!horaActual.isValid(), 5000);
        QCOMPARE(SesionGlobal::fechaActual, QDate(2026, 3, 5));
        v->currentHora();
        QVERIFY(!horaActual.isValid());
        QCOMPARE(captura.cantidad(), 0);
    }

    void segundoYParpadeo()
    {
        auto v = abrir();
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticionesA("datetime.php").size(), 1, 5000);
        QTest::qWait(50); // the empty clock reply has been handled
        auto *calendario = v->findChild<QCalendarWidget *>("calendarWidget");
        horaActual = QTime(23, 59, 59);
        v->currentHora();
        QCOMPARE(horaActual, QTime(0, 0, 0)); // wraps at midnight

        SesionGlobal::fechaActual = QDate(2026, 1, 10);
        horaActual = QTime(13, 7, 9); // odd: colons, calendar untouched
        const QDate antes = calendario->selectedDate();
        v->ver_hora();
        QCOMPARE(v->textoReloj(), QStringLiteral("1:07:09 p. m."));
        QCOMPARE(calendario->selectedDate(), antes);
        v->currentHora(); // even: semicolons and the server's date
        v->ver_hora();
        QCOMPARE(v->textoReloj(), QStringLiteral("1;07;10 p. m."));
        QCOMPARE(calendario->selectedDate(), QDate(2026, 1, 10));
    }

    void temaAlArrancar()
    {
        dir->escribir("Tornavo.thm", "MacOS\n");
        auto v = abrir();
        QCOMPARE(v->styleSheet(), hojaDe(":TornavoThemes/MacOS/MacOS.qss"));
        QVERIFY(!v->styleSheet().isEmpty());
        QCOMPARE(SesionGlobal::estiloSistema, QString());
    }

    void temaEnMinusculasNoSeAplica()
    {
        dir->escribir("Tornavo.thm", "macos\n");
        auto v = abrir();
        QCOMPARE(v->styleSheet(), QString());
    }

    void temaCambiadoSeReaplica()
    {
        auto v = abrir();
        QCOMPARE(v->styleSheet(), QString());
        dir->escribir("Tornavo.thm", "dark\n");
        v->ver_hora();
        QCOMPARE(v->styleSheet(), QString()); // not without the flag
        SesionGlobal::temaCambiado = true;
        v->ver_hora();
        QCOMPARE(v->styleSheet(), hojaDe(":TornavoThemes/qdarkstyle/style.qss"));
        QVERIFY(!SesionGlobal::temaCambiado);
    }

    void dialogoDeTemasModal()
    {
        dir->escribir("Tornavo.thm", "light\n");
        auto v = abrir();
        QCOMPARE(v->styleSheet(), hojaDe(":TornavoThemes/qlightstyle/style.qss"));
        bool visto = false;
        enDialogoDeTemas([&](themeconfig *t) {
            visto = true;
            QCOMPARE(t->parentWidget(), v.get());
            auto *lista = t->findChild<QListWidget *>("listWidget_themes");
            QCOMPARE(lista->currentRow(), 1);
            lista->setCurrentRow(4);
            t->findChild<QPushButton *>("pushButton_guardar")->click();
            t->findChild<QPushButton *>("pushButton_salir")->click();
        });
        accion(*v, "actionTemas_de_Tornavo")->trigger();
        QVERIFY(visto);
        // Reloaded as soon as the dialog closed.
        QCOMPARE(v->styleSheet(), hojaDe(":TornavoThemes/Combinear/combinear.qss"));
        QVERIFY(SesionGlobal::temaCambiado);
        QCOMPARE(v->findChildren<themeconfig *>().size(), 0);

        // Back to the platform look with "Tema del Sistema".
        enDialogoDeTemas([&](themeconfig *t) {
            t->findChild<QListWidget *>("listWidget_themes")->setCurrentRow(0);
            t->findChild<QPushButton *>("pushButton_guardar")->click();
            t->findChild<QPushButton *>("pushButton_salir")->click();
        });
        accion(*v, "actionTemas_de_Tornavo")->trigger();
        QCOMPARE(v->styleSheet(), QString());
        QFile archivo("Tornavo.thm");
        QVERIFY(archivo.open(QIODevice::ReadOnly));
        QCOMPARE(archivo.readAll(), QByteArray("\n"));
    }

    void accionesAbrenSusDialogos()
    {
        auto v = abrir();
        CapturaMensajes captura; // dialogs may complain about the fixture's empty replies
        abreNuevoNoModal<Monitor2>(*v, "actionMonitorear_Ventas");
        abreNuevoNoModal<calcularpremios2>(*v, "actionCalcular_Premios");
        abreNuevoNoModal<auto_calcular>(*v, "actionAuto_premiaci_n");
        abreNuevoNoModal<VentasBancas>(*v, "actionVentas_Bancas");
        abreNuevoNoModal<reporteVentasX>(*v, "actionVentas_Bancas_2",
                                         QStringLiteral("Reporte de Ventas Super Banca"));
    }

    void consolaSqlInformaYSeCierra()
    {
        auto v = abrir();
        CapturaMensajes captura;
        accion(*v, "actionMySql")->trigger();
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().texto, QStringLiteral("Error abriendo la base de datos"));
        QCOMPARE(captura.ultimo().rutaIcono, QStringLiteral(":/Imagenes/question-crash.png"));
        QTRY_COMPARE(v->findChildren<mysqlconsulta *>().size(), 0);
    }

    void entradasQueNoHacenNada()
    {
        auto v = abrir();
        QTRY_COMPARE_WITH_TIMEOUT(srv->peticiones().size(), 2, 5000);
        CapturaMensajes captura;
        const int hijos = v->findChildren<QDialog *>().size();
        const QString mensaje = v->findChild<QTextEdit *>("textEdit_mensaje")->toHtml();
        for (const char *n :
             {"action_Bancas", "actionJuegos", "actionSorteos", "actionIm_genes", "actionBanca",
              "actionDeshacer_Premiaci_n", "actionURL", "action_Jefes_de_grupo", "actionA_gencias",
              "action_Taquillas", "actionJefes_de_Grupo", "actionAgencia", "actionTaquilla"})
            accion(*v, n)->trigger();
        QTest::mouseClick(v->findChild<QPushButton *>("pushButton_actualizarMensaje"),
                          Qt::LeftButton);
        QTest::qWait(50);
        QCOMPARE(v->findChildren<QDialog *>().size(), hijos);
        QCOMPARE(captura.cantidad(), 0);
        QCOMPARE(srv->peticiones().size(), 2);
        QCOMPARE(v->findChild<QTextEdit *>("textEdit_mensaje")->toHtml(), mensaje);
        QVERIFY(v->isVisible());
    }

    void salirDelLoginTerminaConUno()
    {
        const ResultadoProceso r = ejecutarEscenario("salirEnLogin");
        QVERIFY(r.terminoNormal);
        QCOMPARE(r.codigo, 1);
    }

    void cerrarElLoginTerminaConUno()
    {
        const ResultadoProceso r = ejecutarEscenario("cerrarLogin");
        QCOMPARE(r.codigo, 1);
        QCOMPARE(srv->peticiones(), QStringList());
    }

    void loginSinXTerminaConUno()
    {
        srv->responder("validarUser.php", "1\nAna\nN\nroot\nroot\n\n\n\n");
        const ResultadoProceso r = ejecutarEscenario("loginSinSesion");
        QCOMPARE(r.codigo, 1);
        QCOMPARE(srv->peticionesA("validarUser.php").size(), 1);
        QCOMPARE(srv->peticionesA("datetime.php").size(), 0); // ended before the clock
    }

    void menuSalirTerminaConUno()
    {
        srv->responder("validarUser.php", respuestaAdmin);
        const ResultadoProceso r = ejecutarEscenario("menuSalir");
        QCOMPARE(r.codigo, 1);
        // Started without a theme file: the one printed line, nothing else (no password).
        QCOMPARE(r.salida, lineaImpresa);
        QVERIFY(!r.errores.contains("tornavo1"));
    }

    void cerrarLaVentanaTerminaNormal()
    {
        srv->responder("validarUser.php", respuestaAdmin);
        dir->escribir("Tornavo.thm", "MacOS\n");
        const ResultadoProceso r = ejecutarEscenario("cerrarVentana");
        QCOMPARE(r.codigo, 7);
        QCOMPARE(r.salida, QByteArray()); // a known theme prints nothing
    }

    void relojSePideAlIniciar()
    {
        // The clock is asked for in the constructor, not only by the 5-second timer: with
        // every timer stopped right after the login, the request still goes out.
        srv->responder("validarUser.php", respuestaAdmin);
        srv->responder("datetime.php", "2026-11-22\nsabado\n-4\n1790000000\n15:04:05\n");
        responderLogin();
        auto v = std::make_unique<MainWindow>();
        for (QTimer *t : v->findChildren<QTimer *>())
            t->stop();
        QVERIFY(
            QTest::qWaitFor([&] { return !srv->peticionesA("datetime.php").isEmpty(); }, 10000));
        QCOMPARE(srv->peticionesA("datetime.php"), QStringList{"/Tornavo/TornavoSU/datetime.php"});
        QTRY_COMPARE_WITH_TIMEOUT(horaActual, QTime(15, 4, 5), 10000);
    }
};

TORNAVO_PRUEBA_MAIN(TstMainWindow)
#include "tst_mainwindow.moc"
