#include "core/Sha256.h"

#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <immintrin.h>
#define SK_SHA_X86 1
#endif

namespace {

constexpr std::uint32_t kRound[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

constexpr std::uint32_t kInitial[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                       0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

inline std::uint32_t rotr(std::uint32_t x, int n)
{
    return (x >> n) | (x << (32 - n));
}

void compressPortable(std::uint32_t state[8], const unsigned char *data, std::size_t count)
{
    for (; count > 0; --count, data += 64) {
        std::uint32_t w[64];
        for (int i = 0; i < 16; ++i)
            w[i] = std::uint32_t(data[4 * i]) << 24 | std::uint32_t(data[4 * i + 1]) << 16 |
                   std::uint32_t(data[4 * i + 2]) << 8 | std::uint32_t(data[4 * i + 3]);
        for (int i = 16; i < 64; ++i) {
            const std::uint32_t s0 = rotr(w[i - 15], 7) ^ rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
            const std::uint32_t s1 = rotr(w[i - 2], 17) ^ rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
            w[i] = w[i - 16] + s0 + w[i - 7] + s1;
        }
        std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4], f = state[5],
                      g = state[6], h = state[7];
        for (int i = 0; i < 64; ++i) {
            const std::uint32_t t1 =
                h + (rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25)) + ((e & f) ^ (~e & g)) + kRound[i] + w[i];
            const std::uint32_t t2 = (rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
            h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
        }
        state[0] += a, state[1] += b, state[2] += c, state[3] += d;
        state[4] += e, state[5] += f, state[6] += g, state[7] += h;
    }
}

#ifdef SK_SHA_X86
// Sixteen groups of four rounds; the message schedule runs in four registers that take
// turns, each group preparing the words the later ones need.
__attribute__((target("sha,sse4.1,ssse3"))) void compressSha(std::uint32_t state[8],
                                                             const unsigned char *data, std::size_t count)
{
    const __m128i byteSwap = _mm_set_epi64x(0x0c0d0e0f08090a0bULL, 0x0405060700010203ULL);
    __m128i tmp = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(&state[0])), 0xB1);
    __m128i state1 = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i *>(&state[4])), 0x1B);
    __m128i state0 = _mm_alignr_epi8(tmp, state1, 8); // ABEF
    state1 = _mm_blend_epi16(state1, tmp, 0xF0);      // CDGH

    for (; count > 0; --count, data += 64) {
        const __m128i abefSaved = state0, cdghSaved = state1;
        __m128i msg[4];
#pragma GCC unroll 16
        for (int g = 0; g < 16; ++g) {
            if (g < 4)
                msg[g] = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(data + 16 * g)),
                                          byteSwap);
            __m128i words =
                _mm_add_epi32(msg[g % 4], _mm_loadu_si128(reinterpret_cast<const __m128i *>(&kRound[4 * g])));
            state1 = _mm_sha256rnds2_epu32(state1, state0, words);
            if (g >= 3 && g <= 14) {
                __m128i &next = msg[(g + 1) % 4];
                next = _mm_add_epi32(next, _mm_alignr_epi8(msg[g % 4], msg[(g + 3) % 4], 4));
                next = _mm_sha256msg2_epu32(next, msg[g % 4]);
            }
            words = _mm_shuffle_epi32(words, 0x0E);
            state0 = _mm_sha256rnds2_epu32(state0, state1, words);
            if (g >= 1 && g <= 12)
                msg[(g + 3) % 4] = _mm_sha256msg1_epu32(msg[(g + 3) % 4], msg[g % 4]);
        }
        state0 = _mm_add_epi32(state0, abefSaved);
        state1 = _mm_add_epi32(state1, cdghSaved);
    }

    tmp = _mm_shuffle_epi32(state0, 0x1B);                                                        // FEBA
    state1 = _mm_shuffle_epi32(state1, 0xB1);                                                     // DCHG
    _mm_storeu_si128(reinterpret_cast<__m128i *>(&state[0]), _mm_blend_epi16(tmp, state1, 0xF0)); // DCBA
    _mm_storeu_si128(reinterpret_cast<__m128i *>(&state[4]), _mm_alignr_epi8(state1, tmp, 8));    // HGFE
}
#endif

} // namespace

bool Sha256::hasShaInstructions()
{
#ifdef SK_SHA_X86
    static const bool has = [] {
        unsigned a = 0, b = 0, c = 0, d = 0;
        if (!__get_cpuid(1, &a, &b, &c, &d))
            return false;
        const bool ssse3 = c & (1u << 9), sse41 = c & (1u << 19);
        if (!__get_cpuid_count(7, 0, &a, &b, &c, &d))
            return false;
        return ssse3 && sse41 && (b & (1u << 29));
    }();
    return has;
#else
    return false;
#endif
}

