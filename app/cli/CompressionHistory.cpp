#include "CompressionHistory.hpp"

#include "engine/compression/CompressionJournal.hpp"
#include "engine/support/PathNames.hpp"

#include <fmt/format.h>

namespace brevant::cli {

CompressionHistory CompressionHistory::read(const std::string& directory) {
    CompressionHistory history;
    history.recovered = CompressionJournal::recoverInterrupted(directory);
    history.all = CompressionJournal::history(directory);
    return history;
}

std::expected<CompressionReport, std::string> CompressionHistory::find(std::string_view id) const {
    std::string wanted = PathNames::asciiUppercased(id);
    const CompressionReport* found = nullptr;
    for (const auto& report : all) {
        if (wanted.empty() || !report.planID.text().starts_with(wanted)) {
            continue;
        }
        if (found != nullptr) {
            return std::unexpected(fmt::format(
                "several compressions have an id starting with {}; give more of it", id));
        }
        found = &report;
    }
    if (found == nullptr) {
        return std::unexpected(fmt::format(
            "no cleanup has the id {}, nor does any compression ('brevant history' lists them)",
            id));
    }
    return *found;
}

} // namespace brevant::cli
