#include "app/PageVersionInfo.h"

#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "maintenance/FileInfo.h"

#include "ui_PageVersionInfo.h"

#include <QDir>

PageVersionInfo::PageVersionInfo(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageVersionInfo>())
{
    ui->setupUi(this);
}

PageVersionInfo::~PageVersionInfo() = default;

void PageVersionInfo::showProgramFile(const FileInfo &info)
{
    ui->lblFileInfo_0->setText(info.FileName);
    ui->lblFileInfo_1->setText(versionWithBuild(info));
    ui->lblFileInfo_2->setText(QDir::toNativeSeparators(programFolder()));
}
