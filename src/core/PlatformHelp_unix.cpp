#include "core/HelpViewer.h"
#include "core/Platform_unix.h"

// Linux has no viewer for compiled help: the program's own help window shows the file.
bool UnixPlatform::showHelp(const HelpRequest &request)
{
    const HelpViewer &viewer = helpViewer();
    return viewer && viewer(request);
}
