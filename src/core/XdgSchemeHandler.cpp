#include "core/XdgSchemeHandler.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

namespace xdg {

namespace {

QStringList absoluteDirs(const QString &value, const QStringList &fallback)
{
    QStringList dirs;
    for (const QString &dir : value.split(u':', Qt::SkipEmptyParts)) {
        if (QDir::isAbsolutePath(dir))
            dirs << QDir::cleanPath(dir);
    }
    return dirs.isEmpty() ? fallback : dirs;
}

QString readText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

void appendNew(QStringList &list, const QString &id)
{
    if (!list.contains(id))
        list << id;
}

// A desktop id names a file below an applications folder with "/" written as "-", so
// "kde4-kmail.desktop" may be kde4/kmail.desktop.
QString findInApplications(const QString &dir, const QString &id)
{
    const QString direct = dir + u'/' + id;
    if (QFileInfo(direct).isFile())
        return direct;
    for (qsizetype dash = id.indexOf(u'-'); dash > 0; dash = id.indexOf(u'-', dash + 1)) {
        const QString sub = dir + u'/' + id.left(dash);
        if (QFileInfo(sub).isDir()) {
            const QString found = findInApplications(sub, id.mid(dash + 1));
            if (!found.isEmpty())
                return found;
        }
    }
    return {};
}

// The first entry with that id counts, even a hidden one: it hides those further down.
bool loadEntry(const BaseDirs &dirs, const QString &id, DesktopEntry &entry)
{
    if (id.isEmpty() || id.contains(u'/'))
        return false;
    for (const QString &dataDir : dirs.dataDirs) {
        const QString path = findInApplications(dataDir + QStringLiteral("/applications"), id);
        if (!path.isEmpty()) {
            entry = parseDesktopEntry(readText(path), path);
            return true;
        }
    }
    return false;
}

// The value escapes of desktop files: \s \n \t \r \\.
QString unescapeValue(const QString &value)
{
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const QChar next = value[++i];
        switch (next.unicode()) {
        case 's':
            out += u' ';
            break;
        case 'n':
            out += u'\n';
            break;
        case 't':
            out += u'\t';
            break;
        case 'r':
            out += u'\r';
            break;
        case '\\':
            out += u'\\';
            break;
        default:
            out += u'\\';
            out += next;
        }
    }
    return out;
}

struct Word
{
    QString text;
    bool quoted = false;
};

// Splits at blanks outside double quotes. Inside quotes a backslash escapes " ` $ and \;
// outside them it escapes any character.
bool splitExec(const QString &line, QList<Word> &words)
{
    bool inWord = false;
    bool inQuotes = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (inQuotes) {
            if (c == u'"') {
                inQuotes = false;
            } else if (c == u'\\' && i + 1 < line.size() && QStringView(u"\"`$\\").contains(line[i + 1])) {
                words.last().text += line[++i];
            } else {
                words.last().text += c;
            }
            continue;
        }
        if (c == u' ' || c == u'\t' || c == u'\n') {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.append(Word());
            inWord = true;
        }
        if (c == u'"') {
            inQuotes = true;
            words.last().quoted = true;
        } else if (c == u'\\' && i + 1 < line.size()) {
            words.last().text += line[++i];
        } else {
            words.last().text += c;
        }
    }
    return !inQuotes;
}

bool isExecutableFile(const QString &path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

QString findProgram(const QString &program)
{
    if (QDir::isAbsolutePath(program))
        return isExecutableFile(program) ? program : QString();
    if (program.contains(u'/'))
        return {};
    return QStandardPaths::findExecutable(program);
}

} // namespace

