#include "support/FileStatus.h"

QString FileSizeText(qint64 bytes, bool exists)
{
    if (!exists)
        return QStringLiteral("0 KB");
    qint64 kilobytes = 1;
    if (bytes >= 1000) {
        kilobytes = bytes / 1000;
        const qint64 rest = bytes % 1000;
        if (rest > 500 || (rest == 500 && kilobytes % 2 == 1))
            ++kilobytes;
    }
    return QString::number(kilobytes) + QStringLiteral(" KB");
}

QString FileDateText(const QDateTime &local, const QString &languageCode)
{
    if (!local.isValid())
        return {};
    const bool german = languageCode.compare(QStringLiteral("de"), Qt::CaseInsensitive) == 0;
    return local.toLocalTime().toString(german ? QStringLiteral("dd.MM.yyyy - hh:mm:ss")
                                               : QStringLiteral("yyyy/MM/dd - hh:mm:ss"));
}

QString WithCrLf(QStringView editText)
{
    QString text;
    text.reserve(editText.size() + editText.count(u'\n'));
    for (qsizetype i = 0; i < editText.size(); ++i) {
        if (editText[i] == u'\n' && (i == 0 || editText[i - 1] != u'\r'))
            text += u'\r';
        text += editText[i];
    }
    return text;
}

qsizetype CountedCharacters(QStringView text)
{
    qsizetype count = text.size();
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r'))
            ++count;
    }
    return count;
}

QString CounterText(qsizetype count, const QString &unitWord)
{
    return QString::number(count) + u' ' + unitWord;
}
