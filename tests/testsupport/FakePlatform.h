#pragma once

#include "core/Platform.h"

#include <QHash>
#include <QStringList>

// Platform services that record what they are asked and answer what the test says.
// Install it with a PlatformOverride for the duration of a test.
class FakePlatform final : public Platform
{
public:
    QString country = QStringLiteral("49");
    QStringList runningProcesses; // names as a process list would show them
    QHash<SpecialFolder, QString> folders;
    bool mailHandler = true;
    bool mailHandoffWorks = true;
    QStringList mailtoAddresses; // every address handed over
    bool network = true;

    QString countryCode() const override { return country; }
    bool hasNetwork() const override { return network; }
    bool isProcessRunning(const QString &name) const override
    {
        for (const QString &process : runningProcesses) {
            if (process.contains(name, Qt::CaseInsensitive))
                return true;
        }
        return false;
    }
    QString specialFolder(SpecialFolder kind) const override { return folders.value(kind); }
    LaunchResult launchResult = LaunchResult::Started;
    QStringList launches; // path + " " + parameters of every start
    LaunchResult startProgram(const QString &path, const QString &parameters) override
    {
        launches << path + u' ' + parameters;
        return launchResult;
    }
    // Fonts are the system's own in every test: a test sets up a temporary fontconfig.
    QStringList fontFolders() const override { return createNativePlatform()->fontFolders(); }
    QString addFont(const QString &path) override { return createNativePlatform()->addFont(path); }
    QList<HelpRequest> helpRequests;
    bool showHelp(const HelpRequest &request) override
    {
        helpRequests << request;
        return true;
    }
    bool hasMailHandler() const override { return mailHandler; }
    int snapshots = 0;
    bool sendSnapshotKeys() override
    {
        ++snapshots;
        return false;
    }
    bool openMailto(const QString &address) override
    {
        mailtoAddresses << address;
        return mailHandler && mailHandoffWorks;
    }
    // Files are real in every test: these go to the system's own services.
    FileResult flushFile(const QString &path) override { return createNativePlatform()->flushFile(path); }
    FileResult moveFileOver(const QString &source, const QString &target) override
    {
        return createNativePlatform()->moveFileOver(source, target);
    }
};
