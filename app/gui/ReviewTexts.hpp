#pragma once

// The words of the review screen: its commands, filters and labels. The
// refusals and the sentence when nothing more can be marked come from the
// engine.
namespace brevant::gui::texts {

inline constexpr const char* kAllGroups = "All groups";
inline constexpr const char* kWithMarks = "With marks";
inline constexpr const char* kWithLockedCopies = "With locked copies";
inline constexpr const char* kNotReviewed = "Not reviewed";

inline constexpr const char* kByBytesToFree = "Most space to free first";
inline constexpr const char* kByFolder = "By folder";
inline constexpr const char* kByDate = "Newest first";

inline constexpr const char* kMark = "Mark for Removal";
inline constexpr const char* kUnmark = "Unmark";
inline constexpr const char* kToggleMark = "Toggle Mark";
inline constexpr const char* kLock = "Lock: always keep this copy, in this scan and later ones";
inline constexpr const char* kUnlock = "Unlock: let this copy be marked again";
inline constexpr const char* kMarkAllSuggested = "Mark Suggested Copies in Every Group";
inline constexpr const char* kMarkSuggested = "Mark Suggested Copies in This Group";
inline constexpr const char* kClearMarks = "Clear Marks in This Group";
inline constexpr const char* kNextGroup = "Next Group";
inline constexpr const char* kPreviousGroup = "Previous Group";
inline constexpr const char* kNextCopy = "Next Copy";
inline constexpr const char* kPreviousCopy = "Previous Copy";
inline constexpr const char* kFlip = "Flip Between Two Copies";
inline constexpr const char* kSideBySide = "Side by Side";
inline constexpr const char* kZoomIn = "Zoom In";
inline constexpr const char* kZoomOut = "Zoom Out";
inline constexpr const char* kFit = "Fit";
inline constexpr const char* kOpenFolder = "Open Containing Folder";
inline constexpr const char* kCleanup = "Review & Move to Trash…";
inline constexpr const char* kBackToOverview = "Overview";

inline constexpr const char* kKeeperBadge = "Suggested keeper";
inline constexpr const char* kMarkedBadge = "Marked for removal";
inline constexpr const char* kLockedBadge = "Locked";
inline constexpr const char* kNoPreview = "No preview";
inline constexpr const char* kNoGroup = "Choose a group on the left to compare its copies.";
inline constexpr const char* kNothingMarked = "Nothing marked yet";

} // namespace brevant::gui::texts
