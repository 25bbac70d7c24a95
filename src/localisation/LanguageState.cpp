#include "localisation/LanguageState.h"

#include "core/ProgramFolder.h"
#include "localisation/IniFile.h"
#include "localisation/PendingMessage.h"

#include <QFileInfo>
#include <QThreadPool>

namespace {
constexpr const char *kStems[kLngFileCount] = {"language", "lng_msg",   "lng_2",    "lng_txt",
                                               "lng_3",    "lng_msg_2", "lng_msg_3"};

int idx(LngFile f)
{
    return static_cast<int>(f);
}

bool fileFound(const QString &name)
{
    return QFileInfo(languageFilePath(name)).isFile();
}

void setName(LanguageState &s, LngFile f, const QString &code)
{
    s.fileNames[idx(f)] = QString::fromLatin1(kStems[idx(f)]) + u'.' + code;
    s.exists[idx(f)] = fileFound(s.fileNames[idx(f)]);
}

void useCode(LanguageState &s, const QString &code)
{
    // Files kept from the last language are read afresh when the user picks another; those
    // read ahead for the first choice are kept.
    if (!s.code.isEmpty() && code.compare(s.code, Qt::CaseInsensitive) != 0)
        forgetIniFiles();
    s.code = code;
}

// Leading digits as a number, the way Basic's Val reads "2" or "3b".
int leadingNumber(const QString &text)
{
    int value = 0;
    for (const QChar c : text.trimmed()) {
        if (!c.isDigit())
            break;
        value = value * 10 + c.digitValue();
        if (value > 1000)
            break;
    }
    return value;
}
} // namespace

LanguageState &languageState()
{
    static LanguageState state;
    return state;
}

QString languageFilePath(const QString &fileName)
{
    return installPath(QStringLiteral("language/") + fileName);
}

QString languageFilePath(LngFile file)
{
    return languageFilePath(languageState().fileNames[idx(file)]);
}

QString GetLngFile(QString &key)
{
    LanguageState &s = languageState();
    QString file = s.fileNames[idx(LngFile::Main)];
    if (!key.isEmpty()) {
        const qsizetype at = key.indexOf(u'@');
        if (at >= 0) {
            const int suffix = leadingNumber(key.mid(at + 1));
            key.truncate(at);
            if (suffix == 2 && s.exists[idx(LngFile::Two)])
                file = s.fileNames[idx(LngFile::Two)];
            else if (suffix == 3 && s.exists[idx(LngFile::Three)])
                file = s.fileNames[idx(LngFile::Three)];
        }
    }
    s.lastFile = file;
    return file;
}

void InitLngFiles(const QString &code)
{
    LanguageState &s = languageState();
    useCode(s, code);
    setName(s, LngFile::Main, code);
    setName(s, LngFile::Msg, code);
    setName(s, LngFile::Two, code);
    setName(s, LngFile::Txt, code);
    const QString &three = s.fileNames[idx(LngFile::Three)];
    s.exists[idx(LngFile::Three)] = !three.isEmpty() && fileFound(three);
}

void preloadLanguageFiles(const QString &code)
{
    QStringList paths;
    for (LngFile f : {LngFile::Main, LngFile::Two, LngFile::Three, LngFile::Txt})
        paths << languageFilePath(QString::fromLatin1(kStems[idx(f)]) + u'.' + code);
    QThreadPool::globalInstance()->start([paths] {
        for (const QString &path : paths)
            preloadIniFile(path);
    });
}

QString RefreshLngFiles(const QString &code)
{
    LanguageState &s = languageState();
    const QString lower = code.toLower();
    if (lower == QLatin1String("de"))
        s.index = 1;
    else if (lower == QLatin1String("us"))
        s.index = 2;
    else if (lower == QLatin1String("se"))
        s.index = 3;
    useCode(s, code);
    for (int i = 0; i < kLngFileCount; ++i)
        setName(s, static_cast<LngFile>(i), code);
    if (s.exists[idx(LngFile::Main)])
        return code;

    PendingMessage &msg = pendingMessage();
    msg.text =
        lower == QLatin1String("de")
            ? QStringLiteral("Die notwendige Sprachdatei:@<var1>@wurde nicht gefunden!#Fehlende Sprachdatei")
            : QStringLiteral("The neccesary language file:@<var1>@could not be found!#Missing Language File");
    msg.text.replace(QLatin1String("<var1>"), languageFilePath(s.fileNames[idx(LngFile::Main)]));
    msg.style = 48;
    useCode(s, QStringLiteral("de"));
    for (int i = 0; i < kLngFileCount; ++i)
        setName(s, static_cast<LngFile>(i), s.code);
    s.index = 1;
    return s.code;
}

QString lngText(const QString &key, const QString &germanDefault)
{
    const LanguageState &s = languageState();
    return ReadIniString(s.code, key, germanDefault, languageFilePath(LngFile::Txt));
}

QString lngMainText(const QString &key, const QString &germanDefault)
{
    const LanguageState &s = languageState();
    return ReadIniString(s.code, key, germanDefault, languageFilePath(LngFile::Main));
}
