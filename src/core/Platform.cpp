#include "core/Platform.h"

namespace {
Platform *&current()
{
    static Platform *installed = nullptr;
    return installed;
}
} // namespace

Platform &platform()
{
    if (!current()) {
        static const std::unique_ptr<Platform> native = createNativePlatform();
        return *native;
    }
    return *current();
}

PlatformOverride::PlatformOverride(Platform &replacement) : m_previous(current())
{
    current() = &replacement;
}

PlatformOverride::~PlatformOverride()
{
    current() = m_previous;
}
