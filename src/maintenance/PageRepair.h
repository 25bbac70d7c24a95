#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageRepair;
}

// Tab "Reparaturfunktionen 2": downloading the current program file and restoring a backup.
// The controls live in the form; the main window reaches them through form().
class PageRepair : public QWidget
{
    Q_OBJECT

public:
    explicit PageRepair(QWidget *parent = nullptr);
    ~PageRepair() override;

    Ui::PageRepair *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageRepair> ui;
};
