#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageContactSupport;
}

// Tab "Support kontaktieren": the error report and the log files to mail to support.
class PageContactSupport : public QWidget
{
    Q_OBJECT

public:
    explicit PageContactSupport(PageHost &host, QWidget *parent = nullptr);
    ~PageContactSupport() override;

    void languageChanged();
    // The error record Pawnsketch passed: the user's name and the record's lines.
    void showErrorRecord(const QString &userName, const QString &text);
    // Which logs go with the report, as chosen in the action dialog.
    void setAppendLogs(bool startLog, bool errorLog);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Picture1_Click();

    PageHost &m_host;
    std::unique_ptr<Ui::PageContactSupport> ui;
    bool m_logExpanded = false;
};
