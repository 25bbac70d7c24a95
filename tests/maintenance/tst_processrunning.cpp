#include "maintenance/FileInfo.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

// Starts real processes under Pawnsketch-like names and looks for them. The tag keeps
// our names apart from anything else running.
class TestProcessRunning : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    const QString m_tag = QUuid::createUuid().toString(QUuid::Id128).left(8);
    // Longer than the kernel's 15-character process name: only the executable or the
    // arguments can reveal it.
    const QString m_programName = QStringLiteral("My%1Pawnsketch.exe").arg(m_tag);
    const QString m_program = m_dir.filePath(m_programName);

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString sleep = QStandardPaths::findExecutable(QStringLiteral("sleep"));
        QVERIFY(!sleep.isEmpty() && QFile::copy(sleep, m_program));
        QVERIFY(QFile::setPermissions(m_program, QFile::permissions(m_program) | QFile::ExeOwner));
    }

    void findsRunningProcess_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("uniqueName"); // found only while it runs
        QTest::addColumn<QStringList>("alsoFound");
        QTest::addColumn<QStringList>("notFound");

        const QString bash = QStandardPaths::findExecutable(QStringLiteral("bash"));
        const QString name = m_programName.toLower();
        QTest::newRow("own executable")
            << m_program << QStringList{QStringLiteral("30")} << name
            << QStringList{QStringLiteral("pawnsketch.exe"), QStringLiteral("PAWNSKETCH.EXE"),
                           m_programName.toUpper()}
            << QStringList{QFileInfo(m_dir.path()).fileName()};
        QTest::newRow("executable only, other argv[0]")
            << bash
            << QStringList{QStringLiteral("-c"), QStringLiteral("exec -a plain-sleep \"$0\" 30"), m_program}
            << name << QStringList{QStringLiteral("pawnsketch.exe")} << QStringList{};

        const QString windowsName = QStringLiteral("Win%1Pawnsketch.exe").arg(m_tag);
        const QString windowsPath = QStringLiteral("C:\\Program Files\\Dir%1\\").arg(m_tag) + windowsName;
        QTest::newRow("Windows path in argv[0]")
            << bash
            << QStringList{QStringLiteral("-c"), QStringLiteral("exec -a \"$0\" sleep 30"), windowsPath}
            << windowsName
            << QStringList{QStringLiteral("pawnsketch.exe"), QStringLiteral("win%1").arg(m_tag)}
            << QStringList{QStringLiteral("dir%1").arg(m_tag), QStringLiteral("\\win%1").arg(m_tag)};
    }

    void findsRunningProcess()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(QString, uniqueName);
        QFETCH(QStringList, alsoFound);
        QFETCH(QStringList, notFound);

        QVERIFY(!IsProcessRunning(uniqueName));
        QProcess process; // its destructor kills the process should a check fail
        process.start(program, arguments);
        QVERIFY(process.waitForStarted());
        // bash needs a moment before its exec replaces it.
        QTRY_VERIFY_WITH_TIMEOUT(IsProcessRunning(uniqueName), 10000);
        for (const QString &name : alsoFound)
            QVERIFY2(IsProcessRunning(name), qPrintable(name));
        for (const QString &name : notFound)
            QVERIFY2(!IsProcessRunning(name), qPrintable(name));

        process.kill();
        QVERIFY(process.waitForFinished());
        QVERIFY(!IsProcessRunning(uniqueName));
    }
};

QTEST_GUILESS_MAIN(TestProcessRunning)
#include "tst_processrunning.moc"
