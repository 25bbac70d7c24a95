#include "GuiFixture.h"
#include "app/frmSupportKit.h"
#include "core/PageHost.h"
#include "dialogs/FileDialogs.h"
#include "localisation/LanguageState.h"
#include "localisation/LocaliseForms.h"
#include "maintenance/DownloadCheck.h"
#include "maintenance/FileInfo.h"
#include "maintenance/PageBeta.h"
#include "maintenance/PageRepair.h"
#include "maintenance/PageUpdate.h"
#include "net/HttpTestServer.h"
#include "net/clsDownload.h"
#include "testsupport/FakePlatform.h"
#include "testsupport/TestSigning.h"

#include "pewriter/PeWriter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

using GuiFixture::control;
using GuiFixture::readFile;
using GuiFixture::writeFile;

namespace {

class FakeHost final : public PageHost
{
public:
    int refreshes = 0;
    QList<bool> connections;
    void showPage(int) override {}
    void refreshStatus() override { ++refreshes; }
    void showConnectionState(bool connected) override { connections << connected; }
    QString labelList() const override { return {}; }
    QString counterUnit() const override { return {}; }
};

QByteArray program(quint16 minor, quint16 build, int padding = 0)
{
    PeWriter::Options options;
    options.version = {13, minor, 0, build};
    return PeWriter::build(options) + QByteArray(padding, 'p');
}

QStringList keys(const QList<ShownMessage> &messages)
{
    QStringList list;
    for (const ShownMessage &m : messages)
        list << m.key;
    return list;
}

QStringList listed(QListWidget *list)
{
    QStringList names;
    for (int row = 0; row < list->count(); ++row)
        names << list->item(row)->text();
    return names;
}

// Windows also says what the system found of the file's own (here: no) Authenticode signature.
QString doneStatus()
{
#ifdef Q_OS_WIN
    return QStringLiteral("Status: Download erfolgreich beendet! Authenticode: keine Signatur");
#else
    return QStringLiteral("Status: Download erfolgreich beendet!");
#endif
}

enum Interruption
{
    None,
    StopAt40, // Stop pressed when the bar reaches 40 %
};
} // namespace

// The update, beta and repair pages against a real installation folder and a server on
// 127.0.0.1 that serves the download list and the program file.
class TestMaintenancePages : public QObject
{
    Q_OBJECT

    QTemporaryDir m_install;
    QTemporaryDir m_elsewhere;
    HttpTestServer m_server;
    QList<ShownMessage> m_messages;
    FakeHost m_host;
    int m_paths = 0;
    // Pawnsketch runs only when a test says so: other programs on the machine named like
    // it must not decide these tests. Finding real processes is tst_processrunning's part.
    FakePlatform m_fakePlatform;
    std::unique_ptr<PlatformOverride> m_noPawnsketch;

    // A site of its own for each test: the download list, signed, naming the file's size and
    // sha256 (another one when not ""), and the file.
    QString serve(const HttpTestServer::Resource &file, const QString &sha256,
                  const QString &version = QStringLiteral("13.2 Build 2210"))
    {
        const QString path = QStringLiteral("/site%1").arg(++m_paths);
        HttpTestServer::Resource list;
        list.body = TestSigning::downloadList(version, file.body);
        if (!sha256.isEmpty())
            list.body.replace(QCryptographicHash::hash(file.body, QCryptographicHash::Sha256).toHex(),
                              sha256.toLatin1());
        m_server.setResource(path + QStringLiteral("/version/downloads.ini"), list);
        list.body = TestSigning::signRelease(list.body, QStringLiteral("downloads.ini"), version);
        m_server.setResource(path + QStringLiteral("/version/downloads.ini.minisig"), list);
        m_server.setResource(path + QStringLiteral("/pawnsketch.exe"), file);
        qputenv("SUPPORTKIT_VERSION_URL", m_server.url(path + QStringLiteral("/version")).toUtf8());
        qputenv("SUPPORTKIT_DOWNLOAD_URL", m_server.url(path + QStringLiteral("/pawnsketch.exe")).toUtf8());
        return path;
    }

