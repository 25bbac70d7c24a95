#include "core/NativePlatform.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace {

Platform::FileResult failure(int error)
{
    Platform::FileResult result;
    // A file in use cannot be replaced on some file systems (a running program on NFS,
    // a mount point); elsewhere the same errors mean a lasting problem.
    result.busy = error == EBUSY || error == ETXTBSY;
    result.error = qt_error_string(error);
    return result;
}

Platform::FileResult success()
{
    Platform::FileResult result;
    result.ok = true;
    return result;
}

} // namespace

Platform::FileResult NativePlatform::flushFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return failure(errno);
    const int rc = ::fsync(fd);
    const int error = errno;
    ::close(fd);
    return rc == 0 ? success() : failure(error);
}

Platform::FileResult NativePlatform::moveFileOver(const QString &source, const QString &target)
{
    if (::rename(QFile::encodeName(source).constData(), QFile::encodeName(target).constData()) != 0)
        return failure(errno);
    // The new name is only safe on the disk once the folder is; a folder that cannot be
    // flushed (some network file systems) still holds the new file, so this is no failure.
    const int dir = ::open(QFile::encodeName(QFileInfo(target).absolutePath()).constData(),
                           O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return success();
}
