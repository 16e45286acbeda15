#pragma once

// The sentences of the cleanup card, the run, the reports and the history
// that the engine does not own. Outcome, refusal, journal and Put Back
// sentences come from engine/cleanup itself.
namespace brevant::gui::cleanup_texts {

inline constexpr const char* kCardTitle = "Review & Move to Trash";
inline constexpr const char* kCardIntro =
    "Each picture is checked again just before it moves. Anything that changed since the scan "
    "stays where it is.";
inline constexpr const char* kCannotPlan = "These marks cannot be moved to the Trash yet.";
inline constexpr const char* kRunTitle = "Moving to the Trash";
inline constexpr const char* kStopping =
    "Stopping after this picture. The rest stay where they are.";
inline constexpr const char* kRefusedTitle = "Nothing was moved";
inline constexpr const char* kInTrash = "In the Trash.";
inline constexpr const char* kHistoryTitle = "History of Cleanups";
inline constexpr const char* kNoHistory = "No cleanup has been run on this computer yet.";
inline constexpr const char* kReading = "Reading the cleanup records…";
inline constexpr const char* kPuttingBack = "Putting back…";

} // namespace brevant::gui::cleanup_texts
