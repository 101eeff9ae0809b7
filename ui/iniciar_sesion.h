#pragma once

#include <QDialog>

namespace Ui {
class iniciar_sesion;
}

class iniciar_sesion : public QDialog {
    Q_OBJECT

public:
    explicit iniciar_sesion(QWidget *parent = nullptr);
    ~iniciar_sesion() override;

private:
    Ui::iniciar_sesion *ui;
};
