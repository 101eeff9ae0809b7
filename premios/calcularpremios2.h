#pragma once

#include <QDialog>

namespace Ui {
class calcularpremios2;
}

class calcularpremios2 : public QDialog {
    Q_OBJECT

public:
    explicit calcularpremios2(QWidget *parent = nullptr);
    ~calcularpremios2() override;

private:
    Ui::calcularpremios2 *ui;
};
