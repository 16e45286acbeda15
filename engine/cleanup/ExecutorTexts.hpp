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
    "A folder on the way to it was replaced with a symbolic link since the scan.";
inline constexpr std::string_view kNoPermission =
    "Its folder cannot be opened (permission denied), so it was not moved.";
inline constexpr std::string_view kGone =
    "No longer where it was \u2014 moved, deleted, or its drive was disconnected.";
inline constexpr std::string_view kReplacedWithLink =
    "Replaced with a symbolic link since the scan.";
inline constexpr std::string_view kInCloud =
    "Its contents moved to the cloud since the scan, so it was not downloaded to check it.";
inline constexpr std::string_view kChanged = "Changed since the scan. Scan again to review it.";
inline constexpr std::string_view kHardLink =
    "Now has another name on disk (a hard link), so moving it would free nothing.";
inline constexpr std::string_view kUnreadable =
    "It could not be read to compare it with the kept copy, so it was not moved.";

// The lock store, read again during the run.
inline constexpr std::string_view kLockedSinceScan = "You locked it since the scan, so it stays.";
inline constexpr std::string_view kLocksUnreadable =
    "The lock file could not be read any more, so it stayed: locked copies cannot be told.";

// The check after the move.
inline constexpr std::string_view kChangedWhileMoving =
    "It changed in the instant it was being moved, so it was put back at once. Scan again to "
    "review it.";
inline constexpr std::string_view kChangedKeptInTrash =
    "It changed in the instant it was being moved and its place was taken before it could go "
    "back, so the changed file is in the Trash; Put Back brings it back.";
inline constexpr std::string_view kGoneFromTrash =
    "It was moved to the Trash but was not there a moment later \u2014 look in the Trash.";

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
