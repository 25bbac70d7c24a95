// libFuzzer entry points for every parser of outside input. Each binary is this file built
// with SK_FUZZ_TARGET naming one of the functions below. A target aborts (and so reports
// a finding) when a property that must hold for any input is broken.
#include "app/CommandLine.h"
#include "core/Minisign.h"
#include "core/ProgramFolder.h"
#include "fonts/FontCheck.h"
#include "help/ChmData.h"
#include "help/ChmFile.h"
#include "help/HelpFiles.h"
#include "localisation/IniFile.h"
#include "maintenance/DownloadCheck.h"
#include "maintenance/FileInfo.h"
#include "maintenance/UpdateCheck.h"
#include "net/cURL.h"
#include "support/ErrorReport.h"
#include "support/MailHandoff.h"
#include "support/ReportText.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

namespace {

#define SK_CHECK(condition)                                                                                  \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "property broken: %s (line %d)\n", #condition, __LINE__);                   \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

// Files go to one folder for the whole run; each input overwrites the last one's file.
QString scratchFile(const QString &relative, const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    return path;
}

QString text(const uint8_t *data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
}

// Section and key come from the input's first two lines, so the fuzzer controls them while
// real ini files still make useful seeds.
int fuzzIni(const uint8_t *data, size_t size)
{
    const QStringList lines = text(data, std::min<size_t>(size, 512)).split(u'\n');
    const QString path = scratchFile(QStringLiteral("a.ini"), data, size);
    const int sizes[] = {1200, 1, 0, -1};
    for (const int limit : sizes) {
        const QString value =
            ReadIniString(lines.value(0), lines.value(1), QStringLiteral("  "), path, limit);
        SK_CHECK(value.size() <= std::max(limit - 1, 0));
    }
    return 0;
}

int fuzzHelpIndex(const uint8_t *data, size_t size)
{
    static const bool once = [] {
        setProgramFolderForTesting(QFileInfo(scratchFile(QStringLiteral("x"), nullptr, 0)).path());
        return true;
    }();
    Q_UNUSED(once);
    scratchFile(QStringLiteral("ini/hlpidx.ini"), data, size);
    const QString firstKey = text(data, std::min<size_t>(size, 64)).section(u'=', 0, 0);
    helpContextId(firstKey);
    helpContextId(QStringLiteral("S19T0"));
    return 0;
}

int fuzzPe(const uint8_t *data, size_t size)
{
    const QString path = scratchFile(QStringLiteral("p.exe"), data, size);
    const FileInfo info = GetFileInfo(path);
    SK_CHECK(!info.Version.isEmpty() && !info.Build.isEmpty());
    const PeVersionResult result =
        readPeVersion(QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size)));
    SK_CHECK(result.ok == result.error.isEmpty());
    return 0;
}

int fuzzUrl(const uint8_t *data, size_t size)
{
    cURL url;
    SK_CHECK(url.GetURL(QStringLiteral("http://host:81/p?q")));
    const QString input = text(data, size);
    QString canonical;
    if (url.GetURL(input)) {
        SK_CHECK(url.Scheme().size() < cURL::kSchemeBuffer && url.HostName().size() < cURL::kHostBuffer);
        SK_CHECK(url.UserName().size() < cURL::kUserBuffer && url.Password().size() < cURL::kPasswordBuffer);
        SK_CHECK(url.URLPath().size() < cURL::kPathBuffer && url.URLExtraInfo().size() < cURL::kExtraBuffer);
    } else if (!cURL::canonicalize(input, canonical) || canonical.size() >= cURL::kCanonicalBuffer) {
        // Not even canonical: the parts of the last good URL stay.
        SK_CHECK(url.HostName() == QLatin1String("host") && url.Port() == 81);
    }
    return 0;
}

