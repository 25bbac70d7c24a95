#include "app/StartSwitches.h"

QString StartSwitches(const StartOptions &o)
{
    QString switches = o.logStart ? QStringLiteral(" /p") : QStringLiteral(" /q");
    if (o.newStartLog)
        switches += QLatin1String(" /l");
    if (!o.safeMode)
        return switches;
    const std::pair<bool, const char *> safe[] = {
        {o.backupIni, " /i"}, {o.noDesign, " /d"},      {o.backupDesign, " /n"}, {o.noComposer, " /c"},
        {o.noFile, " /e"},    {o.repairDesigns, " /r"}, {o.noMacType, " /m"},
    };
    for (const auto &[on, text] : safe) {
        if (on)
            switches += QLatin1String(text);
    }
    return switches;
}
