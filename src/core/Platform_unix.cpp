#include "core/NativePlatform.h"

#include "core/Locale.h"

#include <QLocale>
#include <QStringList>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Up to `limit` bytes of a /proc file; "" when it cannot be read (the process
// may have ended or belong to someone else).
QByteArray readProcFile(const QByteArray &path, qsizetype limit)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {};
    QByteArray data(limit, '\0');
    qsizetype filled = 0;
    while (filled < limit) {
        const ssize_t got = ::read(fd, data.data() + filled, size_t(limit - filled));
        if (got <= 0)
            break;
        filled += got;
    }
    ::close(fd);
    data.truncate(filled);
    return data;
}

// Windows programs run through Wine carry their Windows path in argv[0], so
// both kinds of separator end a directory part.
QString baseName(const QString &path)
{
    const qsizetype separator = qMax(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
    return path.mid(separator + 1);
}

// The names a process is known by: the kernel's short name (cut to 15
// characters), its executable and the program named in its first argument.
QStringList processNames(const QByteArray &procDir)
{
    QStringList names;
    names << QString::fromLocal8Bit(readProcFile(procDir + "/comm", 256).trimmed());

    char target[4096];
    const ssize_t length = ::readlink((procDir + "/exe").constData(), target, sizeof target);
    if (length > 0)
        names << baseName(QString::fromLocal8Bit(target, length));

    const QByteArray cmdline = readProcFile(procDir + "/cmdline", 4096);
    const qsizetype end = cmdline.indexOf('\0');
    names << baseName(QString::fromLocal8Bit(end < 0 ? cmdline : cmdline.left(end)));
    return names;
}

bool isPid(const char *name)
{
    if (!*name)
        return false;
    for (; *name; ++name) {
        if (*name < '0' || *name > '9')
            return false;
    }
    return true;
}

} // namespace

bool NativePlatform::isProcessRunning(const QString &name) const
{
    const QString wanted = name.toLower();
    DIR *proc = ::opendir("/proc");
    if (!proc)
        return false;
    bool found = false;
    while (!found) {
        const dirent *entry = ::readdir(proc);
        if (!entry)
            break;
        if (!isPid(entry->d_name))
            continue;
        const QStringList names = processNames(QByteArray("/proc/") + entry->d_name);
        for (const QString &processName : names) {
            if (!processName.isEmpty() && processName.toLower().contains(wanted)) {
                found = true;
                break;
            }
        }
    }
    ::closedir(proc);
    return found;
}

QString NativePlatform::countryCode() const
{
    return countryCallingCode(QLocale::system().territory());
}

bool NativePlatform::sendSnapshotKeys()
{
    return false;
}

std::unique_ptr<Platform> createNativePlatform()
{
    return std::make_unique<NativePlatform>();
}
