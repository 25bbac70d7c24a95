#include "app/Locale.h"

QString systemCountryCode()
{
    return countryCallingCode(QLocale::system().territory());
}
