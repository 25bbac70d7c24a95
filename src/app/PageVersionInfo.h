#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageVersionInfo;
}

// Tab "Versionsinformationen": name, version and folder of the installed program file.
// The controls live in the form; the main window reaches them through form().
class PageVersionInfo : public QWidget
{
    Q_OBJECT

public:
    explicit PageVersionInfo(QWidget *parent = nullptr);
    ~PageVersionInfo() override;

    Ui::PageVersionInfo *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageVersionInfo> ui;
};
