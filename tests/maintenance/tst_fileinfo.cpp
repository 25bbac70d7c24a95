#include "maintenance/FileInfo.h"

#include "pewriter/PeWriter.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <functional>

#include <sys/stat.h>

using PeWriter::Version;

namespace {

QByteArray image(bool pe32Plus, PeWriter::Layout *layout = nullptr)
{
    PeWriter::Options options;
    options.version = {13, 2, 0, 2209};
    options.pe32Plus = pe32Plus;
    return PeWriter::build(options, layout);
}

void set16(QByteArray &data, int at, quint16 value)
{
    qToLittleEndian(value, data.data() + at);
}
void set32(QByteArray &data, int at, quint32 value)
{
    qToLittleEndian(value, data.data() + at);
}

bool sameInfo(const PeFixedFileInfo &a, const PeFixedFileInfo &b)
{
    return a.fileVersionMS == b.fileVersionMS && a.fileVersionLS == b.fileVersionLS &&
           a.fileType == b.fileType && a.productVersionMS == b.productVersionMS &&
           a.productVersionLS == b.productVersionLS && a.fileOS == b.fileOS &&
           a.fileFlagsMask == b.fileFlagsMask;
}

bool isEmptyVersion(const FileInfo &info)
{
    return info.Version == QLatin1String("0.0") && info.Build == QLatin1String("0") &&
           info.FileType == QLatin1String("Unbekannt");
}

using Damage = std::function<void(QByteArray &, const PeWriter::Layout &)>;

} // namespace

Q_DECLARE_METATYPE(Version)
Q_DECLARE_METATYPE(Damage)

class TestFileInfo : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void versionTexts_data();
    void versionTexts();
    void fileTypes_data();
    void fileTypes();
    void fileNames_data();
    void fileNames();
    void withoutVersion_data();
    void withoutVersion();
    void truncatedImages_data();
    void truncatedImages();
    void truncatedFilesOnDisk();
    void damagedImages_data();
    void damagedImages();
    void randomFlips_data();
    void randomFlips();
    void hugeSparseFile();
    void fileExists_data();
    void fileExists();

private:
    QString write(const QString &name, const QByteArray &data)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size())
            return {};
        return path;
    }

    QTemporaryDir m_dir;
};

void TestFileInfo::versionTexts_data()
{
    QTest::addColumn<Version>("version");
    QTest::addColumn<bool>("pe32Plus");
    QTest::addColumn<QString>("expectedVersion");
    QTest::addColumn<QString>("expectedBuild");

    for (bool plus : {false, true}) {
        const char *format = plus ? "PE32+" : "PE32";
        QTest::addRow("%s 13.2.0.2209", format) << Version{13, 2, 0, 2209} << plus << "13.2"
                                                << "2209";
        QTest::addRow("%s release ignored", format) << Version{13, 2, 5, 0} << plus << "13.2"
                                                    << "0";
        QTest::addRow("%s signed major", format) << Version{40000, 1, 0, 3} << plus << "-25536.1"
                                                 << "3";
        QTest::addRow("%s signed minor and build", format)
            << Version{2, 65535, 40000, 40000} << plus << "2.-1"
            << "-25536";
        QTest::addRow("%s limits", format) << Version{32767, 32768, 0, 32767} << plus << "32767.-32768"
                                           << "32767";
    }
}

void TestFileInfo::versionTexts()
{
    QFETCH(Version, version);
    QFETCH(bool, pe32Plus);
    PeWriter::Options options;
    options.version = version;
    options.pe32Plus = pe32Plus;
    const QString path = m_dir.filePath(QStringLiteral("version.exe"));
    QVERIFY(PeWriter::writeFile(path, options));

    const FileInfo info = GetFileInfo(path);
    QTEST(info.Version, "expectedVersion");
    QTEST(info.Build, "expectedBuild");
    QCOMPARE(info.FileType, QStringLiteral("Anwendung"));
    QCOMPARE(info.FileName, QStringLiteral("version.exe"));
    QCOMPARE(info.Path, path);
    QFETCH(QString, expectedVersion);
    QFETCH(QString, expectedBuild);
    QCOMPARE(versionWithBuild(info), expectedVersion + QStringLiteral(" Build ") + expectedBuild);
}

