#include "core/ProgramFolder.h"
#include "fonts/FontCheck.h"
#include "support/LogFiles.h"
#include "support/PagedText.h"

#include "testsupport/TestSupport.h"

#include <QtEndian>
#include <QtTest>

#include <functional>

#ifndef Q_OS_WIN
// Windows shows compiled help with its own viewer: the program reads no help file there.
#include "help/ChmFile.h"

#include <sys/stat.h>
#endif

// Files of the installation that are broken, foreign or hostile: each is read with the
// documented fallback or a plain message, without a crash and without reading it whole
// when it is huge.
class TestHostileFiles : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    enum Make
    {
        Bytes,      // the file holds the row's bytes
        Directory,  // a folder of that name
        Fifo,       // a named pipe nobody writes to
        Unreadable, // the row's bytes without read permission
        Sparse,     // as many zero bytes as the row's bytes say, without using the disk
    };

    static QByteArray demoChm()
    {
        return TestSupport::readFile(TestSupport::sourceDir() + "/demo/install/help/pawnsketch_de.chm");
    }

    static QByteArray patched(QByteArray bytes, qsizetype at, quint32 value)
    {
        qToLittleEndian(value, bytes.data() + at);
        return bytes;
    }

    // What the program makes of the file, as one comparable text.
    static QString outcome(const QString &reader, const QString &path)
    {
        if (reader == QLatin1String("log")) {
            PagedText log(path);
            PagedText::Step step;
            while ((step = log.indexStep(1 << 24)) == PagedText::Step::More) {
            }
            return step == PagedText::Step::Done ? QStringLiteral("%1 characters").arg(log.length())
                                                 : logBoxText(path);
        }
        if (reader == QLatin1String("fonts"))
            return QStringLiteral("%1 fonts").arg(readChessFonts(path, u'\t').size());
#ifndef Q_OS_WIN
        const ChmFile chm(path);
        const QStringList objects = chm.objects();
        const auto readable = std::count_if(objects.begin(), objects.end(),
                                            [&chm](const QString &o) { return !chm.read(o).isEmpty(); });
        return chm.isOpen()
                   ? QStringLiteral("open, %1 objects, %2 readable").arg(objects.size()).arg(readable)
                   : QStringLiteral("closed");
#else
        return {};
#endif
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        setProgramFolderForTesting(m_dir.path());
    }

    void hostile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("make");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reader");
        QTest::addColumn<QString>("expected"); // "%1" stands for the file's native path

        const QByteArray log("12:00 Start\r\n");
        QTest::newRow("log is a folder") << "logfiles/folder.txt" << int(Directory) << log << "log"
                                         << "";
#ifndef Q_OS_WIN
        QTest::newRow("log is a FIFO") << "logfiles/errorlog.txt" << int(Fifo) << log << "log"
                                       << "";
        // Root reads every file: the whole log then, otherwise nothing. Windows takes read
        // permission away only through access lists.
        QTest::newRow("log unreadable") << "logfiles/unreadable.txt" << int(Unreadable) << log << "log"
                                        << "?";
#endif
        // Beyond any size a log was once cut at: shown whole.
        QTest::newRow("log of 70 MB")
            << "logfiles/errorlog.txt" << int(Sparse) << QByteArray::number(70 << 20) << "log"
            << "73400320 characters";

        QTest::newRow("font list of 100 MB")
            << "ini/chessfonts.ini" << int(Sparse) << QByteArray::number(100 << 20) << "fonts"
            << "0 fonts";
#ifndef Q_OS_WIN
        QTest::newRow("font list is a FIFO") << "ini/chessfonts.ini" << int(Fifo) << QByteArray() << "fonts"
                                             << "0 fonts";
#endif

#ifndef Q_OS_WIN
        const QByteArray chm = demoChm();
        const qsizetype itsp = qsizetype(qFromLittleEndian<quint64>(chm.constData() + 0x48));
        QTest::newRow("chm, directory pages of 2 GB")
            << "help/a.chm" << int(Bytes) << patched(chm, itsp + 0x10, 0x7FFFFFFF) << "chm"
            << "closed";
        QTest::newRow("chm, directory longer than the file")
            << "help/b.chm" << int(Bytes) << patched(chm.left(itsp + 0x54 + 100), 0x50, 0x10000) << "chm"
            << "open, 0 objects, 0 readable";
        // The compressed section's reset table (entries of 8 bytes from 0x28) names blocks of
        // 4 GB and 32 KB.
        const qsizetype reset = chm.indexOf(QByteArray("\x08\0\0\0\x28\0\0\0", 8)) - 8;
        QTest::newRow("chm, compressed blocks of 4 GB")
            << "help/d.chm" << int(Bytes) << patched(chm, reset + 0x24, 1) << "chm"
            << "closed";
        QTest::newRow("chm, content larger than the file")
            << "help/c.chm" << int(Bytes) << chm.left(chm.size() / 2) << "chm"
            << "closed";
#endif
    }
    void hostile()
    {
        QFETCH(QString, file);
        QFETCH(int, make);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reader);
        QFETCH(QString, expected);
        const QString path = m_dir.filePath(file);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        switch (make) {
        case Directory:
            QVERIFY(QDir().mkpath(path));
            break;
#ifndef Q_OS_WIN
        case Fifo:
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
            break;
#endif
        case Sparse: {
            QFile sparse(path);
            QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize(bytes.toLongLong()));
            break;
        }
        default:
            QVERIFY(TestSupport::writeFile(path, bytes));
            if (make == Unreadable)
                QVERIFY(QFile::setPermissions(path, {}));
        }
        const QString got = outcome(reader, path);
        if (expected == QLatin1String("?"))
            expected =
                QFileInfo(path).isReadable() ? QStringLiteral("%1 characters").arg(bytes.size()) : QString();
        if (expected.contains(QLatin1String("%1")))
            expected = expected.arg(QDir::toNativeSeparators(path));
        QCOMPARE(got, expected);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        QFile::remove(path);
    }
};

QTEST_GUILESS_MAIN(TestHostileFiles)
#include "tst_hostilefiles.moc"
