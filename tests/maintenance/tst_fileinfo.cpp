#include "maintenance/FileInfo.h"

#include "pewriter/PeWriter.h"
#include "testsupport/TestSupport.h"

#include <QtTest>

#include <cstring>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using PeWriter::Version;

namespace {

QByteArray image(bool pe32Plus, PeWriter::Layout *layout = nullptr)
{
    PeWriter::Options options;
    options.version = {13, 2, 0, 2209};
    options.pe32Plus = pe32Plus;
    return PeWriter::build(options, layout);
}

// Writes the low `width` bytes of value at `at`, little-endian.
void poke(QByteArray &data, qsizetype at, int width, quint32 value)
{
    for (int i = 0; i < width; ++i)
        data[at + i] = char(value >> (8 * i));
}

bool sameInfo(const PeFixedFileInfo &a, const PeFixedFileInfo &b)
{
    return std::memcmp(&a, &b, sizeof a) == 0; // nothing but 32-bit fields
}

bool isEmptyVersion(const FileInfo &info)
{
    return info.Version == QLatin1String("0.0") && info.Build == QLatin1String("0") &&
           info.FileType == QLatin1String("Unbekannt");
}

} // namespace

Q_DECLARE_METATYPE(Version)

class TestFileInfo : public QObject
{
    Q_OBJECT

    QString write(const QString &name, const QByteArray &data)
    {
        const QString path = m_dir.filePath(name);
        return TestSupport::writeFile(path, data) ? path : QString();
    }

    QTemporaryDir m_dir;

private slots:
    void fromImage_data()
    {
        QTest::addColumn<Version>("version");
        QTest::addColumn<bool>("pe32Plus");
        QTest::addColumn<quint32>("fileType");
        QTest::addColumn<QString>("expectedVersion");
        QTest::addColumn<QString>("expectedBuild");
        QTest::addColumn<QString>("expectedType");
        QTest::addColumn<int>("sectionsBefore");
        const auto row = [](const QByteArray &name, const Version &version, bool plus, quint32 type,
                            const char *text, const char *build, const QString &typeText, int before = 0) {
            QTest::newRow(name.constData()) << version << plus << type << text << build << typeText << before;
        };
        for (bool plus : {false, true}) {
            const QByteArray format = plus ? "PE32+, " : "PE32, ";
            row(format + "release ignored", {13, 2, 5, 2209}, plus, 1, "13.2", "2209", "Anwendung");
            // The resources' address is the very end of the section before them.
            row(format + "after two sections", {13, 3, 0, 2300}, plus, 1, "13.3", "2300", "Anwendung", 2);
            // Shown as the signed 16-bit numbers they always were.
            row(format + "signed limits", {32767, 65535, 0, 32768}, plus, 1, "32767.-1", "-32768",
                "Anwendung");
        }
        const QStringList types =
            QString::fromUtf8("Unbekannt|Anwendung|Dynamic Link Library (DLL)|Geräte Trieber|"
                              "Schriftart|Virtueller Geräte Treiber||Static Library|")
                .split(u'|');
        for (quint32 code = 0; code < quint32(types.size()); ++code)
            row("type " + QByteArray::number(code), {1, 2, 3, 4}, code % 2, code, "1.2", "4", types[code]);
        row("type 0x80000007", {1, 2, 3, 4}, false, 0x80000007u, "1.2", "4", QString());
    }

    void fromImage()
    {
        QFETCH(Version, version);
        QFETCH(bool, pe32Plus);
        QFETCH(quint32, fileType);
        PeWriter::Options options;
        options.version = version;
        options.pe32Plus = pe32Plus;
        options.fileType = fileType;
        QFETCH(int, sectionsBefore);
        options.sectionsBefore = sectionsBefore;
        const QString path = m_dir.filePath(QStringLiteral("version.exe"));
        QVERIFY(PeWriter::writeFile(path, options));

        const FileInfo info = GetFileInfo(path);
        QTEST(info.Version, "expectedVersion");
        QTEST(info.Build, "expectedBuild");
        QTEST(info.FileType, "expectedType");
        QCOMPARE(info.FileName, QStringLiteral("version.exe"));
        QCOMPARE(info.Path, path);
    }

    // Paths without a version block: the name is still taken from the path (with either
    // kind of separator), and nothing that is not a regular file is opened.
    void withoutVersion_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<bool>("exists");
        const auto row = [](const char *name, const QString &path, const QString &fileName, bool exists) {
            QTest::newRow(name) << path << fileName << exists;
        };
        row("mixed, backslash last", "/opt/pawn/backup\\old.exe", "old.exe", false);
        row("mixed, slash last", "C:\\pawn\\backup/old.exe", "old.exe", false);
        row("bare name", "pawnsketch.exe", "pawnsketch.exe", false);
        row("trailing backslash", "C:\\Programme\\Pawnsketch\\", "", false);
        row("empty path", "", "", false);