void TestFileInfo::fileTypes_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<QString>("text");
    const QStringList texts{QStringLiteral("Unbekannt"),
                            QStringLiteral("Anwendung"),
                            QStringLiteral("Dynamic Link Library (DLL)"),
                            QStringLiteral("Geräte Trieber"),
                            QStringLiteral("Schriftart"),
                            QStringLiteral("Virtueller Geräte Treiber"),
                            QString(),
                            QStringLiteral("Static Library"),
                            QString()};
    for (quint32 code = 0; code < quint32(texts.size()); ++code)
        QTest::addRow("%u", code) << code << texts[code];
    QTest::newRow("large") << 0x80000007u << QString();
}

void TestFileInfo::fileTypes()
{
    QFETCH(quint32, code);
    PeWriter::Options options;
    options.version = {1, 2, 3, 4};
    options.fileType = code;
    options.pe32Plus = code % 2;
    const QString path = m_dir.filePath(QStringLiteral("type.bin"));
    QVERIFY(PeWriter::writeFile(path, options));
    const FileInfo info = GetFileInfo(path);
    QTEST(info.FileType, "text");
    QCOMPARE(info.Version, QStringLiteral("1.2"));
}

void TestFileInfo::fileNames_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("windows path") << "C:\\Programme\\Pawnsketch\\pawnsketch.exe"
                                  << "pawnsketch.exe";
    QTest::newRow("unix path") << "/opt/pawnsketch/pawnsketch.exe"
                               << "pawnsketch.exe";
    QTest::newRow("mixed, backslash last") << "/opt/pawn/backup\\old.exe"
                                           << "old.exe";
    QTest::newRow("mixed, slash last") << "C:\\pawn\\backup/old.exe"
                                       << "old.exe";
    QTest::newRow("bare name") << "pawnsketch.exe"
                               << "pawnsketch.exe";
    QTest::newRow("trailing backslash") << "C:\\Programme\\Pawnsketch\\"
                                        << "";
    QTest::newRow("trailing slash") << "/opt/pawnsketch/"
                                    << "";
    QTest::newRow("empty") << ""
                           << "";
}

void TestFileInfo::fileNames()
{
    QFETCH(QString, path);
    QFETCH(QString, fileName);
    QCOMPARE(fileNameOfPath(path), fileName);
    // None of these exist: the name and path are still filled in.
    const FileInfo info = GetFileInfo(path);
    QCOMPARE(info.FileName, fileName);
    QCOMPARE(info.Path, path);
    QVERIFY(isEmptyVersion(info));
}

void TestFileInfo::withoutVersion_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("empty file") << write(QStringLiteral("empty.exe"), {});
    QTest::newRow("text file") << write(QStringLiteral("readme.txt"),
                                        "MZ is not enough, this is plain text\n");
    QTest::newRow("directory") << m_dir.path();
    QTest::newRow("missing") << m_dir.filePath(QStringLiteral("missing.exe"));
    PeWriter::Layout layout;
    QByteArray noResources = image(false, &layout);
    set32(noResources, layout.sectionTable - 14 * 8, 0); // resource data directory
    const QString fifo = m_dir.filePath(QStringLiteral("fifo.exe"));
    QVERIFY(::mkfifo(QFile::encodeName(fifo).constData(), 0600) == 0);
    QTest::newRow("no resources") << write(QStringLiteral("nores.exe"), noResources);
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("fifo without writer") << fifo; // opening it would block
}

