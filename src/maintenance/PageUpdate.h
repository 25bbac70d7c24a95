#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageUpdate;
}

// Tab "Update": installing a picked update file and putting a backed-up program file back.
// The controls live in the form; the main window reaches them through form().
class PageUpdate : public QWidget
{
    Q_OBJECT

public:
    explicit PageUpdate(QWidget *parent = nullptr);
    ~PageUpdate() override;

    Ui::PageUpdate *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageUpdate> ui;
};
