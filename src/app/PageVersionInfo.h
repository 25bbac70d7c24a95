#pragma once

#include <QWidget>

#include <memory>

class PageHost;
struct FileInfo;

namespace Ui {
class PageVersionInfo;
}

// Tab "Versionsinformationen": name, version and folder of the installed program file.
class PageVersionInfo : public QWidget
{
    Q_OBJECT

public:
    explicit PageVersionInfo(PageHost &host, QWidget *parent = nullptr);
    ~PageVersionInfo() override;

    void showProgramFile(const FileInfo &info);

private:
    PageHost &m_host;
    std::unique_ptr<Ui::PageVersionInfo> ui;
};
