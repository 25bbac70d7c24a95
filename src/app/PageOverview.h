#pragma once

#include <QWidget>

#include <memory>

class PageHost;
struct InstallationStatus;

namespace Ui {
class PageOverview;
}

// Tab "Übersicht": the task choice and the state of the installation.
class PageOverview : public QWidget
{
    Q_OBJECT

public:
    explicit PageOverview(PageHost &host, QWidget *parent = nullptr);
    ~PageOverview() override;

    void showStatus(const InstallationStatus &status);

private:
    void cmdShowPage_Click();

    PageHost &m_host;
    std::unique_ptr<Ui::PageOverview> ui;
};
