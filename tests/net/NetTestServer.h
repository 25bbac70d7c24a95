#pragma once

#include <QProcess>
#include <QString>

// A python server on 127.0.0.1 with a free port, run for one test program: either the
// misbehaving fixture (fixture_server.py) or python's own file server for a folder.
// Stopped by stop() or the destructor.
class NetTestServer
{
public:
    NetTestServer() = default;
    ~NetTestServer();
    NetTestServer(const NetTestServer &) = delete;
    NetTestServer &operator=(const NetTestServer &) = delete;

    bool startFixture();
    bool startFileServer(const QString &folder);
    void stop();

    int port() const { return m_port; }
    // "http://127.0.0.1:PORT" + path
    QString url(const QString &path = QString()) const;
    QString error() const { return m_error; }

private:
    bool start(const QStringList &arguments);

    QProcess m_process;
    int m_port = 0;
    QString m_error;
};

// A port on 127.0.0.1 where nothing listens (taken from the system and let go again).
int closedPort();