    QString programFile() const { return m_install.filePath(QStringLiteral("pawnsketch.exe")); }
    QString downloaded() const { return m_install.filePath(QStringLiteral("download/pawnsktch.exe")); }

private slots:
    void initTestCase()
    {
        clsDownload::setDefaultTimeouts(5000, 5000);
        TestSigning::releaseKey();
        QVERIFY(m_install.isValid() && m_elsewhere.isValid() && m_server.listen());
    }

    void init()
    {
        QVERIFY(GuiFixture::makeInstallation(m_install.path()));
        GuiFixture::resetProgram(m_messages);
        m_host = FakeHost();
        m_fakePlatform.runningProcesses.clear();
        if (!m_noPawnsketch)
            m_noPawnsketch = std::make_unique<PlatformOverride>(m_fakePlatform);
        setProgramResumePausesForTesting({10});
        QDir(m_install.filePath(QStringLiteral("backup"))).removeRecursively();
        QVERIFY(QDir().mkpath(m_install.filePath(QStringLiteral("backup/pwk_exe"))));
        QVERIFY(writeFile(m_install.filePath(QStringLiteral("backup/pwk_exe/pwk_exe_13_1.bak")),
                          program(1, 2105)));
        QVERIFY(writeFile(m_install.filePath(QStringLiteral("backup/pwk_exe/PWK_EXE_13_2.BAK")),
                          program(2, 2180)));
        QVERIFY(writeFile(m_install.filePath(QStringLiteral("backup/pwk_exe/pawnsketch_11152026_171205.bak")),
                          program(2, 2201)));
    }

    void download_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("sha256"); // published in the download list; "" none
        QTest::addColumn<int>("drops");
        QTest::addColumn<bool>("ranges");
        QTest::addColumn<int>("announcedExtra");
        QTest::addColumn<int>("interruption");
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("installable");

