#pragma once

#include <QStringList>

// Everything main() does once the application object exists: loads the main window,
// runs start-up with the given arguments and the event loop. Returns the exit status.
int supportKitMain(const QStringList &arguments);
