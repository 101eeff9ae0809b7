#include "premios/logicapremios.h"

#include <QTest>

// The widget-free part of the prize calculation: reply parsing, lookups and checks.
class TstLogicaPremios : public QObject {
    Q_OBJECT

private slots:
    void permisoRootYMayusculas()
    {
        using premios::juegoPermitido;
        QVERIFY(juegoPermitido("7", {"root"}));
        QVERIFY(juegoPermitido("cualquiera", {"root", "1"}));
        // "root" only opens everything as the first entry and spelled exactly so.
        QVERIFY(!juegoPermitido("7", {"ROOT"}));
        QVERIFY(!juegoPermitido("7", {"Root"}));
        QVERIFY(!juegoPermitido("7", {"1", "root"}));
        QVERIFY(juegoPermitido("1", {"1", "root"}));
        // Codes are compared without regard to case.
        QVERIFY(juegoPermitido("la1", {"LA1"}));
        QVERIFY(juegoPermitido("LA1", {"x", "la1"}));
        QVERIFY(!juegoPermitido("la", {"la1"}));
        QVERIFY(!juegoPermitido("1", {}));
    }

    void sorteosDosSecciones()
    {
        const QString texto = "1;Lotto;;0,00,05;Delfín,Ballena,León;A\n"
                              "2;Triple;X;;;N\n"
                              "\n"
                              "3;Oculto;;1;Carnero;A\n"
                              "_FIN_\n"
                              "1;10;10AM\n"
                              "\n"
                              "3;30;3PM\n"
                              "2;20;1PM\n"
                              "1;11;11AM\n";
        const premios::ListaSorteos l = premios::analizarSorteos(texto, {"1", "2"});
        QCOMPARE(l.juegos.size(), 2);
        QCOMPARE(l.juegos[0].clave, QStringLiteral("1"));
        QCOMPARE(l.juegos[0].nombre, QStringLiteral("Lotto"));
        QCOMPARE(l.juegos[0].sinNombres, QString());
        QCOMPARE(l.juegos[0].codigos, QStringLiteral("0,00,05"));
        QCOMPARE(l.juegos[0].nombres, QStringLiteral("Delfín,Ballena,León"));
        QCOMPARE(l.juegos[0].tipo, QStringLiteral("A"));
        QCOMPARE(l.juegos[1].sinNombres, QStringLiteral("X"));
        QCOMPARE(l.juegos[1].tipo, QStringLiteral("N"));
        QCOMPARE(l.sorteos.size(), 3);
        QCOMPARE(l.sorteos[0].juego, QStringLiteral("1"));
        QCOMPARE(l.sorteos[0].codigo, QStringLiteral("10"));
        QCOMPARE(l.sorteos[0].etiqueta, QStringLiteral("10AM"));
        QCOMPARE(l.sorteos[1].codigo, QStringLiteral("20"));
        QCOMPARE(l.sorteos[2].codigo, QStringLiteral("11"));

        const premios::ListaSorteos todos = premios::analizarSorteos(texto, {"root"});
        QCOMPARE(todos.juegos.size(), 3);
        QCOMPARE(todos.sorteos.size(), 4);
    }

    void sorteosMalFormados()
    {
        // No "_FIN_": games only. Short lines: missing fields read as "".
        premios::ListaSorteos l = premios::analizarSorteos("1;Lotto\n", {"root"});
        QCOMPARE(l.juegos.size(), 1);
        QCOMPARE(l.juegos[0].nombre, QStringLiteral("Lotto"));
        QCOMPARE(l.juegos[0].tipo, QString());
        QCOMPARE(l.sorteos.size(), 0);

        l = premios::analizarSorteos("_FIN_\n1\n", {"root"});
        QCOMPARE(l.juegos.size(), 0);
        QCOMPARE(l.sorteos.size(), 1);
        QCOMPARE(l.sorteos[0].juego, QStringLiteral("1"));
        QCOMPARE(l.sorteos[0].codigo, QString());

        l = premios::analizarSorteos(QString(), {"root"});
        QCOMPARE(l.juegos.size(), 0);
        l = premios::analizarSorteos(";;;;;;;;\n_FIN_\n;;\n_FIN_\nbasura", {});
        QCOMPARE(l.juegos.size(), 0);
        QCOMPARE(l.sorteos.size(), 0);

        // A huge reply is parsed without trouble.
        QString grande;
        for (int i = 0; i < 20000; ++i)
            grande += QStringLiteral("%1;Juego %1;;1,2;A,B;A\n").arg(i);
        grande += "_FIN_\n";
        for (int i = 0; i < 20000; ++i)
            grande += QStringLiteral("%1;%1;8PM\n").arg(i);
        l = premios::analizarSorteos(grande, {"root"});
        QCOMPARE(l.juegos.size(), 20000);
        QCOMPARE(l.sorteos.size(), 20000);
    }

