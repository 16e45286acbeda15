#pragma once

#include "engine/support/Date.hpp"
#include "engine/support/Uuid.hpp"

#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace brevant {

// The user's confirmation of one plan. It is good for that plan only: the
// executor refuses a plan whose id differs, and a plan runs once.
struct CleanupApproval {
    Uuid planID;
    // Stored to the second (see IsoDate.hpp).
    Date approvedAt;

    [[nodiscard]] std::string encoded() const;
    [[nodiscard]] static std::expected<CleanupApproval, std::string>
    decode(std::string_view document);

    friend bool operator==(const CleanupApproval&, const CleanupApproval&) = default;
};

void to_json(nlohmann::ordered_json& j, const CleanupApproval& value);
void from_json(const nlohmann::ordered_json& j, CleanupApproval& value);

} // namespace brevant
