#include "autopremiacion/auto_calcular.h"

#include "app/sesion.h"
#include "autopremiacion/procesoscript.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/procesos.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/soporte/tablas.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGraphicsBlurEffect>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTextEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>
#include <mutex>
#include <sys/stat.h>

namespace {

QStringList avisos; // warnings seen while a test ran

void guardarAvisos(QtMsgType tipo, const QMessageLogContext &, const QString &texto)
{
    if (tipo != QtDebugMsg && tipo != QtInfoMsg)
        avisos.append(texto);
}

const QByteArray sorteosDemo = "1,Lotto Activo,10,10:00 AM,10:00:00,1/30,X,lotto\n"
                               "1,Lotto Activo,11,11:00 AM,11:00:00,1/30,X,lotto\n"
                               "2,La Granja,20,10:00 AM,10:00:00,1/30,x,granja\n"
                               "3,Triple,30,12:00 PM,12:00:00,1/600,,triple\n"
                               "4,Ruleta,40,1:00 PM,13:00:00,1/36,X,ruleta\n";

const QByteArray relojDemo = "2026-11-22\nsabado\n-4\n1790000000\n10:00:00\n";

QString hoy()
{
    return QDate::currentDate().toString("yyyy-MM-dd");
}

QString ayer()
{
    return QDate::currentDate().addDays(-1).toString("yyyy-MM-dd");
}

QList<qint64> pidsEn(const QString &archivo)
{
    QFile f(archivo);
    QList<qint64> pids;
    if (f.open(QIODevice::ReadOnly)) {
        for (const QByteArray &l : f.readAll().split('\n'))
            if (!l.trimmed().isEmpty())
                pids.append(l.trimmed().toLongLong());
    }
    return pids;
}

QString leer(const QString &archivo)
{
    QFile f(archivo);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// A script that notes its name in "orden.log" and ends.
QByteArray scriptQueAnota(const QString &nombre)
{
    return "open('orden.log', 'a').write('" + nombre.toUtf8() + "\\n')\n";
}

// A script that notes its pid, starts a child that notes its own, and then hangs or ends.
QByteArray scriptConHijo(bool colgarse)
{
    QByteArray s = "import os, subprocess, sys, time\n"
                   "open('padre.pid', 'a').write(str(os.getpid()) + '\\n')\n"
                   "h = subprocess.Popen([sys.executable, '-c', 'import time; time.sleep(600)'])\n"
                   "open('hijo.pid', 'a').write(str(h.pid) + '\\n')\n";
    if (colgarse)
        s += "time.sleep(600)\n";
    return s;
}

// The fixture server with the demo clock and draw list (or `sorteos`), and a working directory
// pointing at it.
struct Escena : Escenario {
    explicit Escena(const QByteArray &sorteos = sorteosDemo)
        : Escenario{{"datetime.php", relojDemo}, {"cargarsorteos.php", sorteos}}
    {
    }
};

} // namespace

// The automatic awarding dialog against the fixture server, with real Python scripts started
// in a temporary working directory. The cycle is driven by calling its slots.
class TstAutoCalcular : public QObject {
    Q_OBJECT

    std::unique_ptr<auto_calcular> abrir(bool esperarSorteos = true)
    {
        auto d = std::make_unique<auto_calcular>();
        d->temporizadorArchivos->stop();
        d->temporizadorReloj->stop();
        d->temporizadorCiclo->stop();
        for (int i = 0; i < 500 && esperarSorteos && !d->esperaActiva; ++i)
            QTest::qWait(10);
        return d;
    }

    static bool esperar(const std::function<bool()> &condicion, int ms = 10000)
    {
        return QTest::qWaitFor(condicion, ms);
    }

    // Asks for the results and waits for the reply.
    static bool recargar(auto_calcular &d)
    {
        d.cargarResultados();
        return esperar([&] { return d.resultadosCargados; }, 5000);
    }

    template <class T> static T *hijo(auto_calcular &d, const char *nombre)
    {
        return d.findChild<T *>(QString::fromLatin1(nombre));
    }

