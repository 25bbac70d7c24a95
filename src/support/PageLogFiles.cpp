#include "support/PageLogFiles.h"

#include "core/PageHost.h"
#include "localisation/Fields.h"
#include "localisation/LocaliseForms.h"
#include "support/LogFiles.h"
#include "support/PagedText.h"
#include "support/SharedTextView.h"
#include "support/SupportTexts.h"

#include "ui_PageLogFiles.h"

namespace {
constexpr int kReportPage = 6;
constexpr int kMailHelpPage = 8;
} // namespace

PageLogFiles::PageLogFiles(PageHost &host, LogFileLoader &logs, QWidget *parent)
    : QWidget(parent), m_host(host), m_logs(logs), ui(std::make_unique<Ui::PageLogFiles>())
{
    ui->setupUi(this);
    connect(&m_logs, &LogFileLoader::loaded, this, &PageLogFiles::showLogs);
    // Opened after the logs came in.
    if (m_logs.isLoaded())
        showLogs();
    connect(ui->cmdErrReport_7, &QPushButton::clicked, this, [this] { m_host.showPage(kReportPage); });
    connect(ui->cmdErrReport_2, &QPushButton::clicked, this, [this] { m_host.showPage(kMailHelpPage); });
}

PageLogFiles::~PageLogFiles() = default;

void PageLogFiles::languageChanged()
{
    const QString list = m_host.labelList();
    const QString hash = QStringLiteral("#");
    ui->Frame2->setTitle(GetField(list, 1, hash));
    ui->Frame4->setTitle(GetField(list, 2, hash));
    fillVar1(this, QStringLiteral("cmdErrReport"), sendButtonTip(), GetField(list, 3, hash));
}

void PageLogFiles::showLogs()
{
    // The boxes share the loader's paged logs, or show its text for a log it cannot read.
    const auto show = [](SharedTextView *box, const std::shared_ptr<const PagedText> &paged,
                         const QString &text) {
        if (paged)
            box->setPagedText(paged);
        else
            box->setText(text);
    };
    show(ui->tbStartLogfile, m_logs.startPaged(), m_logs.startLog());
    show(ui->tbErrorLogfile, m_logs.errorPaged(), m_logs.errorLog());
}
