#include "support/SupportTexts.h"

#include "localisation/LanguageState.h"

QString sendButtonTip()
{
    return lngText(QStringLiteral("T31"),
                   QStringLiteral("<var1> in Zwischenablage kopieren und per E-Mail an Support senden"));
}

QString mailHint()
{
    return lngText(
        QStringLiteral("T30"),
        QStringLiteral("Wenn sich kein \"Neue Mail\"-Fenster automatisch \u00f6ffnet, starten Sie bitte "
                       "Ihr Mail-Programm und f\u00fcgen Sie mit <Strg> + <v> den Inhalt aus der "
                       "Zwischenablage in Ihren Mail-Text ein."));
}
