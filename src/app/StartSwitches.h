#pragma once

#include <QString>

// The boxes of the start page as the switch string reads them.
struct StartOptions
{
    bool logStart = false;    // Check2: " /p", else " /q"
    bool newStartLog = false; // Check6: " /l"
    bool safeMode = false;
    // Only in safe mode, appended in this order whatever the order on the page.
    bool backupIni = false;     // Check1: " /i"
    bool noDesign = false;      // Check3: " /d"
    bool backupDesign = false;  // Check5: " /n"
    bool noComposer = false;    // Check4: " /c"
    bool noFile = false;        // Check7: " /e"
    bool repairDesigns = false; // Check8: " /r"
    bool noMacType = false;     // Check9: " /m"
};

// The parameters Pawnsketch is started with, each switch led by a blank (" /q /d /m").
QString StartSwitches(const StartOptions &options);
