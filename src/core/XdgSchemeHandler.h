#pragma once

#include <QHash>
#include <QList>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// The default program for a URL scheme found and started the freedesktop way, as xdg-open
// does, without needing xdg-utils: mimeapps.list files name the program of the type
// "x-scheme-handler/<scheme>", its desktop entry gives the command line. Used for mailto
// addresses on Linux. The address reaches the program as one argument, exactly as given:
// nothing is re-encoded on the way.
namespace xdg {

// The base directories, most important first, and the names of the running desktop.
struct BaseDirs
{
    QStringList configDirs; // $XDG_CONFIG_HOME, then $XDG_CONFIG_DIRS
    QStringList dataDirs;   // $XDG_DATA_HOME, then $XDG_DATA_DIRS
    QStringList desktops;   // $XDG_CURRENT_DESKTOP, in lower case
};
// Unset, empty and relative values fall back to the documented defaults below $HOME.
BaseDirs baseDirs(const QProcessEnvironment &env);

struct MimeAppsFile
{
    QString path;
    bool desktopSpecific = false; // "<desktop>-mimeapps.list": only its defaults count
};
// Every place a mimeapps.list may be, most important first.
QList<MimeAppsFile> mimeAppsFiles(const BaseDirs &dirs);

// Key -> value of one group of a desktop-style file, values as written (no escapes undone).
QHash<QString, QString> readGroup(const QString &content, const QString &group);

// What one mimeapps.list says about one type.
struct Associations
{
    QStringList defaults, added, removed;
};
Associations readAssociations(const QString &content, const QString &mimeType, bool desktopSpecific);

// Desktop ids to try, best first: the defaults of every file in order, then the added
// associations that no file of higher rank removed, then the ids the desktop
// entries' own MimeType lines give (mimeinfo.cache), unless some file removed them.
QStringList handlerCandidates(const QList<Associations> &files, const QStringList &cachedIds);

struct DesktopEntry
{
    QString path;
    QString type, exec, tryExec, name, icon, workingDirectory;
    bool hidden = false;
    bool terminal = false;
};
DesktopEntry parseDesktopEntry(const QString &content, const QString &path);

// The arguments of an Exec line for one URL: the value's escapes undone, split at blanks
// outside double quotes, then the field codes replaced in one pass, so that "%" in the URL
// stays as it is. %u %U %f %F become the URL as one argument (it is appended when the line
// has none), %i "--icon" and the icon, %c the name, %k the entry's path, %% a "%"; the
// deprecated codes vanish. False for an unclosed quote or an empty line.
bool expandExec(const DesktopEntry &entry, const QString &url, QStringList &arguments);

struct Command
{
    QString program; // full path
    QStringList arguments;
    QString workingDirectory;
};
// The command that opens url with its scheme's default program: the first candidate whose
// desktop entry is installed, visible, not for a terminal and whose program exists. False
// when there is none.
bool schemeHandlerCommand(const BaseDirs &dirs, const QString &url, Command &command);

} // namespace xdg
