#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QSet>
#include <QString>

class QTcpServer;

// A small HTTP/1.1 server on 127.0.0.1 with an ephemeral port, inside the test's own
// process (no interpreter or system tool, so the tests run wherever Qt does). It serves
// resources by path (percent-decoded, query ignored) with HEAD and GET, honours
// "Range: bytes=N-" checked by If-Range, and can misbehave on request: drop the connection
// part-way, ignore ranges, announce more than it sends and then fall silent, send no
// length, answer with any status or redirect, trickle, send huge or lying headers, or not
// answer at all. Every answer closes its connection and says so ("Connection: close").
// Resources may be changed while it runs, also from another thread than
// the server's.
class HttpTestServer : public QObject
{
    Q_OBJECT

public:
    struct Resource
    {
        QByteArray body;
        QString file;               // served instead of body when set (for bodies too large to hold)
        QByteArray etag;            // sent (quoted as given) when not empty
        bool ranges = true;         // false: every GET gets the whole body with 200, no Accept-Ranges
        qint64 dropAfter = -1;      // an answer breaks off after this many bytes of its body...
        int drops = 0;              // ...for this many different starts (-1: every answer)
        qint64 announced = -1;      // Content-Length when not the body's size: a short body
        QSet<qint64> brokenStarts;  // kept by the server
        bool hold = false;          // a short body is followed by silence instead of a close
        bool length = true;         // false: no Content-Length; the body ends with the connection
        int status = 200;           // another status is answered with the body, without ranges
        QByteArray location;        // a Location header when not empty (redirects)
        bool silent = false;        // the request is read and never answered
        int trickleMs = 0;          // the body goes out one byte per this many milliseconds
        QByteArray extraHeaders;    // raw header lines ("Name: value\r\n") added to every answer
        qint64 claimedStart = -1;   // a partial answer names this start in its Content-Range
        bool ignoreIfRange = false; // ranges are served whatever If-Range says
    };

    struct Request
    {
        QByteArray method;
        QByteArray path;
        QByteArray range;   // the Range header, "" when none
        QByteArray ifRange; // the If-Range header
    };

    explicit HttpTestServer(QObject *parent = nullptr);
    ~HttpTestServer() override;

    // Listens on 127.0.0.1 with a port the system chooses; false when it cannot.
    bool listen();
    quint16 port() const { return m_port; }
    // "http://127.0.0.1:PORT" + path
    QString url(const QString &path) const;

    void setResource(const QString &path, const Resource &resource);
    QList<Request> requests() const;

private:
    void onNewConnection();
    void answer(class QTcpSocket *socket, const QByteArray &head);

    QTcpServer *m_server = nullptr;
    quint16 m_port = 0;
    mutable QMutex m_mutex;
    QHash<QByteArray, Resource> m_resources;
    QList<Request> m_requests;
};

// A port on 127.0.0.1 where nothing listens (taken from the system and let go again).
int closedPort();