Sha256::Sha256(Engine engine) : m_hardware(engine == Engine::Best && hasShaInstructions())
{
    reset();
}

void Sha256::reset()
{
    std::memcpy(m_state, kInitial, sizeof m_state);
    m_length = 0;
    m_buffered = 0;
}

void Sha256::compress(const unsigned char *blocks, std::size_t count)
{
#ifdef SK_SHA_X86
    if (m_hardware) {
        compressSha(m_state, blocks, count);
        return;
    }
#endif
    compressPortable(m_state, blocks, count);
}

void Sha256::addData(QByteArrayView data)
{
    // An empty view may have no data pointer at all, which memcpy must not get.
    if (data.isEmpty())
        return;
    auto bytes = reinterpret_cast<const unsigned char *>(data.data());
    std::size_t size = std::size_t(data.size());
    m_length += size;
    if (m_buffered > 0) {
        const std::size_t take = std::min(size, 64 - m_buffered);
        std::memcpy(m_buffer + m_buffered, bytes, take);
        m_buffered += take, bytes += take, size -= take;
        if (m_buffered < 64)
            return;
        compress(m_buffer, 1);
        m_buffered = 0;
    }
    compress(bytes, size / 64);
    m_buffered = size % 64;
    std::memcpy(m_buffer, bytes + size - m_buffered, m_buffered);
}

QByteArray Sha256::result() const
{
    Sha256 tail(*this);
    unsigned char padding[72] = {0x80};
    const std::size_t padLength = (m_buffered < 56 ? 56 : 120) - m_buffered;
    const std::uint64_t bits = m_length * 8;
    for (int i = 0; i < 8; ++i)
        padding[padLength + std::size_t(i)] = static_cast<unsigned char>(bits >> (56 - 8 * i));
    tail.addData(QByteArrayView(reinterpret_cast<const char *>(padding), qsizetype(padLength + 8)));
    QByteArray digest(32, Qt::Uninitialized);
    for (int i = 0; i < 32; ++i)
        digest[i] = char(tail.m_state[i / 4] >> (24 - 8 * (i % 4)));
    return digest;
}

QByteArray Sha256::hash(QByteArrayView data, Engine engine)
{
    Sha256 sha(engine);
    sha.addData(data);
    return sha.result();
}

namespace {
// A fast network outruns no hash, but a stalled worker must not make memory grow without end.
constexpr qint64 kMaxQueuedBytes = 16 * 1024 * 1024;
} // namespace

Sha256Stream::Sha256Stream() = default;

Sha256Stream::~Sha256Stream()
{
    if (!m_thread)
        return;
    {
        const QMutexLocker lock(&m_mutex);
        m_quit = true;
        m_changed.wakeAll();
    }
    m_thread->wait();
}

void Sha256Stream::reset()
{
    const QMutexLocker lock(&m_mutex);
    // The worker finishes the chunk it holds before the hash starts anew.
    while (m_hashing)
        m_changed.wait(&m_mutex);
    m_queue.clear();
    m_queuedBytes = 0;
    m_hash.reset();
}

void Sha256Stream::addData(QByteArray buffer, qsizetype offset, qsizetype length)
{
    if (length <= 0)
        return;
    if (!m_thread) {
        m_thread.reset(QThread::create([this] { run(); }));
        m_thread->start();
    }
    const QMutexLocker lock(&m_mutex);
    while (m_queuedBytes > kMaxQueuedBytes)
        m_changed.wait(&m_mutex);
    m_queuedBytes += length;
    m_queue.push_back({std::move(buffer), offset, length});
    m_changed.wakeAll();
}

QByteArray Sha256Stream::result()
{
    const QMutexLocker lock(&m_mutex);
    while (m_hashing || !m_queue.empty())
        m_changed.wait(&m_mutex);
    return m_hash.result();
}

void Sha256Stream::run()
{
    QMutexLocker lock(&m_mutex);
    for (;;) {
        while (m_queue.empty() && !m_quit)
            m_changed.wait(&m_mutex);
        if (m_quit)
            return;
        Chunk chunk = std::move(m_queue.front());
        m_queue.pop_front();
        m_hashing = true;
        lock.unlock();
        m_hash.addData(QByteArrayView(chunk.buffer.constData() + chunk.offset, chunk.length));
        chunk.buffer = {}; // the caller may take it again
        lock.relock();
        m_hashing = false;
        m_queuedBytes -= chunk.length;
        m_changed.wakeAll();
    }
}
