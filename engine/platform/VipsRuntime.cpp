#include "VipsRuntime.hpp"

#include "engine/platform/BufferReuse.hpp"

#include <glib.h>
#include <vips/vips.h>

namespace brevant::platform {

bool VipsRuntime::ensureStarted() {
    static const bool started = [] {
        BufferReuse::keepFreedBuffers();
        if (VIPS_INIT("brevant") != 0) {
            return false;
        }
        vips_cache_set_max(0);
        vips_concurrency_set(1);
        // libtiff and the loaders report every odd tag of a camera's file as
        // a warning on standard error; a scan over thousands of photos must
        // not.
        g_log_set_handler(
            "VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE),
            [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
        return true;
    }();
    return started;
}

} // namespace brevant::platform
