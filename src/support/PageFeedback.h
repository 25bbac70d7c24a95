#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageFeedback;
}

// Tab "Feedback senden": a free message to support.
class PageFeedback : public QWidget
{
    Q_OBJECT

public:
    explicit PageFeedback(PageHost &host, QWidget *parent = nullptr);
    ~PageFeedback() override;

    void languageChanged();

private:
    void tbFeedback_Change();
    void SendFeedback(int index);

    PageHost &m_host;
    std::unique_ptr<Ui::PageFeedback> ui;
};
