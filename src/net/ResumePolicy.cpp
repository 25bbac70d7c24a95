#include "net/ResumePolicy.h"

void ResumeState::reset(const ResumePolicy &policy)
{
    *this = {};
    m_policy = policy;
}

void ResumeState::noteWholeAnswer(const QByteArray &etag, const QByteArray &lastModified,
                                  const QByteArray &acceptRanges)
{
    // A weak ETag may not be used for ranges; the date then serves.
    m_validator = !etag.isEmpty() && !etag.startsWith("W/") ? etag : lastModified;
    m_rangesAccepted = acceptRanges.toLower() != "none";
}

int ResumeState::nextAttempt()
{
    if (m_attempt >= m_policy.maxAttempts)
        return -1;
    ++m_attempt;
    const QList<int> &pauses = m_policy.pausesMs;
    return pauses.isEmpty() ? 0 : qMax(0, pauses.at(qMin<qsizetype>(m_attempt, pauses.size()) - 1));
}

QByteArray ResumeState::rangeRequest(qint64 received)
{
    // Without a validator the rest could belong to another file: the whole file again.
    m_rangeAsked = received > 0 && !m_validator.isEmpty() && m_rangesAccepted;
    return m_rangeAsked ? "bytes=" + QByteArray::number(received) + '-' : QByteArray();
}

ResumeState::Answer ResumeState::judge(int status, const QByteArray &contentRange, const QByteArray &etag,
                                       qint64 received, qint64 size)
{
    if (status == 200)
        return Answer::Afresh;
    if (status != 206 || !m_rangeAsked)
        return Answer::Refused; // 416, 412, 404, a server error
    // "bytes START-END/TOTAL": only the very rest of the very same file will do.
    const qsizetype dash = contentRange.indexOf('-');
    const qsizetype slash = contentRange.indexOf('/');
    const QByteArray total = slash < 0 ? QByteArray() : contentRange.mid(slash + 1).trimmed();
    const bool fits = contentRange.startsWith("bytes ") && dash > 6 && slash > dash &&
                      contentRange.mid(6, dash - 6).trimmed() == QByteArray::number(received) &&
                      total == QByteArray::number(size);
    if (fits)
        return Answer::Rest;
    // Another file behind the same address (a new ETag or size, from a server that ignored
    // If-Range): the next attempt fetches it whole instead of asking for a rest.
    if ((!etag.isEmpty() && etag != m_validator) || total != QByteArray::number(size))
        m_validator.clear();
    return Answer::Refused;
}
