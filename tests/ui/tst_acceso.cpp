#include "app/sesion.h"
#include "temas/tema.h"
#include "tests/soporte/prueba_main.h"
#include "app/formato.h"
#include "ui/acceso.h"

#include <QFile>

// Login reply, rights, game filter, server clock and theme lookup, without widgets.
class TstAcceso : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void init() { reiniciarSesion(); }

    void rutaDelLoginTalCualSeEscribio()
    {
        QCOMPARE(rutaLogin("admin", "tornavo1"),
                 QStringLiteral("validarUser.php?u=admin&p=tornavo1"));
        // No trimming and no encoding by the program.
        QCOMPARE(rutaLogin(" ana ", "a&b"), QStringLiteral("validarUser.php?u= ana &p=a&b"));
        QCOMPARE(rutaLogin("", ""), QStringLiteral("validarUser.php?u=&p="));
    }

    void respuestaCompleta()
    {
        const RespuestaLogin r =
            leerRespuestaLogin("1\nAna Pérez\nX\n11,21\n1,5\nb1,b2\nSB9\n3,4\n");
        QVERIFY(!r.rechazado);
        QCOMPARE(r.nombre, QStringLiteral("Ana Pérez"));
        QVERIFY(r.accesoPermitido);
        QCOMPARE(r.opciones, (QStringList{"11", "21"}));
        QCOMPARE(r.juegos, (QStringList{"1", "5"}));
        QCOMPARE(r.listaLinea6, (QStringList{"b1", "b2"}));
        QCOMPARE(r.datoLinea7, QStringLiteral("SB9"));
        QCOMPARE(r.listaLinea8, (QStringList{"3", "4"}));
    }

    void estadoCeroEsRechazo()
    {
        QVERIFY(leerRespuestaLogin("0\n").rechazado);
        QVERIFY(leerRespuestaLogin("0").rechazado);
        QVERIFY(!leerRespuestaLogin("00\n").rechazado);
        QVERIFY(!leerRespuestaLogin("1\n").rechazado);
        QVERIFY(!leerRespuestaLogin("error").rechazado);
    }

    void lineaTresSoloXExacta()
    {
        QVERIFY(!leerRespuestaLogin("1\nA\nx\n").accesoPermitido);
        QVERIFY(!leerRespuestaLogin("1\nA\nX \n").accesoPermitido);
        QVERIFY(!leerRespuestaLogin("1\nA\n\n").accesoPermitido);
        QVERIFY(leerRespuestaLogin("1\nA\nX").accesoPermitido);
    }

    void respuestaCortaDaLineasVacias()
    {
        const RespuestaLogin r = leerRespuestaLogin("1\nAna");
        QCOMPARE(r.nombre, QStringLiteral("Ana"));
        QVERIFY(!r.accesoPermitido);
        QCOMPARE(r.opciones, QStringList{""});
        QCOMPARE(r.juegos, QStringList{""});
        QCOMPARE(r.datoLinea7, QString());
        QCOMPARE(r.listaLinea8, QStringList{""});
    }

    void respuestaEnorme()
    {
        QString texto = "1\nA\nX\n";
        texto += QString(200000, QLatin1Char(',')) + "\n";
        const RespuestaLogin r = leerRespuestaLogin(texto);
        QCOMPARE(r.opciones.size(), 200001);
        QVERIFY(r.accesoPermitido);
    }

    void guardarSesionLlenaElRegistro()
    {
        guardarSesion(leerRespuestaLogin("1\nAna\nX\nroot\nroot\nL6\nD7\nL8a,L8b"), "ana");
        QCOMPARE(SesionGlobal::usuario, QStringLiteral("ana"));
        QCOMPARE(SesionGlobal::nombre, QStringLiteral("Ana"));
        QCOMPARE(SesionGlobal::decimales, 2);
        QVERIFY(SesionGlobal::accesoPermitido);
        QVERIFY(SesionGlobal::sesionIniciada);
        QCOMPARE(SesionGlobal::opciones, QStringList{"root"});
        QCOMPARE(SesionGlobal::juegos, QStringList{"root"});
        QCOMPARE(SesionGlobal::listaLinea6, QStringList{"L6"});
        QCOMPARE(SesionGlobal::datoLinea7, QStringLiteral("D7"));
        QCOMPARE(SesionGlobal::listaLinea8, (QStringList{"L8a", "L8b"}));
    }

    void sinXNoAbreSesion()
    {
        guardarSesion(leerRespuestaLogin("1\nAna\n-\n21\n1\n\n\n"), "ana");
        QVERIFY(!SesionGlobal::accesoPermitido);
        QVERIFY(!SesionGlobal::sesionIniciada);
        QCOMPARE(SesionGlobal::usuario, QStringLiteral("ana"));
    }

    void opcionesExactas()
    {
        QVERIFY(opcionActiva({"11", "21"}, "21"));
        QVERIFY(!opcionActiva({"11", "21"}, "2"));
        QVERIFY(!opcionActiva({"11", "21"}, "211"));
        QVERIFY(!opcionActiva({}, "11"));
        QVERIFY(!opcionActiva({"root"}, "11"));
        QVERIFY(opcionActiva({"a", "b", "c", "31"}, "31")); // the whole list is scanned
    }

    void tablaDeDerechos()
    {
        const QList<QPair<QString, QString>> esperado = {{"11", "action_Bancas"},
                                                         {"12", "action_Jefes_de_grupo"},
                                                         {"13", "actionA_gencias"},
                                                         {"14", "action_Taquillas"},
                                                         {"15", "actionJuegos"},
                                                         {"16", "actionSorteos"},
                                                         {"17", "actionIm_genes"},
                                                         {"18", "menuUsuarios"},
                                                         {"21", "actionMonitorear_Ventas"},
                                                         {"22", "actionCalcular_Premios"},
                                                         {"23", "actionDeshacer_Premiaci_n"},
                                                         {"24", "actionAuto_premiaci_n"},
                                                         {"31", "actionVentas_Bancas_2"}};
        QList<QPair<QString, QString>> visto;
        for (const auto &d : tablaDerechos())
            visto.append({d.first, d.second});
        QCOMPARE(visto, esperado);
    }

    void filtroDeJuegos_data()
    {
        QTest::addColumn<QStringList>("juegos");
        QTest::addColumn<QString>("filtro");
        QTest::newRow("vacio") << QStringList{} << "j.codJuego='vacio'";
        QTest::newRow("root") << QStringList{"root", "3"} << "";
        QTest::newRow("uno") << QStringList{"7"} << "AND (j.codJuego='7')";
        QTest::newRow("dos") << QStringList{"1", "5"} << "AND (j.codJuego='1' or j.codJuego='5')";
        QTest::newRow("root no primero")
            << QStringList{"2", "root"} << "AND (j.codJuego='2' or j.codJuego='root')";
        QTest::newRow("sin escapar") << QStringList{"a'b"} << "AND (j.codJuego='a'b')";
        QTest::newRow("linea vacia") << QStringList{""} << "AND (j.codJuego='')";
    }

    void filtroDeJuegos()
    {
        QFETCH(QStringList, juegos);
        QFETCH(QString, filtro);
        QCOMPARE(::filtroDeJuegos(juegos), filtro);
    }

    void horaDelServidor()
    {
        const HoraServidor h =
            leerHoraServidor("2026-11-22\nDomingo\n-04:00\n1795000000\n14:05:09\n");
        QCOMPARE(h.fecha, QDate(2026, 11, 22));
        QCOMPARE(h.hora, QTime(14, 5, 9));
    }

    void horaConMenosDeCincoLineas()
    {
        const HoraServidor h = leerHoraServidor("2026-11-22\na\nb\nc");
        QCOMPARE(h.fecha, QDate(2026, 11, 22));
        QVERIFY(!h.hora.isValid());
        const HoraServidor basura = leerHoraServidor("hoy\n\n\n\n25:99:00");
        QVERIFY(!basura.fecha.isValid());
        QVERIFY(!basura.hora.isValid());
        QVERIFY(!leerHoraServidor(QString(100000, QLatin1Char('\n'))).hora.isValid());
    }

    void formatoParpadeante()
    {
        QCOMPARE(formatoReloj(QTime(10, 0, 2)), QStringLiteral("h;mm;ss ap"));
        QCOMPARE(formatoReloj(QTime(10, 0, 3)), QStringLiteral("h:mm:ss ap"));
        QCOMPARE(formatoReloj(QTime()), QStringLiteral("h:mm:ss ap"));
        QCOMPARE(textoReloj(QTime(14, 5, 8)), QStringLiteral("2;05;08 p. m."));
    }

    void tablaDeTemas()
    {
        QCOMPARE(
            nombresTemas(),
            (QStringList{"Tema del Sistema", "Tema Claro", "Tema Gris", "Tema Oscuro",
                         "Tema Oscuro gold", "Tema Cielo claro", "Tema Material Oscuro",
                         "Tema MacOS", "Tema Oscuro verde", "Tema Oscuro rojo", "Tema Menta"}));
        QCOMPARE(clavesTemas("estilo propio"),
                 (QStringList{"estilo propio", "light", "grey", "dark", "darkgold", "cieloclaro",
                              "materialdark", "MacOS", "darkgreen", "darkred", "menta"}));
        QCOMPARE(clavesTemas(QString()).first(), QString());
    }

    void rutasDeTemas_data()
    {
        QTest::addColumn<QString>("clave");
        QTest::addColumn<QString>("ruta");
        QTest::newRow("light") << "light"
                               << ":TornavoThemes/qlightstyle/style.qss";
        QTest::newRow("grey") << "grey"
                              << ":TornavoThemes/qgreystyle/style.qss";
        QTest::newRow("dark") << "dark"
                              << ":TornavoThemes/qdarkstyle/style.qss";
        QTest::newRow("darkgold") << "darkgold"
                                  << ":TornavoThemes/Combinear/combinear.qss";
        QTest::newRow("cieloclaro") << "cieloclaro"
                                    << ":TornavoThemes/Medize/Medize.qss";
        QTest::newRow("materialdark") << "materialdark"
                                      << ":TornavoThemes/materialdark/materialdark.qss";
        QTest::newRow("MacOS") << "MacOS"
                               << ":TornavoThemes/MacOS/MacOS.qss";
        QTest::newRow("darkgreen") << "darkgreen"
                                   << ":TornavoThemes/DarkGreen/darkgreen.qss";
        QTest::newRow("darkred") << "darkred"
                                 << ":TornavoThemes/DarkRed/darkred.qss";
        QTest::newRow("menta") << "menta"
                               << ":TornavoThemes/Menta/menta.qss";
        QTest::newRow("macos") << "macos"
                               << "";
        QTest::newRow("vacia") << ""
                               << "";
        QTest::newRow("con espacio") << "dark "
                                     << "";
    }

    void rutasDeTemas()
    {
        QFETCH(QString, clave);
        QFETCH(QString, ruta);
        QCOMPARE(rutaHojaDeEstilo(clave), ruta);
        if (!ruta.isEmpty()) {
            // The bundle holds the file and hojaDeEstilo returns all of it.
            QFile archivo(ruta);
            QVERIFY2(archivo.open(QIODevice::ReadOnly | QIODevice::Text), qPrintable(ruta));
            const QString todo = QString::fromUtf8(archivo.readAll());
            QVERIFY(!todo.isEmpty());
            QCOMPARE(hojaDeEstilo(clave), todo);
        }
    }
};

TORNAVO_PRUEBA_MAIN(TstAcceso)
#include "tst_acceso.moc"
