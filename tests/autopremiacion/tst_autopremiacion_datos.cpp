#include "autopremiacion/datos_autopremiacion.h"
#include "app/formato.h"
#include "tests/soporte/entornoprueba.h"
#include "tests/soporte/prueba_main.h"

#include <QTime>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <sys/stat.h>
#include <sys/types.h>

// The automatic awarding's data without the dialog: draw and result replies, the schedule,
// the clock text, result files and the awards built from them.
class TstAutopremiacionDatos : public QObject {
    Q_OBJECT

    static const char *sorteosDemo()
    {
        return "1,Lotto Activo,10,10:00 AM,10:00:00,1/30,X,lotto\n"
               "1,Lotto Activo,11,11:00 AM,11:00:00,1/30,X,lotto\n"
               "\n"
               "2,La Granja,20,10:00 AM,10:00:00,1/30,x,granja\n"
               "3,Triple,30,12:00 PM,12:00:00,1/600,,triple\n"
               "1,Lotto Activo,12,12:00 PM,12:00:00,1/30,X,lotto\n";
    }

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void lineasYCampos()
    {
        QCOMPARE(lineasRespuesta("a\n\nb\n"), (QStringList{"a", "b"}));
        QCOMPARE(lineasRespuesta(""), QStringList());
        QCOMPARE(camposLinea("1,2", 4), (QStringList{"1", "2", "", ""}));
        QCOMPARE(camposLinea("1,2,3,4,5", 3), (QStringList{"1", "2", "3", "4", "5"}));
        QCOMPARE(camposLinea("", 2), (QStringList{"", ""}));
    }

    void juegoEnVariasLineasSeListaUnaVez()
    {
        ListasJuego juegos;
        ListasSorteo sorteos;
        QStringList nombres, scripts;
        const QVector<JuegoNuevo> nuevos =
            agregarSorteos(sorteosDemo(), nombres, juegos, sorteos, scripts);
        QCOMPARE(nuevos.size(), 3);
        QCOMPARE(nuevos.at(0).nombre, QStringLiteral("Lotto Activo"));
        QCOMPARE(nuevos.at(0).marca, QStringLiteral("X"));
        QCOMPARE(nuevos.at(1).marca, QStringLiteral("x"));
        QCOMPARE(nuevos.at(2).marca, QString());
        QCOMPARE(juegos.clavesJuego, (QStringList{"1", "2", "3"}));
        QCOMPARE(juegos.juegoAuto, (QStringList{"X", "x", ""}));
        QCOMPARE(juegos.juegoScript, (QStringList{"lotto", "granja", "triple"}));
        // Lower-case "x" does not enable; the game with three lines enters once.
        QCOMPARE(scripts, QStringList{"lotto.py"});
        QCOMPARE(sorteos.cantidad(), 5);
        QCOMPARE(sorteos.sorteoClave, (QStringList{"10", "11", "20", "30", "12"}));
        QCOMPARE(sorteos.sorteoCampo4.at(3), QStringLiteral("12:00:00"));
        QCOMPARE(sorteos.sorteoCampo5.at(3), QStringLiteral("1/600"));
        QCOMPARE(sorteos.sorteoScript.at(2), QStringLiteral("granja"));
        QCOMPARE(sorteos.sorteoResultado, (QStringList{"", "", "", "", ""}));
        QCOMPARE(etiquetasSorteos(sorteos, false),
                 (QStringList{"Lotto Activo-10:00 AM", "Lotto Activo-11:00 AM",
                              "La Granja-10:00 AM", "Triple-12:00 PM", "Lotto Activo-12:00 PM"}));
        QCOMPARE(archivosResultado(juegos), QStringList{"lotto.txt"});

        // A game already listed stays listed once when it shows up again.
        agregarSorteos("1,Lotto Activo,13,1:00 PM,13:00:00,1/30,X,lotto\n", nombres, juegos,
                       sorteos, scripts);
        QCOMPARE(juegos.cantidad(), 3);
        QCOMPARE(scripts, QStringList{"lotto.py"});
        QCOMPARE(sorteos.cantidad(), 6);
    }

