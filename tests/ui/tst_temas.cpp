#include "app/sesion.h"
#include "temas/tema.h"
#include "temas/themeconfig.h"
#include "tests/soporte/prueba_main.h"
#include "tests/ui/guardaconexiones.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>

namespace {

QByteArray leerArchivo(const QString &ruta)
{
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<no existe>");
}

QString hojaDe(const QString &recurso)
{
    QFile f(recurso);
    return f.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(f.readAll())
                                                         : QString();
}

const QByteArray lineaImpresa = "Unable to set stylesheet, file not found\n";

} // namespace

// The theme file, the style sheet lookup and the theme dialog.
class TstTemas : public QObject {
    Q_OBJECT

public:
    // Child processes: load the theme of the working directory; exit 0 when a style sheet came
    // back, 3 when it was empty. The parent reads what was printed.
    static int correrEscenario(const QString &nombre)
    {
        if (nombre == QLatin1String("cargarTema"))
            return cargarTema(QString::fromLatin1(archivoTema)).isEmpty() ? 3 : 0;
        return 2;
    }

private slots:
    void initTestCase() { instalarGuardaConexiones(); }
    void init() { reiniciarSesion(); }
    void cleanup() { verificarConexiones(); }

    void sinArchivoImprimeLaLineaYDaHojaVacia()
    {
        DirectorioTrabajo dir;
        const ResultadoProceso r = ejecutarEscenario("cargarTema");
        QCOMPARE(r.codigo, 3);
        QCOMPARE(r.salida, lineaImpresa);
    }

    void macosEnMinusculasEsDesconocida()
    {
        DirectorioTrabajo dir;
        dir.escribir("Tornavo.thm", "macos\n");
        const ResultadoProceso r = ejecutarEscenario("cargarTema");
        QCOMPARE(r.codigo, 3);
        QCOMPARE(r.salida, lineaImpresa);
    }

    void macosConMayusculasSeAplica()
    {
        DirectorioTrabajo dir;
        dir.escribir("Tornavo.thm", "MacOS\nsegunda linea ignorada\n");
        const ResultadoProceso r = ejecutarEscenario("cargarTema");
        QCOMPARE(r.codigo, 0);
        QCOMPARE(r.salida, QByteArray());
        QCOMPARE(cargarTema("Tornavo.thm"), hojaDe(":TornavoThemes/MacOS/MacOS.qss"));
        QVERIFY(!cargarTema("Tornavo.thm").isEmpty());
    }

    void lineaVaciaEsElTemaDelSistema()
    {
        DirectorioTrabajo dir;
        dir.escribir("Tornavo.thm", "\n");
        const ResultadoProceso r = ejecutarEscenario("cargarTema");
        QCOMPARE(r.codigo, 3);
        QCOMPARE(r.salida, lineaImpresa);
    }

    void formulario()
    {
        DirectorioTrabajo dir;
        themeconfig d;
        QCOMPARE(d.windowTitle(), QStringLiteral("Temas de Tornavo"));
        auto *lista = d.findChild<QListWidget *>("listWidget_themes");
        QVERIFY(lista);
        QStringList nombres;
        for (int i = 0; i < lista->count(); ++i)
            nombres << lista->item(i)->text();
        QCOMPARE(nombres, nombresTemas());
        QCOMPARE(nombres.size(), 11);

        auto *tabla = d.findChild<QTableWidget *>("tableWidget");
        QVERIFY(tabla);
        QCOMPARE(tabla->columnCount(), 5);
        QCOMPARE(tabla->rowCount(), 4);
        for (int c = 0; c < 5; ++c)
            QCOMPARE(tabla->horizontalHeaderItem(c)->text(),
                     QStringLiteral("Columna %1").arg(c + 1));
        QCOMPARE(tabla->item(0, 0)->text(), QStringLiteral("1234"));
        for (int f = 1; f < 4; ++f)
            for (int c = 0; c < 5; ++c)
                QCOMPARE(tabla->item(f, c)->text(), QStringLiteral("Fila %1").arg(f + 1));

        auto *grupo = d.findChild<QGroupBox *>("groupBox");
        QVERIFY(grupo);
        QCOMPARE(grupo->title(), QStringLiteral("Titulo"));
        QCOMPARE(grupo->findChild<QCheckBox *>("checkBox")->text(),
                 QStringLiteral("Activa / Desactiva"));
        QCOMPARE(grupo->findChild<QLabel *>("label")->text(), QStringLiteral("Texto :"));
        QVERIFY(grupo->findChild<QLineEdit *>("lineEdit"));
        QCOMPARE(d.findChild<QPushButton *>("pushButton_guardar")->text(),
                 QStringLiteral("Aplicar Tema"));
        QCOMPARE(d.findChild<QPushButton *>("pushButton_salir")->text(), QStringLiteral("Salir"));
    }

    void seleccionSegunArchivo_data()
    {
        QTest::addColumn<QByteArray>("contenido");
        QTest::addColumn<int>("fila");
        QTest::newRow("sin archivo") << QByteArray() << -1;
        QTest::newRow("MacOS") << QByteArray("MacOS\n") << 7;
        QTest::newRow("macos") << QByteArray("macos\n") << -1;
        QTest::newRow("dark") << QByteArray("dark") << 3;
        QTest::newRow("menta") << QByteArray("menta\r\n") << 10;
        QTest::newRow("linea vacia") << QByteArray("\n") << 0;
        QTest::newRow("basura") << QByteArray("\x01\x02zz") << -1;
    }

