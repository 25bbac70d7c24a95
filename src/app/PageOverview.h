#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageOverview;
}

// Tab "Übersicht": the task choice and the state of the installation.
// The controls live in the form; the main window reaches them through form().
class PageOverview : public QWidget
{
    Q_OBJECT

public:
    explicit PageOverview(QWidget *parent = nullptr);
    ~PageOverview() override;

    Ui::PageOverview *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageOverview> ui;
};
