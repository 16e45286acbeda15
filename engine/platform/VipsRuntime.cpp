#include "VipsRuntime.hpp"

#include <vips/vips.h>

namespace brevant::platform {

bool VipsRuntime::ensureStarted() {
    static const bool started = [] {
        if (VIPS_INIT("brevant") != 0) {
            return false;
        }
        vips_cache_set_max(0);
        vips_concurrency_set(1);
        return true;
    }();
    return started;
}

} // namespace brevant::platform