void TestFileInfo::withoutVersion()
{
    QFETCH(QString, path);
    QVERIFY(!path.isEmpty());
    QVERIFY(isEmptyVersion(GetFileInfo(path)));
}

void TestFileInfo::truncatedImages_data()
{
    QTest::addColumn<bool>("pe32Plus");
    QTest::newRow("PE32") << false;
    QTest::newRow("PE32+") << true;
}

// Every prefix of a good image: either no version at all or the right one,
// and certainly nothing while the fixed info itself is cut off.
void TestFileInfo::truncatedImages()
{
    QFETCH(bool, pe32Plus);
    PeWriter::Layout layout;
    const QByteArray full = image(pe32Plus, &layout);
    const PeVersionResult expected = readPeVersion(full);
    QVERIFY2(expected.ok, qPrintable(expected.error));
    QCOMPARE(expected.info.fileVersionLS, 2209u);

    for (qsizetype cut = 0; cut < full.size(); ++cut) {
        const PeVersionResult result = readPeVersion(full.left(cut));
        if (cut < layout.fixedFileInfo + 52)
            QVERIFY2(!result.ok, qPrintable(QString::number(cut)));
        else if (result.ok)
            QVERIFY2(sameInfo(result.info, expected.info), qPrintable(QString::number(cut)));
    }
}

void TestFileInfo::truncatedFilesOnDisk()
{
    const QByteArray full = image(true);
    for (qsizetype cut = 0; cut <= full.size(); cut += 37) {
        const FileInfo info = GetFileInfo(write(QStringLiteral("cut.exe"), full.left(cut)));
        QVERIFY2(isEmptyVersion(info) ||
                     (info.Version == QLatin1String("13.2") && info.Build == QLatin1String("2209")),
                 qPrintable(QString::number(cut)));
    }
}

