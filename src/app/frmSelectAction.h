#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class frmSelectAction;
}

// The small dialog shown before the main window when SupportKit starts without
// arguments: greeting, language choice and "Was möchten Sie tun?".
class frmSelectAction : public QDialog
{
    Q_OBJECT

public:
    explicit frmSelectAction(QWidget *parent = nullptr);
    ~frmSelectAction() override;

    Ui::frmSelectAction *form() const { return ui.get(); }

    // Caption, version line, language, logo and the loaded/shown flags.
    void Form_Load();
    // "Weiter" and a double-click on an option: remember the choice and hide.
    void Command_Click();
    // "&Abbrechen" and Escape: the program ends.
    void Command1_Click();
    // "Hilfe": the help topic of the chosen action.
    void Command2_Click();
    // The key of hlpidx.ini that names the help topic of the chosen action.
    QString helpKey() const;

    // What the user chose besides the action: the logs to send and the language.
    bool appendStartLog() const;
    bool appendErrorLog() const;
    bool englishChosen() const;

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void optLng_Click();

    int m_languageByte = 0;
    bool m_loading = false;
    bool m_closingByProgram = false;
    std::unique_ptr<Ui::frmSelectAction> ui;
};
