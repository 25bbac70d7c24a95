#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageStartOptions;
}

// Tab "Reparaturfunktionen 1": starting Pawnsketch in standard or safe mode with start switches.
class PageStartOptions : public QWidget
{
    Q_OBJECT

public:
    explicit PageStartOptions(PageHost &host, QWidget *parent = nullptr);
    ~PageStartOptions() override;

    // Started by a running Pawnsketch, which must not be started a second time.
    void setPawnsketchRunning();

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageStartOptions> ui;
};
