#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/ExcludedItem.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/scan/SkipReason.hpp"
#include "engine/support/Date.hpp"

#include <cstdint>
#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Everything one scan produced.
struct ScanResult {
    std::vector<std::string> roots;
    std::vector<DuplicateGroup> groups;
    int discovered = 0;
    int examined = 0;
    int otherFiles = 0;
    std::vector<SkippedFile> skipped;
    std::vector<ExcludedItem> excluded;
    bool cancelled = false;
    Date started;
    Date finished;
    int hardLinksFolded = 0;
    std::vector<PhotoAsset> pictures;
    std::int64_t downloadedBytes = 0;
    int lightroomRejected = 0;
    int captureOneRed = 0;

    // Counts zero, lists empty, both dates now.
    [[nodiscard]] static ScanResult make(std::vector<std::string> roots,
                                         std::vector<DuplicateGroup> groups);

    // The members of all groups together.
    [[nodiscard]] int matched() const;

    // Cancelled, or something that could hold a copy was not compared: any
    // skip but a symbolic link, an empty file or a damaged picture, or an
    // unreadable folder or refused root.
    [[nodiscard]] bool isIncomplete() const;

    [[nodiscard]] std::string encoded(int indent = -1) const;
    [[nodiscard]] static std::expected<ScanResult, std::string> decode(std::string_view document);

    friend bool operator==(const ScanResult&, const ScanResult&) = default;
};

void to_json(nlohmann::ordered_json& j, const ScanResult& value);
void from_json(const nlohmann::ordered_json& j, ScanResult& value);

} // namespace brevant
