#pragma once

#include <QDialog>
#include <QModelIndex>
#include <QStringList>

namespace Ui {
class mysqlconsulta;
}

// Frame of a query console: saved queries, an editor and result tabs. The console has no
// database behind it, so opening the database fails: the dialog reports
// "Error abriendo la base de datos" and closes itself. It refuses to be shown afterwards and
// deletes itself from the event loop, so create it on the heap.
class mysqlconsulta : public QDialog {
    Q_OBJECT

public:
    explicit mysqlconsulta(QWidget *parent = nullptr);
    ~mysqlconsulta() override;

    // False once opening the database failed.
    bool baseAbierta() const { return abierta; }

    void setVisible(bool visible) override;

private slots:
    void on_listWidget_doubleClicked(QModelIndex index);
    void on_pushButton_ejecutar_clicked();
    void salir();

private:
    // Placeholder for opening the query database; the console has none to open.
    bool abrirBaseDatos();

    Ui::mysqlconsulta *ui;
    QStringList consultas; // saved query texts shown in listWidget
    bool abierta = false;
};
