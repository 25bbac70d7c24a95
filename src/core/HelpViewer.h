#pragma once

#include "core/Platform.h"

#include <functional>

// Where no help viewer comes with the system, the program brings its own window. It lives
// with the widgets, above this folder, and registers itself here for Platform::showHelp.
using HelpViewer = std::function<bool(const Platform::HelpRequest &)>;
void setHelpViewer(HelpViewer viewer);
const HelpViewer &helpViewer();