BaseDirs baseDirs(const QProcessEnvironment &env)
{
    const QString home = env.value(QStringLiteral("HOME"));
    const auto homeDir = [&home](const QString &below) {
        return QDir::isAbsolutePath(home) ? QStringList{QDir::cleanPath(home + below)} : QStringList{};
    };
    BaseDirs dirs;
    dirs.configDirs =
        absoluteDirs(env.value(QStringLiteral("XDG_CONFIG_HOME")), homeDir(QStringLiteral("/.config"))) +
        absoluteDirs(env.value(QStringLiteral("XDG_CONFIG_DIRS")), {QStringLiteral("/etc/xdg")});
    dirs.dataDirs =
        absoluteDirs(env.value(QStringLiteral("XDG_DATA_HOME")), homeDir(QStringLiteral("/.local/share"))) +
        absoluteDirs(env.value(QStringLiteral("XDG_DATA_DIRS")),
                     {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")});
    for (const QString &desktop :
         env.value(QStringLiteral("XDG_CURRENT_DESKTOP")).split(u':', Qt::SkipEmptyParts))
        dirs.desktops << desktop.toLower();
    return dirs;
}

QList<MimeAppsFile> mimeAppsFiles(const BaseDirs &dirs)
{
    QStringList folders = dirs.configDirs;
    for (const QString &dataDir : dirs.dataDirs)
        folders << dataDir + QStringLiteral("/applications");
    QList<MimeAppsFile> files;
    for (const QString &folder : folders) {
        for (const QString &desktop : dirs.desktops)
            files.append({folder + u'/' + desktop + QStringLiteral("-mimeapps.list"), true});
        files.append({folder + QStringLiteral("/mimeapps.list"), false});
    }
    return files;
}

QHash<QString, QString> readGroup(const QString &content, const QString &group)
{
    QHash<QString, QString> values;
    bool inGroup = false;
    for (QStringView line : QStringView(content).split(u'\n')) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            inGroup = line.endsWith(u']') && line.sliced(1, line.size() - 2) == group;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inGroup || equals <= 0)
            continue;
        const QString key = line.first(equals).trimmed().toString();
        if (!values.contains(key))
            values.insert(key, line.sliced(equals + 1).trimmed().toString());
    }
    return values;
}

Associations readAssociations(const QString &content, const QString &mimeType, bool desktopSpecific)
{
    const auto ids = [&](const QString &group) {
        QStringList list;
        const QHash<QString, QString> values = readGroup(content, group);
        for (auto it = values.cbegin(); it != values.cend(); ++it) {
            if (it.key().compare(mimeType, Qt::CaseInsensitive) != 0)
                continue;
            for (const QString &id : it.value().split(u';', Qt::SkipEmptyParts))
                appendNew(list, id.trimmed());
        }
        return list;
    };
    Associations associations;
    associations.defaults = ids(QStringLiteral("Default Applications"));
    if (!desktopSpecific) {
        associations.added = ids(QStringLiteral("Added Associations"));
        associations.removed = ids(QStringLiteral("Removed Associations"));
    }
    return associations;
}

QStringList handlerCandidates(const QList<Associations> &files, const QStringList &cachedIds)
{
    QStringList candidates;
    for (const Associations &file : files) {
        for (const QString &id : file.defaults)
            appendNew(candidates, id);
    }
    QSet<QString> removed;
    for (const Associations &file : files) {
        for (const QString &id : file.added) {
            if (!removed.contains(id))
                appendNew(candidates, id);
        }
        for (const QString &id : file.removed)
            removed.insert(id);
    }
    for (const QString &id : cachedIds) {
        if (!removed.contains(id))
            appendNew(candidates, id);
    }
    return candidates;
}

