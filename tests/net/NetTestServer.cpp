#include "NetTestServer.h"

#include "testsupport/TestSupport.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QRegularExpression>
#include <QTcpServer>

NetTestServer::~NetTestServer()
{
    stop();
}

bool NetTestServer::startFixture()
{
    const QString script =
        QDir(TestSupport::sourceDir()).filePath(QStringLiteral("tests/net/fixture_server.py"));
    return start({QStringLiteral("-u"), script});
}

bool NetTestServer::startFileServer(const QString &folder)
{
    return start({QStringLiteral("-u"), QStringLiteral("-m"), QStringLiteral("http.server"),
                  QStringLiteral("0"), QStringLiteral("--bind"), QStringLiteral("127.0.0.1"),
                  QStringLiteral("--directory"), folder});
}

bool NetTestServer::start(const QStringList &arguments)
{
    stop();
    TestSupport::bypassProxyForLoopback();
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(TestSupport::python3(), arguments);
    if (!m_process.waitForStarted(10000)) {
        m_error = QStringLiteral("python3 did not start: ") + m_process.errorString();
        return false;
    }
    // The fixture prints its port alone; http.server says "... port 12345 (http://...".
    static const QRegularExpression portLine(QStringLiteral("^(?:.*port )?(\\d+)\\b"));
    QByteArray seen;
    const QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired()) {
        while (m_process.canReadLine()) {
            const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
            seen += line.toUtf8() + '\n';
            const auto match = portLine.match(line);
            if (match.hasMatch()) {
                m_port = match.captured(1).toInt();
                return true;
            }
        }
        if (m_process.state() != QProcess::Running)
            break;
        m_process.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
    }
    m_error = QStringLiteral("server printed no port: ") + QString::fromUtf8(seen);
    stop();
    return false;
}

void NetTestServer::stop()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    m_port = 0;
}

QString NetTestServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path);
}

int closedPort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 9;
    const int port = probe.serverPort();
    probe.close();
    return port;
}
