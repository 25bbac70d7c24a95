#include "fonts/FontCheck.h"

#include "core/TextFile.h"
#include "localisation/Fields.h"

#include <QDirIterator>
#include <QSet>

QChar fontListSeparator(const QString &iniValue)
{
    bool number = false;
    const int n = iniValue.trimmed().toInt(&number);
    return number && n >= 1 && n < 255 ? QChar(n) : QChar(u'\t');
}

QList<ChessFont> parseChessFonts(const QString &text, QChar separator)
{
    QList<ChessFont> fonts;
    const QString sep(separator);
    for (QString line : text.split(u'\n')) {
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.isEmpty() || line.startsWith(u';'))
            continue;
        fonts.append({GetField(line, 1, sep), GetField(line, 2, sep)});
    }
    return fonts;
}

QList<ChessFont> readChessFonts(const QString &path, QChar separator)
{
    QString text;
    readInstallationText(path, text, kSettingsFileLimit);
    return parseChessFonts(text, separator);
}

FontCheckResult checkChessFonts(const QList<ChessFont> &fonts,
                                const std::function<bool(const QString &)> &filePresent,
                                const std::function<bool(const QString &)> &fontAvailable)
{
    FontCheckResult result;
    for (const ChessFont &font : fonts) {
        result.names << font.name;
        result.files << font.file;
        const bool present = filePresent(font.file);
        if (present && fontAvailable(font.name))
            continue;
        if (!present)
            result.absent << font.name;
        result.unusable << font.name;
        result.missingEntries << font.name + u';' + font.file;
    }
    return result;
}

QStringList fontFilesIn(const QStringList &folders)
{
    QStringList names;
    QSet<QString> seen;
    for (const QString &folder : folders) {
        QDirIterator it(folder, QDir::Files | QDir::Hidden,
                        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        while (it.hasNext()) {
            const QString name = it.nextFileInfo().fileName();
            if (!seen.contains(name)) {
                seen.insert(name);
                names << name;
            }
        }
    }
    return names;
}
