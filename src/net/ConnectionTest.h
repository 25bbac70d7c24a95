#pragma once

#include "net/NetCause.h"
#include "net/clsDownload.h"

#include <QObject>
#include <QString>

// The internet test: the version server's download list, from the version server itself
// and starting with its [Downloads] section, counts as a working connection; anything else
// (a hotel's login page, a redirect elsewhere) does not. Every test stores its outcome in
// programState().connected and why it failed in lastConnectionDiagnosis().

// When the automatic update check is on, a query that finds no size leaves the
// "update check failed" message (T136) in PendingMessage: a check that runs by itself
// would otherwise fail unseen. Connect before the query starts.
void reportUnknownSize(clsDownload &download);

// Address the test reads: the version server's download list.
QString connectionTestUrl();

// Cause of the last test's failure; None after a working connection or before any test.
NetDiagnosis lastConnectionDiagnosis();

// What a finished query says about the connection: the download's own failure, or a
// non-empty answer that is no download list or came from another host. A failure that
// an absent network explains as well is put down to it.
NetDiagnosis diagnoseConnection(const clsDownload &download, const QString &answer);

// What the window tells the user after a test it was asked to report: message key,
// German default, box style and the value of <var1> (the product web site, although the
// test reads the version server: the message has always named the site).
struct ConnectionTestMessage
{
    QString key;
    QString germanDefault;
    int style = 0;
    QString var1;
};
ConnectionTestMessage connectionTestMessage(bool connected);

// The test, run without waiting, e.g. at start-up while the window appears.
class ConnectionTest : public QObject
{
    Q_OBJECT

public:
    explicit ConnectionTest(QObject *parent = nullptr);

    // False when a test is already running. finished may come before start returns.
    bool start();
    bool isRunning() const { return m_download.isBusy(); }
    // The engine, e.g. to change its timeouts.
    clsDownload &download() { return m_download; }
    // The download list as the last test read it ("" when it failed): its entries are
    // of use to whoever asked for the test.
    QString answer() const { return m_answer; }
    NetDiagnosis diagnosis() const { return m_diagnosis; }

signals:
    void finished(bool connected);

private:
    void onQueryFinished(const QString &text);

    clsDownload m_download;
    QString m_answer;
    NetDiagnosis m_diagnosis;
};
