#pragma once

#include <QDialog>
#include <QModelIndex>
#include <QStringList>

namespace Ui {
class themeconfig;
}

// Theme chooser: lists the themes, previews one on its own sample widgets at a double-click
// and writes the chosen key to the theme file. The main window runs it modally and reloads
// the theme when it closes.
class themeconfig : public QDialog {
    Q_OBJECT

public:
    explicit themeconfig(QWidget *parent = nullptr);
    ~themeconfig() override;

private slots:
    void on_listWidget_themes_doubleClicked(QModelIndex index);
    void on_pushButton_guardar_clicked();
    void on_pushButton_salir_clicked();

private:
    Ui::themeconfig *ui;
    QStringList claves; // key of each row of listWidget_themes
};
