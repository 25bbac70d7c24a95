#include "maintenance/FileInfo.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <vector>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

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
        QVERIFY(QFile::copy(QStringLiteral(SK_SLEEPER), m_program));
        QVERIFY(QFile::setPermissions(m_program, QFile::permissions(m_program) | QFile::ExeOwner));
    }

    void findsRunningProcess_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("argv0");      // "": the program's own path
        QTest::addColumn<QString>("uniqueName"); // found only while it runs
        QTest::addColumn<QStringList>("alsoFound");
        QTest::addColumn<QStringList>("notFound");

        const QString name = m_programName.toLower();
        QTest::newRow("own executable")
            << m_program << QString() << name
            << QStringList{QStringLiteral("pawnsketch.exe"), QStringLiteral("PAWNSKETCH.EXE"),
                           m_programName.toUpper()}
            << QStringList{QFileInfo(m_dir.path()).fileName()};
#ifdef Q_OS_UNIX
        // A Unix process may call itself anything in argv[0]; Windows knows only the executable.
        QTest::newRow("executable only, other argv[0]")
            << m_program << QStringLiteral("plain-sleep") << name
            << QStringList{QStringLiteral("pawnsketch.exe")} << QStringList{};
        // As Wine starts a Windows program.
        const QString windowsName = QStringLiteral("Win%1Pawnsketch.exe").arg(m_tag);
        const QString windowsPath = QStringLiteral("C:\\Program Files\\Dir%1\\").arg(m_tag) + windowsName;
        QTest::newRow("Windows path in argv[0]")
            << QStringLiteral(SK_SLEEPER) << windowsPath << windowsName
            << QStringList{QStringLiteral("pawnsketch.exe"), QStringLiteral("win%1").arg(m_tag)}
            << QStringList{QStringLiteral("dir%1").arg(m_tag), QStringLiteral("\\win%1").arg(m_tag)};
#endif
    }

    void findsRunningProcess()
    {
        QFETCH(QString, program);
        QFETCH(QString, argv0);
        QFETCH(QString, uniqueName);
        QFETCH(QStringList, alsoFound);
        QFETCH(QStringList, notFound);

        QVERIFY(!IsProcessRunning(uniqueName));
        QProcess process; // its destructor kills the process should a check fail
#ifdef Q_OS_UNIX
        // The child execs the program itself, under the name it is to show.
        const QByteArray path = QFile::encodeName(program);
        QByteArray name = argv0.toLocal8Bit();
        QByteArray seconds("30");
        std::vector<char *> argv{name.data(), seconds.data(), nullptr};
        if (!argv0.isEmpty()) {
            process.setChildProcessModifier([&] {
                ::execv(path.constData(), argv.data());
                ::_exit(127);
            });
        }
#endif
        process.start(program, {QStringLiteral("30")});
        QVERIFY2(process.waitForStarted(), qPrintable(process.errorString()));
        QTRY_VERIFY_WITH_TIMEOUT(IsProcessRunning(uniqueName), 10000);
        for (const QString &other : alsoFound)
            QVERIFY2(IsProcessRunning(other), qPrintable(other));
        for (const QString &other : notFound)
            QVERIFY2(!IsProcessRunning(other), qPrintable(other));

        process.kill();
        QVERIFY(process.waitForFinished());
        QVERIFY(!IsProcessRunning(uniqueName));
    }
};

QTEST_GUILESS_MAIN(TestProcessRunning)
#include "tst_processrunning.moc"
