#pragma once

#include <QByteArray>
#include <QList>

// How a file download goes on after its transfer broke off once its data began (connection
// lost, closed early, stalled): after a pause, up to maxAttempts times. The rest is asked
// for with a range request made conditional on the validator of the first answer (its
// strong ETag, else its Last-Modified), so a changed file is never joined to the old one's
// beginning. A server that answers with the whole file (it ignores ranges, or the file
// changed), or a first answer without validator, starts the file afresh.
struct ResumePolicy
{
    int maxAttempts = 0; // 0: a broken transfer ends at once
    QList<int> pausesMs; // before attempt n the n-th pause; the last one repeats
};

// The decisions of one download under a ResumePolicy.
class ResumeState
{
public:
    enum class Answer
    {
        Rest,    // the very rest of the very same file: appended
        Afresh,  // the whole file again: written anew from its start
        Refused, // anything else: one more break
    };

    void reset(const ResumePolicy &policy);
    // A 200 answer's data begin: what a resume will be checked with.
    void noteWholeAnswer(const QByteArray &etag, const QByteArray &lastModified,
                         const QByteArray &acceptRanges);
    // The pause before the next attempt, or -1 when none is left.
    int nextAttempt();
    int attempt() const { return m_attempt; }
    int maxAttempts() const { return m_policy.maxAttempts; }

    // The next request's Range and If-Range ("" for the whole file); received bytes are in
    // the file.
    QByteArray rangeRequest(qint64 received);
    QByteArray ifRange() const { return m_rangeAsked ? m_validator : QByteArray(); }
    // What the answer to a resume is worth.
    Answer judge(int status, const QByteArray &contentRange, const QByteArray &etag, qint64 received,
                 qint64 size);

private:
    ResumePolicy m_policy;
    int m_attempt = 0;
    QByteArray m_validator; // of the answer the file's data began with
    bool m_rangesAccepted = true;
    bool m_rangeAsked = false; // the running request asks for the rest only
};
