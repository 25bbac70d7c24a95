#include "core/Locale.h"

QString countryCallingCode(QLocale::Territory territory)
{
    switch (territory) {
    case QLocale::UnitedStates:
    case QLocale::Canada:
        return QStringLiteral("1");
    case QLocale::Russia:
        return QStringLiteral("7");
    case QLocale::Netherlands:
        return QStringLiteral("31");
    case QLocale::Belgium:
        return QStringLiteral("32");
    case QLocale::France:
        return QStringLiteral("33");
    case QLocale::Spain:
        return QStringLiteral("34");
    case QLocale::Italy:
        return QStringLiteral("39");
    case QLocale::Switzerland:
        return QStringLiteral("41");
    case QLocale::Austria:
        return QStringLiteral("43");
    case QLocale::UnitedKingdom:
        return QStringLiteral("44");
    case QLocale::Denmark:
        return QStringLiteral("45");
    case QLocale::Sweden:
        return QStringLiteral("46");
    case QLocale::Norway:
        return QStringLiteral("47");
    case QLocale::Poland:
        return QStringLiteral("48");
    case QLocale::Germany:
        return QStringLiteral("49");
    case QLocale::Luxembourg:
        return QStringLiteral("352");
    case QLocale::Liechtenstein:
        return QStringLiteral("423");
    default:
        return {};
    }
}

QString defaultLanguageFromCountry(const QString &countryCode)
{
    // 1 and 33 lead to the same result as the fallback; they are spelled out because
    // these were the markets the English texts were written for.
    if (countryCode == QLatin1String("1"))
        return QStringLiteral("us");
    if (countryCode == QLatin1String("33"))
        return QStringLiteral("us");
    if (countryCode == QLatin1String("49"))
        return QStringLiteral("de");
    return QStringLiteral("us");
}