    void lineaCortaDaCamposVacios()
    {
        ListasJuego juegos;
        ListasSorteo sorteos;
        QStringList nombres, scripts;
        agregarSorteos("7,Corto,70\nbasura\n", nombres, juegos, sorteos, scripts);
        QCOMPARE(juegos.juegoAuto, (QStringList{"", ""}));
        QCOMPARE(juegos.clavesJuego, (QStringList{"7", "basura"}));
        QCOMPARE(sorteos.sorteoEtiqueta, (QStringList{"", ""}));
        QCOMPARE(sorteos.sorteoScript, (QStringList{"", ""}));
        QVERIFY(scripts.isEmpty());
    }

    void resultadosMarcanSorteos()
    {
        ListasJuego juegos;
        ListasSorteo sorteos;
        ListasResultado resultados;
        QStringList nombres, scripts;
        agregarSorteos(sorteosDemo(), nombres, juegos, sorteos, scripts);
        sorteos.sorteoResultado[4] = "viejo";
        const QVector<FilaResultado> filas =
            aplicarResultados("1,Lotto Activo,,10,10:00 AM,25,Gallina,10:05:09\n"
                              "3,Triple,X,30,12:00 PM,123,,14:05:00\n"
                              "9,Otro,,90,9:00 AM,7,Perro,09:01:00\n"
                              "corta\n",
                              resultados, sorteos);
        QCOMPARE(filas.size(), 4);
        QCOMPARE(filas.at(0).sorteo, QStringLiteral("Lotto Activo 10:00 AM"));
        QCOMPARE(filas.at(0).resultado, QStringLiteral("25-Gallina"));
        QCOMPARE(filas.at(0).hora, QStringLiteral("10:05 a. m."));
        QCOMPARE(filas.at(1).resultado, QStringLiteral("123"));
        QCOMPARE(filas.at(1).hora, QStringLiteral("2:05 p. m."));
        QCOMPARE(filas.at(3).sorteo, QStringLiteral(" "));
        QCOMPARE(filas.at(3).resultado, QStringLiteral("-"));
        QCOMPARE(filas.at(3).hora, QString());
        QCOMPARE(resultados.resultadoClaveSorteo, (QStringList{"10", "30", "90", ""}));
        QCOMPARE(resultados.resultadoExtra.at(0), QStringLiteral("Gallina"));
        QCOMPARE(resultados.resultadoHora.at(1), QStringLiteral("14:05:00"));
        // Matching draws take the value; the earlier mark of draw 12 is gone.
        QCOMPARE(sorteos.sorteoResultado, (QStringList{"25", "", "", "123", ""}));
        QCOMPARE(
            etiquetasSorteos(sorteos, true),
            (QStringList{"Lotto Activo-11:00 AM", "La Granja-10:00 AM", "Lotto Activo-12:00 PM"}));

        // An empty reply leaves no result and every draw waiting.
        QVERIFY(aplicarResultados("", resultados, sorteos).isEmpty());
        QCOMPARE(resultados.cantidad(), 0);
        QCOMPARE(etiquetasSorteos(sorteos, true).size(), 5);
    }

    void relojParpadea()
    {
        QCOMPARE(textoReloj(QTime(15, 5, 7)), QStringLiteral("3:05:07 p. m."));
        QCOMPARE(textoReloj(QTime(15, 5, 8)), QStringLiteral("3;05;08 p. m."));
        QCOMPARE(textoReloj(QTime(0, 0, 0)), QStringLiteral("12;00;00 a. m."));
    }

    void desfaseDelServidor()
    {
        const QString r = "2026-11-22\nsabado\n-4\n1790000000\n10:00:00\n";
        QCOMPARE(desfaseServidor(r, QTime(9, 58, 20)), 100);
        QCOMPARE(desfaseServidor(r, QTime(10, 0, 30)), -30);
        QCOMPARE(desfaseServidor("2026-11-22\n", QTime(9, 0, 0)), 0);
        QCOMPARE(desfaseServidor("a\nb\nc\nd\nbasura", QTime(9, 0, 0)), 0);
    }

