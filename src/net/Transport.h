#pragma once

#include "net/NetCause.h"
#include "net/Watchdog.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;

// One network manager for all transfers of the program, shut down in order when the
// program ends, and the rules every request follows.
class NetTransport
{
public:
    static constexpr int kMaxRedirects = 20;
    // How far Qt may read ahead of us: bounds the memory a download takes whatever the
    // file's size, and is large enough that loopback transfers are not throttled by it.
    static constexpr qint64 kReadBufferSize = 1024 * 1024;

    static QNetworkAccessManager *manager();
    // Redirects are followed as a browser follows them, but never from https down to
    // plain http, and only to http or https.
    static bool redirectAllowed(const QUrl &from, const QUrl &to);
    // The address as the request is to go out: invalid unless it splits into parts and is
    // http or https. schemeDefault is taken for an address without scheme ("" refuses it).
    static QUrl requestUrl(const QString &address, const QString &schemeDefault = {});
};

// One request and its answer, watched by a Watchdog and following only the redirects
// NetTransport allows. Every answer ends in ended(), also a refused redirect and a timeout.
class NetReply : public QObject
{
    Q_OBJECT

public:
    enum class Abort
    {
        None,
        Timeout,
        Redirect,
    };

    explicit NetReply(QObject *parent = nullptr);
    ~NetReply() override;

    void setTimeouts(int connectMs, int stallMs) { m_watchdog.setTimeouts(connectMs, stallMs); }
    // While this says true, the delay is ours and no timeout is counted.
    void setBehind(std::function<bool()> behind);

    // A running exchange is dropped first. False when nothing could be sent.
    bool send(const QByteArray &verb, const QUrl &url, const QString &agent, const QByteArray &range = {},
              const QByteArray &ifRange = {});
    // Drops the exchange without a signal.
    void release();

    bool isActive() const { return !m_reply.isNull(); }
    QNetworkReply *reply() const { return m_reply; }
    // Where the request ended up after the redirects it followed.
    QUrl url() const { return m_url; }
    int status() const;
    QByteArray header(const QByteArray &name) const;
    // Leading digits of a header ("123 bytes" is 123); none, or too many for 64 bits, is 0.
    qint64 headerNumber(const QByteArray &name) const;
    Abort abort() const { return m_abort; }
    // The answer is complete, was given up or failed.
    bool isOver() const;
    // Whether the answer arrived whole without a transport error.
    bool hasError() const;
    NetDiagnosis diagnosis() const;

signals:
    // The final answer's headers, once, before its first data.
    void headers();
    void data();
    void ended();

private:
    void onMetaData();
    void onReadyRead();
    void onFinished();
    void onRedirected(const QUrl &to);
    void onExpired();
    bool emitHeadersOnce();

    QPointer<QNetworkReply> m_reply; // gone with the manager when the program ends first
    Watchdog m_watchdog;
    std::function<bool()> m_behind;
    QUrl m_url;
    Abort m_abort = Abort::None;
    bool m_headersEmitted = false;
};
