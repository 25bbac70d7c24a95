#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageContactSupport;
}

// Tab "Support kontaktieren": the error report and the log files to mail to support.
// The controls live in the form; the main window reaches them through form().
class PageContactSupport : public QWidget
{
    Q_OBJECT

public:
    explicit PageContactSupport(QWidget *parent = nullptr);
    ~PageContactSupport() override;

    Ui::PageContactSupport *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageContactSupport> ui;
};
