#include "core/NativePlatform.h"

// GLib names a struct member "signals", which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gio.h>
#pragma pop_macro("signals")

#include <memory>

namespace {
struct GObjectDeleter
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfo = std::unique_ptr<GAppInfo, GObjectDeleter>;

// GIO resolves the default the freedesktop way (mimeapps.list chain, desktop-specific lists,
// mimeinfo.cache, defaults.list) and reads it again at every call, so a mail program the user
// picks while we run is used.
AppInfo mailHandler()
{
    return AppInfo(g_app_info_get_default_for_uri_scheme("mailto"));
}
} // namespace

bool NativePlatform::hasMailHandler() const
{
    return mailHandler() != nullptr;
}

// GIO hands the address to the program's %u as one argument, untouched: QUrl and
// QDesktopServices would write blanks and a bare "%" as escapes, re-encode the umlauts as UTF-8
// and treat "#" as the start of a fragment.
bool NativePlatform::openMailto(const QString &address)
{
    const AppInfo handler = mailHandler();
    if (!handler)
        return false;
    const QByteArray uri = address.toUtf8();
    GList uris = {const_cast<char *>(uri.constData()), nullptr, nullptr};
    GError *error = nullptr;
    const bool started = g_app_info_launch_uris(handler.get(), &uris, nullptr, &error);
    if (error)
        g_error_free(error);
    return started;
}
