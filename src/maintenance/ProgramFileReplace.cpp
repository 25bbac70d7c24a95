#include "maintenance/ProgramFileReplace.h"

#include "maintenance/PeVersion.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QThread>

#include <memory>

namespace {

FileReplaceSteps &defaultSteps()
{
    static FileReplaceSteps steps;
    return steps;
}

ReplaceResult failed(ReplaceStep step, const QString &error)
{
    ReplaceResult result;
    result.failedStep = step;
    result.error = error;
    return result;
}

} // namespace

bool FileReplaceSteps::copy(const QString &source, const QString &copyPath, QString &error)
{
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly)) {
        error = in.errorString();
        return false;
    }
    QFile out(copyPath);
    // NewOnly: never writes into a file that someone else put there.
    if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        error = out.errorString();
        return false;
    }
    QByteArray buffer(1024 * 1024, Qt::Uninitialized);
    for (;;) {
        const qint64 got = in.read(buffer.data(), buffer.size());
        if (got < 0) {
            error = in.errorString();
            return false;
        }
        if (got == 0)
            break;
        if (out.write(buffer.constData(), got) != got) {
            error = out.errorString();
            return false;
        }
    }
    // A full disk may only show when the last buffered bytes go out.
    if (!out.flush()) {
        error = out.errorString();
        return false;
    }
    out.close();
    return true;
}

Platform::FileResult FileReplaceSteps::flush(const QString &copyPath)
{
    return platform().flushFile(copyPath);
}

bool FileReplaceSteps::check(const QString &copyPath, qint64 expectedSize, QString &error)
{
    QFile file(copyPath);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    if (file.size() != expectedSize) {
        error = QStringLiteral("%1 bytes instead of %2").arg(file.size()).arg(expectedSize);
        return false;
    }
    const PeVersionResult version = readPeVersion(file);
    if (!version.ok) {
        error = version.error;
        return false;
    }
    return true;
}

Platform::FileResult FileReplaceSteps::moveOver(const QString &copyPath, const QString &target)
{
    return platform().moveFileOver(copyPath, target);
}

// Runs on the worker of runKeepingEventsFlowing, never on the thread of the window.
void FileReplaceSteps::pause(int ms)
{
    QThread::msleep(ulong(ms));
}

void runKeepingEventsFlowing(const std::function<void()> &work)
{
    if (!QCoreApplication::instance()) {
        work();
        return;
    }
    const std::unique_ptr<QThread> worker(QThread::create(work));
    QEventLoop loop;
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    // The loop also ends when the application quits; the file operation finishes all the same.
    worker->wait();
}

QString temporaryCopyPath(const QString &target)
{
    const QString suffix = QString::number(QRandomGenerator::global()->generate(), 16);
    return target + u'.' + suffix + QStringLiteral(".tmp");
}

ReplaceResult replaceFileSafely(const QString &target, const QString &source)
{
    return replaceFileSafely(target, source, defaultSteps());
}

ReplaceResult replaceFileSafely(const QString &target, const QString &source, FileReplaceSteps &steps)
{
    // Measured before copying: a source that changes meanwhile fails the check.
    const QFileInfo sourceInfo(source);
    if (!sourceInfo.isFile())
        return failed(ReplaceStep::Copy, QStringLiteral("%1: not found").arg(source));
    const qint64 size = sourceInfo.size();

    QString copyPath = temporaryCopyPath(target);
    for (int tries = 0; QFileInfo::exists(copyPath) && tries < 10; ++tries)
        copyPath = temporaryCopyPath(target);
    if (QFileInfo::exists(copyPath))
        return failed(ReplaceStep::Copy, QStringLiteral("%1: exists").arg(copyPath));

    // From here on any file under copyPath is ours and goes when a step fails.
    const auto cleanUp = [&copyPath](ReplaceResult result) {
        QFile::remove(copyPath);
        return result;
    };

    QString error;
    if (!steps.copy(source, copyPath, error))
        return cleanUp(failed(ReplaceStep::Copy, error));
    const Platform::FileResult flushed = steps.flush(copyPath);
    if (!flushed.ok)
        return cleanUp(failed(ReplaceStep::Flush, flushed.error));
    if (!steps.check(copyPath, size, error))
        return cleanUp(failed(ReplaceStep::Check, error));

    for (int attempt = 1;; ++attempt) {
        const Platform::FileResult moved = steps.moveOver(copyPath, target);
        if (moved.ok)
            return ReplaceResult{true, ReplaceStep::None, QString()};
        if (!moved.busy)
            return cleanUp(failed(ReplaceStep::Rename, moved.error));
        if (attempt == kLockedAttempts)
            return cleanUp(failed(ReplaceStep::Locked, moved.error));
        steps.pause(kLockedPauseMs);
    }
}