    // The log as plain lines.
    static QStringList registro(auto_calcular &d)
    {
        const QString t = hijo<QTextEdit>(d, "textEdit_info")->toPlainText();
        return t.isEmpty() ? QStringList() : t.split('\n');
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void initTestCase() { qInstallMessageHandler(guardarAvisos); }

    void init()
    {
        reiniciarSesion();
        avisos.clear();
    }

    void cleanup()
    {
        QTest::qWait(20);
        for (const QString &a : qAsConst(avisos))
            QVERIFY2(!a.contains("No matching signal") && !a.contains("QProcess"), qPrintable(a));
    }

    void formularioYArranque()
    {
        Escena e;
        auto_calcular d;
        QCOMPARE(d.windowTitle(), QString::fromUtf8("Auto-premiación"));
        QCOMPARE(hijo<QLabel>(d, "label_mensaje")->text(), QStringLiteral("Cargando Sorteos..."));
        QCOMPARE(d.programaPython, QStringLiteral("python"));
        QCOMPARE(d.indiceEspera, 10);
        QCOMPARE(d.indiceScript, 0);
        QVERIFY(!d.esperaActiva);
        QVERIFY(d.resultadosCargados);
        QCOMPARE(d.fechaResultados, QDate::currentDate());
        QCOMPARE(d.cuadrosEspera, (QStringList{"|...", ".|..", "..|.", "...|", "..|.", ".|.."}));
        QCOMPARE(d.temporizadorArchivos->interval(), 200);
        QCOMPARE(d.temporizadorReloj->interval(), 1000);
        QCOMPARE(d.temporizadorCiclo->interval(), 10000);
        QVERIFY(d.temporizadorArchivos->isActive() && d.temporizadorReloj->isActive() &&
                d.temporizadorCiclo->isActive());
        QVERIFY(!d.temporizadorArchivos->isSingleShot());
        d.temporizadorArchivos->stop();
        d.temporizadorReloj->stop();
        d.temporizadorCiclo->stop();

        auto juegos = hijo<QTableWidget>(d, "tableWidget_juegos");
        auto resultados = hijo<QTableWidget>(d, "tableWidget_resultados");
        auto falta = hijo<QTableWidget>(d, "tableWidget_falta");
        auto txt = hijo<QTableWidget>(d, "tableWidget_txt");
        QVERIFY(juegos && resultados && falta && txt);
        QVERIFY(hijo<QLineEdit>(d, "lineEdit_contador") && hijo<QLineEdit>(d, "lineEdit_hora"));
        QVERIFY(hijo<QTextEdit>(d, "textEdit_info") && hijo<QPushButton>(d, "pushButton_salir"));
        QVERIFY(d.findChild<QLayout *>("verticalLayout_2") &&
                d.findChild<QLayout *>("horizontalLayout_2") &&
                d.findChild<QLayout *>("horizontalLayout_3") &&
                d.findChild<QLayout *>("verticalLayout") &&
                d.findChild<QLayout *>("horizontalLayout"));
        QCOMPARE(encabezados(juegos), (QStringList{"Juego", "Auto"}));
        QCOMPARE(juegos->columnWidth(0), 130);
        QCOMPARE(juegos->columnWidth(1), 50);
        QCOMPARE(encabezados(resultados), (QStringList{"Sorteo", "Resultado", "Hora Calc"}));
        QCOMPARE(resultados->columnWidth(0), 160);
        QCOMPARE(resultados->columnWidth(1), 110);
        QCOMPARE(resultados->columnWidth(2), resultados->horizontalHeader()->defaultSectionSize());
        QCOMPARE(encabezados(falta), QStringList{"Sorteos\npor premiar"});
        QCOMPARE(falta->columnWidth(0), 160);
        QCOMPARE(encabezados(txt), QStringList{"Archivo"});
        QCOMPARE(txt->columnWidth(0), 230);

        QVERIFY(esperar([&] { return d.esperaActiva; }));
        // Two managers: the arrival order of the two requests is not fixed.
        QStringList pedidas = e.srv.peticiones();
        pedidas.sort();
        QCOMPARE(pedidas, (QStringList{"/Tornavo/TornavoSU/cargarsorteos.php",
                                       "/Tornavo/TornavoSU/datetime.php"}));
        QCOMPARE(hijo<QLabel>(d, "label_mensaje")->text(), QString());
    }

    void sorteosListanCadaJuegoUnaVez()
    {
        Escena e(sorteosDemo + "5,Corto,50\n\n");
        // Files left by earlier runs: those of automatic games go, the others stay.
        e.dir.escribir("lotto.txt", hoy().toUtf8() + "\n1,10,25\n");
        e.dir.escribir("ruleta.txt", "x");
        e.dir.escribir("granja.txt", "y");
        e.dir.escribir("triple.txt", "z");
        auto d = abrir();
        QVERIFY(d->esperaActiva);
        auto juegos = hijo<QTableWidget>(*d, "tableWidget_juegos");
        QCOMPARE(textosColumna(juegos, 0),
                 (QStringList{"Lotto Activo", "La Granja", "Triple", "Ruleta", "Corto"}));
        QCOMPARE(textosColumna(juegos, 1), (QStringList{"X", "x", "", "X", ""}));
        QCOMPARE(d->listasJuego.clavesJuego, (QStringList{"1", "2", "3", "4", "5"}));
        QCOMPARE(d->listasJuego.juegoAuto, (QStringList{"X", "x", "", "X", ""}));
        QCOMPARE(d->listasJuego.juegoScript,
                 (QStringList{"lotto", "granja", "triple", "ruleta", ""}));
        // "x" in lower case does not enable; Lotto enters once for its two draws.
        QCOMPARE(d->listaScripts, (QStringList{"lotto.py", "ruleta.py"}));
        QCOMPARE(d->listasSorteo.cantidad(), 6);
        QCOMPARE(d->listasSorteo.sorteoClave, (QStringList{"10", "11", "20", "30", "40", "50"}));
        QCOMPARE(
            textosColumna(hijo<QTableWidget>(*d, "tableWidget_falta"), 0),
            (QStringList{"Lotto Activo-10:00 AM", "Lotto Activo-11:00 AM", "La Granja-10:00 AM",
                         "Triple-12:00 PM", "Ruleta-1:00 PM", "Corto-"}));
        QVERIFY(!QFile::exists("lotto.txt"));
        QVERIFY(!QFile::exists("ruleta.txt"));
        QVERIFY(QFile::exists("granja.txt"));
        QVERIFY(QFile::exists("triple.txt"));
        QCOMPARE(hijo<QLabel>(*d, "label_mensaje")->text(), QString());
    }

    void sinListaDeSorteos()
    {
        EscenarioSinServidor caido;
        CapturaMensajes captura;
        auto d = abrir(false);
        QVERIFY(captura.esperar(2));
        QList<MensajeVisto> vistos = captura.vistos();
        std::sort(vistos.begin(), vistos.end(),
                  [](const MensajeVisto &a, const MensajeVisto &b) { return a.titulo < b.titulo; });
        QCOMPARE(vistos.at(0).titulo, QString::fromUtf8("Atensión"));
        QCOMPARE(vistos.at(0).texto,
                 QStringLiteral("No se pudo sincronizar el reloj con el Servidor"));
        QCOMPARE(vistos.at(0).icono, QMessageBox::Information);
        QCOMPARE(vistos.at(1).titulo, QStringLiteral("Error"));
        QCOMPARE(
            vistos.at(1).texto,
            QStringLiteral("No hubo respuesta del servidor\nNo se pudieron cargar los Sorteos"));
        QCOMPARE(vistos.at(1).icono, QMessageBox::Critical);
        QCOMPARE(vistos.at(1).botones, QStringList{"OK"});
        QCOMPARE(hijo<QLabel>(*d, "label_mensaje")->text(), QString());
        QVERIFY(!d->esperaActiva);
        QCOMPARE(hijo<QTableWidget>(*d, "tableWidget_juegos")->rowCount(), 0);
        QCOMPARE(hijo<QTableWidget>(*d, "tableWidget_falta")->rowCount(), 0);
        // The cycle goes on with nothing to do.
        d->pyExe();
        QVERIFY(esperar([&] { return d->resultadosCargados; }));
        QVERIFY(!hijo<QTableWidget>(*d, "tableWidget_resultados")->isEnabled());
        QCOMPARE(captura.cantidad(), 2);
    }

    void relojDelServidor()
    {
        Escena e;
        CapturaMensajes captura;
        auto d = std::make_unique<auto_calcular>();
        // The dialog set the shared clock to the local time.
        QVERIFY(qAbs(horaActual.secsTo(QTime::currentTime())) < 5);
        horaActual = QTime(9, 58, 20);
        QVERIFY(esperar([&] { return d->desfaseReloj != 0; }, 5000));
        QCOMPARE(d->desfaseReloj, 100);
        QCOMPARE(horaActual, QTime(9, 58, 20));
        QCOMPARE(captura.cantidad(), 0);
    }

    void relojVacioAvisa()
    {
        Escenario e{{"datetime.php", ""}, {"cargarsorteos.php", sorteosDemo}};
        CapturaMensajes captura;
        auto d = abrir();
        QVERIFY(captura.esperar(1));
        QCOMPARE(captura.ultimo().titulo, QString::fromUtf8("Atensión"));
        QCOMPARE(captura.ultimo().texto,
                 QStringLiteral("No se pudo sincronizar el reloj con el Servidor"));
        QCOMPARE(captura.ultimo().icono, QMessageBox::Information);
        QCOMPARE(d->desfaseReloj, 0);
    }

    void relojParpadeaYEsperaRebota()
    {
        Escena e;
        e.srv.demorar("cargarsorteos.php", 300);
        auto d = abrir(false);
        auto hora = hijo<QLineEdit>(*d, "lineEdit_hora");
        auto contador = hijo<QLineEdit>(*d, "lineEdit_contador");
        horaActual = QTime(15, 5, 7);
        d->mhora();
        QCOMPARE(hora->text(), QStringLiteral("3:05:07 p. m."));
        // No frames before the draws arrive.
        QCOMPARE(contador->text(), QString());
        QCOMPARE(d->indiceEspera, 10);
        horaActual = QTime(15, 5, 8);
        d->mhora();
        QCOMPARE(hora->text(), QStringLiteral("3;05;08 p. m."));
        QVERIFY(esperar([&] { return d->esperaActiva; }));
        QStringList cuadros;
        for (int i = 0; i < 7; ++i) {
            d->mhora();
            cuadros.append(contador->text());
        }
        QCOMPARE(cuadros, (QStringList{"|...", ".|..", "..|.", "...|", "..|.", ".|..", "|..."}));
    }

    void resultadosSacanSorteosDeLaEspera()
    {
        Escena e;
        e.srv.responder("cargarresultados.php", "1,Lotto Activo,,10,10:00 AM,25,Gallina,10:05:09\n"
                                                "3,Triple,X,30,12:00 PM,123,,14:05:00\n"
                                                "9,Otro,,90,9:00 AM,7,Perro,09:01:00\n");
        auto d = abrir();
        QVERIFY(recargar(*d));
        auto resultados = hijo<QTableWidget>(*d, "tableWidget_resultados");
        QCOMPARE(textosColumna(resultados, 0),
                 (QStringList{"Lotto Activo 10:00 AM", "Triple 12:00 PM", "Otro 9:00 AM"}));
        QCOMPARE(textosColumna(resultados, 1), (QStringList{"25-Gallina", "123", "7-Perro"}));
        QCOMPARE(textosColumna(resultados, 2),
                 (QStringList{"10:05 a. m.", "2:05 p. m.", "9:01 a. m."}));
        // The result with no draw only adds its row.
        QCOMPARE(textosColumna(hijo<QTableWidget>(*d, "tableWidget_falta"), 0),
                 (QStringList{"Lotto Activo-11:00 AM", "La Granja-10:00 AM", "Ruleta-1:00 PM"}));
        QCOMPARE(d->listasResultado.resultadoClaveSorteo, (QStringList{"10", "30", "90"}));
        QCOMPARE(e.srv.peticionesA("cargarresultados.php"),
                 QStringList{"/Tornavo/TornavoSU/cargarresultados.php"});

        // An empty reply: no results and every draw waiting again.
        e.srv.responder("cargarresultados.php", "");
        QVERIFY(recargar(*d));
        QCOMPARE(resultados->rowCount(), 0);
        QCOMPARE(hijo<QTableWidget>(*d, "tableWidget_falta")->rowCount(), 5);
    }

    void resultadosIlegiblesGrisean()
    {
        Escena e;
        e.srv.responder("cargarresultados.php",
                        "1,Lotto Activo,,10,10:00 AM,25,Gallina,10:05:09\n");
        CapturaMensajes captura;
        auto d = abrir();
        QVERIFY(recargar(*d));
        auto resultados = hijo<QTableWidget>(*d, "tableWidget_resultados");
        QVERIFY(resultados->isEnabled());
        e.dir.apuntarA(ServidorPrueba::direccionSinServidor());
        QVERIFY(recargar(*d));
        QVERIFY(!resultados->isEnabled());
        QCOMPARE(textosColumna(resultados, 0), QStringList{"Lotto Activo 10:00 AM"});
        QCOMPARE(hijo<QTableWidget>(*d, "tableWidget_falta")->rowCount(), 4);
        QCOMPARE(captura.cantidad(), 0);
        // The server answers again: the table is back in use.
        e.dir.apuntarA(e.srv.direccion());
        QVERIFY(recargar(*d));
        QVERIFY(resultados->isEnabled());
    }

    void pasadaMedianocheSeVacianResultados()
    {
        Escena e;
        e.srv.responder("cargarresultados.php",
                        "1,Lotto Activo,,10,10:00 AM,25,Gallina,10:05:09\n");
        auto d = abrir();
        QVERIFY(recargar(*d));
        auto resultados = hijo<QTableWidget>(*d, "tableWidget_resultados");
        QCOMPARE(resultados->rowCount(), 1);
        // Loaded yesterday; the session is on today.
        d->fechaResultados = QDate::currentDate().addDays(-1);
        SesionGlobal::fechaActual = QDate::currentDate();
        e.srv.demorar("cargarresultados.php", 300);
        d->cargarResultados();
        QCOMPARE(resultados->rowCount(), 0);
        QCOMPARE(d->listasResultado.cantidad(), 0);
        QCOMPARE(d->fechaResultados, QDate::currentDate());
        QVERIFY(!d->resultadosCargados);
        QVERIFY(esperar([&] { return d->resultadosCargados; }));
        QCOMPARE(resultados->rowCount(), 1);
        // Same day: the rows stay until the reply replaces them.
        d->cargarResultados();
        QCOMPARE(resultados->rowCount(), 1);
        QVERIFY(esperar([&] { return d->resultadosCargados; }));
    }

    void tresJuegosEnOrdenYVuelta()
    {
        Escena e("1,Uno,10,10:00 AM,10:00:00,1/30,X,a\n"
                 "2,Dos,20,10:00 AM,10:00:00,1/30,X,b\n"
                 "3,Tres,30,10:00 AM,10:00:00,1/30,X,c\n"
                 "1,Uno,11,11:00 AM,11:00:00,1/30,X,a\n");
        for (const char *n : {"a", "b", "c"})
            e.dir.escribir(QString(n) + ".py", scriptQueAnota(n));
        auto d = abrir();
        QCOMPARE(d->listaScripts, (QStringList{"a.py", "b.py", "c.py"}));
        QStringList etiquetas;
        QList<int> indices;
        for (int paso = 0; paso < 4; ++paso) {
            d->pyExe();
            etiquetas.append(hijo<QLabel>(*d, "label_mensaje")->text());
            indices.append(d->indiceScript);
            QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        }
        QCOMPARE(etiquetas, (QStringList{"Ejecutando a.py", "Ejecutando b.py", "Ejecutando c.py",
                                         "Ejecutando a.py"}));
        QCOMPARE(indices, (QList<int>{1, 2, 0, 1}));
        QCOMPARE(leer("orden.log"), QStringLiteral("a\nb\nc\na\n"));
        // Every step also asks for the results.
        QVERIFY(esperar([&] { return e.srv.peticionesA("cargarresultados.php").size() == 4; }));
    }

    void guionColgadoSeMataYSeReintenta()
    {
        Escena e("4,Ruleta,40,1:00 PM,13:00:00,1/36,X,colgado\n");
        e.dir.escribir("colgado.py", scriptConHijo(true));
        auto d = abrir();
        auto mensaje = hijo<QLabel>(*d, "label_mensaje");

        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando colgado.py"));
        QCOMPARE(d->indiceScript, 0);
        QVERIFY(esperar([] { return pidsEn("hijo.pid").size() == 1; }));
        const qint64 padre = pidsEn("padre.pid").value(0);
        const qint64 nieto = pidsEn("hijo.pid").value(0);
        QVERIFY(procesoVivo(padre) && procesoVivo(nieto));
        QVERIFY(d->proceso->abierto());

        // Next step: killed with its child, nothing started, the same entry stays next.
        QElapsedTimer t;
        t.start();
        d->pyExe();
        QVERIFY(t.elapsed() < 1000);
        QCOMPARE(mensaje->text(), QString());
        QCOMPARE(d->indiceScript, 0);
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        QVERIFY(esperar([&] { return !procesoVivo(padre) && !procesoVivo(nieto); }));
        QCOMPARE(pidsEn("padre.pid").size(), 1);

        // The step after starts it again.
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando colgado.py"));
        QVERIFY(esperar([] { return pidsEn("padre.pid").size() == 2; }));
        QVERIFY(esperar([] { return pidsEn("hijo.pid").size() == 2; }));
        const qint64 padre2 = pidsEn("padre.pid").value(1);
        const qint64 nieto2 = pidsEn("hijo.pid").value(1);
        QVERIFY(procesoVivo(padre2));
        // Closing the dialog does not wait for it but does not leave it behind either.
        t.restart();
        d.reset();
        QVERIFY(t.elapsed() < 1000);
        QVERIFY(esperar([&] { return !procesoVivo(padre2) && !procesoVivo(nieto2); }));
    }

    void colgadoCedeSuTurnoAlSiguiente()
    {
        Escena e("1,Uno,10,10:00 AM,10:00:00,1/30,X,colgado\n"
                 "2,Dos,20,10:00 AM,10:00:00,1/30,X,b\n");
        e.dir.escribir("colgado.py", scriptConHijo(true));
        e.dir.escribir("b.py", scriptQueAnota("b"));
        auto d = abrir();
        auto mensaje = hijo<QLabel>(*d, "label_mensaje");
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando colgado.py"));
        QVERIFY(esperar([] { return pidsEn("hijo.pid").size() == 1; }));
        d->pyExe();
        QCOMPARE(mensaje->text(), QString());
        QCOMPARE(d->indiceScript, 1);
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando b.py"));
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando colgado.py"));
        QVERIFY(esperar([] { return pidsEn("padre.pid").size() == 2; }));
        QCOMPARE(leer("orden.log"), QStringLiteral("b\n"));
    }

    void hijosDeUnGuionTerminadoNoQuedan()
    {
        Escena e("4,Ruleta,40,1:00 PM,13:00:00,1/36,X,deja\n");
        e.dir.escribir("deja.py", scriptConHijo(false));
        auto d = abrir();
        d->pyExe();
        QVERIFY(esperar([] { return pidsEn("hijo.pid").size() == 1; }));
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        const qint64 nieto = pidsEn("hijo.pid").value(0);
        QVERIFY(esperar([&] { return !procesoVivo(nieto); }));
    }

    void guionQueNoArrancaOCae()
    {
        Escena e("1,Uno,10,10:00 AM,10:00:00,1/30,X,cae\n"
                 "2,Dos,20,10:00 AM,10:00:00,1/30,X,falta\n"
                 "3,Tres,30,10:00 AM,10:00:00,1/30,X,b\n");
        e.dir.escribir("cae.py", "import os, signal\nos.kill(os.getpid(), signal.SIGSEGV)\n");
        e.dir.escribir("b.py", scriptQueAnota("b"));
        auto d = abrir();
        auto mensaje = hijo<QLabel>(*d, "label_mensaje");
        // A crash and a script file that is not there: the cycle moves on.
        for (const char *esperado :
             {"Ejecutando cae.py", "Ejecutando falta.py", "Ejecutando b.py"}) {
            d->pyExe();
            QCOMPARE(mensaje->text(), QString(esperado));
            QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        }
        QCOMPARE(leer("orden.log"), QStringLiteral("b\n"));

        // An interpreter that cannot be started: the process stays closed and the cycle
        // moves on.
        d->programaPython = QStringLiteral("interprete-que-no-existe");
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando cae.py"));
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        d->pyExe();
        QCOMPARE(mensaje->text(), QStringLiteral("Ejecutando falta.py"));
        QCOMPARE(d->indiceScript, 2);
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
    }

    void archivosBasuraNoRompenNada()
    {
        Escena e("1,Uno,10,10:00 AM,10:00:00,1/30,X,basura\n"
                 "2,Dos,20,10:00 AM,10:00:00,1/30,X,enorme\n"
                 "3,Tres,30,10:00 AM,10:00:00,1/30,X,vacio\n"
                 "4,Cuatro,40,10:00 AM,10:00:00,1/30,X,tubo\n");
        e.dir.escribir("basura.py",
                       "import os\nopen('basura.txt', 'wb').write(os.urandom(200000))\n");
        e.dir.escribir("enorme.py", "import datetime\n"
                                    "f = open('enorme.txt', 'w')\n"
                                    "f.write(datetime.date.today().isoformat() + '\\n')\n"
                                    "f.write('2,20,' + '9' * 30000000)\n");
        e.dir.escribir("vacio.py", "open('vacio.txt', 'w')\n");
        auto d = abrir();
        // Each step reads and deletes the file the previous script left.
        const QStringList archivos{"basura.txt", "enorme.txt", "vacio.txt"};
        for (int paso = 0; paso < 3; ++paso) {
            d->pyExe();
            QVERIFY(esperar([&] { return !d->proceso->abierto(); }, 20000));
            QVERIFY(QFile::exists(archivos.at(paso)));
            if (paso > 0)
                QVERIFY(!QFile::exists(archivos.at(paso - 1)));
        }
        QCOMPARE(::mkfifo("tubo.txt", 0600), 0);
        QElapsedTimer t;
        t.start();
        d->calcular();
        QVERIFY(t.elapsed() < 3000);
        QVERIFY(!QFile::exists("basura.txt") && !QFile::exists("enorme.txt") &&
                !QFile::exists("vacio.txt") && !QFile::exists("tubo.txt"));
        QVERIFY(recargar(*d));
        QTest::qWait(200);
        QVERIFY(e.srv.peticionesA("autopremiar.php").isEmpty());
        QVERIFY(registro(*d).isEmpty());
    }

    void calcularPremiaLoNuevo()
    {
        Escena e;
        e.srv.responder("cargarresultados.php", "1,Lotto Activo,,11,11:00 AM,07,Perico,11:02:00\n");
        e.srv.responder("autopremiar.php", "1\n");
        auto d = abrir();
        QVERIFY(recargar(*d));
        horaActual = QTime(15, 5, 40);
        SesionGlobal::fechaActual = QDate(2001, 1, 1);
        // Lotto: an unknown draw first (no label yet), a new one, one already published
        // with another value, an empty result, an unknown draw again.
        e.dir.escribir("lotto.txt", hoy().toUtf8() + "\n7,70,33\n1,10,25,extra\n1,11,99\n"
                                                     "1,12,\n9,99,01\n");
        // Ruleta: an unknown draw keeps the label of the previous file's last match.
        e.dir.escribir("ruleta.txt", hoy().toUtf8() + "\r\n4,41,05\r\n4,40,36\r\n");
        // Granja is not automatic ("x"): its file is neither read nor deleted.
        e.dir.escribir("granja.txt", hoy().toUtf8() + "\n2,20,12\n");
        d->calcular();
        QCOMPARE(SesionGlobal::fechaActual, QDate::currentDate());
        QVERIFY(!QFile::exists("lotto.txt") && !QFile::exists("ruleta.txt"));
        QVERIFY(QFile::exists("granja.txt"));
        QCOMPARE(registro(*d),
                 (QStringList{"<3:05 p. m.> Premiando :", " -> 33",
                              "<3:05 p. m.> Premiando :", "Lotto Activo-10:00 AM -> 25",
                              "<3:05 p. m.> Premiando :", "Lotto Activo-10:00 AM -> 01",
                              "<3:05 p. m.> Premiando :", "Lotto Activo-10:00 AM -> 05",
                              "<3:05 p. m.> Premiando :", "Ruleta-1:00 PM -> 36"}));
        QVERIFY(esperar([&] { return e.srv.peticionesA("autopremiar.php").size() == 5; }));
        QStringList pedidas = e.srv.peticionesA("autopremiar.php");
        pedidas.sort();
        QCOMPARE(pedidas, (QStringList{"/Tornavo/TornavoSU/autopremiar.php?&j=1&s=10&a=25",
                                       "/Tornavo/TornavoSU/autopremiar.php?&j=4&s=40&a=36",
                                       "/Tornavo/TornavoSU/autopremiar.php?&j=4&s=41&a=05",
                                       "/Tornavo/TornavoSU/autopremiar.php?&j=7&s=70&a=33",
                                       "/Tornavo/TornavoSU/autopremiar.php?&j=9&s=99&a=01"}));
        // The files are gone: a second run sends nothing more.
        d->calcular();
        QVERIFY(recargar(*d));
        QTest::qWait(200);
        QCOMPARE(e.srv.peticionesA("autopremiar.php").size(), 5);
    }

    void archivoDeAyerSeBorraSinPedir()
    {
        Escena e;
        auto d = abrir();
        e.dir.escribir("lotto.txt", ayer().toUtf8() + "\n1,10,25\n");
        e.dir.escribir("ruleta.txt", hoy().toUtf8() + "\n");
        d->calcular();
        QVERIFY(!QFile::exists("lotto.txt"));
        QVERIFY(!QFile::exists("ruleta.txt"));
        QVERIFY(recargar(*d));
        QTest::qWait(200);
        QVERIFY(e.srv.peticionesA("autopremiar.php").isEmpty());
        QVERIFY(registro(*d).isEmpty());
    }

    void ejecutarPythonSoloEnHorario()
    {
        Escena e;
        auto d = abrir();
        SesionGlobal::fechaActual = QDate(2001, 1, 1);
        const QList<QPair<QTime, QStringList>> casos = {
            {QTime(8, 30, 0), {}},
            {QTime(8, 30, 1), {"lotto.py", "ruleta.py"}},
            {QTime(12, 0, 0), {"lotto.py", "ruleta.py"}},
            {QTime(20, 59, 59), {"lotto.py", "ruleta.py"}},
            {QTime(21, 0, 0), {}},
            {QTime(23, 0, 0), {}}};
        for (const auto &caso : casos) {
            horaActual = caso.first;
            QVERIFY(QMetaObject::invokeMethod(d.get(), "ejecutarPython"));
            QCOMPARE(d->listaScripts, caso.second);
        }
        QCOMPARE(SesionGlobal::fechaActual, QDate::currentDate());
        // A list rebuilt shorter does not leave the cycle pointing past its end.
        horaActual = QTime(12, 0, 0);
        d->ejecutarPython();
        d->indiceScript = 1;
        d->listaScripts = QStringList{"lotto.py"};
        e.dir.escribir("lotto.py", scriptQueAnota("lotto"));
        d->pyExe();
        QCOMPARE(hijo<QLabel>(*d, "label_mensaje")->text(), QStringLiteral("Ejecutando lotto.py"));
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
    }

    void tablaDeArchivos()
    {
        Escena e("3,Triple,30,12:00 PM,12:00:00,1/600,,triple\n");
        auto d = abrir();
        e.dir.escribir("a.txt", "1");
        e.dir.escribir("B.TXT", "2");
        e.dir.escribir("notas.csv", "3");
        QVERIFY(QDir().mkdir("carpeta.txt"));
        auto txt = hijo<QTableWidget>(*d, "tableWidget_txt");
        d->listFilesTXT();
        d->listFilesTXT();
        QStringList nombres = textosColumna(txt, 0);
        nombres.sort();
        QCOMPARE(nombres, (QStringList{"B.TXT", "a.txt"}));
        QFile::remove("a.txt");
        d->listFilesTXT();
        QCOMPARE(textosColumna(txt, 0), QStringList{"B.TXT"});
        // The 200 ms timer does it by itself.
        e.dir.escribir("c.txt", "4");
        d->temporizadorArchivos->start();
        QVERIFY(esperar([&] { return txt->rowCount() == 2; }, 3000));
    }

    void difuminarYSalir()
    {
        Escena e;
        auto d = abrir();
        QVERIFY(QMetaObject::invokeMethod(d.get(), "blurred", Q_ARG(bool, true)));
        auto efecto = qobject_cast<QGraphicsBlurEffect *>(d->graphicsEffect());
        QVERIFY(efecto);
        QCOMPARE(efecto->parent(), d.get());
        QVERIFY(QMetaObject::invokeMethod(d.get(), "blurred", Q_ARG(bool, false)));
        QVERIFY(!d->graphicsEffect());
        d->show();
        QVERIFY(d->isVisible());
        hijo<QPushButton>(*d, "pushButton_salir")->click();
        QVERIFY(!d->isVisible());
    }

    void cicloCompletoConElServidorDePrueba()
    {
        Escena e;
        // The fixture publishes what it is asked to award.
        auto publicados = std::make_shared<QStringList>();
        auto candado = std::make_shared<std::mutex>();
        e.srv.responderCon("autopremiar.php", [=](const QString &objetivo) {
            const QString j = objetivo.section("&j=", 1).section('&', 0, 0);
            const QString s = objetivo.section("&s=", 1).section('&', 0, 0);
            const QString a = objetivo.section("&a=", 1).section('&', 0, 0);
            std::lock_guard<std::mutex> l(*candado);
            publicados->append(j + ",Lotto Activo,," + s + ",10:00 AM," + a + ",Gallina,15:00:00");
            return QByteArray("1\n");
        });
        e.srv.responderCon("cargarresultados.php", [=](const QString &) {
            std::lock_guard<std::mutex> l(*candado);
            return publicados->join('\n').toLatin1();
        });
        e.dir.escribir("lotto.py", "import datetime\n"
                                   "open('lotto.txt', 'w').write(datetime.date.today().isoformat()"
                                   " + '\\n1,10,25\\n')\n");
        e.dir.escribir("ruleta.py", "pass\n");
        auto d = abrir();
        auto falta = hijo<QTableWidget>(*d, "tableWidget_falta");
        QVERIFY(textosColumna(falta, 0).contains("Lotto Activo-10:00 AM"));
        d->pyExe(); // starts lotto.py
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        QVERIFY(esperar([&] { return d->resultadosCargados; }));
        d->pyExe(); // starts ruleta.py, reads lotto.txt, awards
        QVERIFY(esperar([&] { return e.srv.peticionesA("autopremiar.php").size() == 1; }));
        QCOMPARE(e.srv.peticionesA("autopremiar.php").value(0),
                 QStringLiteral("/Tornavo/TornavoSU/autopremiar.php?&j=1&s=10&a=25"));
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        QVERIFY(recargar(*d));
        QVERIFY(!textosColumna(falta, 0).contains("Lotto Activo-10:00 AM"));
        QCOMPARE(textosColumna(hijo<QTableWidget>(*d, "tableWidget_resultados"), 0),
                 QStringList{"Lotto Activo 10:00 AM"});
        QCOMPARE(registro(*d).value(1), QStringLiteral("Lotto Activo-10:00 AM -> 25"));
        // The same line written again is now skipped as already awarded.
        d->pyExe(); // lotto.py again
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        QVERIFY(QFile::exists("lotto.txt"));
        d->pyExe();
        QVERIFY(!QFile::exists("lotto.txt"));
        QVERIFY(recargar(*d));
        QTest::qWait(200);
        QCOMPARE(e.srv.peticionesA("autopremiar.php").size(), 1);
    }

    void guionFueraDeSuCarpetaNoSeUsa()
    {
        // A script name from the server that leaves the working folder is refused: nothing of
        // it is started, read or deleted, and the log says so.
        Escena e("1,Lotto Activo,10,10:00 AM,10:00:00,1/30,X,../victima/importante\n"
                 "4,Ruleta,40,1:00 PM,13:00:00,1/36,X,ruleta\n");
        e.dir.escribir("victima/importante.txt", "datos que no son de nadie\n");
        e.dir.escribir("victima/importante.py", "open('victima-corrida', 'w').write('x')\n");
        e.dir.escribir("trabajo/Tornavo.svr", e.srv.direccion().toLatin1() + "\n");
        e.dir.escribir("trabajo/ruleta.py", "");
        QDir::setCurrent(e.dir.ruta() + "/trabajo");
        auto d = abrir();
        QCOMPARE(d->listaScripts, QStringList{"ruleta.py"});
        QVERIFY(registro(*d).contains("Script no permitido: ../victima/importante"));
        e.dir.escribir("victima/importante.txt", "datos que no son de nadie\n");
        d->pyExe(); // ruleta.py
        d->pyExe();
        QVERIFY(esperar([&] { return !d->proceso->abierto(); }));
        d->calcular();
        QTest::qWait(300);
        QVERIFY(QFile::exists(e.dir.ruta() + "/victima/importante.txt"));
        QVERIFY(!QFile::exists(e.dir.ruta() + "/trabajo/victima-corrida"));
        QVERIFY(!QFile::exists(e.dir.ruta() + "/victima/victima-corrida"));
        QVERIFY(e.srv.peticionesA("autopremiar.php").isEmpty());
    }

    void lineaQueCambiariaLaPeticionSeSalta()
    {
        Escena e;
        e.srv.responder("cargarresultados.php", "\n");
        auto d = abrir();
        QVERIFY(recargar(*d));
        e.dir.escribir("lotto.txt", hoy().toUtf8() + "\n1,10,25&a=99\n1,10 ,25\n1#,10,25\n"
                                                     "1,10,2\x01"
                                                     "5\n1,11,07\n");
        d->calcular();
        QVERIFY(esperar([&] { return e.srv.peticionesA("autopremiar.php").size() == 1; }));
        QTest::qWait(200);
        QCOMPARE(e.srv.peticionesA("autopremiar.php"),
                 QStringList{"/Tornavo/TornavoSU/autopremiar.php?&j=1&s=11&a=07"});
        const QStringList log = registro(*d);
        QVERIFY2(log.contains("Línea ignorada en lotto.txt: 1,10,25&a=99"),
                 qPrintable(log.join('|')));
        QVERIFY(log.contains("Línea ignorada en lotto.txt: 1,10 ,25"));
        QVERIFY(log.contains("Línea ignorada en lotto.txt: 1#,10,25"));
        QVERIFY(log.contains("Línea ignorada en lotto.txt: 1,10,2?5"));
    }

    void errorHttpEsFaltaDeRespuesta()
    {
        // Error pages with a body on every request of the dialog.
        Escena e;
        for (const char *endpoint :
             {"datetime.php", "cargarsorteos.php", "cargarresultados.php", "autopremiar.php"}) {
            e.srv.responder(endpoint, "<html><body>500 Internal Server Error</body></html>\n");
            e.srv.estado(endpoint, 500);
        }
        CapturaMensajes captura;
        auto d = abrir(false);
        QVERIFY(captura.esperar(2));
        QStringList textos;
        for (const MensajeVisto &m : captura.vistos())
            textos << m.texto;
        textos.sort();
        QCOMPARE(textos, (QStringList{"No hubo respuesta del servidor\nNo se pudieron cargar los "
                                      "Sorteos",
                                      "No se pudo sincronizar el reloj con el Servidor"}));
        QVERIFY(!d->esperaActiva);
        QCOMPARE(hijo<QTableWidget>(*d, "tableWidget_juegos")->rowCount(), 0);
        QVERIFY(recargar(*d));
        QVERIFY(!hijo<QTableWidget>(*d, "tableWidget_resultados")->isEnabled());
        QCOMPARE(d->desfaseReloj, 0);
    }

    void resultadosViejosNoPisanLosNuevos()
    {
        // The first results request is answered late with what was true then; the second, sent
        // after an award, at once. The late one must not bring the awarded draw back.
        Escena e;
        std::atomic<int> pedidas{0};
        e.srv.responderCon("cargarresultados.php", [&pedidas](const QString &) -> QByteArray {
            if (++pedidas == 1) {
                QThread::msleep(800);
                return "\n";
            }
            return "1,Lotto Activo,,10,10:00 AM,25,Gallina,10:05:09\n";
        });
        auto d = abrir();
        int atendidas = 0;
        for (QNetworkAccessManager *m : d->findChildren<QNetworkAccessManager *>())
            connect(m, &QNetworkAccessManager::finished, d.get(), [&atendidas](QNetworkReply *r) {
                if (r->url().path().endsWith("cargarresultados.php"))
                    ++atendidas;
            });
        d->cargarResultados();
        QVERIFY(esperar([&] { return pedidas.load() == 1; }));
        d->cargarResultados();
        QVERIFY(esperar([&] { return atendidas == 2; }));
        QCOMPARE(textosColumna(hijo<QTableWidget>(*d, "tableWidget_resultados"), 0),
                 QStringList{"Lotto Activo 10:00 AM"});
        QCOMPARE(d->listasSorteo.sorteoResultado.value(0), QStringLiteral("25"));
    }
};

TORNAVO_PRUEBA_MAIN(TstAutoCalcular)
#include "tst_auto_calcular.moc"
