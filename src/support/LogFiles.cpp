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

QString LoadFileText(const QString &path)
{
    QString text;
    readInstallationText(path, text, kLogSizeLimit);
    return text;
}

QString logBoxText(const QString &path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return QStringLiteral("Missing: ") + QDir::toNativeSeparators(path);
    if (info.isFile() && info.size() > kLogSizeLimit)
        return QStringLiteral("Too large (%1 MB): ").arg(info.size() / 1000000) +
               QDir::toNativeSeparators(path);
    return LoadFileText(path);
}

QString handoffText(const PagedText &log, qsizetype from, qsizetype to)
{
    if (to - from <= kHandoffLimit)
        return log.slice(from, to);
    const qsizetype kept = to - kHandoffLimit;
    QString line = lngText(QStringLiteral("T19450"),
                           QStringLiteral("[<var1> Bytes am Anfang ausgelassen, die ganze Datei: <var2>]"));
    line.replace(QLatin1String("<var1>"), QString::number(log.bytesBefore(kept) - log.bytesBefore(from)));
    line.replace(QLatin1String("<var2>"), QDir::toNativeSeparators(log.path()));
    return line + QStringLiteral("\r\n") + log.slice(kept, to);
}

namespace {
std::shared_ptr<const PagedText> pagedLog(const QString &path)
{
    auto text = std::make_shared<PagedText>(path);
    PagedText::Step step;
    while ((step = text->indexStep(1 << 20)) == PagedText::Step::More) {
    }
    return step == PagedText::Step::Done ? text : nullptr;
}
} // namespace

LogFileLoader::LogFileLoader(QObject *parent) : QObject(parent) {}

LogFileLoader::~LogFileLoader() = default;

void LogFileLoader::start()
{
    const quint64 generation = ++m_generation;
    const QString startPath = logFilePath(1);
    const QString errorPath = logFilePath(2);
    const QPointer<LogFileLoader> self(this);
    QThread *worker = QThread::create([self, generation, startPath, errorPath] {
        QString start = logBoxText(startPath);
        QString error = logBoxText(errorPath);
        std::shared_ptr<const PagedText> startPaged = pagedLog(startPath);
        std::shared_ptr<const PagedText> errorPaged = pagedLog(errorPath);
        // The texts are handed over on the loader's thread; a loader gone or restarted
        // in the meantime gets nothing.
        QMetaObject::invokeMethod(
            qApp,
            [self, generation, start = std::move(start), error = std::move(error),
             startPaged = std::move(startPaged), errorPaged = std::move(errorPaged)]() mutable {
                if (!self || self->m_generation != generation)
                    return;
                self->m_startLog = std::move(start);
                self->m_errorLog = std::move(error);
                self->m_startPaged = std::move(startPaged);
                self->m_errorPaged = std::move(errorPaged);
                self->m_loaded = true;
                emit self->loaded();
            },
            Qt::QueuedConnection);
    });
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
}
