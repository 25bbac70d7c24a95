#include "localisation/Messages.h"

#include "localisation/Fields.h"
#include "localisation/IniFile.h"
#include "localisation/LanguageState.h"

namespace {
QString fillPlaceholders(QString text, const QStringList &vars)
{
    for (int i = 0; i < 5; ++i) {
        const QString placeholder = QStringLiteral("<var%1>").arg(i + 1);
        if (text.contains(placeholder))
            text.replace(placeholder, i < vars.size() ? vars[i] : QString());
    }
    return text;
}
} // namespace

MessageText ComposeMessage(const QString &text, const QStringList &vars)
{
    const QString hash = QStringLiteral("#");
    MessageText result;
    result.message = fillPlaceholders(GetField(text, 1, hash), vars);
    result.message.replace(u'@', u'\r');
    result.message.replace(QLatin1String("<<at>>"), QLatin1String("@"));
    result.message.replace(QLatin1String("<<numbersign>>"), QLatin1String("#"));
    result.title = fillPlaceholders(GetField(text, 2, hash), vars);
    return result;
}

QString messageText(const QString &key, const QString &germanDefault)
{
    const LanguageState &s = languageState();
    if (!s.exists[static_cast<int>(LngFile::Msg)])
        return germanDefault;
    const QString text = ReadIniString(s.code, key, QString(), languageFilePath(LngFile::Msg));
    return text.isEmpty() ? germanDefault : text;
}