DesktopEntry parseDesktopEntry(const QString &content, const QString &path)
{
    const QHash<QString, QString> values = readGroup(content, QStringLiteral("Desktop Entry"));
    const auto flag = [&values](const QString &key) { return values.value(key) == QStringLiteral("true"); };
    DesktopEntry entry;
    entry.path = path;
    entry.type = values.value(QStringLiteral("Type"));
    entry.exec = values.value(QStringLiteral("Exec"));
    entry.tryExec = unescapeValue(values.value(QStringLiteral("TryExec")));
    entry.name = unescapeValue(values.value(QStringLiteral("Name")));
    entry.icon = unescapeValue(values.value(QStringLiteral("Icon")));
    entry.workingDirectory = unescapeValue(values.value(QStringLiteral("Path")));
    entry.hidden = flag(QStringLiteral("Hidden"));
    entry.terminal = flag(QStringLiteral("Terminal"));
    return entry;
}

bool expandExec(const DesktopEntry &entry, const QString &url, QStringList &arguments)
{
    arguments.clear();
    QList<Word> words;
    if (!splitExec(unescapeValue(entry.exec), words))
        return false;
    bool urlGiven = false;
    for (const Word &word : std::as_const(words)) {
        if (!word.quoted && word.text.size() == 2 && word.text[0] == u'%') {
            const QChar code = word.text[1];
            if (QStringView(u"uUfF").contains(code)) {
                arguments << url;
                urlGiven = true;
                continue;
            }
            if (code == u'i') {
                if (!entry.icon.isEmpty())
                    arguments << QStringLiteral("--icon") << entry.icon;
                continue;
            }
        }
        QString text;
        bool onlyCodes = !word.quoted;
        for (qsizetype i = 0; i < word.text.size(); ++i) {
            const QChar c = word.text[i];
            if (c != u'%' || i + 1 == word.text.size()) {
                text += c;
                onlyCodes = false;
                continue;
            }
            const QChar code = word.text[++i];
            switch (code.unicode()) {
            case '%':
                text += u'%';
                onlyCodes = false;
                break;
            case 'u':
            case 'U':
            case 'f':
            case 'F':
                text += url;
                urlGiven = true;
                onlyCodes = false;
                break;
            case 'c':
                text += entry.name;
                break;
            case 'k':
                text += entry.path;
                break;
            default: // %i inside a word, the deprecated and the unknown codes
                break;
            }
        }
        // "%d" alone leaves no argument behind; an empty quoted word stays one.
        if (!(onlyCodes && text.isEmpty()))
            arguments << text;
    }
    if (arguments.isEmpty())
        return false;
    if (!urlGiven)
        arguments << url;
    return true;
}

bool schemeHandlerCommand(const BaseDirs &dirs, const QString &url, Command &command)
{
    const qsizetype colon = url.indexOf(u':');
    if (colon <= 0)
        return false;
    const QString mimeType = QStringLiteral("x-scheme-handler/") + url.first(colon).toLower();

    QList<Associations> files;
    for (const MimeAppsFile &file : mimeAppsFiles(dirs)) {
        if (QFileInfo::exists(file.path))
            files << readAssociations(readText(file.path), mimeType, file.desktopSpecific);
    }
    QStringList cachedIds;
    for (const QString &dataDir : dirs.dataDirs) {
        const QString cache = readText(dataDir + QStringLiteral("/applications/mimeinfo.cache"));
        const QString ids = readGroup(cache, QStringLiteral("MIME Cache")).value(mimeType);
        for (const QString &id : ids.split(u';', Qt::SkipEmptyParts))
            appendNew(cachedIds, id.trimmed());
    }

    for (const QString &id : handlerCandidates(files, cachedIds)) {
        DesktopEntry entry;
        if (!loadEntry(dirs, id, entry) || entry.hidden || entry.terminal)
            continue;
        if (!entry.type.isEmpty() && entry.type != QStringLiteral("Application"))
            continue;
        if (!entry.tryExec.isEmpty() && findProgram(entry.tryExec).isEmpty())
            continue;
        QStringList arguments;
        if (!expandExec(entry, url, arguments))
            continue;
        const QString program = findProgram(arguments.takeFirst());
        if (program.isEmpty())
            continue;
        command = {program, arguments, entry.workingDirectory};
        return true;
    }
    return false;
}

} // namespace xdg