    void seleccionSegunArchivo()
    {
        QFETCH(QByteArray, contenido);
        QFETCH(int, fila);
        DirectorioTrabajo dir;
        if (!contenido.isNull())
            dir.escribir("Tornavo.thm", contenido);
        themeconfig d;
        auto *lista = d.findChild<QListWidget *>("listWidget_themes");
        QCOMPARE(lista->currentRow(), fila);
        QCOMPARE(lista->selectedItems().size(), fila < 0 ? 0 : 1);
        if (fila >= 0)
            QCOMPARE(lista->selectedItems().first()->text(), nombresTemas().at(fila));
    }

    void dobleClicPrevisualizaSoloElDialogo()
    {
        DirectorioTrabajo dir;
        QWidget ventana;
        ventana.setStyleSheet("QWidget { color: red; }");
        themeconfig d(&ventana);
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        auto *lista = d.findChild<QListWidget *>("listWidget_themes");
        const QPoint centro = lista->visualItemRect(lista->item(3)).center();
        QTest::mouseClick(lista->viewport(), Qt::LeftButton, {}, centro);
        QTest::mouseDClick(lista->viewport(), Qt::LeftButton, {}, centro);
        QCOMPARE(d.styleSheet(), hojaDe(":TornavoThemes/qdarkstyle/style.qss"));
        QVERIFY(!d.styleSheet().isEmpty());
        QCOMPARE(ventana.styleSheet(), QStringLiteral("QWidget { color: red; }"));
        // Previewing writes nothing.
        QVERIFY(!QFile::exists("Tornavo.thm"));
        QVERIFY(!SesionGlobal::temaCambiado);

        // The system row previews the platform look.
        const QPoint primera = lista->visualItemRect(lista->item(0)).center();
        QTest::mouseClick(lista->viewport(), Qt::LeftButton, {}, primera);
        QTest::mouseDClick(lista->viewport(), Qt::LeftButton, {}, primera);
        QCOMPARE(d.styleSheet(), QString());
    }

    void aplicarEscribeLaClave()
    {
        DirectorioTrabajo dir;
        dir.escribir("Tornavo.thm", "light\nvieja segunda linea\n");
        themeconfig d;
        auto *lista = d.findChild<QListWidget *>("listWidget_themes");
        QCOMPARE(lista->currentRow(), 1);
        lista->setCurrentRow(9);
        QTest::mouseClick(d.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
        QCOMPARE(leerArchivo("Tornavo.thm"), QByteArray("darkred\n"));
        QVERIFY(SesionGlobal::temaCambiado);
    }

    void aplicarTemaDelSistemaEscribeEstiloSistema()
    {
        DirectorioTrabajo dir;
        dir.escribir("Tornavo.thm", "dark\n");
        themeconfig d;
        d.findChild<QListWidget *>("listWidget_themes")->setCurrentRow(0);
        QTest::mouseClick(d.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
        QCOMPARE(leerArchivo("Tornavo.thm"), QByteArray("\n"));
        QVERIFY(SesionGlobal::temaCambiado);

        // The key list is taken when the dialog is built.
        SesionGlobal::temaCambiado = false;
        SesionGlobal::estiloSistema = "propio";
        themeconfig d2;
        d2.findChild<QListWidget *>("listWidget_themes")->setCurrentRow(0);
        QTest::mouseClick(d2.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
        QCOMPARE(leerArchivo("Tornavo.thm"), QByteArray("propio\n"));
        QVERIFY(SesionGlobal::temaCambiado);
    }

    void aplicarSinFilaNoHaceNada()
    {
        DirectorioTrabajo dir;
        {
            themeconfig d; // no theme file: no row
            QTest::mouseClick(d.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
            QVERIFY(!QFile::exists("Tornavo.thm"));
            QVERIFY(!SesionGlobal::temaCambiado);
        }
        dir.escribir("Tornavo.thm", "desconocido\n");
        themeconfig d;
        auto *lista = d.findChild<QListWidget *>("listWidget_themes");
        // A row made current without being selected (as focus does) is no choice either.
        lista->setCurrentRow(4, QItemSelectionModel::NoUpdate);
        QCOMPARE(lista->currentRow(), 4);
        QTest::mouseClick(d.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
        QCOMPARE(leerArchivo("Tornavo.thm"), QByteArray("desconocido\n"));
        QVERIFY(!SesionGlobal::temaCambiado);
    }

    void aplicarSinPoderEscribirIgualAvisa()
    {
        DirectorioTrabajo dir;
        QVERIFY(QDir().mkdir("Tornavo.thm")); // a folder in the way: the file cannot be written
        themeconfig d;
        d.findChild<QListWidget *>("listWidget_themes")->setCurrentRow(2);
        QTest::mouseClick(d.findChild<QPushButton *>("pushButton_guardar"), Qt::LeftButton);
        QVERIFY(SesionGlobal::temaCambiado);
        QVERIFY(QFileInfo("Tornavo.thm").isDir());
    }

    void salirCierra()
    {
        DirectorioTrabajo dir;
        themeconfig d;
        d.show();
        QVERIFY(d.isVisible());
        QTest::mouseClick(d.findChild<QPushButton *>("pushButton_salir"), Qt::LeftButton);
        QVERIFY(!d.isVisible());
        QVERIFY(!QFile::exists("Tornavo.thm"));
    }
};

TORNAVO_PRUEBA_MAIN(TstTemas)
#include "tst_temas.moc"