void TestFileInfo::damagedImages_data()
{
    QTest::addColumn<bool>("pe32Plus");
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<bool>("stillReadable"); // harmless damage: the right version still comes out

    using L = PeWriter::Layout;
    constexpr quint32 Subdir = 0x80000000u;
    // Resource layout of the writer: root directory at 0, name directory at
    // 0x18, language directory at 0x30, data entry at 0x48.
    const QList<std::tuple<const char *, Damage, bool>> cases{
        {"no MZ", [](QByteArray &d, const L &) { d[0] = 'Z'; }, false},
        {"e_lfanew past the end", [](QByteArray &d, const L &) { set32(d, 0x3C, 0xFFFFFFF0u); }, false},
        {"e_lfanew negative", [](QByteArray &d, const L &) { set32(d, 0x3C, 0x80000000u); }, false},
        {"e_lfanew at DOS header", [](QByteArray &d, const L &) { set32(d, 0x3C, 0); }, false},
        {"PE signature", [](QByteArray &d, const L &l) { d[l.peHeader + 1] = 'X'; }, false},
        {"optional magic", [](QByteArray &d, const L &l) { set16(d, l.optionalHeader, 0x107); }, false},
        {"optional header empty", [](QByteArray &d, const L &l) { set16(d, l.peHeader + 20, 0); }, false},
        {"optional header huge", [](QByteArray &d, const L &l) { set16(d, l.peHeader + 20, 0xFFFF); }, false},
        {"two data directories", [](QByteArray &d, const L &l) { set32(d, l.sectionTable - 16 * 8 - 4, 2); },
         false},
        {"no sections", [](QByteArray &d, const L &l) { set16(d, l.peHeader + 6, 0); }, false},
        {"65535 sections", [](QByteArray &d, const L &l) { set16(d, l.peHeader + 6, 0xFFFF); }, false},
        {"resource RVA outside sections",
         [](QByteArray &d, const L &l) { set32(d, l.sectionTable - 14 * 8, 0x50000); }, false},
        {"raw data past the end",
         [](QByteArray &d, const L &l) { set32(d, l.sectionTable + 20, 0xFFFFFE00u); }, false},
        {"root without entries", [](QByteArray &d, const L &l) { set16(d, l.resources + 14, 0); }, false},
        {"root claims 131070 entries",
         [](QByteArray &d, const L &l) {
             set16(d, l.resources + 12, 0xFFFF);
             set16(d, l.resources + 14, 0xFFFF);
         },
         false},
        {"no version type", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x10, 3); }, false},
        {"type entry is a leaf", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x14, 0x18); },
         false},
        {"type loops to root", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x14, Subdir); },
         false},
        {"name loops to itself",
         [](QByteArray &d, const L &l) { set32(d, l.resources + 0x2C, Subdir | 0x18); }, false},
        {"language loops to root", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x44, Subdir); },
         false},
        {"directory past the end",
         [](QByteArray &d, const L &l) { set32(d, l.resources + 0x2C, Subdir | 0x7FFFFFF0u); }, false},
        {"data entry past the end",
         [](QByteArray &d, const L &l) { set32(d, l.resources + 0x44, 0x7FFFFFF0u); }, false},
        {"data RVA outside sections",
         [](QByteArray &d, const L &l) { set32(d, l.resources + 0x48, 0x90000); }, false},
        {"data size zero", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x4C, 0); }, false},
        {"data size cuts fixed info",
         [](QByteArray &d, const L &l) { set32(d, l.resources + 0x4C, 40 + 51); }, false},
        {"wrong key", [](QByteArray &d, const L &l) { d[l.versionInfo + 6] = 'X'; }, false},
        {"no fixed info value", [](QByteArray &d, const L &l) { set16(d, l.versionInfo + 2, 0); }, false},
        {"block shorter than fixed info", [](QByteArray &d, const L &l) { set16(d, l.versionInfo, 80); },
         false},
        {"wrong signature", [](QByteArray &d, const L &l) { set32(d, l.fixedFileInfo, 0xFEEF04BCu); }, false},

        {"many data directories",
         [](QByteArray &d, const L &l) { set32(d, l.sectionTable - 16 * 8 - 4, 0xFFFFFFFFu); }, true},
        {"raw size huge", [](QByteArray &d, const L &l) { set32(d, l.sectionTable + 16, 0xFFFFFFFFu); },
         true},
        {"data size huge", [](QByteArray &d, const L &l) { set32(d, l.resources + 0x4C, 0xFFFFFFFFu); },
         true},
        {"block length huge", [](QByteArray &d, const L &l) { set16(d, l.versionInfo, 0xFFFF); }, true},
        {"trailing garbage", [](QByteArray &d, const L &) { d += QByteArray(100000, '\xA5'); }, true},
    };
    for (bool plus : {false, true}) {
        for (const auto &[name, damage, readable] : cases)
            QTest::addRow("%s %s", plus ? "PE32+" : "PE32", name) << plus << damage << readable;
    }
}

void TestFileInfo::damagedImages()
{
    QFETCH(bool, pe32Plus);
    QFETCH(Damage, damage);
    QFETCH(bool, stillReadable);
    PeWriter::Layout layout;
    QByteArray data = image(pe32Plus, &layout);
    damage(data, layout);
    const PeVersionResult result = readPeVersion(data);
    QCOMPARE(result.ok, stillReadable);
    QCOMPARE(result.error.isEmpty(), stillReadable);
    const FileInfo info = GetFileInfo(write(QStringLiteral("damaged.exe"), data));
    if (stillReadable)
        QCOMPARE(versionWithBuild(info), QStringLiteral("13.2 Build 2209"));
    else
        QVERIFY(isEmptyVersion(info));
}

void TestFileInfo::randomFlips_data()
{
    QTest::addColumn<bool>("pe32Plus");
    QTest::newRow("PE32") << false;
    QTest::newRow("PE32+") << true;
}

