#pragma once

#include <QDialog>

namespace Ui {
class auto_calcular;
}

class auto_calcular : public QDialog {
    Q_OBJECT

public:
    explicit auto_calcular(QWidget *parent = nullptr);
    ~auto_calcular() override;

private:
    Ui::auto_calcular *ui;
};