        const QString file = write(QStringLiteral("present.exe"), "x");
        row("file", file, "present.exe", true);
        row("empty file", write(QStringLiteral("zero.exe"), {}), "zero.exe", true);
        row("folder", m_dir.path(), QFileInfo(m_dir.path()).fileName(), false);
        row("missing", m_dir.filePath(QStringLiteral("missing.exe")), "missing.exe", false);
#ifdef Q_OS_UNIX
        // Windows has no FIFOs, and its links (shortcut files) are plain files.
        const QString link = m_dir.filePath(QStringLiteral("link.exe"));
        const QString dangling = m_dir.filePath(QStringLiteral("dangling.exe"));
        const QString dirLink = m_dir.filePath(QStringLiteral("dirlink"));
        const QString fifo = m_dir.filePath(QStringLiteral("fifo.exe"));
        QVERIFY(QFile::link(file, link) &&
                QFile::link(m_dir.filePath(QStringLiteral("gone.exe")), dangling) &&
                QFile::link(m_dir.path(), dirLink));
        QVERIFY(::mkfifo(QFile::encodeName(fifo).constData(), 0600) == 0);
        row("link to file", link, "link.exe", true);
        row("dangling link", dangling, "dangling.exe", false);
        row("link to folder", dirLink, "dirlink", false);
        row("fifo without writer", fifo, "fifo.exe", false); // opening it would block
#endif
    }

    void withoutVersion()
    {
        QFETCH(QString, path);
        QFETCH(QString, fileName);
        QCOMPARE(fileNameOfPath(path), fileName);
        const FileInfo info = GetFileInfo(path);
        QCOMPARE(info.FileName, fileName);
        QCOMPARE(info.Path, path);
        QVERIFY(isEmptyVersion(info));
        QTEST(FileExists(path), "exists");
    }

    void damagedImages_data()
    {
        QTest::addColumn<bool>("pe32Plus");
        QTest::addColumn<int>("at");
        QTest::addColumn<int>("width"); // 0: 100,000 bytes of garbage appended instead
        QTest::addColumn<quint32>("value");
        QTest::addColumn<bool>("stillReadable"); // harmless damage: the right version still comes out

        using L = PeWriter::Layout;
        struct Damage
        {
            const char *name;
            int L::*base; // nullptr: the start of the file
            int offset, width;
            quint32 value;
            bool readable;
        };
        constexpr quint32 Subdir = 0x80000000u;
        const int dataDirectories = -16 * 8 - 4, resourceEntry = -14 * 8;
        // Resource layout of the writer: root directory at 0, name directory at 0x18,
        // language directory at 0x30, data entry at 0x48.
        const Damage damages[] = {
            {"no MZ", nullptr, 0, 1, 'Z', false},
            {"e_lfanew past the end", nullptr, 0x3C, 4, 0xFFFFFFF0u, false},
            {"PE signature", &L::peHeader, 1, 1, 'X', false},
            {"optional magic", &L::optionalHeader, 0, 2, 0x107, false},
            {"optional header empty", &L::peHeader, 20, 2, 0, false},
            {"optional header huge", &L::peHeader, 20, 2, 0xFFFF, false},
            {"two data directories", &L::sectionTable, dataDirectories, 4, 2, false},
            {"no resources", &L::sectionTable, resourceEntry, 4, 0, false},
            {"resource RVA outside sections", &L::sectionTable, resourceEntry, 4, 0x50000, false},
            {"65535 sections", &L::peHeader, 6, 2, 0xFFFF, false},
            {"raw data past the end", &L::sectionTable, 20, 4, 0xFFFFFE00u, false},
            {"root claims 131070 entries", &L::resources, 12, 4, 0xFFFFFFFFu, false},
            {"no version type", &L::resources, 0x10, 4, 3, false},
            {"type loops to root", &L::resources, 0x14, 4, Subdir, false},
            {"directory past the end", &L::resources, 0x2C, 4, Subdir | 0x7FFFFFF0u, false},
            {"data entry past the end", &L::resources, 0x44, 4, 0x7FFFFFF0u, false},
            {"data RVA outside sections", &L::resources, 0x48, 4, 0x90000, false},
            {"data size cuts fixed info", &L::resources, 0x4C, 4, 40 + 51, false},
            {"wrong key", &L::versionInfo, 6, 1, 'X', false},
            {"no fixed info value", &L::versionInfo, 2, 2, 0, false},
            {"block shorter than fixed info", &L::versionInfo, 0, 2, 80, false},
            {"wrong signature", &L::fixedFileInfo, 0, 4, 0xFEEF04BCu, true},
            {"many data directories", &L::sectionTable, dataDirectories, 4, 0xFFFFFFFFu, true},
            {"raw size huge", &L::sectionTable, 16, 4, 0xFFFFFFFFu, true},
            {"data size huge", &L::resources, 0x4C, 4, 0xFFFFFFFFu, true},
            {"block length huge", &L::versionInfo, 0, 2, 0xFFFF, true},
            {"trailing garbage", nullptr, 0, 0, 0xA5, true},
        };
        for (bool plus : {false, true}) {
            L layout;
            image(plus, &layout);
            for (const Damage &d : damages) {
                QTest::addRow("%s %s", plus ? "PE32+" : "PE32", d.name)
                    << plus << (d.base ? layout.*d.base : 0) + d.offset << d.width << d.value << d.readable;
            }
        }
    }

    void damagedImages()
    {
        QFETCH(bool, pe32Plus);
        QFETCH(int, at);
        QFETCH(int, width);
        QFETCH(quint32, value);
        QFETCH(bool, stillReadable);
        QByteArray data = image(pe32Plus);
        if (width == 0)
            data += QByteArray(100000, char(value));
        poke(data, at, width, value);
        const PeVersionResult result = readPeVersion(data);
        QCOMPARE(result.ok, stillReadable);
        QCOMPARE(result.error.isEmpty(), stillReadable);
        const FileInfo info = GetFileInfo(write(QStringLiteral("damaged.exe"), data));
        if (stillReadable)
            QCOMPARE(versionWithBuild(info), QStringLiteral("13.2 Build 2209"));
        else
            QVERIFY(isEmptyVersion(info));
    }

    void truncatedAndFlipped_data()
    {
        QTest::addColumn<bool>("pe32Plus");
        QTest::newRow("PE32") << false;
        QTest::newRow("PE32+") << true;
    }

    // Every prefix of a good image, and random bit flips outside the fixed info: either no
    // version at all or the one true version, never another.
    void truncatedAndFlipped()
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

        QRandomGenerator random(20240611);
        int readable = 0;
        for (int round = 0; round < 3000; ++round) {
            QByteArray data = full;
            bool fixedInfoHit = false;
            for (int i = 1 + random.bounded(4); i > 0; --i) {
                // Mostly headers and directories, where damage leads somewhere new.
                const int at = random.bounded(round % 2 ? int(data.size()) : layout.versionInfo + 8);
                data[at] = char(data[at] ^ (1 << random.bounded(8)));
                fixedInfoHit |= at >= layout.fixedFileInfo && at < layout.fixedFileInfo + 52;
            }
            const PeVersionResult result = readPeVersion(data);
            QCOMPARE(result.ok, result.error.isEmpty());
            if (result.ok && !fixedInfoHit) {
                QVERIFY2(sameInfo(result.info, expected.info), qPrintable(QString::number(round)));
                ++readable;
            }
        }
        QVERIFY(readable > 100); // plenty of flips land in bytes the reader never looks at
    }

    // A 4 GiB file (sparse, so cheap) whose resources lie beyond the 32-bit signed range:
    // offsets must be carried in 64 bits, and nothing is read whole.
    void hugeSparseFile()
    {
        PeWriter::Layout layout;
        QByteArray head = image(true, &layout);
        const QByteArray resources = head.mid(layout.resources);
        const quint32 farAway = 0xF0000000u;
        poke(head, layout.sectionTable + 20, 4, farAway);

        const QString path = m_dir.filePath(QStringLiteral("huge.exe"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.write(head.left(layout.resources)) == layout.resources);
        if (!file.seek(farAway) || file.write(resources) != resources.size() ||
            !file.resize(0x100000000ll + 512))
            QSKIP("no room for a sparse 4 GiB file here");
        QVERIFY(file.flush());
        QCOMPARE(versionWithBuild(GetFileInfo(path)), QStringLiteral("13.2 Build 2209"));

        // The same file, its header now pointing into the empty middle.
        QByteArray pointer(4, '\0');
        poke(pointer, 0, 4, 0xC0000000u);
        QVERIFY(file.seek(0x3C) && file.write(pointer) == 4 && file.flush());
        QVERIFY(isEmptyVersion(GetFileInfo(path)));
        file.remove();
    }
};

QTEST_GUILESS_MAIN(TestFileInfo)
#include "tst_fileinfo.moc"
