#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

class PageHost;
class LogFileLoader;
class ErrorReportHead;
class ReportText;
class QThread;
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
    // False when the logs are read to their ends; else calls then once they are.
    bool waitForLogs(const std::function<void()> &then);
    void startTailPass();
    void stopTailPass();

    PageHost &m_host;
    LogFileLoader &m_logs;
    std::unique_ptr<Ui::PageContactSupport> ui;
    std::unique_ptr<ErrorReportHead> m_head;
    // The logs' part of the report, made again only when the logs or their settings change.
    std::shared_ptr<ReportText> m_tail;
    QString m_tailKey;
    QPointer<QThread> m_tailWorker;
    bool m_logExpanded = false;
};
