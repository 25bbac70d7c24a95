#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageFonts;
}

// Tab "Fonts": checking the chess fonts and making missing ones available.
// The controls live in the form; the main window reaches them through form().
class PageFonts : public QWidget
{
    Q_OBJECT

public:
    explicit PageFonts(QWidget *parent = nullptr);
    ~PageFonts() override;

    Ui::PageFonts *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageFonts> ui;
};
