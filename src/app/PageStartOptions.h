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

    void optStartingMode_Click();
    // Starts Pawnsketch with the chosen switches and closes the window, unless the start
    // cannot happen at all on this system.
    void cmdOK_Click();

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageStartOptions> ui;
    // Only ever appended to: the window closes after a start.
    QString m_switches;
};
