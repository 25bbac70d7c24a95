#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QMutex>
#include <QWaitCondition>

#include <cstdint>
#include <deque>
#include <memory>

class QThread;

// SHA-256 with the processor's SHA instructions where it has them (several times faster
// than a portable implementation, which stands in elsewhere).
class Sha256
{
public:
    enum class Engine
    {
        Best,     // the SHA instructions when the processor has them
        Portable, // plain C++ everywhere
    };

    explicit Sha256(Engine engine = Engine::Best);
    void reset();
    void addData(QByteArrayView data);
    // The 32-byte digest of everything added since the last reset; adding may go on.
    QByteArray result() const;

    static QByteArray hash(QByteArrayView data, Engine engine = Engine::Best);
    static bool hasShaInstructions();

private:
    void compress(const unsigned char *blocks, std::size_t count);

    std::uint32_t m_state[8];
    std::uint64_t m_length = 0;
    unsigned char m_buffer[64];
    std::size_t m_buffered = 0;
    bool m_hardware = false;
};

// A SHA-256 of a stream of chunks, computed on a thread of its own: the caller hands each
// chunk over and goes on while it is hashed.
class Sha256Stream
{
public:
    Sha256Stream();
    ~Sha256Stream();
    Sha256Stream(const Sha256Stream &) = delete;
    Sha256Stream &operator=(const Sha256Stream &) = delete;

    // Starts anew; chunks not yet hashed are dropped.
    void reset();
    // The chunk is kept (shared, not copied) until it is hashed: a caller that reuses the
    // buffer takes another while this one is not detached.
    void addData(QByteArray chunk) { addData(chunk, 0, chunk.size()); }
    void addData(QByteArray buffer, qsizetype offset, qsizetype length);
    // Waits until every chunk handed over is hashed.
    QByteArray result();

private:
    void run();

    QMutex m_mutex;
    QWaitCondition m_changed;
    struct Chunk
    {
        QByteArray buffer;
        qsizetype offset;
        qsizetype length;
    };
    std::deque<Chunk> m_queue;
    qint64 m_queuedBytes = 0;
    bool m_hashing = false; // the worker holds a chunk
    bool m_quit = false;
    Sha256 m_hash;
    std::unique_ptr<QThread> m_thread;
};
