#include "core/Platform.h"

#include <QNetworkInterface>

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

// Qt asks each system in its own way (getifaddrs, GetAdaptersAddresses).
bool Platform::hasNetwork() const
{
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &i : interfaces) {
        const auto flags = i.flags();
        if (flags.testFlag(QNetworkInterface::IsUp) && flags.testFlag(QNetworkInterface::IsRunning) &&
            !flags.testFlag(QNetworkInterface::IsLoopBack))
            return true;
    }
    return false;
}
