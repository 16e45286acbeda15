#pragma once

#include "engine/compression/CompressionReport.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// The earlier compressions as the command line finds them, interrupted ones
// reconciled first (their unfinished copies removed).
struct CompressionHistory {
    std::vector<CompressionReport> recovered;
    // Every compression, newest first.
    std::vector<CompressionReport> all;

    [[nodiscard]] static CompressionHistory read(const std::string& directory);

    // The compression whose id is `id` or starts with it, or why there is
    // none.
    [[nodiscard]] std::expected<CompressionReport, std::string> find(std::string_view id) const;
};

} // namespace brevant::cli
