#pragma once

#include "net/NetCause.h"
#include "net/NetResult.h"

#include <QObject>
#include <QPointer>
#include <QString>

class ConnectionTest;
class UpdateCheck;

// A failure's cause in a few words (with the status number of an HTTP error) and the one
// thing the user can try, in the current language.
QString netCauseText(const NetDiagnosis &diagnosis);
QString netCauseAdvice(const NetDiagnosis &diagnosis);
// How a download ended, in the current language ("" without error).
QString netErrorText(const NetResult &result);
// The paragraph that a failed connection test's box adds below its message: "" when the
// test did not fail.
QString connectionCauseParagraph(const NetDiagnosis &diagnosis);
// The internet button's tool tip after a test.
QString connectionToolTip(bool connected, const NetDiagnosis &diagnosis);

// Runs the window's network checks one at a time and without waiting: the checks at
// start-up (update check, then connection test) and those of the internet button
// (connection test; with a connection the update check, without one a second test whose
// outcome the user is told). Starting checks replaces any that still run: the older
// ones are dropped and their results never arrive, so whichever the user asked for last
// decides what the window shows.
class NetworkChecks : public QObject
{
    Q_OBJECT

public:
    explicit NetworkChecks(QObject *parent = nullptr);
    ~NetworkChecks() override;

    void startStartupChecks();
    void startButtonChecks();
    // Drops whatever runs; nothing is reported any more.
    void cancel();
    bool isRunning() const;

signals:
    // A connection test decided the internet picture.
    void connectionTested(bool connected);
    // The version server named its version.
    void serverVersionFound(const QString &version);
    // The version server's answer was not taken: status is the line that says why.
    void serverVersionRefused(const QString &status);
    // The internet button's second test: its outcome is to be told to the user.
    void connectionReport(bool connected);
    // The checks ended (not sent after cancel or when replaced).
    void finished();

private:
    void runUpdateCheck();
    void runConnectionTest(bool report);

    QPointer<UpdateCheck> m_updateCheck;
    QPointer<ConnectionTest> m_connectionTest;
    bool m_button = false;
    quint64 m_generation = 0;
};
