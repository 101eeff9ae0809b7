#include "temas/tema.h"
#include "tests/soporte/prueba_main.h"

#include <QDialog>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTableWidget>

#include <cmath>

namespace {

// One rule of a style sheet: its selectors and its declarations in order.
struct Regla {
    QStringList selectores;
    QVector<QPair<QString, QString>> declaraciones;
};

QVector<Regla> leerReglas(QString hoja)
{
    hoja.remove(QRegularExpression(QStringLiteral("/\\*.*?\\*/"),
                                   QRegularExpression::DotMatchesEverythingOption));
    QVector<Regla> reglas;
    int desde = 0;
    for (;;) {
        const int abre = hoja.indexOf('{', desde);
        if (abre < 0)
            break;
        const int cierra = hoja.indexOf('}', abre);
        if (cierra < 0)
            break;
        Regla regla;
        for (const QString &s : hoja.mid(desde, abre - desde).split(','))
            regla.selectores << s.simplified();
        for (const QString &d : hoja.mid(abre + 1, cierra - abre - 1).split(';')) {
            const int dosPuntos = d.indexOf(':');
            if (dosPuntos > 0)
                regla.declaraciones.append(
                    {d.left(dosPuntos).simplified(), d.mid(dosPuntos + 1).simplified()});
        }
        reglas.append(regla);
        desde = cierra + 1;
    }
    return reglas;
}

// The value the sheet gives last to `propiedad` in a rule that names `selector` itself, as
// Qt's cascade does between rules of equal weight. "A|B": A's value, or B's when A has none
// (a state the sheet does not restyle keeps the plain look).
QString valor(const QVector<Regla> &reglas, const QString &selector, const QString &propiedad)
{
    for (const QString &alternativa : selector.split('|')) {
        QString encontrado;
        for (const Regla &r : reglas) {
            if (!r.selectores.contains(alternativa))
                continue;
            for (const auto &d : r.declaraciones)
                if (d.first == propiedad)
                    encontrado = d.second;
        }
        if (!encontrado.isEmpty())
            return encontrado;
    }
    return QString();
}

// Every colour a value paints with: one for a plain colour, each stop for a gradient.
QVector<QColor> colores(const QString &valor)
{
    QVector<QColor> lista;
    QRegularExpressionMatchIterator it =
        QRegularExpression(QStringLiteral("#[0-9a-fA-F]{6}\\b|rgb\\([^)]*\\)")).globalMatch(valor);
    while (it.hasNext()) {
        const QString texto = it.next().captured(0);
        if (texto.startsWith('#')) {
            lista.append(QColor(texto));
        } else {
            const QStringList partes = texto.mid(4, texto.size() - 5).split(',');
            lista.append(
                QColor(partes.value(0).toInt(), partes.value(1).toInt(), partes.value(2).toInt()));
        }
    }
    return lista;
}

// Relative luminance and contrast ratio, as WCAG 2 defines them.
double luminancia(const QColor &c)
{
    const auto canal = [](int v) {
        const double s = v / 255.0;
        return s <= 0.03928 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * canal(c.red()) + 0.7152 * canal(c.green()) + 0.0722 * canal(c.blue());
}

double razonContraste(const QColor &a, const QColor &b)
{
    const double la = luminancia(a), lb = luminancia(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QString hojaDelRecurso(const QString &ruta)
{
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(f.readAll())
                                                         : QString();
}

// Every theme with a sheet: its display name and key, in the dialog's order.
QVector<QPair<QString, QString>> temasConHoja()
{
    QVector<QPair<QString, QString>> temas;
    const QStringList nombres = nombresTemas();
    const QStringList claves = clavesTemas(QString());
    for (int i = 0; i < nombres.size(); ++i)
        if (!rutaHojaDeEstilo(claves.at(i)).isEmpty())
            temas.append({nombres.at(i), claves.at(i)});
    return temas;
}

// A text colour and the ground it is read on, each as (selector, property).
struct Par {
    const char *nombre;
    const char *selectorTexto;
    const char *propiedadTexto;
    const char *selectorFondo;
    const char *propiedadFondo;
};

const char *const fondo = "background-color";

// The texts a user reads in every dialog, each on its own ground.
const Par pares[] = {
    {"ventana", "QDialog", "color", "QDialog", fondo},
    {"ventana principal", "QMainWindow", "color", "QMainWindow", fondo},
    {"etiqueta", "QLabel", "color", "QDialog", fondo},
    {"barra de menus", "QMenuBar", "color", "QMenuBar", fondo},
    {"menu", "QMenu::item", "color", "QMenu", fondo},
    {"menu, elegido", "QMenu::item:selected", "color", "QMenu::item:selected", fondo},
    {"entrada", "QLineEdit", "color", "QLineEdit", fondo},
    {"entrada de solo lectura", "QLineEdit[readOnly=\"true\"]", "color",
     "QLineEdit[readOnly=\"true\"]", fondo},
    {"entrada, seleccion", "QLineEdit", "selection-color", "QLineEdit",
     "selection-background-color"},
    {"lista desplegable", "QComboBox", "color", "QComboBox", fondo},
    {"lista desplegable, abierta", "QComboBox QAbstractItemView", "color",
     "QComboBox QAbstractItemView", fondo},
    {"tabla", "QTableView", "color", "QTableView", fondo},
    {"tabla, fila alterna", "QTableView", "color", "QTableView", "alternate-background-color"},
    {"tabla, seleccion", "QTableView", "selection-color", "QTableView",
     "selection-background-color"},
    {"cabecera", "QHeaderView::section", "color", "QHeaderView::section", fondo},
    {"lista", "QListView", "color", "QListView", fondo},
    {"lista, seleccion", "QListView::item:selected", "color", "QListView::item:selected", fondo},
    {"boton", "QPushButton", "color", "QPushButton", fondo},
    {"boton, bajo el puntero", "QPushButton", "color", "QPushButton:hover", fondo},
    {"boton, pulsado", "QPushButton:pressed", "color", "QPushButton:pressed", fondo},
    {"boton por omision", "QPushButton:default|QPushButton", "color",
     "QPushButton:default|QPushButton", fondo},
    {"boton por omision, bajo el puntero", "QPushButton:default|QPushButton", "color",
     "QPushButton:default:hover|QPushButton:hover", fondo},
    {"boton por omision, pulsado", "QPushButton:default:pressed|QPushButton:pressed", "color",
     "QPushButton:default:pressed|QPushButton:pressed", fondo},
    {"pestana", "QTabBar::tab", "color", "QTabBar::tab", fondo},
    {"pestana, elegida", "QTabBar::tab:selected", "color", "QTabBar::tab:selected", fondo},
    {"titulo de grupo", "QGroupBox::title", "color", "QDialog", fondo},
    {"casilla", "QCheckBox", "color", "QDialog", fondo},
    {"ayuda emergente", "QToolTip", "color", "QToolTip", fondo},
    {"calendario, cabecera", "QCalendarWidget QToolButton", "color",
     "QCalendarWidget QWidget#qt_calendar_navigationbar", fondo},
    {"calendario, dias", "QCalendarWidget QAbstractItemView", "color",
     "QCalendarWidget QAbstractItemView", fondo},
    {"inactivo: etiqueta", "QLabel:disabled", "color", "QDialog", fondo},
    {"inactivo: entrada", "QLineEdit:disabled", "color", "QLineEdit:disabled", fondo},
    {"inactivo: lista desplegable", "QComboBox:disabled", "color", "QComboBox:disabled", fondo},
    {"inactivo: boton", "QPushButton:disabled", "color", "QPushButton:disabled", fondo},
    {"inactivo: boton por omision", "QPushButton:default:disabled|QPushButton:disabled", "color",
     "QPushButton:default:disabled|QPushButton:disabled", fondo},
    {"inactivo: casilla", "QCheckBox:disabled", "color", "QDialog", fondo},
    {"inactivo: menu", "QMenu::item:disabled", "color", "QMenu", fondo},
    {"inactivo: barra de menus", "QMenuBar::item:disabled", "color", "QMenuBar", fondo},
    {"inactivo: tabla", "QTableView:disabled", "color", "QTableView", fondo},
    {"inactivo: pestana", "QTabBar::tab:disabled", "color", "QTabBar::tab", fondo},
};

// Negative amounts are painted pure red by the monitor and the reports, whatever the theme:
// in table cells (plain and alternate rows), in read-only fields and in labels on the window.
const char *const rojo = "rgb(255, 0, 0)";
const Par paresRojos[] = {
    {"rojo en ventana", nullptr, nullptr, "QDialog", fondo},
    {"rojo en tabla", nullptr, nullptr, "QTableView", fondo},
    {"rojo en tabla, fila alterna", nullptr, nullptr, "QTableView", "alternate-background-color"},
    {"rojo en entrada de solo lectura", nullptr, nullptr, "QLineEdit[readOnly=\"true\"]", fondo},
};

// WCAG AA for normal text.
constexpr double minimoTexto = 4.5;
// Pure red reaches at most 4.0:1 on white, so no light ground can give it 4.5:1; there it must
// still reach the 3:1 WCAG asks of large text. Dark grounds give it the full 4.5:1.
constexpr double minimoRojoEnClaro = 3.0;

} // namespace

// The theme style sheets as the console loads them: complete, and legible in every theme.
class TstHojasEstilo : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void hojaCompleta_data()
    {
        QTest::addColumn<QString>("nombre");
        QTest::addColumn<QString>("clave");
        for (const auto &t : temasConHoja())
            QTest::newRow(qPrintable(t.first)) << t.first << t.second;
    }

    // Each sheet is where the console looks for it, names its theme, and has a value for
    // every mark of the template.
    void hojaCompleta()
    {
        QFETCH(QString, nombre);
        QFETCH(QString, clave);
        const QString hoja = hojaDeEstilo(clave);
        QVERIFY(!hoja.isEmpty());
        QCOMPARE(hoja, hojaDelRecurso(rutaHojaDeEstilo(clave)));

        const QRegularExpressionMatch marca =
            QRegularExpression(QStringLiteral("@[A-Za-z0-9_]*@|\\$\\{")).match(hoja);
        QVERIFY2(!marca.hasMatch(), qPrintable(QStringLiteral("marca sin valor: ") +
                                               hoja.mid(marca.capturedStart() - 40, 80)));
        const QRegularExpressionMatch colorMalo =
            QRegularExpression(QStringLiteral("#(?![0-9a-fA-F]{6}\\b)(?!qt_)")).match(hoja);
        QVERIFY2(!colorMalo.hasMatch(), qPrintable(QStringLiteral("color mal escrito: ") +
                                                   hoja.mid(colorMalo.capturedStart() - 40, 80)));
        QVERIFY2(hoja.contains(QStringLiteral(" * Tornavo Super Usuario - ") + nombre + '\n'),
                 qPrintable(hoja.left(200)));
        QCOMPARE(hoja.count('{'), hoja.count('}'));

        const QVector<Regla> reglas = leerReglas(hoja);
        QVERIFY(reglas.size() > 100);
        for (const Regla &r : reglas)
            for (const auto &d : r.declaraciones)
                QVERIFY2(!d.second.isEmpty(), qPrintable(r.selectores.join(',') + ' ' + d.first));
    }

    void contraste_data()
    {
        QTest::addColumn<QString>("texto");
        QTest::addColumn<QString>("fondo");
        QTest::addColumn<double>("minimo");
        for (const auto &t : temasConHoja()) {
            const QVector<Regla> reglas = leerReglas(hojaDeEstilo(t.second));
            for (const Par &p : pares)
                QTest::addRow("%s: %s", qPrintable(t.first), p.nombre)
                    << valor(reglas, p.selectorTexto, p.propiedadTexto)
                    << valor(reglas, p.selectorFondo, p.propiedadFondo) << minimoTexto;

            // A dark theme is one whose window text is lighter than its window ground.
            const QColor textoVentana = colores(valor(reglas, "QDialog", "color")).value(0);
            const QColor fondoVentana = colores(valor(reglas, "QDialog", fondo)).value(0);
            const bool oscuro = luminancia(textoVentana) > luminancia(fondoVentana);
            for (const Par &p : paresRojos)
                QTest::addRow("%s: %s", qPrintable(t.first), p.nombre)
                    << QString::fromLatin1(rojo) << valor(reglas, p.selectorFondo, p.propiedadFondo)
                    << (oscuro ? minimoTexto : minimoRojoEnClaro);
        }
    }

    // Text against its ground: every colour of the text (gradients by each stop) against every
    // colour of the ground.
    void contraste()
    {
        QFETCH(QString, texto);
        QFETCH(QString, fondo);
        QFETCH(double, minimo);
        const QVector<QColor> colTexto = colores(texto);
        const QVector<QColor> colFondo = colores(fondo);
        QVERIFY2(!colTexto.isEmpty(), qPrintable("sin color de texto: '" + texto + "'"));
        QVERIFY2(!colFondo.isEmpty(), qPrintable("sin color de fondo: '" + fondo + "'"));
        for (const QColor &t : colTexto)
            for (const QColor &f : colFondo) {
                const double c = razonContraste(t, f);
                QVERIFY2(c >= minimo, qPrintable(QStringLiteral("%1 sobre %2: %3:1, menos de %4:1")
                                                     .arg(t.name(), f.name())
                                                     .arg(c, 0, 'f', 2)
                                                     .arg(minimo)));
            }
    }

    void qtLeeLosMismosColores_data() { hojaCompleta_data(); }

    // The colours read above are the ones Qt applies: widgets under the sheet get them in
    // their palettes.
    void qtLeeLosMismosColores()
    {
        QFETCH(QString, clave);
        const QString hoja = hojaDeEstilo(clave);
        const QVector<Regla> reglas = leerReglas(hoja);
        const auto color = [&](const char *selector, const char *propiedad) {
            return colores(valor(reglas, selector, propiedad)).value(0);
        };

        QDialog dialogo;
        dialogo.setStyleSheet(hoja);
        auto *entrada = new QLineEdit(&dialogo);
        auto *soloLectura = new QLineEdit(&dialogo);
        soloLectura->setReadOnly(true);
        auto *tabla = new QTableWidget(2, 2, &dialogo);
        for (QWidget *w : {static_cast<QWidget *>(&dialogo), static_cast<QWidget *>(entrada),
                           static_cast<QWidget *>(soloLectura), static_cast<QWidget *>(tabla)})
            w->ensurePolished();

        QCOMPARE(dialogo.palette().color(QPalette::Window), color("QDialog", fondo));
        QCOMPARE(dialogo.palette().color(QPalette::WindowText), color("QDialog", "color"));
        QCOMPARE(entrada->palette().color(QPalette::Base), color("QLineEdit", fondo));
        QCOMPARE(entrada->palette().color(QPalette::Text), color("QLineEdit", "color"));
        QCOMPARE(entrada->palette().color(QPalette::Disabled, QPalette::Text),
                 color("QLineEdit:disabled", "color"));
        QCOMPARE(entrada->palette().color(QPalette::Disabled, QPalette::Base),
                 color("QLineEdit:disabled", fondo));
        QCOMPARE(soloLectura->palette().color(QPalette::Base),
                 color("QLineEdit[readOnly=\"true\"]", fondo));
        QCOMPARE(tabla->palette().color(QPalette::Base), color("QTableView", fondo));
        QCOMPARE(tabla->palette().color(QPalette::Text), color("QTableView", "color"));
        QCOMPARE(tabla->palette().color(QPalette::AlternateBase),
                 color("QTableView", "alternate-background-color"));
        QCOMPARE(tabla->palette().color(QPalette::Highlight),
                 color("QTableView", "selection-background-color"));
        QCOMPARE(tabla->palette().color(QPalette::HighlightedText),
                 color("QTableView", "selection-color"));
    }
};

TORNAVO_PRUEBA_MAIN(TstHojasEstilo)
#include "tst_hojasestilo.moc"
