#pragma once

#include <QString>
#include <QStringList>

#include <memory>

// The operating-system services SupportKit needs, one implementation per platform
// (Platform_win.cpp, Platform_unix.cpp) chosen by the build, and fakes in the tests.
// Everything that must behave differently on Windows and elsewhere goes through here.
class Platform
{
public:
    virtual ~Platform() = default;

    // The system's country as an international calling code ("49" for Germany).
    virtual QString countryCode() const = 0;
    // True when a running process's executable name contains name, compared without
    // regard to case.
    virtual bool isProcessRunning(const QString &name) const = 0;

    // Folders the shell knows; "" when the system has none of that kind.
    enum class SpecialFolder
    {
        Fonts, // where the user's fonts are installed
        Desktop,
        Documents,
        AppData, // the user's application data
    };
    virtual QString specialFolder(SpecialFolder kind) const = 0;

    // Starts the Windows program at path with parameters (switches separated by blanks)
    // and does not wait for it. Windows opens it through the shell; elsewhere it runs
    // through Wine, found on the PATH, in the program's own folder.
    enum class LaunchResult
    {
        Started,
        Failed,        // the system refused; the caller does not report it
        RunnerMissing, // there is no Wine to run a Windows program with
    };
    virtual LaunchResult startProgram(const QString &path, const QString &parameters) = 0;

    // Folders whose font files the system uses: the fonts folder on Windows; elsewhere every
    // folder fontconfig reads, the system's and the user's.
    virtual QStringList fontFolders() const = 0;
    // Makes the font file at path available to the system's programs (on Windows for this
    // session). The path the font is used from, "" when the system refused it.
    virtual QString addFont(const QString &path) = 0;

    // Compiled help: what to show of the file.
    enum class HelpCommand
    {
        Contents,
        Topic, // the topic of contextId
        Index,
        Search, // the full-text search for query
    };
    struct HelpRequest
    {
        QString file;
        HelpCommand command = HelpCommand::Contents;
        quint32 contextId = 0;
        QString query;
        quintptr owner = 0; // the owner window's native handle, 0 for none
    };
    // Shows the compiled help file as asked; false when no viewer could show it.
    virtual bool showHelp(const HelpRequest &request) = 0;

    // The user's default mail program: whether one is registered for mailto addresses,
    // and handing it one address exactly as composed. False when none could be started.
    virtual bool hasMailHandler() const = 0;
    virtual bool openMailto(const QString &address) = 0;

    // Has the system put a picture of the active window, frame included, on the clipboard
    // (Alt+Print on Windows). False where the system offers no such thing: the caller then
    // takes the picture itself.
    virtual bool sendSnapshotKeys() = 0;

    // Outcome of a file service: done, or why not (the system's own words) and whether
    // another program held the file, so that trying again a moment later may succeed.
    struct FileResult
    {
        bool ok = false;
        bool busy = false;
        QString error;
    };
    // Writes the file's data through to the disk, so that it survives a power cut.
    virtual FileResult flushFile(const QString &path) = 0;
    // Puts source in target's place in one step, replacing target when it exists: at no
    // moment is there no file or a partly written one under target's name. Both lie in
    // one folder.
    virtual FileResult moveFileOver(const QString &source, const QString &target) = 0;

    // Whether any network interface besides loopback is up: when none is, a failed
    // connection needs no other explanation.
    virtual bool hasNetwork() const;
};

// The services in use: the native ones unless a test has installed others.
Platform &platform();
std::unique_ptr<Platform> createNativePlatform();

// Installs services for the lifetime of the guard (tests); the previous ones return
// when it ends. The guard does not own the services.
class PlatformOverride
{
public:
    explicit PlatformOverride(Platform &replacement);
    ~PlatformOverride();
    PlatformOverride(const PlatformOverride &) = delete;
    PlatformOverride &operator=(const PlatformOverride &) = delete;

private:
    Platform *m_previous;
};
