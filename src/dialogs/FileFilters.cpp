#include "dialogs/FileFilters.h"

#include <QStringList>

#include <iterator>

namespace {

// Every pair the dialogs use, in the order of the program's table. The texts keep
// their inconsistencies ("Notation(" without a blank beside "Notation (") because
// Pawnsketch's users know them that way.
enum Pair
{
    Bitmap,
    Jpeg,
    Gif,
    RichText,
    FenFiles,
    PngFiles,
    ChessFiles,
    HtmlFiles,
    PwkFiles,
    StyleSheets,
    PawnsketchTenTypes,
    FenNotation,
    AlgNotation,
    PawnsketchPwk,
    Website,
    Jpg,
    Png,
    ChessGraphics,
    AlgebraicNotationNoBlank,
    Ascii,
    PawnsketchPwkFen,
    PawnsketchTxtAlg,
    AsciiGraphics,
    AlgebraicNotation,
    Popeye,
    PopeyeScripts,
    PopeyeLogs,
    ChessGraphicsFiveTypes,
    PgnFiles,
    PawnsketchElevenTypes,
    PortableGameNotation,
    DesignTemplates,
    PawnsketchUpdate,
    PawnsketchBeta,
    PawnsketchBackup,
    AllFiles,
};

struct PairText
{
    const char *description;
    const char *pattern;
};

constexpr PairText pairTexts[] = {
    {"Bitmap (*.bmp)", "*.bmp"},
    {"JPEG (*.jpg)", "*.jpg"},
    {"GIF (*.gif)", "*.gif"},
    {"Rich Text Format (*.rtf)", "*.rtf"},
    {"FEN-Dateien (*.fen)", "*.fen"},
    {"PNG-Dateien (*.png)", "*.png"},
    {"Schach-Dateien (*.fen, *.pgn, *.pwk, *.html, *.jpg)", "*.fen;*.pgn;*.pwk;*.html;*.jpg"},
    {"HTML-Dateien (*.html)", "*.html"},
    {"PWK-Dateien (*.pwk)", "*.pwk"},
    {"StyleSheet-Dateien (*.css)", "*.css"},
    {"Pawnsketch (*.fen, *.alg, *.png, *.pwk, *.html, *.bmp, *.gif, *.jpg, *.rtf, *.txt)",
     "*.fen;*.alg;*.png;*.pwk;*.html;*.bmp;*.gif;*.jpg;*.rtf;*.txt"},
    {"FEN Notation(*.fen)", "*.fen"},
    {"ALG Notation(*.alg)", "*.alg"},
    {"Pawnsketch (*.pwk)", "*.pwk"},
    {"Website (*.html)", "*.html"},
    {"JPG (*.jpg)", "*.jpg"},
    {"PNG (*.png)", "*.png"},
    {"Schach-Grafikdateien (*.bmp, *.jpg, *.gif)", "*.bmp;*.jpg;*.gif"},
    {"Algebraische Notation(*.alg)", "*.alg"},
    {"ASCII (*.txt)", "*.txt"},
    {"Pawnsketch-Dateien (*.pwk, *.fen)", "*.pwk;*.fen"},
    {"Pawnsketch-Dateien (*.txt, *.alg)", "*.txt;*.alg"},
    {"ASCII-Grafik (*.txt)", "*.txt"},
    {"Algebraische Notation (*.alg)", "*.alg"},
    {"Popeye (pywin*.exe)", "pywin*.exe"},
    {"Popeye-Scriptdateien (*.inp)", "*.inp"},
    {"Popeye-Protokolldateien (*.out)", "*.out"},
    {"Schach-Grafikdateien (*.bmp, *.jpg, *.gif, *.png, *.tif)", "*.bmp;*.jpg;*.gif;*.png;*.tif"},
    {"PGN-Dateien (*.pgn)", "*.pgn"},
    {"Pawnsketch (*.fen, *.alg, *.png, *.pwk, *.html, *.bmp, *.gif, *.jpg, *.rtf, *.txt, *.pgn)",
     "*.fen;*.alg;*.png;*.pwk;*.html;*.bmp;*.gif;*.jpg;*.rtf;*.txt;*.pgn"},
    {"Portable Game Notation(*.pgn)", "*.pgn"},
    {"Pawnsketch Design Templates (*.pwt)", "*.pwt"},
    {"Pawnsketch Update (*.exe)", "pawnsketch_update.exe"},
    {"Pawnsketch BETA (*.exe)", "pawnsketch_beta.exe"},
    {"Pawnsketch Backup (*.bak)", "*.bak"},
    {"Alle Dateien (*.*)", "*.*"},
};
static_assert(std::size(pairTexts) == AllFiles + 1, "one text per pair");

// The pairs of each dialog number. Numbers 1 to 6, 10, 12, 14, 16, 19 and 22 were
// ours to choose: 1 to 6 and 10 take the single types in table order, 16 the second
// Pawnsketch-Dateien pair, 12, 14 and 19 the plain-text notations, and 22 is the
// all-files list for picking arbitrary files. A group offers its combined entry first
// and then one single entry per type it combines, so the user can narrow the list;
// group 21 gathers the plain-text notations. No list ends in "Alle Dateien" of its
// own accord, so a dialog never offers files its caller cannot read.
QList<Pair> pairsOf(int filterIndex)
{
    switch (filterIndex) {
    case 1:
        return {Bitmap};
    case 2:
        return {Jpeg};
    case 3:
        return {Gif};
    case 4:
        return {RichText};
    case 5:
        return {FenFiles};
    case 6:
        return {PngFiles};
    case 7:
        return {ChessFiles};
    case 8:
        return {HtmlFiles};
    case 9:
        return {PwkFiles};
    case 10:
        return {StyleSheets};
    case 11:
        return {PawnsketchTenTypes, FenNotation, AlgNotation, PawnsketchPwk, Website, Jpg, Png, Bitmap, Gif,
                RichText,           Ascii};
    case 12:
        return {Ascii};
    case 13:
        return {ChessGraphics};
    case 14:
        return {AlgebraicNotationNoBlank};
    case 15:
        return {PawnsketchPwkFen};
    case 16:
        return {PawnsketchTxtAlg};
    case 17:
        return {AsciiGraphics};
    case 18:
        return {AlgebraicNotation};
    case 19:
        return {PortableGameNotation};
    case 20:
        return {Popeye};
    case 21:
        return {AlgebraicNotationNoBlank, Ascii, FenNotation, PortableGameNotation};
    case 22:
        return {AllFiles};
    case 23:
        return {PopeyeScripts};
    case 24:
        return {PopeyeLogs};
    case 26:
        return {ChessGraphicsFiveTypes};
    case 27:
        return {PgnFiles};
    case 28:
        return {PawnsketchElevenTypes,
                AlgNotation,
                PawnsketchPwk,
                FenNotation,
                Website,
                Jpg,
                Png,
                Bitmap,
                Gif,
                RichText,
                Ascii,
                PortableGameNotation};
    case 29:
        return {DesignTemplates};
    case 30:
        return {PawnsketchUpdate};
    case 31:
        return {PawnsketchBeta};
    case 32:
        return {PawnsketchBackup};
    default: // 25 is deliberately unassigned
        return {};
    }
}

// Case-insensitive wildcard match of the whole name against one mask; the star
// backtracks to its latest position only, which suffices for "*" sequences.
bool matchesMask(QStringView name, QStringView mask)
{
    qsizetype n = 0;
    qsizetype m = 0;
    qsizetype starMask = -1;
    qsizetype starName = 0;
    while (n < name.size()) {
        if (m < mask.size() && mask[m] == u'*') {
            starMask = m++;
            starName = n;
        } else if (m < mask.size() && (mask[m] == u'?' || mask[m].toCaseFolded() == name[n].toCaseFolded())) {
            ++m;
            ++n;
        } else if (starMask >= 0) {
            m = starMask + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (m < mask.size() && mask[m] == u'*')
        ++m;
    return m == mask.size();
}

} // namespace

QList<FileFilter> fileFilters(int filterIndex)
{
    QList<FileFilter> filters;
    for (const Pair pair : pairsOf(filterIndex)) {
        filters.append(
            {QString::fromLatin1(pairTexts[pair].description), QString::fromLatin1(pairTexts[pair].pattern)});
    }
    return filters;
}

QString filterString(int filterIndex)
{
    QString joined;
    for (const FileFilter &filter : fileFilters(filterIndex))
        joined += filter.description + QChar(0) + filter.pattern + QChar(0);
    return joined;
}

bool matchesFilterPattern(const QString &fileName, const QString &pattern)
{
    for (const QStringView rawMask : QStringView(pattern).split(u';')) {
        const QStringView mask = rawMask.trimmed();
        if (mask.isEmpty())
            continue;
        if (matchesMask(fileName, mask))
            return true;
        // "name.*" also stands for "name" without any extension, as on Windows.
        if (mask.endsWith(u".*") && !fileName.contains(u'.') && matchesMask(fileName, mask.chopped(2)))
            return true;
    }
    return false;
}
