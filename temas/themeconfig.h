#pragma once

#include <QDialog>

namespace Ui {
class themeconfig;
}

class themeconfig : public QDialog {
    Q_OBJECT

public:
    explicit themeconfig(QWidget *parent = nullptr);
    ~themeconfig() override;

private:
    Ui::themeconfig *ui;
};