    void horarioDeScripts()
    {
        ListasJuego juegos;
        juegos.clavesJuego = QStringList{"1", "2", "3"};
        juegos.juegoAuto = QStringList{"X", "x", "X"};
        juegos.juegoScript = QStringList{"a", "b", "c"};
        QCOMPARE(scriptsEnHorario(juegos, QTime(8, 30, 0)), QStringList());
        QCOMPARE(scriptsEnHorario(juegos, QTime(8, 30, 1)), (QStringList{"a.py", "c.py"}));
        QCOMPARE(scriptsEnHorario(juegos, QTime(20, 59, 59)), (QStringList{"a.py", "c.py"}));
        QCOMPARE(scriptsEnHorario(juegos, QTime(21, 0, 0)), QStringList());
        QCOMPARE(scriptsEnHorario(juegos, QTime(2, 0, 0)), QStringList());
    }

    void archivoDeResultados()
    {
        DirectorioTrabajo dir;
        dir.escribir("a.txt", "2026-11-22\r\n1,10,25\r\n1,11,07\n");
        QCOMPARE(leerArchivoResultado("a.txt"), (QStringList{"2026-11-22", "1,10,25", "1,11,07"}));
        dir.escribir("sin_fin.txt", "2026-11-22\n1,10,2");
        QCOMPARE(leerArchivoResultado("sin_fin.txt"), (QStringList{"2026-11-22", "1,10,2"}));
        dir.escribir("vacio.txt", "");
        QCOMPARE(leerArchivoResultado("vacio.txt"), QStringList());
        dir.escribir("salto.txt", "\n");
        QCOMPARE(leerArchivoResultado("salto.txt"), QStringList{""});
        QCOMPARE(leerArchivoResultado("no_existe.txt"), QStringList());
        QVERIFY(QDir().mkdir("carpeta.txt"));
        QCOMPARE(leerArchivoResultado("carpeta.txt"), QStringList());
        dir.escribir("nul.txt", QByteArray("2026-11-22\n1,\0\xff\xfe,3\n", 18));
        QCOMPARE(leerArchivoResultado("nul.txt").size(), 2);
    }

    void tuberiaNoBloquea()
    {
        DirectorioTrabajo dir;
        QCOMPARE(::mkfifo("tubo.txt", 0600), 0);
        QElapsedTimer reloj;
        reloj.start();
        QCOMPARE(leerArchivoResultado("tubo.txt"), QStringList());
        QVERIFY(reloj.elapsed() < 2000);
    }

    void archivoEnormeSeCorta()
    {
        DirectorioTrabajo dir;
        // 12 MB: the date line, then records, the last one cut by the limit.
        QByteArray datos = "2026-11-22\n";
        while (datos.size() < 12 * 1024 * 1024)
            datos += "1,10,25\n";
        dir.escribir("grande.txt", datos);
        const QStringList lineas = leerArchivoResultado("grande.txt");
        QVERIFY(lineas.size() > 1000);
        QCOMPARE(lineas.first(), QStringLiteral("2026-11-22"));
        for (const QString &l : lineas)
            QVERIFY(l == "2026-11-22" || l == "1,10,25");

        // A line cut by the limit is dropped rather than read half.
        dir.escribir("corte.txt", "2026-11-22\n1,10,25\n1,11,1234567");
        QCOMPARE(leerArchivoResultado("corte.txt", 25), (QStringList{"2026-11-22", "1,10,25"}));
        // One endless line: nothing whole is left.
        dir.escribir("linea.txt", QByteArray(5 * 1024 * 1024, 'z'));
        QCOMPARE(leerArchivoResultado("linea.txt"), QStringList());

        ListasResultado resultados;
        ListasSorteo sorteos;
        QString etiqueta;
        QCOMPARE(premiacionesDeArchivo(lineas, "2026-11-22", resultados, sorteos, etiqueta).size(),
                 limiteLineasArchivo);
    }

