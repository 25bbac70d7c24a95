#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageLogFiles;
}

// Tab " Protokolldateien": the start log and the error log as Pawnsketch wrote them.
// The controls live in the form; the main window reaches them through form().
class PageLogFiles : public QWidget
{
    Q_OBJECT

public:
    explicit PageLogFiles(QWidget *parent = nullptr);
    ~PageLogFiles() override;

    Ui::PageLogFiles *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageLogFiles> ui;
};
