#include "net/FileDownload.h"

#include <QNetworkReply>

#include <cstring>

FileDownload::FileDownload(QObject *parent) : QObject(parent)
{
    m_net.setBehind([this] { return m_inDataHandler; });
    connect(&m_net, &NetReply::headers, this, &FileDownload::onHeaders);
    connect(&m_net, &NetReply::data, this, &FileDownload::onData);
    connect(&m_net, &NetReply::ended, this, &FileDownload::onEnded);
    m_resumeTimer.setSingleShot(true);
    connect(&m_resumeTimer, &QTimer::timeout, this, &FileDownload::resumeNow);
}

FileDownload::~FileDownload()
{
    m_net.release();
    m_file.close();
}

bool FileDownload::start(const QUrl &url, const QString &fileName)
{
    if (isBusy())
        return false;
    m_stop = false;
    m_size = m_received = m_elapsedMs = 0;
    m_speed = 0;
    m_result = {};
    m_diagnosis = {};
    m_file.setFileName(fileName);
    m_stage.clear();
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    m_resume.reset(m_policy);
    m_digest.reset();
    m_phase = Phase::Request;
    if (!url.isValid())
        fail(NetError::BadUrl);
    else if (!m_net.send("GET", url, QStringLiteral("http sample")))
        end();
    return true;
}

void FileDownload::stop()
{
    m_stop = true;
    // Seen after the block in hand; when no block is coming (no answer yet, a slow or
    // stalled server, a pause before a resume), the queued check ends the download.
    if (isBusy())
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (isBusy() && m_stop && !m_inDataHandler)
                    end();
            },
            Qt::QueuedConnection);
}

void FileDownload::noteFailure(NetDiagnosis diagnosis)
{
    if (m_diagnosis.cause == NetCause::None)
        m_diagnosis = diagnosis;
}

void FileDownload::onHeaders()
{
    if (m_phase != Phase::Request)
        return;
    const int code = m_net.status();
    if (m_resume.attempt() == 0) {
        if (firstHeaders(code))
            startBody();
        return;
    }
    switch (m_resume.judge(code, m_net.header("Content-Range"), m_net.header("ETag"), m_received, m_size)) {
    case ResumeState::Answer::Rest:
        m_blockWaitStartNs = m_clock.nsecsElapsed();
        m_phase = Phase::Body;
        onData();
        return;
    case ResumeState::Answer::Afresh:
        // The whole file comes again: it is written afresh from its start.
        m_received = 0;
        m_digest.reset();
        if (!m_file.seek(0) || !m_file.resize(0)) {
            fail(NetError::WriteFile);
            return;
        }
        m_size = m_net.headerNumber("Content-Length");
        if (m_size == 0) {
            fail(NetError::ZeroSize);
            return;
        }
        m_blockWaitStartNs = m_clock.nsecsElapsed();
        startBody();
        return;
    case ResumeState::Answer::Refused:
        breakOff();
        return;
    }
}

// The first answer: false when it ended the download.
bool FileDownload::firstHeaders(int code)
{
    if (code != 200) {
        fail(NetError::HttpStatus, code);
        return false;
    }
    m_size = m_net.headerNumber("Content-Length");
    if (m_size == 0) {
        fail(NetError::ZeroSize);
        return false;
    }
    // Not truncated: an older file of the same name is overwritten from its start only
    // (a fresh open without Append stands at the start).
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        fail(NetError::WriteFile);
        return false;
    }
    m_readTimeMs = 1; // keeps the speed's division away from zero
    m_clock.start();
    m_blockWaitStartNs = 0;
    return true;
}

// The data of a 200 answer begin: its validator is what a resume will be checked with.
void FileDownload::startBody()
{
    m_resume.noteWholeAnswer(m_net.header("ETag"), m_net.header("Last-Modified"),
                             m_net.header("Accept-Ranges"));
    m_phase = Phase::Body;
    onData();
}

void FileDownload::onEnded()
{
    if (m_phase == Phase::Body) {
        onData();
    } else if (m_phase == Phase::Request) {
        // No answer came. A resume that found no server counts as one more break.
        if (m_resume.attempt() > 0)
            breakOff();
        else
            fail(NetError::ServerNotFound);
    }
}

// The transfer broke off after its data began: resumed while attempts are left, else the
// download ends with ConnectionLost and what arrived stays in the file.
void FileDownload::breakOff()
{
    noteFailure(m_net.diagnosis());
    m_net.release();
    const int pause = m_stop ? -1 : m_resume.nextAttempt();
    if (pause < 0) {
        fail(NetError::ConnectionLost);
        return;
    }
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    m_diagnosis = {};
    m_phase = Phase::ResumeWait;
    const QPointer<FileDownload> self(this);
    emit resuming(m_resume.attempt(), m_resume.maxAttempts(), pause);
    if (self && m_phase == Phase::ResumeWait)
        m_resumeTimer.start(pause);
}