    void premiacionesYEtiqueta()
    {
        ListasJuego juegos;
        ListasSorteo sorteos;
        ListasResultado resultados;
        QStringList nombres, scripts;
        agregarSorteos(sorteosDemo(), nombres, juegos, sorteos, scripts);
        aplicarResultados("1,Lotto Activo,,11,11:00 AM,07,Perico,11:02:00\n", resultados, sorteos);
        const QString hoy = "2026-11-22";
        QString etiqueta;
        const QVector<Premiacion> p = premiacionesDeArchivo(
            {hoy, "5,50,33", "1,10,25,extra", "1,11,99", "1,12,", "9,99,01", "1,12,00"}, hoy,
            resultados, sorteos, etiqueta);
        QCOMPARE(p.size(), 4);
        // Unknown draw first: the label is still empty.
        QCOMPARE(p.at(0).juego, QStringLiteral("5"));
        QCOMPARE(p.at(0).etiqueta, QString());
        QCOMPARE(p.at(1).etiqueta, QStringLiteral("Lotto Activo-10:00 AM"));
        QCOMPARE(p.at(1).valor, QStringLiteral("25"));
        // Already published (even with another value) and empty results are skipped; an
        // unknown draw keeps the previous label.
        QCOMPARE(p.at(2).sorteo, QStringLiteral("99"));
        QCOMPARE(p.at(2).etiqueta, QStringLiteral("Lotto Activo-10:00 AM"));
        QCOMPARE(p.at(3).etiqueta, QStringLiteral("Lotto Activo-12:00 PM"));
        QCOMPARE(etiqueta, QStringLiteral("Lotto Activo-12:00 PM"));

        // The label carries over into the next file of the same run.
        const QVector<Premiacion> q =
            premiacionesDeArchivo({hoy, "8,80,5"}, hoy, resultados, sorteos, etiqueta);
        QCOMPARE(q.size(), 1);
        QCOMPARE(q.at(0).etiqueta, QStringLiteral("Lotto Activo-12:00 PM"));

        QCOMPARE(consultaPremiacion(p.at(1)), QStringLiteral("autopremiar.php?&j=1&s=10&a=25"));
        QCOMPARE(registroPremiacion(QTime(15, 5, 40), p.at(1)),
                 (QStringList{"<3:05 p. m.> Premiando :", "Lotto Activo-10:00 AM -> 25"}));
    }

    void archivoDeOtroDiaOSinRegistros()
    {
        ListasResultado resultados;
        ListasSorteo sorteos;
        QString etiqueta;
        QVERIFY(premiacionesDeArchivo({"2026-11-21", "1,10,25"}, "2026-11-22", resultados, sorteos,
                                      etiqueta)
                    .isEmpty());
        QVERIFY(premiacionesDeArchivo({"2026-11-22"}, "2026-11-22", resultados, sorteos, etiqueta)
                    .isEmpty());
        QVERIFY(premiacionesDeArchivo({}, "2026-11-22", resultados, sorteos, etiqueta).isEmpty());
        QVERIFY(premiacionesDeArchivo({"\x01\x02garbage", "1,10,25"}, "2026-11-22", resultados,
                                      sorteos, etiqueta)
                    .isEmpty());
    }

    void publicadoSeComparaPorConcatenacion()
    {
        // The published check compares game key + draw key joined together.
        ListasResultado resultados;
        resultados.resultadoClaveJuego = QStringList{"1"};
        resultados.resultadoClaveSorteo = QStringList{"23"};
        for (QStringList *l :
             {&resultados.resultadoNombreJuego, &resultados.resultadoEtiqueta,
              &resultados.resultadoValor, &resultados.resultadoExtra, &resultados.resultadoHora})
            *l = QStringList{""};
        ListasSorteo sorteos;
        QString etiqueta;
        const QVector<Premiacion> p = premiacionesDeArchivo(
            {"2026-11-22", "1,23,5", "1,24,5"}, "2026-11-22", resultados, sorteos, etiqueta);
        QCOMPARE(p.size(), 1);
        QCOMPARE(p.at(0).sorteo, QStringLiteral("24"));
    }

    void nombresDeScript_data()
    {
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<bool>("valido");
        QTest::newRow("simple") << "lotto" << true;
        QTest::newRow("con signos") << "lotto_2-b.v1" << true;
        QTest::newRow("acentos") << "ruleta_año" << true;
        QTest::newRow("vacío") << "" << false;
        QTest::newRow("oculto") << ".oculto" << false;
        QTest::newRow("opción") << "-c" << false;
        QTest::newRow("subir") << "../victima/importante" << false;
        QTest::newRow("carpeta") << "a/b" << false;
        QTest::newRow("absoluto") << "/etc/passwd" << false;
        QTest::newRow("barra inversa") << "a\\b" << false;
        QTest::newRow("espacio") << "a b" << false;
        QTest::newRow("punto y coma") << "a;b" << false;
        QTest::newRow("control") << QString("a\x01"
                                            "b")
                                 << false;
    }

