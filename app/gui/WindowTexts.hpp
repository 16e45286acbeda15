#pragma once

// The sentences the window shows that the engine does not own. Engine texts
// (stage names, skip reasons, preset explanations, refusals) come from the
// engine itself.
namespace brevant::gui::texts {

inline constexpr const char* kHomeTitle = "Find photos saved more than once";
inline constexpr const char* kHomeSubtitle =
    "Nothing changes until you approve it. Copies you mark go to the Trash, and every one "
    "can be put back.";
inline constexpr const char* kSourcesHint =
    "Add the folders to look in, or drag them here from your file manager.";
inline constexpr const char* kProtectedHint =
    "Copies in these folders are never suggested for removal and cannot be marked.";
inline constexpr const char* kInboxHint =
    "Copies in these folders count as not yet filed, so a filed copy elsewhere is kept "
    "before them.";
inline constexpr const char* kIdenticalExplanation =
    "The same file, byte for byte, saved more than once. The safest kind of copy.";
inline constexpr const char* kSimilarExplanation =
    "Other versions of one photo: resized, re-saved, turned, cropped or edited.";
inline constexpr const char* kSeriesExplanation =
    "Bursts shot seconds apart in one folder, so you can keep the best frames.";
inline constexpr const char* kLivePhotosExplanation =
    "The short movie beside each Live Photo; the photo is always kept as a still.";
inline constexpr const char* kScanCancelled = "The scan was cancelled. Nothing was changed.";
inline constexpr const char* kNoSources = "Add a folder to scan first.";

inline constexpr const char* kCancelling = "Cancelling…";
inline constexpr const char* kCancellingDetail =
    "Stopping after the file being read. Nothing was changed.";

inline constexpr const char* kIncompleteNotice =
    "This scan is incomplete: some files or folders could not be compared. The groups shown "
    "are sound, but more copies may be among the files listed below.";
inline constexpr const char* kNothingFound = "No copies were found in these folders.";
inline constexpr const char* kAllCleaned = "Every group is cleaned up.";
inline constexpr const char* kNothingFoundDetail =
    "Every picture that was read is the only one of its kind here.";

inline constexpr const char* kPrivacy =
    "Everything runs on this computer; no photo, file name or result leaves it.";
inline constexpr const char* kAboutSummary =
    "Brevant finds photos saved more than once and helps you clean them up without ever "
    "losing one.";
inline constexpr const char* kUpdates =
    "Updates come with your distribution's packages; Brevant never connects to the network.";
inline constexpr const char* kDataFolderExplanation =
    "Brevant keeps its measurements of your pictures, your locks, the journal of every "
    "cleanup and the records of catalog markings here. Nothing leaves this computer.";

} // namespace brevant::gui::texts
