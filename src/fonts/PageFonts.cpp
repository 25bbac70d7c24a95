#include "fonts/PageFonts.h"

#include "core/PageHost.h"
#include "core/Platform.h"
#include "core/ProgramFolder.h"
#include "core/ProgramState.h"
#include "fonts/FontCheck.h"
#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"
#include "localisation/ShowMsg.h"
#include "maintenance/FileInfo.h"
#include "support/ClipboardAction.h"
#include "support/FileStatus.h"
#include "support/MailHandoff.h"
#include "support/SendMail.h"

#include "ui_PageFonts.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QSet>

PageFonts::PageFonts(PageHost &host, QWidget *parent)
    : QWidget(parent), m_host(host), ui(std::make_unique<Ui::PageFonts>())
{
    ui->setupUi(this);
    connect(ui->Command5, &QPushButton::clicked, this, &PageFonts::Command5_Click);
    connect(ui->lstFonts, &QListWidget::currentRowChanged, this, &PageFonts::lstFonts_Click);
    connect(ui->btnInstall, &QPushButton::clicked, this, &PageFonts::btnInstall_Click);
    connect(ui->btnSendMissingFonts, &QPushButton::clicked, this, &PageFonts::btnSendMissingFonts_Click);
    connect(ui->btnCopyResult, &QPushButton::clicked, this, &PageFonts::btnCopyResult_Click);
}

PageFonts::~PageFonts() = default;

bool PageFonts::IsFontAvailable(const QString &name)
{
    QFont font;
    font.setFamily(name);
    return QFontInfo(font).family().compare(name, Qt::CaseInsensitive) == 0;
}

void PageFonts::Command5_Click()
{
    const QChar separator =
        fontListSeparator(ReadIniString(QStringLiteral("Fonts"), QStringLiteral("Separator"), QString(),
                                        installPath(QStringLiteral("ini/pawnsketch.ini"))));

    for (QListWidget *list : {ui->lstFonts, ui->lstTTF, ui->lstMissingFonts, ui->lstWinFonts})
        list->clear();
    ui->tbInstalledFonts->clear();
    ui->tbMissingFonts->clear();
    for (QLabel *label : {ui->Label14, ui->Label17, ui->Label22})
        label->clear();
    for (QLabel *label : {ui->Label14, ui->Label13, ui->Label16})
        label->setStyleSheet(QStringLiteral("color: black;"));
    ui->btnCopyResult->setEnabled(false);
    ui->btnSendMissingFonts->setEnabled(false);

    // A missing list checks nothing: the counters then show that no font was read.
    const QStringList fontFiles = fontFilesIn(platform().fontFolders());
    QSet<QString> present;
    for (const QString &file : fontFiles)
        present.insert(file.toLower());
    const FontCheckResult result = checkChessFonts(
        readChessFonts(installPath(QStringLiteral("ini/chessfonts.ini")), separator),
        [&present](const QString &file) { return !file.isEmpty() && present.contains(file.toLower()); },
        &PageFonts::IsFontAvailable);

    ui->lstFonts->blockSignals(true);
    ui->lstFonts->addItems(result.names);
    ui->lstFonts->blockSignals(false);
    ui->lstTTF->addItems(result.files);
    ui->lstMissingFonts->addItems(result.missingEntries);
    ui->Label21->setText(QString::number(result.names.size()));
    ui->Label17->setText(QString::number(result.unusable.size()));
    ui->Label14->setText(QString::number(result.absent.size()));
    ui->tbInstalledFonts->setPlainText(result.absent.join(u'\n'));
    ui->tbMissingFonts->setPlainText(result.unusable.join(u'\n'));
    const bool missing = !result.unusable.isEmpty();
    ui->btnCopyResult->setEnabled(missing);
    ui->btnSendMissingFonts->setEnabled(missing);
    if (missing)
        ui->btnInstall->setEnabled(true);

    ui->lstWinFonts->addItems(fontFiles);
    ui->Label22->setText(QString::number(QFontDatabase::families().size()));

    if (ui->lstFonts->count() > 0) {
        ui->lstFonts->setCurrentRow(0);
        lstFonts_Click();
        ui->lstFonts->setFocus();
    }
}

void PageFonts::lstFonts_Click()
{
    const int row = ui->lstFonts->currentRow();
    if (row < 0)
        return;
    ui->lstTTF->setCurrentRow(row);
    const QListWidgetItem *file = ui->lstTTF->item(row);
    const QList<QListWidgetItem *> found =
        file ? ui->lstWinFonts->findItems(file->text(), Qt::MatchFixedString) : QList<QListWidgetItem *>();
    if (found.isEmpty())
        ui->lstWinFonts->setCurrentRow(-1);
    else
        ui->lstWinFonts->setCurrentItem(found.first());
}

void PageFonts::btnInstall_Click()
{
    int added = 0;
    for (int i = 0; i < ui->lstMissingFonts->count(); ++i) {
        const QString file = GetField(ui->lstMissingFonts->item(i)->text(), 2, QStringLiteral(";"));
        const QString path = installPath(QStringLiteral("fonts/") + file);
        if (file.isEmpty() || !FileExists(path))
            continue;
        const QString installed = platform().addFont(path);
        if (installed.isEmpty())
            continue;
        // The system's programs see the font now; this program's own font list is read
        // once at start and has to be told.
        QFontDatabase::addApplicationFont(installed);
        ++added;
    }
    if (added == 0)
        return;
    Command5_Click();
    ShowMsg(1, QStringLiteral("M19232"), 64,
            QStringLiteral("<var1> Font[s] wurde[n] installiert!#Font-Installation"), this,
            {QString::number(added)});
}

void PageFonts::btnSendMissingFonts_Click()
{
    const QString missing = ui->tbMissingFonts->toPlainText();
    if (missing.isEmpty())
        return;
    programState().clipboardOk = ClipboardAction(1, WithCrLf(missing)).toBool();
    const MailTextSource source = mailTextSource(MailTopic::MissingFonts);
    openSupportMail(this, PasteHintMail(lngText(source.key, source.germanDefault), source.var1));
}

void PageFonts::btnCopyResult_Click()
{
    const QString missing = ui->tbMissingFonts->toPlainText();
    if (!missing.isEmpty())
        programState().clipboardOk = ClipboardAction(1, WithCrLf(missing)).toBool();
}
