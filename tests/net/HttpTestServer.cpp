#include "HttpTestServer.h"

#include <QFile>
#include <QHostAddress>
#include <QMutexLocker>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

namespace {

constexpr qint64 kChunk = 1024 * 1024;
// Enough in the socket's buffer to keep loopback busy without holding a large body twice.
constexpr qint64 kInFlight = 4 * kChunk;

// Sends one answer's body from offset to end, stopping early at stop, then closes.
class BodyWriter : public QObject
{
public:
    BodyWriter(QTcpSocket *socket, const HttpTestServer::Resource &resource, qint64 offset, qint64 end,
               bool breakOff)
        : QObject(socket), m_socket(socket), m_body(resource.body), m_offset(offset), m_end(end),
          m_breakOff(breakOff), m_hold(resource.hold), m_trickleMs(resource.trickleMs)
    {
        if (!resource.file.isEmpty()) {
            m_file = std::make_unique<QFile>(resource.file);
            if (!m_file->open(QIODevice::ReadOnly) || !m_file->seek(offset))
                m_end = m_offset; // nothing to send: the answer ends short
        }
        if (m_trickleMs == 0)
            connect(socket, &QTcpSocket::bytesWritten, this, &BodyWriter::pump);
        pump();
    }

private:
    void pump()
    {
        while (m_offset < m_end && m_socket->bytesToWrite() < kInFlight) {
            const qint64 length = m_trickleMs > 0 ? 1 : qMin(kChunk, m_end - m_offset);
            QByteArray chunk = m_file ? m_file->read(length) : m_body.mid(m_offset, length);
            if (chunk.isEmpty()) {
                m_end = m_offset;
                break;
            }
            m_socket->write(chunk);
            m_offset += chunk.size();
            if (m_trickleMs > 0 && m_offset < m_end) {
                QTimer::singleShot(m_trickleMs, this, &BodyWriter::pump);
                return;
            }
        }
        if (m_offset < m_end || m_closing || (m_breakOff && m_socket->bytesToWrite() > 0))
            return;
        m_closing = true;
        if (m_breakOff && m_hold)
            return; // the connection stays open until the server ends
        if (!m_breakOff) {
            // Whatever is still buffered goes out before the connection closes.
            m_socket->disconnectFromHost();
            return;
        }
        // A connection that breaks off mid-answer: the client has its data and is reading
        // the body when the connection goes (a close that came with the headers would look
        // like a stale connection, which a client may silently try again).
        QTimer::singleShot(100, m_socket, [socket = m_socket] { socket->disconnectFromHost(); });
    }

    QTcpSocket *m_socket;
    QByteArray m_body;
    std::unique_ptr<QFile> m_file;
    qint64 m_offset;
    qint64 m_end;
    bool m_breakOff;
    bool m_hold;
    int m_trickleMs;
    bool m_closing = false;
};

QByteArray header(const QList<QByteArray> &lines, const QByteArray &name)
{
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().toLower() == name)
            return line.mid(colon + 1).trimmed();
    }
    return {};
}

// "bytes=N-" or "bytes=N-M": the start N, -1 when the header asks for something else.
qint64 rangeStart(const QByteArray &range)
{
    if (!range.startsWith("bytes=") || range.contains(','))
        return -1;
    const QByteArray start = range.mid(6, range.indexOf('-') - 6).trimmed();
    bool ok = false;
    const qint64 value = start.toLongLong(&ok);
    return ok ? value : -1;
}

QByteArray statusLine(int status)
{
    static const QHash<int, QByteArray> reasons{{200, "OK"},        {301, "Moved Permanently"},
                                                {302, "Found"},     {403, "Forbidden"},
                                                {404, "Not Found"}, {500, "Internal Server Error"}};
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasons.value(status, "Status") + "\r\n";
}

} // namespace

int closedPort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 9;
    const int port = probe.serverPort();
    probe.close();
    return port;
}

HttpTestServer::HttpTestServer(QObject *parent) : QObject(parent) {}

HttpTestServer::~HttpTestServer() = default;

