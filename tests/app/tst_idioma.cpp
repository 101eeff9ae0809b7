#include "app/formato.h"
#include "app/idioma.h"
#include "tests/soporte/prueba_main.h"

#include <QCalendarWidget>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>
#include <QToolButton>

// Dates and times of the console are Spanish on every machine: the same texts under any
// LC_ALL, for the formatting helpers and for the widgets once the console's language is set.
class TstIdioma : public QObject {
    Q_OBJECT

    // Texts of the formatting helpers, one a line.
    static QStringList textosFormato()
    {
        return {textoReloj(QTime(14, 5, 8)),
                textoReloj(QTime(9, 5, 7)),
                textoConsola(QDate(2026, 11, 23), QStringLiteral("dddd dd/MM/yyyy")),
                textoConsola(QDate(2026, 11, 22), QStringLiteral("ddd d MMMM yyyy")),
                textoConsola(QTime(0, 30), QStringLiteral("h:mm ap")),
                fechaServidor(QDate(2026, 11, 23)),
                formatoMonto(1234567.891, 2)};
    }

    // Texts of widgets built after prepararIdioma(): a date edit, a calendar's month button and
    // first day header, and the standard OK button.
    static QStringList textosWidgets()
    {
        QDateEdit fecha(QDate(2026, 11, 23));
        fecha.setDisplayFormat(QStringLiteral("dddd dd/MM/yyyy"));
        QCalendarWidget calendario;
        calendario.setSelectedDate(QDate(2026, 11, 23));
        const auto *mes =
            calendario.findChild<QToolButton *>(QStringLiteral("qt_calendar_monthbutton"));
        const auto *vista =
            calendario.findChild<QTableView *>(QStringLiteral("qt_calendar_calendarview"));
        QDialogButtonBox botones(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        return {fecha.text(), mes ? mes->text() : QStringLiteral("<sin mes>"),
                vista ? vista->model()->index(0, 1).data().toString()
                      : QStringLiteral("<sin vista>"),
                botones.button(QDialogButtonBox::Ok)->text(),
                botones.button(QDialogButtonBox::Cancel)->text()};
    }

    static int imprimir(const QStringList &lineas)
    {
        QTextStream salida(stdout);
        salida.setCodec("UTF-8");
        for (const QString &l : lineas)
            salida << l << '\n';
        return 0;
    }

    static QStringList lineasDe(const QByteArray &salida)
    {
        return QString::fromUtf8(salida).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    const QStringList esperadoFormato = {
        "2;05;08 p. m.", "9:05:07 a. m.", "lunes 23/11/2026", "dom 22 noviembre 2026",
        "12:30 a. m.",   "2026-11-23",    "1,234,567.89"};

    // Machine locales the console may meet: English, plain C, Spanish, and one with digits
    // of its own.
    const QStringList maquinas = {"C", "C.UTF-8", "en_US.UTF-8", "es_ES.UTF-8", "ar_EG.UTF-8"};

public:
    static int correrEscenario(const QString &escenario)
    {
        if (escenario == QLatin1String("formato"))
            return imprimir(textosFormato());
        if (escenario == QLatin1String("widgets")) {
            const bool traducido = prepararIdioma(*qApp);
            return imprimir(QStringList{traducido ? "traducido" : "sin traducir"} +
                            textosWidgets());
        }
        if (escenario == QLatin1String("sinTraducciones")) {
            QTemporaryDir vacia;
            const bool traducido = prepararIdioma(*qApp, vacia.path());
            return imprimir(
                QStringList{traducido ? "traducido" : "sin traducir", QLocale().name()} +
                textosWidgets());
        }
        return 2;
    }

private slots:
    void textosDeLosAyudantes() { QCOMPARE(textosFormato(), esperadoFormato); }

    void mismosTextosEnCualquierMaquina()
    {
        for (const QString &maquina : maquinas) {
            const ResultadoProceso r =
                ejecutarEscenario(QStringLiteral("formato"), {QStringLiteral("LC_ALL=") + maquina});
            QVERIFY2(r.terminoNormal && r.codigo == 0, qPrintable(maquina + r.errores));
            QCOMPARE(lineasDe(r.salida), esperadoFormato);
        }
    }

    void widgetsEnEspanolEnCualquierMaquina()
    {
        const QStringList esperado = {"traducido", "lunes 23/11/2026", "noviembre",
                                      "dom",       "Aceptar",          "Cancelar"};
        for (const QString &maquina : maquinas) {
            const ResultadoProceso r =
                ejecutarEscenario(QStringLiteral("widgets"), {QStringLiteral("LC_ALL=") + maquina});
            QVERIFY2(r.terminoNormal && r.codigo == 0, qPrintable(maquina + r.errores));
            QCOMPARE(lineasDe(r.salida), esperado);
        }
    }

    // Without Qt's translation file the buttons keep Qt's own texts; dates stay Spanish.
    void sinArchivoDeTraducciones()
    {
        const ResultadoProceso r =
            ejecutarEscenario(QStringLiteral("sinTraducciones"), {QStringLiteral("LC_ALL=C")});
        QVERIFY2(r.terminoNormal && r.codigo == 0, r.errores.constData());
        const QStringList lineas = lineasDe(r.salida);
        QCOMPARE(lineas.mid(0, 7), (QStringList{"sin traducir", "es_VE", "lunes 23/11/2026",
                                                "noviembre", "dom", "OK", "Cancel"}));
    }
};

TORNAVO_PRUEBA_MAIN(TstIdioma)
#include "tst_idioma.moc"