void FileDownload::resumeNow()
{
    if (m_phase != Phase::ResumeWait)
        return;
    m_phase = Phase::Request;
    const QByteArray range = m_resume.rangeRequest(m_received);
    if (!m_net.send("GET", m_net.url(), QStringLiteral("http sample"), range, m_resume.ifRange()))
        breakOff();
}

// Blocks of kBlockSize are cut from a staging buffer that is allocated once per download.
// It is refilled with everything Qt holds whenever less than a block is left (each read
// from the reply wakes the network thread to read on, so one read per pass, not one per
// block), and the blocks counted off it go to the file in one write per pass.
void FileDownload::onData()
{
    QNetworkReply *reply = m_net.reply();
    if (m_inDataHandler || !reply || m_phase != Phase::Body)
        return;
    m_inDataHandler = true;
    for (;;) {
        qint64 staged = m_stageEnd - m_stageOffset;
        if (staged < kBlockSize && reply->bytesAvailable() > 0) {
            if (!flushStage())
                return;
            // The start of the next block moves to the front of a buffer that the hash no
            // longer reads; the rest is filled up.
            QByteArray next = freeStage();
            char *buffer = next.data();
            if (staged > 0)
                std::memcpy(buffer, m_stage.constData() + m_stageOffset, size_t(staged));
            if (!m_stage.isEmpty())
                m_spareStages.append(m_stage);
            m_stage = next;
            m_stageOffset = m_writtenOffset = 0;
            const qint64 got = reply->read(buffer + staged, kStageSize - staged);
            m_stageEnd = staged + qMax<qint64>(got, 0);
            staged = m_stageEnd;
        }
        if (staged < kBlockSize && !m_net.isOver() && !m_stop)
            break;

        const qint64 length = qMin(staged, kBlockSize);
        m_stageOffset += length; // written by the next flushStage
        if (!countBlock(length))
            return;
        if (m_stop || length < kBlockSize) {
            if (!flushStage())
                return;
            m_inDataHandler = false;
            // A short read ends the file. Anything short of Size is a broken transfer.
            if (!m_stop && (m_net.hasError() || m_received < m_size))
                breakOff();
            else
                end();
            return;
        }
    }
    if (flushStage())
        m_inDataHandler = false;
}

// Writes the blocks counted off the staging buffer since the last write, and hands them to
// the hash; on failure the download ends with WriteFile and false is returned.
bool FileDownload::flushStage()
{
    const qint64 pending = m_stageOffset - m_writtenOffset;
    if (pending <= 0)
        return true;
    if (m_file.write(m_stage.constData() + m_writtenOffset, pending) != pending) {
        m_inDataHandler = false;
        fail(NetError::WriteFile);
        return false;
    }
    if (m_hashing)
        m_digest.addData(m_stage, m_writtenOffset, pending);
    m_writtenOffset = m_stageOffset;
    return true;
}

// A staging buffer that nothing else holds, of kStageSize.
QByteArray FileDownload::freeStage()
{
    for (qsizetype i = 0; i < m_spareStages.size(); ++i) {
        if (m_spareStages[i].isDetached())
            return m_spareStages.takeAt(i);
    }
    return QByteArray(kStageSize, Qt::Uninitialized);
}

// Counts one block and raises block; false when the download ended meanwhile or the
// object was deleted by a handler.
bool FileDownload::countBlock(qint64 length)
{
    const qint64 nowNs = m_clock.nsecsElapsed();
    m_readTimeMs += double(nowNs - m_blockWaitStartNs) / 1e6; // only the time spent waiting for data
    m_received += length;
    m_speed = double(m_received) / (m_readTimeMs / 1000.0);
    m_elapsedMs = nowNs / 1000000;

    const QPointer<FileDownload> self(this);
    emit block();
    if (!self)
        return false;
    if (m_phase != Phase::Body) {
        m_inDataHandler = false;
        return false;
    }
    m_blockWaitStartNs = m_clock.nsecsElapsed();
    return true;
}

void FileDownload::fail(NetError error, int httpStatus)
{
    m_result = {error, httpStatus};
    if (error == NetError::ZeroSize)
        noteFailure({NetCause::EmptyAnswer, 0});
    else if (error != NetError::BadUrl && error != NetError::WriteFile) {
        noteFailure(m_net.diagnosis());
        noteFailure({NetCause::Other, 0});
    }
    const QPointer<FileDownload> self(this);
    emit block();
    if (self)
        end();
}

void FileDownload::end()
{
    if (m_phase == Phase::Idle)
        return;
    m_net.release();
    m_resumeTimer.stop();
    m_file.close();
    m_stage.clear();
    m_spareStages.clear();
    m_stageOffset = m_writtenOffset = m_stageEnd = 0;
    m_phase = Phase::Idle;
    m_inDataHandler = false;
    emit finished();
}