bool HttpTestServer::listen()
{
    m_server = new QTcpServer(this);
    connect(m_server, &QTcpServer::newConnection, this, &HttpTestServer::onNewConnection);
    if (!m_server->listen(QHostAddress::LocalHost, 0))
        return false;
    m_port = m_server->serverPort();
    return true;
}

QString HttpTestServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path);
}

void HttpTestServer::setResource(const QString &path, const Resource &resource)
{
    QMutexLocker lock(&m_mutex);
    m_resources.insert(path.toUtf8(), resource);
}

QList<HttpTestServer::Request> HttpTestServer::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

void HttpTestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            QByteArray head = socket->property("head").toByteArray();
            if (head.endsWith("\r\n\r\n"))
                return; // answered already; a request body is ignored
            head += socket->readAll();
            const qsizetype end = head.indexOf("\r\n\r\n");
            if (end >= 0)
                head.truncate(end + 4);
            socket->setProperty("head", head);
            if (end >= 0)
                answer(socket, head);
        });
    }
}

void HttpTestServer::answer(QTcpSocket *socket, const QByteArray &head)
{
    const QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    Request request{first.value(0), first.value(1), header(lines, "range"), header(lines, "if-range")};
    const QByteArray path = QByteArray::fromPercentEncoding(request.path.split('?').value(0));

    Resource resource;
    bool found = false;
    bool drop = false;
    {
        QMutexLocker lock(&m_mutex);
        m_requests.append(request);
        const auto it = m_resources.find(path);
        if (it != m_resources.end()) {
            found = true;
            resource = *it;
            // Qt may repeat a request by itself when its connection breaks off; a repeated
            // request for the same part does not use up another break.
            const qint64 start =
                resource.ranges && resource.status == 200 ? qMax<qint64>(0, rangeStart(request.range)) : 0;
            if (request.method == "GET" && it->dropAfter >= 0 &&
                (it->drops < 0 || (it->drops > 0 && !it->brokenStarts.contains(start)))) {
                drop = true;
                it->brokenStarts.insert(start);
                if (it->drops > 0)
                    --it->drops;
            }
        }
    }
    if (found && resource.silent)
        return;
    if (!found) {
        socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\nConnection: close\r\n\r\nnot found");
        socket->disconnectFromHost();
        return;
    }

    const qint64 size = resource.file.isEmpty() ? resource.body.size() : QFile(resource.file).size();
    const qint64 announced = resource.announced >= 0 ? resource.announced : size;
    qint64 start = 0;
    const qint64 asked = rangeStart(request.range);
    const bool validatorHolds =
        resource.ignoreIfRange || request.ifRange.isEmpty() || request.ifRange == resource.etag;
    const bool ranges = resource.ranges && resource.status == 200;
    const bool partial = ranges && asked >= 0 && asked < announced && validatorHolds;
    if (partial)
        start = asked;

    QByteArray reply = partial ? "HTTP/1.1 206 Partial Content\r\n" : statusLine(resource.status);
    if (resource.length)
        reply += "Content-Length: " + QByteArray::number(announced - start) + "\r\n";
    if (!resource.location.isEmpty())
        reply += "Location: " + resource.location + "\r\n";
    if (partial) {
        reply += "Content-Range: bytes " +
                 QByteArray::number(resource.claimedStart >= 0 ? resource.claimedStart : start) + '-' +
                 QByteArray::number(announced - 1) + '/' + QByteArray::number(announced) + "\r\n";
    }
    // A server that ignores ranges says nothing about them, as most of them do.
    if (ranges)
        reply += "Accept-Ranges: bytes\r\n";
    if (!resource.etag.isEmpty())
        reply += "ETag: " + resource.etag + "\r\n";
    // Every answer ends its connection, and says so: a client that took the connection for
    // a lasting one would send its next request (a redirect's) into a closing socket.
    reply += resource.extraHeaders + "Content-Type: application/octet-stream\r\nConnection: close\r\n\r\n";
    socket->write(reply);
    if (request.method == "HEAD") {
        socket->disconnectFromHost();
        return;
    }
    qint64 end = qMin(size, announced);
    if (drop)
        end = qMin(end, start + resource.dropAfter);
    new BodyWriter(socket, resource, start, end, end < announced);
}
