#include "localisation/Fields.h"

QString GetField(const QString &text, int n, const QString &separator)
{
    if (n < 1) {
        return {};
    }
    if (separator.isEmpty()) {
        return n == 1 ? text : QString();
    }
    qsizetype start = 0;
    for (int field = 1; field < n; ++field) {
        const qsizetype next = text.indexOf(separator, start);
        if (next < 0) {
            return {};
        }
        start = next + separator.size();
    }
    const qsizetype end = text.indexOf(separator, start);
    return end < 0 ? text.mid(start) : text.mid(start, end - start);
}
