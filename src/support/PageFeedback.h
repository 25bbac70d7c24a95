#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PageFeedback;
}

// Tab "Feedback senden": a free message to support.
// The controls live in the form; the main window reaches them through form().
class PageFeedback : public QWidget
{
    Q_OBJECT

public:
    explicit PageFeedback(QWidget *parent = nullptr);
    ~PageFeedback() override;

    Ui::PageFeedback *form() const { return ui.get(); }

private:
    std::unique_ptr<Ui::PageFeedback> ui;
};
