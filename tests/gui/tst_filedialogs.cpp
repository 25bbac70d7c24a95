#include "dialogs/FileDialogs.h"

#include "core/PageHost.h"
#include "core/ProgramFolder.h"
#include "localisation/ShowMsg.h"
#include "maintenance/PageUpdate.h"

#include <QtTest>
#include <QtWidgets>

class TestFileDialogs : public QObject
{
    Q_OBJECT

    QTemporaryDir m_config;
    QTemporaryDir m_dir;
    QString m_chosen;

    // The names the dialog's file list shows for its current folder.
    static QStringList offered(QFileDialog *dialog)
    {
        auto *view = dialog->findChild<QListView *>(QStringLiteral("listView"));
        if (!view)
            return {QStringLiteral("<no list>")};
        QStringList names;
        for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row)
            names << view->model()->index(row, 0, view->rootIndex()).data().toString();
        names.sort();
        return names;
    }

    // Runs while the dialog is open; a failure returns early and the caller closes it.
    void inspect(QFileDialog *dialog, const QStringList &descriptions)
    {
        QCOMPARE(dialog->nameFilters(), descriptions);
        QTRY_COMPARE(offered(dialog), (QStringList{"pawnsketch_update.exe", "sub"}));
        // The user steps through the types as with the keyboard.
        auto *types = dialog->findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
        QVERIFY(types);
        QTest::keyClick(types, Qt::Key_Down);
        QTRY_COMPARE(offered(dialog), (QStringList{"pawnsketch_beta.exe", "sub"}));
        // Qt would read "*.fen," out of this description and hide game.fen.
        QTest::keyClick(types, Qt::Key_Down);
        QTRY_COMPARE(offered(dialog), (QStringList{"game.fen", "sub"}));
        // The user types the name and presses Enter.
        auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        QVERIFY(name);
        m_chosen = m_dir.filePath(QStringLiteral("game.fen"));
        QTest::keyClicks(name, QStringLiteral("game.fen"));
        QTest::keyClick(name, Qt::Key_Return);
    }

private slots:
    void initTestCase()
    {
        // The dialog keeps its state in the user's Qt settings; keep ours out of them.
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
        QDir(m_dir.path()).mkdir(QStringLiteral("sub"));
        for (const char *name : {"pawnsketch_update.exe", "other.exe", "pawnsketch_beta.exe", "game.fen"}) {
            QFile file(m_dir.filePath(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }

    void offersExactlyThePattern()
    {
        const QList<FileFilter> filters = fileFilters(30) + fileFilters(31) + fileFilters(7);
        QStringList descriptions;
        for (const FileFilter &filter : filters)
            descriptions << filter.description;
        QTimer::singleShot(0, this, [this, descriptions] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            inspect(dialog, descriptions);
            if (dialog->isVisible())
                dialog->reject();
        });
        const QString path = ShowOpen({nullptr, filters, QStringLiteral("Update"), m_dir.path()});
        QCOMPARE(path, m_chosen);
    }

    void preAnswered()
    {
        QWidget owner;
        FileDialogRequest seen;
        setFileDialogAnswererForTesting([&seen](const FileDialogRequest &request) {
            seen = request;
            return QStringLiteral("C:/chosen.pwk");
        });
        const QString path =
            SelectFile(30, &owner, QStringLiteral("Titel"), QStringLiteral("C:/start"), FileDialogMode::Save);
        setFileDialogAnswererForTesting({});
        QCOMPARE(path, QStringLiteral("C:/chosen.pwk"));
        QCOMPARE(seen.owner, &owner);
        QCOMPARE(seen.filters, fileFilters(30));
        QCOMPARE(seen.title, QStringLiteral("Titel"));
        QCOMPARE(seen.initialFolder, QStringLiteral("C:/start"));
        QVERIFY(seen.mode == FileDialogMode::Save);
    }

    // The picker cancelled on the update page: no message, nothing installed, the page as it was.
    void cancelledOnTheUpdatePage()
    {
        struct : PageHost
        {
            void showPage(int) override {}
            void refreshStatus() override {}
            void showConnectionState(bool) override {}
            QString labelList() const override { return {}; }
            QString counterUnit() const override { return {}; }
        } host;
        QTemporaryDir install;
        setProgramFolderForTesting(install.path());
        QStringList shown;
        setMessageAnswererForTesting([&shown](const ShownMessage &m) {
            shown << m.key;
            return int(IDOK);
        });
        setFileDialogAnswererForTesting([](const FileDialogRequest &) { return QString(); });
        PageUpdate page(host);
        auto *picked = page.findChild<QLabel *>(QStringLiteral("Label4"));
        auto *install_ = page.findChild<QPushButton *>(QStringLiteral("cmdUpdate"));
        const QString before = picked->text() + install_->text();
        page.findChild<QPushButton *>(QStringLiteral("Command3"))->click();
        install_->click();
        setFileDialogAnswererForTesting({});
        setMessageAnswererForTesting({});
        QCOMPARE(picked->text() + install_->text(), before);
        QVERIFY(!install_->isEnabled());
        QCOMPARE(shown, QStringList());
        QVERIFY(QDir(install.path()).isEmpty());
    }
};

QTEST_MAIN(TestFileDialogs)
#include "tst_filedialogs.moc"
