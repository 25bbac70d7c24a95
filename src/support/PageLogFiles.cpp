#include "support/PageLogFiles.h"

#include "core/PageHost.h"
#include "localisation/Fields.h"
#include "localisation/LocaliseForms.h"
#include "support/LogFiles.h"
#include "support/SupportTexts.h"
#include "support/TextFiller.h"

#include <tuple>

#include "ui_PageLogFiles.h"

namespace {
constexpr int kReportPage = 6;
constexpr int kMailHelpPage = 8;
} // namespace

PageLogFiles::PageLogFiles(PageHost &host, LogFileLoader &logs, QWidget *parent)
    : QWidget(parent), m_host(host), m_logs(logs), ui(std::make_unique<Ui::PageLogFiles>())
{
    ui->setupUi(this);
    m_startFiller = new TextFiller(ui->tbStartLogfile);
    m_errorFiller = new TextFiller(ui->tbErrorLogfile);
    connect(&m_logs, &LogFileLoader::loaded, this, &PageLogFiles::showLogs);
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
    for (auto [view, filler, text] : {std::tuple{ui->tbStartLogfile, m_startFiller, &m_logs.startLog()},
                                      std::tuple{ui->tbErrorLogfile, m_errorFiller, &m_logs.errorLog()}}) {
        view->clear();
        filler->append(*text);
    }
}
