#pragma once

#include <QByteArray>
#include <QString>

// Helpers shared by the tests.
namespace TestSupport {
// Folder of the checked-out sources, e.g. to reach demo/ or src/.
QString sourceDir();
QString binaryDir();
// Adds 127.0.0.1 to no_proxy and NO_PROXY, so that a proxy the user configured is never
// asked for the test servers.
void bypassProxyForLoopback();
// Writes bytes to path (replacing it), making its folder first.
bool writeFile(const QString &path, const QByteArray &bytes);
// The file's bytes; empty when it cannot be read.
QByteArray readFile(const QString &path);
} // namespace TestSupport
