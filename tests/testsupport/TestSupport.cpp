#include "testsupport/TestSupport.h"

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace TestSupport {
QString sourceDir()
{
    return QStringLiteral(SK_SOURCE_DIR);
}
QString binaryDir()
{
    return QStringLiteral(SK_BINARY_DIR);
}
void bypassProxyForLoopback()
{
    for (const char *name : {"no_proxy", "NO_PROXY"}) {
        const QByteArray list = qgetenv(name);
        if (!list.split(',').contains("127.0.0.1"))
            qputenv(name, list.isEmpty() ? QByteArray("127.0.0.1") : list + ",127.0.0.1");
    }
}
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}
QByteArray readFile(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}
} // namespace TestSupport
