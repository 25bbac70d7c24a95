#include "app/PageOverview.h"

#include "core/PageHost.h"

#include "dialogs/PathHelpers.h"
#include "localisation/LocaliseForms.h"
#include "support/InstallationStatus.h"

#include "ui_PageOverview.h"

#include <QDir>

namespace {
// The page each task of the overview leads to.
int pageForTask(int task)
{
    switch (task) {
    case 0:
        return 6; // report a program error
    case 1:
        return 0; // start problems
    case 2:
        return 4; // restore the program file
    case 3:
        return 5; // chess fonts
    default:
        return 10; // feedback and everything else
    }
}
} // namespace

PageOverview::PageOverview(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageOverview>())
{
    ui->setupUi(this);
    connect(ui->cmdShowPage, &QPushButton::clicked, this, &PageOverview::cmdShowPage_Click);
}

void PageOverview::showStatus(const InstallationStatus &status)
{
    // Long installation paths give way in the middle; the file name always shows.
    constexpr int kNameLength = 48;
    const auto show = [](const FileState &file, QLabel *name, QLabel *size, QLabel *date) {
        if (name && file.exists)
            name->setText(MaxDirLen(QDir::toNativeSeparators(file.path).toLower(), kNameLength));
        size->setText(file.sizeText);
        if (!file.dateText.isEmpty())
            date->setText(file.dateText);
    };
    show(status.startLog, ui->Label23, ui->Label24, ui->Label32);
    show(status.errorLog, ui->Label25, ui->Label26, ui->Label33);
    show(status.errorRecord, nullptr, ui->Label69, ui->Label71);
}

void PageOverview::cmdShowPage_Click()
{
    const int task = GetSelectedItem(1, this, QStringLiteral("optShowPage")).toInt();
    if (task >= 0)
        m_host.showPage(pageForTask(task));
}

PageOverview::~PageOverview() = default;
