#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageStartOptions;
}

// Tab "Reparaturfunktionen 1": starting Pawnsketch in standard or safe mode with start switches.
// The controls live in the form; the main window reaches them through form().
class PageStartOptions : public QWidget
{
    Q_OBJECT

public:
    explicit PageStartOptions(QWidget *parent = nullptr);
    ~PageStartOptions() override;

    Ui::PageStartOptions *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageStartOptions> ui;
};
