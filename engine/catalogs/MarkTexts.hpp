#pragma once

#include <string>
#include <string_view>

// The sentences the two catalog markers share.
namespace brevant::mark_texts {

inline constexpr std::string_view kApprovalDoesNotMatch =
    "This approval is for a different set of photos. Review them again.";
// Why an undo cannot reach its catalog.
inline constexpr std::string_view kCatalogGone = "the catalog is no longer there";

[[nodiscard]] std::string backupFailed(std::string_view reason);
[[nodiscard]] std::string writeFailed(std::string_view reason);
[[nodiscard]] std::string recordNotSaved(std::string_view reason);

} // namespace brevant::mark_texts