// Damage outside the fixed info must never produce a different version:
// the parser either finds the one true block or gives up.
void TestFileInfo::randomFlips()
{
    QFETCH(bool, pe32Plus);
    PeWriter::Layout layout;
    const QByteArray original = image(pe32Plus, &layout);
    const PeFixedFileInfo expected = readPeVersion(original).info;
    QRandomGenerator random(20240611);
    int readable = 0;
    for (int round = 0; round < 3000; ++round) {
        QByteArray data = original;
        bool fixedInfoHit = false;
        const int flips = 1 + random.bounded(4);
        for (int i = 0; i < flips; ++i) {
            // Mostly headers and directories, where damage leads somewhere new.
            const int at = random.bounded(round % 2 ? int(data.size()) : layout.versionInfo + 8);
            data[at] = char(data[at] ^ (1 << random.bounded(8)));
            fixedInfoHit |= at >= layout.fixedFileInfo && at < layout.fixedFileInfo + 52;
        }
        const PeVersionResult result = readPeVersion(data);
        QCOMPARE(result.ok, result.error.isEmpty());
        if (result.ok && !fixedInfoHit) {
            QVERIFY2(sameInfo(result.info, expected), qPrintable(QString::number(round)));
            ++readable;
        }
    }
    // Plenty of flips land in bytes the reader never looks at.
    QVERIFY(readable > 100);
}

// A 4 GiB file (sparse, so cheap) whose resources lie beyond the 32-bit
// signed range: offsets must be carried in 64 bits, and nothing is read whole.
void TestFileInfo::hugeSparseFile()
{
    PeWriter::Layout layout;
    QByteArray head = image(true, &layout);
    const QByteArray resources = head.mid(layout.resources);
    const quint32 farAway = 0xF0000000u;
    set32(head, layout.sectionTable + 20, farAway);

    const QString path = m_dir.filePath(QStringLiteral("huge.exe"));
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.write(head.left(layout.resources)) == layout.resources);
        if (!file.seek(farAway) || file.write(resources) != resources.size() ||
            !file.resize(0x100000000ll + 512))
            QSKIP("no room for a sparse 4 GiB file here");
    }
    QCOMPARE(versionWithBuild(GetFileInfo(path)), QStringLiteral("13.2 Build 2209"));

    // The same file, its header now pointing into the empty middle.
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray pointer(4, '\0');
        set32(pointer, 0, 0xC0000000u);
        QVERIFY(file.seek(0x3C) && file.write(pointer) == 4);
    }
    QVERIFY(isEmptyVersion(GetFileInfo(path)));
    QFile::remove(path);
}

void TestFileInfo::fileExists_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("exists");
    const QString file = write(QStringLiteral("present.exe"), "x");
    const QString link = m_dir.filePath(QStringLiteral("link.exe"));
    QFile::link(file, link);
    const QString dangling = m_dir.filePath(QStringLiteral("dangling.exe"));
    QFile::link(m_dir.filePath(QStringLiteral("gone.exe")), dangling);
    const QString dirLink = m_dir.filePath(QStringLiteral("dirlink"));
    QFile::link(m_dir.path(), dirLink);

    QTest::newRow("file") << file << true;
    QTest::newRow("empty file") << write(QStringLiteral("zero.exe"), {}) << true;
    QTest::newRow("link to file") << link << true;
    QTest::newRow("dangling link") << dangling << false;
    QTest::newRow("folder") << m_dir.path() << false;
    QTest::newRow("link to folder") << dirLink << false;
    QTest::newRow("missing") << m_dir.filePath(QStringLiteral("missing.exe")) << false;
    QTest::newRow("below a file") << file + QStringLiteral("/inner.exe") << false;
    QTest::newRow("empty path") << QString() << false;
}

void TestFileInfo::fileExists()
{
    QFETCH(QString, path);
    QTEST(FileExists(path), "exists");
}

QTEST_GUILESS_MAIN(TestFileInfo)
#include "tst_fileinfo.moc"
