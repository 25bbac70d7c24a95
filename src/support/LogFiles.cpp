#include "support/LogFiles.h"

#include "core/ProgramFolder.h"
#include "core/TextFile.h"
#include "localisation/LanguageState.h"
#include "support/PagedText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <QThread>

QString logFilePath(int selector)
{
    switch (selector) {
    case 1:
        return installPath(QStringLiteral("logfiles/startlog.txt"));
    case 2:
        return installPath(QStringLiteral("logfiles/errorlog.txt"));
    default:
        return {};
    }
}

QString logBoxText(const QString &path)
{
    if (path.isEmpty() || !QFileInfo::exists(path))
        return QStringLiteral("Missing: ") + QDir::toNativeSeparators(path);
    return {};
}

QString handoffText(const TextSource &log, qsizetype from, qsizetype to)
{
    if (to - from <= kHandoffLimit)
        return log.slice(from, to);
    const qsizetype kept = to - kHandoffLimit;
    const QString path = log.pathAt(kept);
    const qint64 before = log.pathAt(from) == path ? log.bytesBefore(from) : 0;
    QString line = lngText(QStringLiteral("T19450"),
                           QStringLiteral("[<var1> Bytes am Anfang ausgelassen, die ganze Datei: <var2>]"));
    line.replace(QLatin1String("<var1>"), QString::number(log.bytesBefore(kept) - before));
    line.replace(QLatin1String("<var2>"), QDir::toNativeSeparators(path));
    return line + QStringLiteral("\r\n") + log.slice(kept, to);
}

LogFileLoader::LogFileLoader(QObject *parent) : QObject(parent) {}

LogFileLoader::~LogFileLoader()
{
    // The pass stops within a step; it must not read on into a program that is ending.
    if (m_stop)
        *m_stop = true;
    if (m_worker)
        m_worker->wait();
}

void LogFileLoader::start()
{
    if (m_stop)
        *m_stop = true;
    const auto stop = m_stop = std::make_shared<std::atomic<bool>>(false);
    const quint64 generation = ++m_generation;
    const QString startPath = logFilePath(1);
    const QString errorPath = logFilePath(2);
    const QPointer<LogFileLoader> self(this);
    // Hands a result over on the loader's thread; a loader gone or restarted meanwhile gets nothing.
    const auto deliver = [self, generation](auto apply) {
        QMetaObject::invokeMethod(
            qApp,
            [self, generation, apply] {
                if (self && self->m_generation == generation)
                    apply(*self);
            },
            Qt::QueuedConnection);
    };
    m_worker = QThread::create([stop, deliver, startPath, errorPath] {
        // The first step shows whether a log can be read at all.
        const auto open = [](const QString &path) {
            auto text = std::make_shared<PagedText>(path);
            return text->indexStep(1 << 20) == PagedText::Step::Failed ? nullptr : text;
        };
        std::shared_ptr<PagedText> start = open(startPath), error = open(errorPath);
        deliver([start, error, startText = start ? QString() : logBoxText(startPath),
                 errorText = error ? QString() : logBoxText(errorPath)](LogFileLoader &loader) {
            loader.m_startLog = startText;
            loader.m_errorLog = errorText;
            loader.m_startPaged = start;
            loader.m_errorPaged = error;
            loader.m_loaded = true;
            emit loader.loaded();
        });
        for (const std::shared_ptr<PagedText> &log : {start, error}) {
            while (log && !*stop && log->indexStep(1 << 20) == PagedText::Step::More) {
            }
        }
        if (!*stop)
            deliver([](LogFileLoader &loader) { emit loader.indexed(); });
    });
    connect(m_worker, &QThread::finished, m_worker, &QObject::deleteLater);
    m_worker->start();
}
