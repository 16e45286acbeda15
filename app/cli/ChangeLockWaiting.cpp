#include "ChangeLockWaiting.hpp"

#include "engine/platform/DataFolder.hpp"

#include <fmt/format.h>
#include <memory>

namespace brevant::cli {

ChangeLock::Waiting waitingOn(const Environment& environment) {
    auto told = std::make_shared<bool>(false);
    return [&environment, told](const ChangeLock::Refusal& holder) {
        if (!*told) {
            fmt::print(environment.err, "{}\n", holder.waitingMessage());
            std::fflush(environment.err);
            *told = true;
        }
        return !environment.cancellation().isCancelled();
    };
}

std::optional<ChangeLock> takeChangeLock(const Environment& environment, std::string_view command) {
    auto taken = ChangeLock::take(platform::DataFolder::current(), waitingOn(environment));
    if (!taken) {
        fmt::print(environment.err, "brevant {}: {}\n", command, taken.error().message());
        return std::nullopt;
    }
    return std::move(*taken);
}

} // namespace brevant::cli
