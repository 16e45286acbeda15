#include "ApplicationCheck.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/scan/FileSnapshot.hpp"

#include <algorithm>

namespace brevant {

bool ApplicationCheck::isOpen(const std::string& lockFile,
                              const std::vector<std::string_view>& prefixes,
                              const RunningApplications& running) {
    if (FileSnapshot::read(lockFile)) {
        return true;
    }
    if (!running) {
        return false;
    }
    return std::ranges::any_of(running(), [&](const platform::RunningApplication& application) {
        const auto& bundle = application.bundleIdentifier;
        return bundle && std::ranges::any_of(prefixes, [&](std::string_view prefix) {
                   return bundle->starts_with(prefix);
               });
    });
}

} // namespace brevant
