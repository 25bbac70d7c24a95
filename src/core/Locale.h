#pragma once

#include <QLocale>
#include <QString>

// Country codes are international calling codes, as Windows reports them ("49" for
// Germany, "1" for the USA).
// Calling code of a territory, "" when we do not know it.
QString countryCallingCode(QLocale::Territory territory);
// Only a German country setting defaults to German.
QString defaultLanguageFromCountry(const QString &countryCode);
