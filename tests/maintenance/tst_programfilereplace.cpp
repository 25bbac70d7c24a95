#include "core/Sha256.h"
#include "maintenance/Backups.h"
#include "maintenance/DownloadCheck.h"
#include "maintenance/ProgramFileReplace.h"

#include "pewriter/PeWriter.h"
#include "testsupport/TestSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>

#ifdef Q_OS_UNIX
#include <csignal>

#include <sys/resource.h>
#endif

namespace {
QByteArray program(quint16 build, int padding = 0)
{
    PeWriter::Options options;
    options.version = {13, 2, 0, build};
    return PeWriter::build(options) + QByteArray(padding, '\0');
}

using TestSupport::writeFile;
const auto readAll = TestSupport::readFile;

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// Each step of the replacement can be made to fail the way it fails in the field.
class FaultySteps final : public FileReplaceSteps
{
public:
    ReplaceStep failAt = ReplaceStep::None;
    int busyMoves = 0; // the target is in use for this many attempts
    int pauses = 0;

    bool copy(const QString &source, const QString &copyPath, QString &error) override
    {
        if (failAt != ReplaceStep::Copy)
            return FileReplaceSteps::copy(source, copyPath, error);
        // The disk fills up half-way.
        writeFile(copyPath, readAll(source).left(100));
        error = QStringLiteral("No space left on device");
        return false;
    }
    Platform::FileResult flush(const QString &copyPath) override
    {
        if (failAt == ReplaceStep::Flush)
            return {false, false, QStringLiteral("Input/output error")};
        return FileReplaceSteps::flush(copyPath);
    }
    bool check(const QString &copyPath, qint64 expectedSize, QString &error) override
    {
        // The copy came out short: the real check has to notice.
        if (failAt == ReplaceStep::Check)
            QFile::resize(copyPath, expectedSize - 1);
        return FileReplaceSteps::check(copyPath, expectedSize, error);
    }
    Platform::FileResult moveOver(const QString &copyPath, const QString &target) override
    {
        if (failAt == ReplaceStep::Rename)
            return {false, false, QStringLiteral("Permission denied")};
        if (failAt == ReplaceStep::Locked || busyMoves-- > 0)
            return {false, true, QStringLiteral("Sharing violation")};
        return FileReplaceSteps::moveOver(copyPath, target);
    }
    void pause(int) override { ++pauses; }
};
} // namespace

class TestProgramFileReplace : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_install;   // holds only the program file, so leftovers show
    QString m_elsewhere; // where new files come from
    QString target() const { return m_install + QStringLiteral("/pawnsketch.exe"); }

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_install = m_dir.filePath(QStringLiteral("install"));
        m_elsewhere = m_dir.filePath(QStringLiteral("elsewhere"));
        QDir(m_install).removeRecursively();
        QDir(m_elsewhere).removeRecursively();
        QVERIFY(QDir().mkpath(m_install) && QDir().mkpath(m_elsewhere));
        QVERIFY(writeFile(target(), program(2209)));
    }

    // Whatever step fails, the program file stays byte for byte and nothing is left beside it.
    void replace_data()
    {
        QTest::addColumn<QByteArray>("source"); // empty: there is none
        QTest::addColumn<int>("failAt");
        QTest::addColumn<int>("busyMoves");
        QTest::addColumn<int>("failedStep");
        QTest::addColumn<int>("pauses");

        const QByteArray next = program(2210, 70000); // not the old one's size either
        const auto row = [&](const char *name, const QByteArray &source, ReplaceStep failAt, int busy,
                             ReplaceStep failed, int pauses) {
            QTest::newRow(name) << source << int(failAt) << busy << int(failed) << pauses;
        };
        row("replaced", next, ReplaceStep::None, 0, ReplaceStep::None, 0);
        row("target in use for a moment", next, ReplaceStep::None, 3, ReplaceStep::None, 3);
        row("copy fails half-way", next, ReplaceStep::Copy, 0, ReplaceStep::Copy, 0);
        row("flush fails", next, ReplaceStep::Flush, 0, ReplaceStep::Flush, 0);
        row("copy comes out short", next, ReplaceStep::Check, 0, ReplaceStep::Check, 0);
        row("rename refused", next, ReplaceStep::Rename, 0, ReplaceStep::Rename, 0);
        row("target stays in use", next, ReplaceStep::Locked, 0, ReplaceStep::Locked, kLockedAttempts - 1);
        row("source is no program file", QByteArray(5000, 'x'), ReplaceStep::None, 0, ReplaceStep::Check, 0);
        row("source vanished", QByteArray(), ReplaceStep::None, 0, ReplaceStep::Copy, 0);
    }

    void replace()
    {
        QFETCH(QByteArray, source);
        QFETCH(int, failAt);
        QFETCH(int, busyMoves);
        QFETCH(int, failedStep);
        QFETCH(int, pauses);

        const QString sourcePath = m_elsewhere + QStringLiteral("/new.exe");
        if (!source.isEmpty())
            QVERIFY(writeFile(sourcePath, source));
        const QByteArray before = readAll(target());
        FaultySteps steps;
        steps.failAt = ReplaceStep(failAt);
        steps.busyMoves = busyMoves;

        const ReplaceResult result = replaceFileSafely(target(), sourcePath, steps);

        QCOMPARE(int(result.failedStep), failedStep);
        QCOMPARE(result.ok, failedStep == int(ReplaceStep::None));
        QCOMPARE(result.error.isEmpty(), result.ok);
        QVERIFY(readAll(target()) == (result.ok ? source : before));
        QCOMPARE(entries(m_install), QStringList{QStringLiteral("pawnsketch.exe")});
        QCOMPARE(steps.pauses, pauses);
    }

    // The target stays in use until the window's own thread has run an event: the replacement
    // must wait for it off that thread, or the holder would never let go.
    void replaceKeepsEventsFlowing()
    {
        const QString sourcePath = m_elsewhere + QStringLiteral("/new.exe");
        QVERIFY(writeFile(sourcePath, program(2210)));
        struct HeldUntilEvent final : FileReplaceSteps
        {
            std::atomic<bool> released{false};
            Platform::FileResult moveOver(const QString &copyPath, const QString &target) override
            {
                if (!released)
                    return {false, true, QStringLiteral("Sharing violation")};
                return FileReplaceSteps::moveOver(copyPath, target);
            }
            void pause(int) override { QThread::msleep(50); }
        } steps;
        QTimer::singleShot(0, this, [&] { steps.released = true; });
        const ReplaceResult result =
            runKeepingEventsFlowing([&] { return replaceFileSafely(target(), sourcePath, steps); });
        QVERIFY2(result.ok, qPrintable(result.error));
        QVERIFY(readAll(target()) == program(2210));
    }

