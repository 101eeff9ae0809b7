#pragma once

#include <QDialog>

namespace Ui {
class mysqlconsulta;
}

class mysqlconsulta : public QDialog {
    Q_OBJECT

public:
    explicit mysqlconsulta(QWidget *parent = nullptr);
    ~mysqlconsulta() override;

private:
    Ui::mysqlconsulta *ui;
};
