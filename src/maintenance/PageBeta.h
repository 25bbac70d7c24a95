#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageBeta;
}

// Tab "BETA-Version": installing a picked beta program file.
class PageBeta : public QWidget
{
    Q_OBJECT

public:
    explicit PageBeta(PageHost &host, QWidget *parent = nullptr);
    ~PageBeta() override;

    // The forms were localised again: the picked file stays shown instead of "not selected".
    void languageChanged();

private:
    void Command4_Click();
    void cmdInstallBeta_Click();

    PageHost &m_host;
    std::unique_ptr<Ui::PageBeta> ui;
    QString m_betaFile; // as picked; Label11 shows it shortened
};
