#pragma once

#include "engine/cleanup/CleanupReport.hpp"

#include <optional>
#include <string>
#include <string_view>

// Every sentence the cleanup journal and its reports show to a user.
namespace brevant::journal_texts {

// Items of an unfinished journal, as read.
inline constexpr std::string_view kNotAttempted =
    "Not attempted: the cleanup stopped before reaching it.";
inline constexpr std::string_view kStoppedWhileMoving =
    "The app stopped while moving this picture.";

// Items worked out by reconciliation.
inline constexpr std::string_view kNeverMoved =
    "Its line in the cleanup record is damaged, but it never began to move: no move starts "
    "before it is written down.";
inline constexpr std::string_view kChangedAsItMoved =
    "It changed in the instant it was moved: the file in the Trash is the changed one.";
inline constexpr std::string_view kPutBackStopped =
    "Put Back stopped before moving it; it is still in the Trash.";
inline constexpr std::string_view kStillInPlace =
    "The app stopped before moving it; it is still in place.";
inline constexpr std::string_view kNotFoundInTrash =
    "The app stopped while moving this picture. It is no longer in its folder and was not found "
    "in the Trash this app can see \u2014 look in the Trash.";

// A cleanup whose run is still going on, in another window or process.
inline constexpr std::string_view kRunning =
    "This cleanup is still running; its outcomes so far are shown.";

// Report screens.
inline constexpr std::string_view kInterruptedTitle = "An earlier cleanup was interrupted";
inline constexpr std::string_view kFinishedTitle = "Cleanup finished";

// "Brevant stopped while this cleanup was running. …"
[[nodiscard]] std::string interruptedExplanation();

// The first line of a report: interrupted for a reconciled one, else finished.
[[nodiscard]] std::string_view title(const CleanupReport& report);

// The caption of the list of earlier cleanups.
[[nodiscard]] std::string historyCaption();

// Failures of the journal file itself; `record` is the kind of record
// ("cleanup", "compression"), `name` the file's name, `reason` the system's
// error text.
[[nodiscard]] std::string alreadyExists(std::string_view name, std::string_view folder);
[[nodiscard]] std::string cannotOpen(std::string_view record, std::string_view name,
                                     std::string_view reason);
[[nodiscard]] std::string cannotWrite(std::string_view record, std::string_view name,
                                      std::string_view reason);
[[nodiscard]] std::string unreadable(std::string_view record, std::string_view name);
[[nodiscard]] std::string cannotCreate(std::string_view record, std::string_view name,
                                       std::string_view folder, std::string_view reason);
[[nodiscard]] std::string cannotRead(std::string_view record, std::string_view name,
                                     std::string_view reason);
[[nodiscard]] std::string inUse(std::string_view record, std::string_view name);
[[nodiscard]] std::string notAFile(std::string_view record, std::string_view name);
// A record that is a symbolic link is not followed; `path` is the link's.
[[nodiscard]] std::string isLink(std::string_view record, std::string_view path);

// A Put Back cut short whose picture is neither back nor in the Trash.
[[nodiscard]] std::string putBackLost(std::string_view destination);

// What of a record could not be read, for its report; nothing when it all
// A cleanup cut short while its plan line was written: not one whole line.
inline constexpr std::string_view kCutBeforePlan =
    "This cleanup stopped while its plan was being written, before any picture could move: "
    "it moved nothing.";

// could. `record` as above.
[[nodiscard]] std::optional<std::string> damage(std::string_view record, bool planDamaged,
                                                int damagedLines);

// Prefixes of the records' decoding errors, followed by the parser's words.
inline constexpr std::string_view kPlanUnreadable = "The cleanup plan could not be read: ";
inline constexpr std::string_view kApprovalUnreadable = "The approval could not be read: ";
inline constexpr std::string_view kReportUnreadable = "The cleanup report could not be read: ";

} // namespace brevant::journal_texts
