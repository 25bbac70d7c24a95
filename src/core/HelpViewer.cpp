#include "core/HelpViewer.h"

namespace {
HelpViewer &registered()
{
    static HelpViewer viewer;
    return viewer;
}
} // namespace

void setHelpViewer(HelpViewer viewer)
{
    registered() = std::move(viewer);
}

const HelpViewer &helpViewer()
{
    return registered();
}
