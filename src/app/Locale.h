#pragma once

#include <QLocale>
#include <QString>

// The country code of the system's default locale, as Windows reports it: the
// international calling code ("49" for Germany, "1" for the USA).
QString systemCountryCode();
// Calling code of a territory, "" when we do not know it.
QString countryCallingCode(QLocale::Territory territory);
// Only a German country setting defaults to German.
QString defaultLanguageFromCountry(const QString &countryCode);