        const QByteArray good = program(2, 2210, 1000000);
        const QString sha =
            QString::fromLatin1(QCryptographicHash::hash(good, QCryptographicHash::Sha256).toHex());
        const QString done = doneStatus();
        const auto row = [](const char *name, const QByteArray &body, const QString &published, int drops,
                            bool ranges, int extra, Interruption interruption, const QString &status,
                            bool installable) {
            QTest::newRow(name) << body << published << drops << ranges << extra << int(interruption)
                                << status << installable;
        };
        row("complete and installed", good, sha, 0, true, 0, None, done, true);
        row("stopped at 40 %", good, sha, 0, true, 0, StopAt40,
            QStringLiteral("Status: Download abgebrochen!"), false);
        row("dropped, resumed", good, sha, 1, true, 0, None, done, true);
        row("short body", good, sha, 0, true, 1000, None,
            QStringLiteral("Status: Fehler (Verbindung unterbrochen) - die unvollständige Datei wird nicht "
                           "installiert."),
            false);
        row("checksum differs", good, QString(sha).replace(0, 1, u'0'), 0, true, 0, None,
            QStringLiteral(
                "Status: Die Prüfsumme der geladenen Datei stimmt nicht mit der vom Server genannten "
                "überein; die Datei wird nicht installiert."),
            false);
        row("no program file", QByteArray(300000, 'x'), QString(), 0, true, 0, None,
            QStringLiteral("Status: Die geladene Datei ist keine Programmdatei mit Versionsangaben und wird "
                           "nicht installiert."),
            false);
    }

    void download()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, sha256);
        QFETCH(int, interruption);
        QFETCH(bool, installable);

        HttpTestServer::Resource file;
        file.body = body;
        file.etag = "\"2210\"";
        QFETCH(int, drops);
        file.drops = drops;
        file.dropAfter = 400000;
        QFETCH(bool, ranges);
        file.ranges = ranges;
        QFETCH(int, announcedExtra);
        file.announced = body.size() + announcedExtra;
        serve(file, sha256);
        QPointer<PageRepair> page = new PageRepair(m_host);
        QPushButton *download = control<QPushButton>(*page, "Command2");
        QPushButton *install = control<QPushButton>(*page, "Command7");
        bool busyWhileRunning = false;
        QString runningStatus;
        bool timeLeftShown = false;
        connect(control<QProgressBar>(*page, "ProgressBar1"), &QProgressBar::valueChanged, this,
                [&](int value) {
                    busyWhileRunning = page->isBusy() && download->text() == QStringLiteral("Stop");
                    runningStatus = control<QLabel>(*page, "lblStatus")->text();
                    timeLeftShown |= runningStatus.contains(QStringLiteral(", Restzeit "));
                    if (interruption == StopAt40 && value >= 40 &&
                        page->downloadState() == PageRepair::DownloadState::Running)
                        download->click();
                });
        const QByteArray before = readFile(programFile());
        download->click();
        QTRY_COMPARE_WITH_TIMEOUT(page->downloadState(), PageRepair::DownloadState::Idle, 30000);

        QVERIFY(busyWhileRunning);
        static const QRegularExpression running(
            QStringLiteral("^Status: Download läuft, \\d+% empfangen(, Restzeit \\d+:\\d\\d)?$"));
        QVERIFY2(running.match(runningStatus).hasMatch(), qPrintable(runningStatus));
        QVERIFY(timeLeftShown);
        QVERIFY(!page->isBusy());
        QCOMPARE(download->text(), QStringLiteral("Download"));
        QTEST(control<QLabel>(*page, "lblStatus")->text(), "status");
        QCOMPARE(install->isEnabled(), installable);
        QCOMPARE(QFile::exists(downloaded()), installable);
        QCOMPARE(m_host.connections, QList<bool>{true});
        QVERIFY(m_messages.isEmpty());
        if (QTest::currentDataTag() == QLatin1String("short body")) {
            // The whole line is said again in the new language, the network's part included.
            RefreshLngFiles(QStringLiteral("us"));
            localiseForm(page);
            page->languageChanged();
            QCOMPARE(control<QLabel>(*page, "lblStatus")->text(),
                     QStringLiteral(
                         "Status: Error (Connection lost) - the incomplete file will not be installed."));
        }
        if (installable) {
            QVERIFY(readFile(downloaded()) == body);
            QCOMPARE(control<QLabel>(*page, "lblDLFileVer")->text(),
                     QStringLiteral("Download-Version der Programmdatei: 13.2 Build 2210"));
            install->click();
            QCOMPARE(keys(m_messages), QStringList({QStringLiteral("M19214"), QStringLiteral("M19212")}));
            QVERIFY(m_messages.last().message.endsWith(QStringLiteral("\r\r13.2 Build 2210")));
            QVERIFY(readFile(programFile()) == body);
            QCOMPARE(m_host.refreshes, 1);
        } else {
            QVERIFY(readFile(programFile()) == before);
        }
        delete page;
    }

    // Everything a hostile server or someone on the way can do to the signed release: each is
    // refused with the check that failed, nothing stays in the download folder and the
    // program file is untouched. An older signed list needs the user's yes.
    void refusals_data()
    {
        QTest::addColumn<QString>("attack");
        QTest::addColumn<int>("answer");     // to the downgrade question
        QTest::addColumn<QString>("status"); // the reason, where the line is a refused download's
        const QString mismatch = QStringLiteral(
            "Die Signatur passt nicht zu downloads.ini: die Datei wurde nach dem Signieren verändert.");
        const QString broken = QStringLiteral("Die Signaturdatei zu downloads.ini ist beschädigt.");
        const QString missing = QStringLiteral("Keine brauchbare Signaturdatei zu downloads.ini erhalten.");
        const auto row = [](const char *attack, const QString &status, int answer = 0) {
            QTest::newRow(attack) << QString::fromLatin1(attack) << answer << status;
        };
        row("other key", QStringLiteral("downloads.ini ist mit einem unbekannten Schlüssel signiert."));
        row("signature of another file", mismatch);
        row("trusted comment changed", mismatch);
        row("list changed after signing", mismatch);
        row("truncated signature", broken);
        row("garbage signature", broken);
        row("signature missing", missing);
        row("100 MB signature", missing);
        row("no release key", QStringLiteral("Diese Ausgabe des Support-Kits enthält keinen Schlüssel des "
                                             "Herausgebers, darum wird nichts vom Server angenommen."));
        row("program file swapped",
            QStringLiteral("Status: Die Prüfsumme der geladenen Datei stimmt nicht mit der "
                           "vom Server genannten überein; die Datei wird nicht installiert."));
        row("other size than signed", QStringLiteral("Die geladene Datei hat nicht die signierte Größe."));
        row("comment names another file",
            QStringLiteral("Die Signatur zu downloads.ini gilt für eine andere Datei."));
        row("no version in the comment",
            QStringLiteral("Die Signatur zu downloads.ini nennt eine andere Version."));
        row("list without size",
            QStringLiteral("downloads.ini nennt keine Größe oder keine Prüfsumme der Programmdatei."));
        // Taken: minisign's plain signatures, and a key the publisher is moving away from.
        row("plain signature", doneStatus(), IDYES);
        row("previous key still listed", doneStatus(), IDYES);
        row("old list replayed",
            QStringLiteral("Status: Die ältere Version 13.2 Build 2100 wird nicht geladen."), IDNO);
        row("old list, downgrade confirmed", doneStatus(), IDYES);
    }

    void refusals()
    {
        QFETCH(QString, attack);
        QFETCH(int, answer);
        QFETCH(QString, status);
        const bool old = attack.startsWith(QStringLiteral("old list"));
        HttpTestServer::Resource file, list, signature;
        file.body = program(2, old ? 2100 : 2210, 1000);
        const QString version = old ? QStringLiteral("13.2 Build 2100") : QStringLiteral("13.2 Build 2210");
        const QString site = serve(file, {}, version);
        list.body = TestSigning::downloadList(version, file.body);
        signature.body = TestSigning::signRelease(list.body, QStringLiteral("downloads.ini"), version);
        QTemporaryDir big;
        QFile huge(big.filePath(QStringLiteral("sig")));
        if (attack == QStringLiteral("other key"))
            signature.body =
                TestSigning::sign(TestSigning::makeKeyPair(), list.body,
                                  TestSigning::trustedComment(QStringLiteral("downloads.ini"), version));
        else if (attack == QStringLiteral("signature of another file"))
            signature.body =
                TestSigning::signRelease("[Downloads]\n", QStringLiteral("downloads.ini"), version);
        else if (attack == QStringLiteral("trusted comment changed"))
            signature.body.replace("file:downloads.ini", "file:downloads.ini\tnote:x");
        else if (attack == QStringLiteral("list changed after signing"))
            list.body.replace("[Downloads]\r\n", "[Downloads]\r\nbeta=1\r\n");
        else if (attack == QStringLiteral("truncated signature"))
            signature.body.chop(30);
        else if (attack == QStringLiteral("garbage signature"))
            signature.body = QByteArray(200, '\xfe');
        else if (attack == QStringLiteral("signature missing"))
            signature.status = 404;
        else if (attack == QStringLiteral("100 MB signature") && huge.open(QIODevice::WriteOnly) &&
                 huge.resize(100 * 1024 * 1024))
            signature.file = huge.fileName();
        else if (attack == QStringLiteral("no release key"))
            qputenv("SUPPORTKIT_RELEASE_KEYS", "");
        else if (attack == QStringLiteral("program file swapped"))
            file.body.replace(QByteArray(1000, 'p'), QByteArray(1000, 'q'));
        else if (attack == QStringLiteral("other size than signed"))
            file.body += 'p';
        else if (attack == QStringLiteral("comment names another file"))
            signature.body = TestSigning::signRelease(list.body, QStringLiteral("version.txt"), version);
        else if (attack == QStringLiteral("no version in the comment"))
            signature.body =
                TestSigning::sign(TestSigning::releaseKey(), list.body, "file:downloads.ini\ttimestamp:1");
        else if (attack == QStringLiteral("list without size")) {
            list.body.replace("pawnsketch.exe.size=", "size=");
            signature.body = TestSigning::signRelease(list.body, QStringLiteral("downloads.ini"), version);
        } else if (attack == QStringLiteral("plain signature"))
            signature.body = TestSigning::sign(
                TestSigning::releaseKey(), list.body,
                TestSigning::trustedComment(QStringLiteral("downloads.ini"), version), false);
        else if (attack == QStringLiteral("previous key still listed"))
            qputenv("SUPPORTKIT_RELEASE_KEYS",
                    "untrusted comment: minisign public key\n" +
                        TestSigning::makeKeyPair().publicKeyLine().toLatin1() + "\n" +
                        TestSigning::releaseKey().publicKeyLine().toLatin1() + " x");
        m_server.setResource(site + QStringLiteral("/version/downloads.ini"), list);
        m_server.setResource(site + QStringLiteral("/version/downloads.ini.minisig"), signature);
        m_server.setResource(site + QStringLiteral("/pawnsketch.exe"), file);
        setMessageAnswererForTesting([&](const ShownMessage &m) {
            m_messages.append(m);
            return answer;
        });

        PageRepair page(m_host);
        const QByteArray before = readFile(programFile());
        QVERIFY(writeFile(downloaded(), "left from before"));
        control<QPushButton>(page, "Command2")->click();
        QTRY_COMPARE_WITH_TIMEOUT(page.downloadState(), PageRepair::DownloadState::Idle, 30000);
        qputenv("SUPPORTKIT_RELEASE_KEYS", TestSigning::releaseKey().publicKeyLine().toLatin1());

        if (!status.startsWith(QStringLiteral("Status:")))
            status = QStringLiteral("Status: Download abgelehnt: ") + status +
                     QStringLiteral(" Die Programmdatei bleibt, wie sie ist.");
        QCOMPARE(control<QLabel>(page, "lblStatus")->text(), status);
        QCOMPARE(control<QPushButton>(page, "Command7")->isEnabled(), answer == IDYES);
        QCOMPARE(QFile::exists(downloaded()), answer == IDYES);
        QVERIFY(readFile(programFile()) == before);
        // The question names both versions.
        QCOMPARE(m_messages.size(), old ? 1 : 0);
        if (old)
            QVERIFY(m_messages[0].message.contains(
                QStringLiteral("13.2 Build 2100 an; installiert ist 13.2 Build 2209")));
    }

    // While a download runs or waits to go on, Quit and the close box are refused and Stop ends it
    // at once; Escape ends the program all the same, and the partial file goes with it.
    void windowWhileDownloading_data()
    {
        QTest::addColumn<bool>("stalled"); // else broken off and waiting to resume
        QTest::addColumn<bool>("escape");
        QTest::newRow("stalled, close box and Stop") << true << false;
        QTest::newRow("waiting to resume, close box and Stop") << false << false;
        QTest::newRow("stalled, Escape") << true << true;
        QTest::newRow("waiting to resume, Escape") << false << true;
    }

    void windowWhileDownloading()
    {
        QFETCH(bool, stalled);
        QFETCH(bool, escape);
        HttpTestServer::Resource file;
        file.body = program(2, 2210, 1000000);
        if (stalled) {
            file.announced = file.body.size();
            file.body.truncate(400000);
            file.hold = true;
        } else {
            file.drops = 1;
            file.dropAfter = 400000;
            setProgramResumePausesForTesting({60000});
        }
        serve(file, {});
        auto window = std::make_unique<frmSupportKit>();
        QVERIFY(window->Form_Load(QStringLiteral("1")));
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        auto *page = qobject_cast<PageRepair *>(window->page(4));
        QVERIFY(page);
        control<QPushButton>(*page, "Command2")->click();
        QTRY_VERIFY(QFileInfo(downloaded()).size() >= 300000);
        QTRY_COMPARE(control<QLabel>(*page, "lblStatus")->text().contains(QStringLiteral("neuer Versuch")),
                     !stalled);

        if (escape) {
            QTest::keyClick(window.get(), Qt::Key_Escape);
            QVERIFY(!window->isVisible());
            window.reset();
            QVERIFY(!QFile::exists(downloaded()));
            return;
        }
        control<QPushButton>(*window, "cmdCancel")->click();
        QVERIFY(!window->close());
        QVERIFY(window->isVisible());
        QCOMPARE(page->downloadState(), PageRepair::DownloadState::Running);
        control<QPushButton>(*page, "Command2")->click();
        QCOMPARE(page->downloadState(), PageRepair::DownloadState::Idle);
        QVERIFY(!QFile::exists(downloaded()));
        QVERIFY(window->close());
    }

    void downloadWithoutConnection()
    {
        qputenv("SUPPORTKIT_VERSION_URL", QStringLiteral("http://127.0.0.1:%1").arg(closedPort()).toUtf8());
        PageRepair page(m_host);
        control<QPushButton>(page, "Command2")->click();
        QTRY_COMPARE(page.downloadState(), PageRepair::DownloadState::Idle);
        // A second test tells the user what it found; nothing else happens.
        QCOMPARE(m_host.connections, QList<bool>({false, false}));
        QCOMPARE(keys(m_messages), QStringList{QStringLiteral("M189")});
        QCOMPARE(control<QPushButton>(page, "Command2")->text(), QStringLiteral("Download"));
        QVERIFY(!QFile::exists(downloaded()));
    }

    void restore_data()
    {
        QTest::addColumn<QString>("selected"); // "" none
        QTest::addColumn<bool>("pawnsketchRuns");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QByteArray>("programAfter"); // "" unchanged
        QTest::newRow("backup restored") << "pwk_exe_13_1.bak" << false << "M19212" << program(1, 2105);
        QTest::newRow("Pawnsketch runs") << "pwk_exe_13_1.bak" << true << "M19210" << QByteArray();
        QTest::newRow("nothing selected") << "" << false << "M19211" << QByteArray();
    }

    void restore()
    {
        QFETCH(QString, selected);
        QFETCH(bool, pawnsketchRuns);
        QFETCH(QByteArray, programAfter);
        if (pawnsketchRuns)
            m_fakePlatform.runningProcesses << QStringLiteral("C:\\Tools\\MyPawnsketch.EXE");
        const QByteArray before = readFile(programFile());
        PageRepair page(m_host);
        QListWidget *list = control<QListWidget>(page, "lstDir");
        // Only the restorable backups, newest name first.
        QCOMPARE(listed(list),
                 QStringList({QStringLiteral("PWK_EXE_13_2.BAK"), QStringLiteral("pwk_exe_13_1.bak")}));
        if (!selected.isEmpty())
            list->setCurrentItem(list->findItems(selected, Qt::MatchExactly).value(0));
        control<QPushButton>(page, "Command6")->click();

        QFETCH(QString, message);
        QCOMPARE(keys(m_messages), QStringList{message});
        QVERIFY(readFile(programFile()) == (programAfter.isEmpty() ? before : programAfter));
        if (!programAfter.isEmpty())
            QVERIFY(m_messages.first().message.endsWith(QStringLiteral("13.1 Build 2105")));
    }

    void pickedFile_data()
    {
        QTest::addColumn<bool>("beta");
        QTest::newRow("update file") << false;
        QTest::newRow("beta file") << true;
    }

    // A picked file replaces the program file after a dated backup of it.
    void pickedFile()
    {
        QFETCH(bool, beta);
        const QString picked = m_elsewhere.filePath(QStringLiteral("Pawnsketch_Picked.exe"));
        QVERIFY(writeFile(picked, program(2, 2300)));
        setFileDialogAnswererForTesting([&](const FileDialogRequest &) { return picked; });
        PageUpdate updatePage(m_host);
        PageBeta betaPage(m_host);
        QWidget *page = beta ? static_cast<QWidget *>(&betaPage) : &updatePage;
        page->resize(900, 600);
        page->show();
        control<QPushButton>(*page, beta ? "Command4" : "Command3")->click();
        setFileDialogAnswererForTesting({});

        QLabel *shown = control<QLabel>(*page, beta ? "Label11" : "Label4");
        QCOMPARE(shown->toolTip(), QDir::toNativeSeparators(picked));
        QVERIFY(shown->text().endsWith(QStringLiteral("pawnsketch_picked.exe")));
        // A switch of language localises the label back to "not selected": the file stays shown.
        shown->setText(QStringLiteral("nicht ausgewählt"));
        beta ? betaPage.languageChanged() : updatePage.languageChanged();
        QVERIFY(shown->text().endsWith(QStringLiteral("pawnsketch_picked.exe")));
        QPushButton *install = control<QPushButton>(*page, beta ? "cmdInstallBeta" : "cmdUpdate");
        if (!beta) {
            QCOMPARE(control<QLabel>(*page, "Label52")->text(), QStringLiteral("13.2 Build 2300"));
            QCOMPARE(install->text(), QStringLiteral("13.2 Build 2300\nInstallieren"));
        }
        install->click();

        QVERIFY(readFile(programFile()) == program(2, 2300));
        // One dated backup more; its name and content are tst_programfilereplace's part.
        const QDir backups(m_install.filePath(QStringLiteral("backup/pwk_exe")));
        QCOMPARE(backups.entryList({QStringLiteral("pawnsketch_*.bak")}).size(), 2);
        QCOMPARE(QFile::exists(picked), !beta);
        QVERIFY(control<QLabel>(*page, beta ? "Label9" : "Label6")->isVisible());
        QCOMPARE(control<QLabel>(*page, beta ? "Label8" : "Label7")->toolTip(),
                 QDir::toNativeSeparators(backups.path()));
        QVERIFY(m_messages.isEmpty());
        QCOMPARE(m_host.refreshes, 1);
    }

    // The update page lists the backups in the backup folder itself.
    void backupList()
    {
        QVERIFY(writeFile(m_install.filePath(QStringLiteral("backup/pwk_exe_13_0.bak")), program(0, 1900)));
        QVERIFY(writeFile(m_install.filePath(QStringLiteral("backup/PWK_EXE_12.BAK")), program(0, 1200)));
        PageUpdate page(m_host);
        QListWidget *list = control<QListWidget>(page, "List1");
        QCOMPARE(listed(list),
                 QStringList({QStringLiteral("pwk_exe_13_0.bak"), QStringLiteral("PWK_EXE_12.BAK")}));
        QCOMPARE(control<QLabel>(page, "Label53")->text(), QStringLiteral("13.0 Build 1900"));

        QListWidgetItem *second = list->item(1);
        list->setCurrentItem(second);
        emit list->itemClicked(second);
        // Folder and name joined without a separator, as the box always showed them.
        QCOMPARE(keys(m_messages), QStringList{QString()});
        QCOMPARE(m_messages.first().message,
                 QDir::toNativeSeparators(m_install.path()) + QStringLiteral("\\backupPWK_EXE_12.BAK"));
        QCOMPARE(control<QLabel>(page, "Label53")->text(), QStringLiteral("13.0 Build 1200"));
    }
};

QTEST_MAIN(TestMaintenancePages)
#include "tst_maintenancepages.moc"