#ifdef Q_OS_UNIX
    // The disk fills up while the real copy is written: the system refuses a write half-way
    // (here through the process's file size limit, which binds root too).
    void realCopyRefusedHalfWay()
    {
        const QString sourcePath = m_elsewhere + QStringLiteral("/new.exe");
        QVERIFY(writeFile(sourcePath, program(2210, 70000)));
        const QByteArray before = readAll(target());
        rlimit old{};
        QCOMPARE(::getrlimit(RLIMIT_FSIZE, &old), 0);
        rlimit small = old;
        small.rlim_cur = 16 * 1024;
        const auto oldHandler = ::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
        const ReplaceResult result = replaceFileSafely(target(), sourcePath);
        ::setrlimit(RLIMIT_FSIZE, &old);
        ::signal(SIGXFSZ, oldHandler);
        QCOMPARE(int(result.failedStep), int(ReplaceStep::Copy));
        QVERIFY(!result.error.isEmpty());
        QVERIFY(readAll(target()) == before);
        QCOMPARE(entries(m_install), QStringList{QStringLiteral("pawnsketch.exe")});
    }
#endif

    void restorableBackups_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QStringList>("listed");
        QTest::newRow("only pwk_exe_*.bak, any case")
            << QStringList{"PWK_EXE_13_2.BAK", "pawnsketch_11152026_171205.bak", "pwk_exe_13_1.txt",
                           "old_pwk_exe_1.bak", "pwk_exe_.bak"}
            << QStringList{"PWK_EXE_13_2.BAK", "pwk_exe_.bak"};
        QTest::newRow("descending names, case ignored")
            << QStringList{"pwk_exe_13_1.bak", "PWK_EXE_13_2.bak", "pwk_exe_12_9.BAK"}
            << QStringList{"PWK_EXE_13_2.bak", "pwk_exe_13_1.bak", "pwk_exe_12_9.BAK"};
        QTest::newRow("missing folder") << QStringList{} << QStringList{};
    }

    void restorableBackups()
    {
        QFETCH(QStringList, files);
        const QString folder = m_dir.filePath(QStringLiteral("backups"));
        QDir(folder).removeRecursively();
        for (const QString &name : files) {
            QVERIFY(QDir().mkpath(folder));
            QVERIFY(writeFile(QDir(folder).filePath(name), "x"));
        }
        // A folder named like a backup is not one.
        if (!files.isEmpty())
            QVERIFY(QDir().mkpath(folder + QStringLiteral("/pwk_exe_99.bak")));
        QTEST(::restorableBackups(folder), "listed");
    }

    // The installs of picked files keep a dated copy of the program file first.
    void installPickedFile()
    {
        const QString backups = m_install + QStringLiteral("/backup/pwk_exe");
        const QString picked = m_elsewhere + QStringLiteral("/pawnsketch_update.exe");
        const QDateTime when(QDate(2026, 11, 15), QTime(17, 12, 5));
        QVERIFY(writeFile(picked, program(2300)));

        // Without the backup folder's parent there is no backup, and then no install.
        PickedInstallResult result = ::installPickedFile(target(), picked, backups, when);
        QVERIFY(result.attempted && !result.backupMade);
        QVERIFY(readAll(target()) == program(2209));

        QVERIFY(QDir().mkpath(m_install + QStringLiteral("/backup")));
        result = ::installPickedFile(target(), picked, backups, when);
        QVERIFY(result.backupMade && result.replace.ok);
        QCOMPARE(result.backupFile, backups + QStringLiteral("/pawnsketch_11152026_171205.bak"));
        QVERIFY(readAll(result.backupFile) == program(2209));
        QVERIFY(readAll(target()) == program(2300));
        QVERIFY(QFile::exists(picked));

        // Within the same second the backup name is the same: the later backup wins.
        QVERIFY(writeFile(picked, program(2301)));
        result = ::installPickedFile(target(), picked, backups, when);
        QVERIFY(result.replace.ok);
        QCOMPARE(entries(backups), QStringList{QStringLiteral("pawnsketch_11152026_171205.bak")});
        QVERIFY(readAll(result.backupFile) == program(2300));

        QVERIFY(QFile::remove(picked));
        QVERIFY(!::installPickedFile(target(), picked, backups, when).attempted);
    }

    void publishedSha256_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("sha");
        const QString sha(64, u'a');
        QTest::newRow("in its section")
            << "[Downloads]\r\npawnsketch.exe=13.2\r\npawnsketch.exe.sha256=" + sha << sha;
        QTest::newRow("any case, blanks, quotes")
            << "[downloads]\n  PawnSketch.EXE.SHA256 = \"" + sha + "\"  \n"
            << sha;
        QTest::newRow("other section")
            << "[Other]\npawnsketch.exe.sha256=" + sha + "\n[Downloads]\nx=1" << QString();
        QTest::newRow("none") << "[Downloads]\npawnsketch.exe=13.2 Build 2210\n" << QString();
    }

    void publishedSha256()
    {
        QFETCH(QString, list);
        QTEST(::publishedSha256(list), "sha");
    }

    void checkDownloadedProgram_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<qint64>("announced");
        QTest::addColumn<QString>("sha");
        QTest::addColumn<qint64>("signedSize");
        QTest::addColumn<int>("verdict");
        QTest::addColumn<qint64>("unwritten"); // bytes of the file that the download did not write
        const QByteArray good = program(2210);
        const QString sha =
            QString::fromLatin1(QCryptographicHash::hash(good, QCryptographicHash::Sha256).toHex());
        const auto row = [](const char *name, const QByteArray &file, qint64 announced,
                            const QString &published, qint64 signedSize, DownloadVerdict verdict,
                            qint64 unwritten = 0) {
            QTest::newRow(name) << file << announced << published << signedSize << int(verdict) << unwritten;
        };
        const qint64 size = good.size();
        row("no checksum published", good, size, QString(), size, DownloadVerdict::ChecksumMismatch);
        row("checksum in capitals", good, size, sha.toUpper(), size, DownloadVerdict::Ok);
        row("other checksum", good, size, QString(sha).replace(0, 1, u'f'), size,
            DownloadVerdict::ChecksumMismatch);
        row("unusable checksum", good, size, QStringLiteral("n/a"), size, DownloadVerdict::ChecksumMismatch);
        row("shorter than announced", good, size + 1, sha, size + 1, DownloadVerdict::Incomplete);
        row("other size than signed", good, size, sha, size - 1, DownloadVerdict::SizeMismatch);
        row("older file's tail", good, size, sha, size, DownloadVerdict::Incomplete, 100);
        row("no program file", QByteArray(5000, 'x'), 5000, sha, 5000, DownloadVerdict::NotAProgram);
    }

    void checkDownloadedProgram()
    {
        QFETCH(QByteArray, file);
        QFETCH(qint64, announced);
        QFETCH(QString, sha);
        QFETCH(qint64, signedSize);
        const QString path = m_elsewhere + QStringLiteral("/pawnsktch.exe");
        QVERIFY(writeFile(path, file));
        QFETCH(qint64, unwritten);
        const DownloadedFile downloaded{path, announced, file.size() - unwritten, Sha256::hash(file)};
        QTEST(int(::checkDownloadedProgram(downloaded, sha, signedSize)), "verdict");
    }
};

QTEST_GUILESS_MAIN(TestProgramFileReplace)
#include "tst_programfilereplace.moc"