    void nombreAnimalExactoYUltimo()
    {
        const std::vector<QString> claves{"1", "2", "1"};
        const QStringList codigos{"0,00,5", "1,2", "0,00,05,05"};
        const QStringList nombres{"Delfín,Ballena,León", "Carnero,Toro",
                                  "Delfín,Ballena,León,Tigre"};
        // The last game with the key gives the lists; the last equal number gives the name.
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "1", "05"),
                 QStringLiteral("Tigre"));
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "1", "5"), QString());
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "1", "0"),
                 QStringLiteral("Delfín"));
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "1", "00"),
                 QStringLiteral("Ballena"));
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "2", "2"), QStringLiteral("Toro"));
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "9", "1"), QString());
        QCOMPARE(premios::nombreAnimal(claves, codigos, nombres, "2", ""), QString());
        // Lists shorter than the keys, and fewer names than numbers, give "".
        QCOMPARE(premios::nombreAnimal(claves, {"1,2"}, {"Carnero"}, "2", "1"), QString());
        QCOMPARE(premios::nombreAnimal({"1"}, {"1,2"}, {"Carnero"}, "1", "2"), QString());
        QCOMPARE(premios::nombreAnimal({}, {}, {}, "1", "2"), QString());
    }

    void resultadosYSuTexto()
    {
        const auto r = premios::analizarResultados("10,05\n\n11,123\n12\n");
        QCOMPARE(r.size(), 3);
        QCOMPARE(r[0].sorteo, QStringLiteral("10"));
        QCOMPARE(r[0].resultado, QStringLiteral("05"));
        QCOMPARE(r[1].resultado, QStringLiteral("123"));
        QCOMPARE(r[2].sorteo, QStringLiteral("12"));
        QCOMPARE(r[2].resultado, QString());
        QCOMPARE(premios::analizarResultados(QString()).size(), 0);

        using premios::resultadoMostrado;
        QCOMPARE(resultadoMostrado("123", "X", "N", "ignorado"), QStringLiteral("123"));
        QCOMPARE(resultadoMostrado("45", "", "T", "ignorado"), QStringLiteral("45"));
        QCOMPARE(resultadoMostrado("05", "", "A", "León"), QStringLiteral("05-León"));
        QCOMPARE(resultadoMostrado("05", "", "A", ""), QStringLiteral("05-"));
        QCOMPARE(resultadoMostrado("123", "", "N", ""), QStringLiteral("123-"));
    }

    void validarAnimal()
    {
        const auto nombres = [](const QString &n) {
            if (n == "05")
                return QStringLiteral("León");
            if (n == "0")
                return QStringLiteral("Delfín");
            if (n == "00")
                return QStringLiteral("Ballena");
            return QString();
        };
        premios::Validacion v = premios::validarNumero("5", "A", nombres);
        QCOMPARE(v.numero, QStringLiteral("05"));
        QVERIFY(v.valido);
        QCOMPARE(v.nombre, QStringLiteral("León"));
        v = premios::validarNumero("0", "A", nombres);
        QCOMPARE(v.numero, QStringLiteral("0"));
        QCOMPARE(v.nombre, QStringLiteral("Delfín"));
        v = premios::validarNumero("00", "A", nombres);
        QCOMPARE(v.numero, QStringLiteral("00"));
        QCOMPARE(v.nombre, QStringLiteral("Ballena"));
        v = premios::validarNumero("33", "A", nombres);
        QVERIFY(!v.valido);
        QCOMPARE(v.error, QStringLiteral("Este número no es válido"));
        v = premios::validarNumero("x", "A", nombres);
        QCOMPARE(v.numero, QStringLiteral("x"));
        QVERIFY(!v.valido);
    }

    void validarNumeroDeTresCifras()
    {
        const auto ninguno = [](const QString &) {
            return QString();
        };
        const QString error = QStringLiteral("Este número no es válido\nDebe ser de 3 dígitos");
        premios::Validacion v = premios::validarNumero("12", "N", ninguno);
        QVERIFY(!v.valido);
        QCOMPARE(v.error, error);
        v = premios::validarNumero("123", "N", ninguno);
        QVERIFY(v.valido);
        QCOMPARE(v.numero, QStringLiteral("123"));
        v = premios::validarNumero("012", "N", ninguno);
        QVERIFY(v.valido);
        QCOMPARE(v.numero, QStringLiteral("012"));
        v = premios::validarNumero("7", "N", ninguno);
        QCOMPARE(v.numero, QStringLiteral("07"));
        QVERIFY(!v.valido);
        QCOMPARE(v.error, error);
        // Every kind but "A" follows the three-digit rule, "T" and an empty type too.
        QVERIFY(!premios::validarNumero("45", "T", ninguno).valido);
        QVERIFY(premios::validarNumero("045", "T", ninguno).valido);
        QVERIFY(!premios::validarNumero("99", "", ninguno).valido);
        QVERIFY(premios::validarNumero("abc", "N", ninguno).valido);
        QCOMPARE(premios::validarNumero("000", "N", ninguno).numero, QStringLiteral("000"));
    }

    void calculo()
    {
        premios::Calculo c = premios::analizarCalculo("banca,agencia,ticket,numero,jugado,premio\n"
                                                      "B1,Agencia Centro,1001,05,10.00,300.00\n"
                                                      "\n"
                                                      "B2,Agencia Norte,1002,05,2.5,75\n");
        QCOMPARE(c.filas.size(), 2);
        QCOMPARE(c.filas[0].banca, QStringLiteral("B1"));
        QCOMPARE(c.filas[0].agencia, QStringLiteral("Agencia Centro"));
        QCOMPARE(c.filas[0].ticket, QStringLiteral("1001"));
        QCOMPARE(c.filas[0].numero, QStringLiteral("05"));
        QCOMPARE(c.filas[0].jugado, 10.0);
        QCOMPARE(c.filas[1].premio, 75.0);
        QCOMPARE(c.total, 375.0);

        // Header only, one line, nothing: no rows, total 0.
        QCOMPARE(premios::analizarCalculo("cabecera\n").filas.size(), 0);
        QCOMPARE(premios::analizarCalculo("cabecera").total, 0.0);
        QCOMPARE(premios::analizarCalculo(QString()).filas.size(), 0);
        // Non-numeric amounts and missing fields count as 0.
        c = premios::analizarCalculo("h\nB1,A,1,05,diez,mucho\nB2\n");
        QCOMPARE(c.filas.size(), 2);
        QCOMPARE(c.filas[0].jugado, 0.0);
        QCOMPARE(c.filas[0].premio, 0.0);
        QCOMPARE(c.filas[1].agencia, QString());
        QCOMPARE(c.total, 0.0);
    }

    void rutas()
    {
        QCOMPARE(premios::rutaCalculo("2026-11-22", "1", "10", "05"),
                 QStringLiteral("calcularpremios4.php?&f=2026-11-22&j=1&s=10&a=05"));
        QCOMPARE(premios::rutaPublicar("2026-11-22", "1", "10", "05"),
                 QStringLiteral("publicarPremios2.php?&f=2026-11-22&j=1&s=10&a=05"));
        QCOMPARE(premios::rutaDeshacer("2026-11-22", "1", "10"),
                 QStringLiteral("deshacerpremios.php?&f=2026-11-22&j=1&s=10"));
    }

    void respuestas()
    {
        using premios::Respuesta;
        QCOMPARE(premios::clasificarRespuesta(QString()), Respuesta::SinRespuesta);
        QCOMPARE(premios::clasificarRespuesta("0"), Respuesta::Rechazada);
        QCOMPARE(premios::clasificarRespuesta("1"), Respuesta::Hecha);
        QCOMPARE(premios::clasificarRespuesta("ok"), Respuesta::Hecha);
        QCOMPARE(premios::clasificarRespuesta("00"), Respuesta::Hecha);
    }
};

QTEST_GUILESS_MAIN(TstLogicaPremios)
#include "tst_logicapremios.moc"
