#include "app/sesion.h"
#include "consulta/mysqlconsulta.h"
#include "tests/soporte/capturamensajes.h"
#include "tests/soporte/escenario.h"
#include "tests/soporte/prueba_main.h"
#include "tests/soporte/servidorprueba.h"
#include "tests/ui/guardaconexiones.h"

#include <QAbstractItemView>
#include <QFrame>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTextEdit>

// The SQL console shell: it has no database, reports so and closes.
class TstConsulta : public QObject {
    Q_OBJECT

public:
    static int correrEscenario(const QString &) { return 2; }

private slots:
    void initTestCase() { instalarGuardaConexiones(); }
    void init() { reiniciarSesion(); }
    void cleanup() { verificarConexiones(); }

    void informaYSeCierra()
    {
        QWidget ventana;
        ventana.show();
        CapturaMensajes captura;
        QPointer<mysqlconsulta> consola = new mysqlconsulta(&ventana);
        QVERIFY(!consola->baseAbierta());
        QCOMPARE(consola->windowTitle(), QStringLiteral("Consultas MySql"));
        // The caller shows it as every dialog: it stays closed and goes away.
        consola->show();
        QVERIFY(!consola->isVisible());

        QVERIFY(captura.esperar(1));
        const MensajeVisto m = captura.ultimo();
        QCOMPARE(m.titulo, QStringLiteral("Error"));
        QCOMPARE(m.texto, QStringLiteral("Error abriendo la base de datos"));
        QCOMPARE(m.rutaIcono, QStringLiteral(":/Imagenes/question-crash.png"));
        QCOMPARE(m.altoIcono, 128);
        QCOMPARE(m.botones, QStringList{"Aceptar"});
        QCOMPARE(m.anchosBotones.value(0), 80);
        QTRY_VERIFY(consola.isNull());
        QCOMPARE(ventana.findChildren<mysqlconsulta *>().size(), 0);
    }

    void formulario()
    {
        CapturaMensajes captura;
        QPointer<mysqlconsulta> consola = new mysqlconsulta;
        auto *lista = consola->findChild<QListWidget *>("listWidget");
        QVERIFY(lista);
        QCOMPARE(lista->count(), 0); // the list starts empty
        QVERIFY(consola->findChild<QFrame *>("frame"));
        QCOMPARE(consola->findChild<QPushButton *>("pushButton_ejecutar")->text(),
                 QStringLiteral("Ejecutar"));
        auto *editor = consola->findChild<QTextEdit *>("textEdit_1");
        QVERIFY(editor);
        QCOMPARE(editor->font().family(), QStringLiteral("Consolas"));
        QCOMPARE(editor->styleSheet(),
                 QStringLiteral("color: rgb(0, 255, 127);\nbackground-color: rgb(0, 0, 0);"));
        bool leyenda = false;
        for (auto *l : consola->findChildren<QLabel *>())
            leyenda = leyenda || l->text() == QLatin1String(":/> Consulta");
        QVERIFY(leyenda);
        auto *pestanas = consola->findChild<QTabWidget *>("tabWidget");
        QCOMPARE(pestanas->count(), 2);
        QCOMPARE(pestanas->tabText(0), QStringLiteral("Consulta 1"));
        QCOMPARE(pestanas->widget(0)->objectName(), QStringLiteral("tab_1"));
        QCOMPARE(pestanas->tabText(1), QStringLiteral("Nueva"));
        QCOMPARE(pestanas->widget(1)->objectName(), QStringLiteral("tab_2"));
        auto *tabla = consola->findChild<QTableView *>("tableView_1");
        QVERIFY(tabla);
        QCOMPARE(tabla->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(consola->windowFlags().testFlag(Qt::Dialog));
        delete consola;
    }

    void ejecutarNoHaceNada()
    {
        Escenario e;
        CapturaMensajes captura;
        QPointer<mysqlconsulta> consola = new mysqlconsulta;
        captura.olvidar();
        auto *editor = consola->findChild<QTextEdit *>("textEdit_1");
        editor->setPlainText("SELECT * FROM bancas;");
        auto *pestanas = consola->findChild<QTabWidget *>("tabWidget");
        QTest::mouseClick(consola->findChild<QPushButton *>("pushButton_ejecutar"), Qt::LeftButton);
        emit consola->findChild<QListWidget *>("listWidget")->doubleClicked(QModelIndex());
        QCOMPARE(editor->toPlainText(), QStringLiteral("SELECT * FROM bancas;"));
        QCOMPARE(pestanas->count(), 2);
        QVERIFY(!consola->findChild<QTableView *>("tableView_1")->model());
        QCOMPARE(consola->findChild<QListWidget *>("listWidget")->count(), 0);
        QCOMPARE(captura.cantidad(), 0);
        QCOMPARE(e.srv.peticiones(), QStringList());
        delete consola;
    }
};

TORNAVO_PRUEBA_MAIN(TstConsulta)
#include "tst_consulta.moc"
