#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageBeta;
}

// Tab "BETA-Version": installing a picked beta program file.
// The controls live in the form; the main window reaches them through form().
class PageBeta : public QWidget
{
    Q_OBJECT

public:
    explicit PageBeta(QWidget *parent = nullptr);
    ~PageBeta() override;

    Ui::PageBeta *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageBeta> ui;
};
