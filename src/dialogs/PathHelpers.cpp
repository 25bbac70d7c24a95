#include "dialogs/PathHelpers.h"

#include <QDir>
#include <QTemporaryFile>

namespace {

bool isSeparator(QChar c)
{
    return c == u'\\' || c == u'/';
}

// Length of the part of path that names the drive or the root and is always kept:
// "C:\", "C:", "\\server\share\", "/" or nothing for a relative path.
qsizetype rootLength(const QString &path)
{
    if (path.size() >= 2 && path[1] == u':' && path[0].isLetter())
        return path.size() >= 3 && isSeparator(path[2]) ? 3 : 2;
    if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
        // A network path keeps server and share: skip two more separators.
        qsizetype at = 2;
        for (int parts = 0; parts < 2 && at < path.size(); ++parts) {
            while (at < path.size() && !isSeparator(path[at]))
                ++at;
            if (at < path.size())
                ++at;
        }
        return at;
    }
    return !path.isEmpty() && isSeparator(path[0]) ? 1 : 0;
}

} // namespace

QString MaxDirLen(const QString &path, int maxLength)
{
    if (path.size() <= maxLength)
        return path;
    if (maxLength <= 0)
        return {};
    const QString dots = QStringLiteral("...");
    if (maxLength <= dots.size())
        return path.right(maxLength);

    const qsizetype root = rootLength(path);
    // The file name starts after the last separator that has a character after it,
    // so a folder path ending in "\" keeps its last folder.
    qsizetype end = path.size();
    while (end > root && isSeparator(path[end - 1]))
        --end;
    qsizetype nameStart = end;
    while (nameStart > root && !isSeparator(path[nameStart - 1]))
        --nameStart;

    // Keep as many trailing folders as fit, each tail beginning at a separator.
    for (qsizetype tail = root; tail < nameStart; ++tail) {
        if (isSeparator(path[tail]) && root + dots.size() + path.size() - tail <= maxLength)
            return path.left(root) + dots + path.mid(tail);
    }
    const QString name = path.mid(nameStart);
    const QString separatedName =
        nameStart > 0 && isSeparator(path[nameStart - 1]) ? path.mid(nameStart - 1) : name;
    if (dots.size() + separatedName.size() <= maxLength)
        return dots + separatedName;
    return dots + name.right(maxLength - dots.size());
}

QString GetTempName(const QString &folder, const QString &prefix)
{
    const QString base = folder.isEmpty() ? QDir::tempPath() : folder;
    QTemporaryFile file(QDir(base).filePath(OnlyAlphaNum(prefix) + QStringLiteral("XXXXXX.tmp")));
    file.setAutoRemove(false);
    if (!file.open())
        return {};
    return file.fileName();
}

QString OnlyAlphaNum(const QString &text)
{
    QString kept;
    for (const char32_t c : text.toUcs4()) {
        if (QChar::isLetter(c) || QChar::isDigit(c))
            kept += QChar::fromUcs4(c);
    }
    return kept;
}

QString GetSpecialFolder(Platform::SpecialFolder kind)
{
    return platform().specialFolder(kind);
}
