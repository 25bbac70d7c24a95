#pragma once

#include <QWidget>

#include <memory>

class PageHost;

namespace Ui {
class PageLogFiles;
}

// Tab " Protokolldateien": the start log and the error log as Pawnsketch wrote them.
class PageLogFiles : public QWidget
{
    Q_OBJECT

public:
    explicit PageLogFiles(PageHost &host, QWidget *parent = nullptr);
    ~PageLogFiles() override;

    void languageChanged();

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageLogFiles> ui;
};
