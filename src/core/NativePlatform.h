#pragma once

#include "core/Platform.h"

// The system's own services. One class for every system: its members are defined once per
// system, in files of their own by kind of service (Platform_unix.cpp or Platform_win.cpp,
// PlatformMail_*, PlatformFiles_*, ...), and the build compiles the set of the system it targets.
class NativePlatform final : public Platform
{
public:
    QString countryCode() const override;
    bool isProcessRunning(const QString &name) const override;
    QString specialFolder(SpecialFolder kind) const override;
    LaunchResult startProgram(const QString &path, const QString &parameters) override;
    QStringList fontFolders() const override;
    QString addFont(const QString &path) override;
    bool showHelp(const HelpRequest &request) override;
    bool hasMailHandler() const override;
    bool openMailto(const QString &address) override;
    bool sendSnapshotKeys() override;
    FileResult flushFile(const QString &path) override;
    FileResult moveFileOver(const QString &source, const QString &target) override;
};