int fuzzCommandLine(const uint8_t *data, size_t size)
{
    const QString line = text(data, size);
    QStringList items;
    SK_CHECK(GetCommandItems(line, items) == items.isEmpty());
    for (const QString &item : items)
        SK_CHECK(!item.isEmpty() && !item.contains(u' '));
    const ErrorRecord record = parseErrorRecord(line);
    SK_CHECK(record.values.size() <= 4);
    const QString shown = errorRecordText(record, QStringLiteral("a#b#c#Nr:#Text:#Param:#g#h#Modul:"));
    SK_CHECK(shown.count(QLatin1String("\r\n")) >= record.values.size() - 1);
    return 0;
}

int fuzzUpdate(const uint8_t *data, size_t size)
{
    const QString input = text(data, size);
    QString version = QStringLiteral("unchanged");
    if (serverVersionFromText(input, version))
        SK_CHECK(!version.contains(u'\n') && input.contains(version));
    else
        SK_CHECK(version == QLatin1String("unchanged"));
    const QString sha = publishedSha256(input);
    SK_CHECK(!sha.contains(u'\n'));
    return 0;
}

int fuzzReport(const uint8_t *data, size_t size)
{
    FuzzedDataProvider in(data, size);
    const auto flags = in.ConsumeIntegral<uint8_t>();
    const QString sep = QString::fromStdString(in.ConsumeRandomLengthString(4));
    ErrorReportInput report{
        .userLine = QStringLiteral("Benutzername: x"),
        .errorMessage = QString::fromStdString(in.ConsumeRandomLengthString(256)),
        .additionalText = QString::fromStdString(in.ConsumeRandomLengthString(256)),
        .startLog = QString::fromStdString(in.ConsumeRandomLengthString(4096)),
        .errorLog = QString::fromStdString(in.ConsumeRemainingBytesAsString()),
        .reportError = (flags & 1) != 0,
        .appendStartLog = (flags & 2) != 0,
        .appendErrorLog = (flags & 4) != 0,
        .hidePersonalData = (flags & 8) != 0,
        .accountName = QStringLiteral("max"),
        .homeFolder = QStringLiteral("/home/max"),
    };
    const QString whole = BuildErrorReport(report);
    // Made a block at a time, blocks of 1 to 16 characters, it is the same text with the same lines.
    ErrorReportHead head;
    head.setInput(report);
    const auto tail = makeReportText(report, std::make_shared<StringText>(report.startLog),
                                     std::make_shared<StringText>(report.errorLog), 1 + (flags >> 4));
    while (tail && tail->indexStep(64) == ReportText::Step::More) {
    }
    const QString tailText = tail ? tail->slice(0, tail->length()) : QString();
    SK_CHECK(head.text() + tailText == whole);
    if (tail) {
        const StringText expected(tailText);
        SK_CHECK(tail->lineCount() == expected.lineCount());
        for (qsizetype line = 0; line < qMin<qsizetype>(expected.lineCount(), 64); ++line)
            SK_CHECK(tail->lineStart(line) == expected.lineStart(line));
        for (qsizetype pos = 0; pos < tailText.size(); pos += 1 + pos / 3)
            SK_CHECK(tail->at(pos) == tailText.at(pos));
    }
    // The sections keep their order whatever the texts hold.
    qsizetype last = -1;
    for (const QStringView header : {u"[Fehlermeldung / error report]", u"[Zusatext / additional text]",
                                     u"[startlog.txt]", u"[errorlog.txt]"}) {
        const qsizetype at = whole.indexOf(QStringLiteral("---------------") + header.toString());
        if (at >= 0) {
            SK_CHECK(at > last);
            last = at;
        }
    }
    if (!sep.isEmpty())
        SK_CHECK(!CollapseRepeats(report.startLog, sep).contains(sep + sep));
    const QString mail = UrlEncodeMailText(report.errorLog);
    SK_CHECK(!mail.contains(u'\r') && !mail.contains(u'\u00e4') && !mail.contains(u'\u00df'));
    return 0;
}

