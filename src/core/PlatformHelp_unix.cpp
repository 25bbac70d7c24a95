#include "core/HelpViewer.h"
#include "core/NativePlatform.h"

// Linux has no viewer for compiled help: the program's own help window shows the file.
bool NativePlatform::showHelp(const HelpRequest &request)
{
    const HelpViewer &viewer = helpViewer();
    return viewer && viewer(request);
}
