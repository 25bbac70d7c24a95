#pragma once

#include "core/Platform.h"

#include <QString>

#include <functional>

// Putting a new program file in place without ever leaving the user without one: the
// new file is copied beside the target under a temporary name, flushed to the disk,
// checked, and only then renamed over the target in one step. Whatever fails on the
// way, the target is left as it was and the temporary copy is removed.

enum class ReplaceStep
{
    None,   // nothing failed
    Copy,   // copying the source beside the target
    Flush,  // writing the copy through to the disk
    Check,  // the copy is not the source's size or not a program file with a version
    Rename, // putting the copy in the target's place
    Locked, // the target stayed in use by another program for the whole retry time
};

struct ReplaceResult
{
    bool ok = false;
    ReplaceStep failedStep = ReplaceStep::None;
    QString error; // the system's or the check's words, for the message
};

// How each step is done. The defaults do the real work; a test overrides one step to
// make it fail and sees what the others leave behind.
class FileReplaceSteps
{
public:
    virtual ~FileReplaceSteps() = default;

    virtual bool copy(const QString &source, const QString &copyPath, QString &error);
    virtual Platform::FileResult flush(const QString &copyPath);
    virtual bool check(const QString &copyPath, qint64 expectedSize, QString &error);
    virtual Platform::FileResult moveOver(const QString &copyPath, const QString &target);
    // Between two attempts on a target in use.
    virtual void pause(int ms);
};

// A target in use is tried this often, with kLockedPauseMs between the attempts: about
// two seconds, which covers a virus scanner looking at the file.
constexpr int kLockedAttempts = 20;
constexpr int kLockedPauseMs = 100;

// Replaces target by a copy of source as described above.
ReplaceResult replaceFileSafely(const QString &target, const QString &source);
ReplaceResult replaceFileSafely(const QString &target, const QString &source, FileReplaceSteps &steps);

// The name of the temporary copy beside target: target's name, a random part and ".tmp",
// so that a copy left by a crash is recognisable and never matches a program name.
QString temporaryCopyPath(const QString &target);

// Runs work on a thread of its own and waits for it while the calling thread's events run, user
// input held back until it ends: copying a big file or waiting out a virus scanner that holds
// the program file must not freeze the window, and no click may start a second replacement
// meanwhile. Should the program be ending, the wait still lasts until work is done, so that a
// replacement is never cut off half-way.
void runKeepingEventsFlowing(const std::function<void()> &work);

template <typename Work> auto runKeepingEventsFlowing(Work work) -> decltype(work())
{
    decltype(work()) result{};
    runKeepingEventsFlowing(std::function<void()>([&] { result = work(); }));
    return result;
}
