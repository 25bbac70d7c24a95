#pragma once

#include <QWidget>

#include <memory>

class PageHost;
class LogFileLoader;
class ErrorReportBuilder;
struct InstallationStatus;

namespace Ui {
class PageContactSupport;
}

// Tab "Support kontaktieren": the user describes the problem, sees the report exactly as it
// will be sent, and hands it or a log to support by mail program or web mail.
class PageContactSupport : public QWidget
{
    Q_OBJECT

public:
    PageContactSupport(PageHost &host, LogFileLoader &logs, QWidget *parent = nullptr);
    ~PageContactSupport() override;

    void languageChanged();
    void showStatus(const InstallationStatus &status);
    // The error record Pawnsketch passed: the user's name and the record's lines.
    void showErrorRecord(const QString &userName, const QString &text);
    // Which logs go with the report, as chosen in the action dialog.
    void setAppendLogs(bool startLog, bool errorLog);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Picture1_Click();
    void cbAppendLogfile_Click(int index);
    void tbErrorMessage_Change();
    void BuildErrorReport();
    void tbErrStartlogTxt_Change();
    void cmdSendStartlog_Click(int index);
    void cmdSendErrlog_Click(int index);
    void cmdErrReport_Click(int index);
    void CopyLogToClipboard(int selector);

    PageHost &m_host;
    LogFileLoader &m_logs;
    std::unique_ptr<Ui::PageContactSupport> ui;
    std::unique_ptr<ErrorReportBuilder> m_report;
    bool m_logExpanded = false;
};