    void nombresDeScript()
    {
        QFETCH(QString, nombre);
        QFETCH(bool, valido);
        QCOMPARE(nombreScriptValido(nombre), valido);
    }

    void guionInvalidoNoSeListaNiSeBorra()
    {
        QStringList nombres, scripts, rechazados;
        ListasJuego juegos;
        ListasSorteo sorteos;
        agregarSorteos("1,Lotto,10,10:00 AM,10:00:00,1/30,X,../victima/importante\n"
                       "2,Ruleta,20,10:00 AM,10:00:00,1/30,X,ruleta\n"
                       "3,Oculto,30,10:00 AM,10:00:00,1/30,X,.x\n",
                       nombres, juegos, sorteos, scripts, &rechazados);
        QCOMPARE(scripts, QStringList{"ruleta.py"});
        QCOMPARE(rechazados, (QStringList{"../victima/importante", ".x"}));
        QCOMPARE(archivosResultado(juegos), QStringList{"ruleta.txt"});
        QCOMPARE(scriptsEnHorario(juegos, QTime(12, 0)), QStringList{"ruleta.py"});
        // The draws themselves are still listed.
        QCOMPARE(sorteos.cantidad(), 3);
    }

    void valoresQueCambianLaPeticion()
    {
        ListasResultado resultados;
        ListasSorteo sorteos;
        QString etiqueta;
        QStringList rechazadas;
        const QStringList lineas = {"2026-11-22", "1,10,25&a=99", "1,10#,25",
                                    "1?,10,25",   "1,10,2=5",     "1,1 0,25",
                                    "1,10,25\t",  "1,10,2\x7f",   "1,11,07"};
        const QVector<Premiacion> p =
            premiacionesDeArchivo(lineas, "2026-11-22", resultados, sorteos, etiqueta, &rechazadas);
        QCOMPARE(p.size(), 1);
        QCOMPARE(consultaPremiacion(p.at(0)), QStringLiteral("autopremiar.php?&j=1&s=11&a=07"));
        QCOMPARE(rechazadas, lineas.mid(1, 7));
    }

    void publicadoConClavesUnidasSinSeparador()
    {
        // Game "1" draw "23" and game "12" draw "3" join to the same text: both count as
        // awarded once either is.
        ListasResultado resultados;
        resultados.resultadoClaveJuego = QStringList{"1"};
        resultados.resultadoClaveSorteo = QStringList{"23"};
        ListasSorteo sorteos;
        QString etiqueta;
        const QVector<Premiacion> p =
            premiacionesDeArchivo({"2026-11-22", "12,3,5", "1,2,5", "2,13,5"}, "2026-11-22",
                                  resultados, sorteos, etiqueta);
        QCOMPARE(p.size(), 2);
        QCOMPARE(p.at(0).juego + "/" + p.at(0).sorteo, QStringLiteral("1/2"));
        QCOMPARE(p.at(1).juego + "/" + p.at(1).sorteo, QStringLiteral("2/13"));
    }

    void resultadoMarcaPorJuegoYSorteoJuntos()
    {
        // A result names its draw by game key and draw key together: draw "10" of another game
        // stays waiting, and every line of the same draw is marked.
        QStringList nombres, scripts;
        ListasJuego juegos;
        ListasSorteo sorteos;
        agregarSorteos("1,Lotto,10,10:00 AM,10:00:00,1/30,X,lotto\n"
                       "2,Granja,10,10:00 AM,10:00:00,1/30,X,granja\n"
                       "1,Lotto,11,11:00 AM,11:00:00,1/30,X,lotto\n"
                       "1,Lotto,10,10:00 AM,10:00:00,1/30,X,lotto\n",
                       nombres, juegos, sorteos, scripts);
        ListasResultado resultados;
        aplicarResultados("1,Lotto,,10,10:00 AM,25,Gallina,10:05:09\n"
                          "1,Lotto,,10,10:00 AM,26,Vaca,10:06:00\n"
                          "2,Granja,,11,11:00 AM,07,Perico,11:01:00\n",
                          resultados, sorteos);
        QCOMPARE(sorteos.sorteoResultado, (QStringList{"26", "", "", "26"}));
    }
};

TORNAVO_PRUEBA_MAIN(TstAutopremiacionDatos)
#include "tst_autopremiacion_datos.moc"
