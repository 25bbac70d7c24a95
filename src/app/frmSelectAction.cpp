#include "app/frmSelectAction.h"

#include "core/Images.h"

#include "core/Config.h"
#include "core/ProgramState.h"
#include "help/HelpFiles.h"
#include "help/ShowHelp.h"
#include "localisation/AccessibleNames.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"

#include "ui_frmSelectAction.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QTimer>

frmSelectAction::frmSelectAction(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmSelectAction>())
{
    initImages();
    ui->setupUi(this);
    connect(ui->Command, &QPushButton::clicked, this, &frmSelectAction::Command_Click);
    connect(ui->Command1, &QPushButton::clicked, this, &frmSelectAction::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &frmSelectAction::Command2_Click);
    connect(ui->optLng_0, &QRadioButton::clicked, this, &frmSelectAction::optLng_Click);
    connect(ui->optLng_1, &QRadioButton::clicked, this, &frmSelectAction::optLng_Click);
    for (QRadioButton *option :
         {ui->optSelAction_0, ui->optSelAction_1, ui->optSelAction_3, ui->optSelAction_4})
        option->installEventFilter(this);
}

frmSelectAction::~frmSelectAction() = default;

void frmSelectAction::Form_Load()
{
    m_loading = true;
    ProgramState &state = programState();
    state.selectActionLoaded = true;
    state.selectActionShown = true;
    state.selectActionCancelled = false;
    setWindowTitle(QStringLiteral("Pawnsketch \u00b7 Support Kit"));
    ui->lblBuild->setText(QStringLiteral("Version %1.%2 Build %3")
                              .arg(Config::versionMajor())
                              .arg(Config::versionMinor())
                              .arg(Config::versionRevision()));
    const QString code = chooseFormLanguage(this);
    InitLngFiles(code);
    ChangeLanguage(code, objectName(), m_languageByte);
    const QString intro = lngText(QStringLiteral("T173"), QString());
    if (!intro.isEmpty())
        ui->Label5->setText(intro);
    nameControls(this);
    assignAccessKeys({}, {this});
    m_loading = false;
}

bool frmSelectAction::appendStartLog() const
{
    return ui->cbAppendLogfile_1->isChecked();
}

bool frmSelectAction::appendErrorLog() const
{
    return ui->cbAppendLogfile_0->isChecked();
}

bool frmSelectAction::englishChosen() const
{
    return ui->optLng_1->isChecked();
}

void frmSelectAction::optLng_Click()
{
    if (!m_loading)
        Form_Load();
}

void frmSelectAction::Command_Click()
{
    programState().selectedAction = GetSelectedItem(1, this, QStringLiteral("optSelAction")).toInt();
    m_closingByProgram = true;
    hide();
    if (isModal())
        done(QDialog::Accepted);
    m_closingByProgram = false;
}

void frmSelectAction::Command1_Click()
{
    // Cancelling the dialog ends the program before the main window is ever shown.
    programState().selectActionCancelled = true;
    m_closingByProgram = true;
    done(QDialog::Rejected);
    m_closingByProgram = false;
}

QString frmSelectAction::helpKey() const
{
    // One key per choice in hlpidx.ini ("SelAction1"), "SelAction" while none is chosen.
    const int choice = GetSelectedItem(1, this, QStringLiteral("optSelAction")).toInt();
    return choice < 0 ? QStringLiteral("SelAction") : QStringLiteral("SelAction%1").arg(choice);
}

void frmSelectAction::Command2_Click()
{
    ShowHelp(1, helpContextId(helpKey()), this);
}

void frmSelectAction::closeEvent(QCloseEvent *event)
{
    // Closed by the user from the close box: the program ends.
    if (!m_closingByProgram)
        programState().selectActionCancelled = true;
    programState().selectActionLoaded = false;
    QDialog::closeEvent(event);
}

void frmSelectAction::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        Command1_Click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmSelectAction::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    QTimer::singleShot(0, ui->Command, [this] { ui->Command->setFocus(); });
}

bool frmSelectAction::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonDblClick) {
        if (auto *option = qobject_cast<QRadioButton *>(watched)) {
            option->setChecked(true);
            Command_Click();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
