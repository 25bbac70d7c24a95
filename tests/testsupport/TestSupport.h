#pragma once

#include <QString>

// Helpers shared by the tests.
namespace TestSupport {
// Folder of the checked-out sources, e.g. to reach demo/ or src/.
QString sourceDir();
QString binaryDir();
// The Debian python3 (sees Debian's python modules), for fixture servers.
QString python3();
} // namespace TestSupport
