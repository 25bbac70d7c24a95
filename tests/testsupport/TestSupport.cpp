#include "testsupport/TestSupport.h"

namespace TestSupport {
QString sourceDir()
{
    return QStringLiteral(SK_SOURCE_DIR);
}
QString binaryDir()
{
    return QStringLiteral(SK_BINARY_DIR);
}
QString python3()
{
    return QStringLiteral(SK_PYTHON3);
}
} // namespace TestSupport
