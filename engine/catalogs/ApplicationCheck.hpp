#pragma once

#include "engine/platform/RunningApplications.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Whether a catalog's application has it open. No catalog is ever changed
// while it does; reading never asks.
struct ApplicationCheck {
    using RunningApplications = std::function<std::vector<platform::RunningApplication>()>;

    // Open as soon as `lockFile` exists (the list is then not even asked
    // for); otherwise open when a running application's bundle identifier
    // begins with one of `prefixes`. An application without one never
    // matches; an empty list means closed.
    [[nodiscard]] static bool isOpen(const std::string& lockFile,
                                     const std::vector<std::string_view>& prefixes,
                                     const RunningApplications& running);
};

} // namespace brevant
