#pragma once

#include <QDialog>

namespace Ui {
class Monitor2;
}

class Monitor2 : public QDialog {
    Q_OBJECT

public:
    explicit Monitor2(QWidget *parent = nullptr);
    ~Monitor2() override;

private:
    Ui::Monitor2 *ui;
};
