#pragma once

#include "core/Platform.h"

// The Linux side of Platform. Its services are defined in files of their own
// (Platform_unix.cpp, PlatformMail_unix.cpp, PlatformFiles_unix.cpp, ...), one per kind of service.
class UnixPlatform final : public Platform
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
