#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageMailHelp;
}

// Tab "Hilfe zum Mailversand": how sending by mail program or web mail works.
// The controls live in the form; the main window reaches them through form().
class PageMailHelp : public QWidget
{
    Q_OBJECT

public:
    explicit PageMailHelp(QWidget *parent = nullptr);
    ~PageMailHelp() override;

    Ui::PageMailHelp *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageMailHelp> ui;
};
