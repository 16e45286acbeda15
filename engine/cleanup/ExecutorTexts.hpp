#pragma once

#include "engine/scan/MatchKind.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Every sentence the cleanup executor gives as an item's outcome.
namespace brevant::executor_texts {

inline constexpr std::string_view kCancelled = "Cancelled before this picture was reached.";

// Why an item is skipped, one per check, in the order of the checks.
inline constexpr std::string_view kOutsideRoots = "Outside the folders you chose.";
inline constexpr std::string_view kFolderReplaced =
    "A folder on the way to it was replaced with an alias since the scan.";
inline constexpr std::string_view kGone =
    "No longer where it was \u2014 moved, deleted, or its drive was disconnected.";
inline constexpr std::string_view kReplacedWithLink = "Replaced with an alias since the scan.";
inline constexpr std::string_view kInCloud =
    "Its contents moved to the cloud since the scan, so it was not downloaded to check it.";
inline constexpr std::string_view kChanged = "Changed since the scan. Scan again to review it.";
inline constexpr std::string_view kHardLink =
    "Now has another name on disk (a hard link), so moving it would free nothing.";

// What became of a kept copy, as the words put into the no-keeper sentence.
inline constexpr std::string_view kKeeperMissing = "missing";
inline constexpr std::string_view kKeeperChanged = "changed";
inline constexpr std::string_view kKeeperInCloud = "only in the cloud";
inline constexpr std::string_view kKeeperMoved = "moved";
inline constexpr std::string_view kKeeperNotIdentical = "no longer identical";
inline constexpr std::string_view kKeeperUnreadable = "unreadable";

// No kept copy is left: the distinct words sorted and joined with ", ", in
// the sentence for identical copies (kind identical or absent) or the one
// for similar, series and Live Photo removals.
[[nodiscard]] std::string noKeeperLeft(const std::optional<MatchKind>& kind,
                                       std::vector<std::string> words);

// A move the system refused, by its errno: read-only, gone, or anything else
// with the system's description of the error.
[[nodiscard]] std::string trashRefused(int code, std::string_view description);

} // namespace brevant::executor_texts