// First line: the [Fonts] Separator value; the rest: chessfonts.ini.
int fuzzFonts(const uint8_t *data, size_t size)
{
    const QString input = text(data, size);
    const QChar sep = fontListSeparator(input.section(u'\n', 0, 0));
    SK_CHECK(sep == u'\t' || (sep.unicode() >= 1 && sep.unicode() < 255));
    const QList<ChessFont> fonts = parseChessFonts(input.section(u'\n', 1), sep);
    for (const ChessFont &font : fonts)
        SK_CHECK(!font.name.contains(sep) && !font.file.contains(sep));
    const FontCheckResult result = checkChessFonts(
        fonts, [](const QString &file) { return file.size() % 2 == 0; },
        [](const QString &name) { return name.size() % 3 == 0; });
    SK_CHECK(result.names.size() == fonts.size() && result.files.size() == fonts.size());
    return 0;
}

// The help file's own tables, on bytes: the input is cut in four at its first NULs.
int fuzzChmData(const uint8_t *data, size_t size)
{
    const QByteArray input = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QList<QByteArray> parts = input.split('\0');
    parseContextMap(input, parts.value(1));
    parseChmSystem(input);
    const QString html = text(data, size);
    parseSitemap(html);
    htmlText(html);
    htmlTitle(html);
    QBuffer file;
    file.setData(input);
    file.open(QIODevice::ReadOnly);
    chmStructureUsable(file);
    objectPathFor(html.left(300),
                  [&html](const QString &candidate) { return candidate.size() < html.size() / 2; });
    return 0;
}

// What the help window does with a file: open it, build its navigation, show a topic, search.
int fuzzChm(const uint8_t *data, size_t size)
{
    const ChmFile chm(scratchFile(QStringLiteral("h.chm"), data, size));
    if (!chm.isOpen())
        return 0;
    chm.defaultTopic();
    chm.contents();
    chm.index();
    chm.topicOf(1010);
    chm.search(QStringLiteral("e"));
    for (const QString &object : chm.objects().mid(0, 64))
        SK_CHECK(chm.read(object).size() <= 64 * 1024 * 1024);
    return 0;
}

// A key file, then after the first empty line a signature file and the signed data: the
// parsers must stay within their bounds, and nothing but a signature by the key verifies.
int fuzzMinisign(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype gap = input.indexOf("\n\n");
    const QList<Minisign::PublicKey> keys = Minisign::parsePublicKeys(QString::fromLatin1(input.left(gap)));
    for (const Minisign::PublicKey &key : keys)
        SK_CHECK(key.keyId.size() == Minisign::kKeyIdSize && key.key.size() == Minisign::kPublicKeySize);
    if (gap < 0)
        return 0;
    const QByteArray rest = input.mid(gap + 2);
    // The signature file is four lines; the data is whatever follows them.
    qsizetype end = 0;
    for (int line = 0; line < 4 && end >= 0; ++line)
        end = rest.indexOf('\n', end) < 0 ? -1 : rest.indexOf('\n', end) + 1;
    const QByteArray signatureFile = end < 0 ? rest : rest.left(end);
    Minisign::Signature signature;
    if (!Minisign::parseSignature(signatureFile, signature))
        return 0;
    SK_CHECK(signature.signature.size() == Minisign::kSignatureSize &&
             signature.globalSignature.size() == Minisign::kSignatureSize &&
             signature.trustedComment.size() <= Minisign::kMaxTrustedComment &&
             !signature.trustedComment.contains('\n'));
    const Minisign::Result result = Minisign::verify(end < 0 ? QByteArray() : rest.mid(end), signature, keys);
    if (result == Minisign::Result::Ok) {
        // A changed trusted comment never verifies.
        signature.trustedComment += 'x';
        SK_CHECK(Minisign::verify(rest.mid(end), signature, keys) != Minisign::Result::Ok);
    }
    bool found = false;
    Minisign::trustedField(signature.trustedComment, QStringLiteral("file"), &found);
    return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return SK_FUZZ_TARGET(data, size);
}
