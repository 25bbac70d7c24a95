#pragma once

#include <QWidget>

#include <memory>

class PageHost;
class LogFileLoader;

namespace Ui {
class PageLogFiles;
}

// Tab " Protokolldateien": the start log and the error log as Pawnsketch wrote them.
class PageLogFiles : public QWidget
{
    Q_OBJECT

public:
    PageLogFiles(PageHost &host, LogFileLoader &logs, QWidget *parent = nullptr);
    ~PageLogFiles() override;

    void languageChanged();

private:
    void showLogs();

    PageHost &m_host;
    LogFileLoader &m_logs;
    std::unique_ptr<Ui::PageLogFiles> ui;
};
