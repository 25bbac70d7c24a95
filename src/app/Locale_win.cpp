#include "app/Locale.h"

#include <windows.h>

#include <QByteArray>

QString systemCountryCode()
{
    const LCID lcid = GetSystemDefaultLCID();
    const int length = GetLocaleInfoA(lcid, LOCALE_ICOUNTRY, nullptr, 0);
    if (length <= 0)
        return {};
    QByteArray buffer(length, '\0');
    if (GetLocaleInfoA(lcid, LOCALE_ICOUNTRY, buffer.data(), length) <= 0)
        return {};
    return QString::fromLatin1(buffer.constData()); // stops at the terminating NUL
}
