#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageUpdate;
}

// Tab "Update": installing a picked update file and the list of program-file backups.
class PageUpdate : public QWidget
{
    Q_OBJECT

public:
    explicit PageUpdate(PageHost &host, QWidget *parent = nullptr);
    ~PageUpdate() override;

    // The backups in the backup folder, newest first, the newest one's version shown.
    void fillBackupList();
    // The forms were localised again: the install button gets back its two lines.
    void languageChanged();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void Command3_Click();
    void cmdUpdate_Click();
    void List1_Click();
    void Command1_Click();
    void showBackupVersion();
    void showUpdateCaption();

    PageHost &m_host;
    std::unique_ptr<Ui::PageUpdate> ui;
    QString m_updateFile; // as picked; Label4 shows it shortened
    QString m_updateVersion;
    QString m_installCaption;
};
