#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Every sentence compression shows to a user.
namespace brevant::compression_texts {

// Why a copy was refused; each is followed by kCopyRemoved in the outcome.
[[nodiscard]] std::string unreadable(std::string_view reason);
[[nodiscard]] std::string damagedFrames(int errors);
[[nodiscard]] std::string framesMissing(std::int64_t decoded, std::int64_t declared);
[[nodiscard]] std::string otherSize(int width, int height, int expectedWidth, int expectedHeight);
[[nodiscard]] std::string tooLarge(int width, int height);
inline constexpr std::string_view kOtherOrientation =
    "Its copy would be shown turned differently from the original.";
inline constexpr std::string_view kOtherRotation =
    "Its copy would play turned differently from the original.";
inline constexpr std::string_view kDateLost = "Its copy lost the date it was taken.";
[[nodiscard]] std::string otherDate(std::string_view copy, std::string_view original);
inline constexpr std::string_view kLocationLost = "Its copy lost where it was taken.";
inline constexpr std::string_view kExifLost = "Its copy lost the photo's EXIF data.";
inline constexpr std::string_view kXmpLost = "Its copy lost the photo's XMP data.";
inline constexpr std::string_view kProfileLost = "Its copy lost the photo's colour profile.";
// Motion photos' stills.
inline constexpr std::string_view kOtherPixels =
    "Its still does not show exactly the same pixels as the photo.";
inline constexpr std::string_view kStillMoves = "Its still's XMP still declares an appended movie.";
[[nodiscard]] std::string tagsLost(std::string_view tags);
[[nodiscard]] std::string otherDuration(double copySeconds, double originalSeconds);
inline constexpr std::string_view kSoundLost = "Its copy lost its sound.";
[[nodiscard]] std::string otherSound(std::size_t copyStreams, std::size_t originalStreams);
[[nodiscard]] std::string otherSoundKind(std::size_t stream);
[[nodiscard]] std::string notSmaller(std::int64_t copyBytes, std::int64_t originalBytes);
[[nodiscard]] std::string otherPicture(int bits);
inline constexpr std::string_view kPictureUnmeasured =
    "Its copy could not be compared with the original, picture by picture.";
inline constexpr std::string_view kCopyRemoved =
    "The copy was removed and the original stays as it was.";

// Item outcomes of a run.
inline constexpr std::string_view kCancelled = "Cancelled before this file was reached.";
[[nodiscard]] std::string notWritten(std::string_view reason);
inline constexpr std::string_view kNoFreeName =
    "No free name was left beside it for its copy, so none was kept.";
inline constexpr std::string_view kChangedWhileWriting =
    "It changed while its copy was being written, so the copy was removed and it stays. Look for "
    "it again to compress it.";
inline constexpr std::string_view kChangedSinceFound =
    "Changed since it was found. Look for it again to compress it.";
[[nodiscard]] std::string copyKeptBeside(std::string_view copy);
[[nodiscard]] std::string leftoverNotRemoved(std::string_view temporary, std::string_view reason);

// Reconciliation of a run cut short.
inline constexpr std::string_view kNotAttempted =
    "Not attempted: the compression stopped before reaching it.";
[[nodiscard]] std::string stoppedWhileWriting();
[[nodiscard]] std::string stoppedAfterCopy(std::string_view copy);

// Put Back of an original: what became of its copy.
[[nodiscard]] std::string copyTrashed(std::string_view copy);
[[nodiscard]] std::string copyChanged(std::string_view copy);
[[nodiscard]] std::string copyGone(std::string_view copy);
[[nodiscard]] std::string copyNotTrashed(std::string_view copy, std::string_view reason);

// Refusals of a whole plan.
inline constexpr std::string_view kApprovalDoesNotMatch =
    "This approval is for a different set of files. Look for them again.";
inline constexpr std::string_view kAlreadyRun =
    "These files were already handled once. Look for them again to see what is left.";
[[nodiscard]] std::string journalUnavailable(std::string_view detail);

// The walk's reasons for passing a file over.
inline constexpr std::string_view kAlreadyHevc = "Already HEVC at 1080p or less.";
inline constexpr std::string_view kHardLinked =
    "It has another name on disk (a hard link), so a smaller copy would free nothing.";
[[nodiscard]] std::string unreadableVideo(std::string_view reason);
inline constexpr std::string_view kUnreadablePhoto = "It could not be read as a photo.";

// Report screens.
inline constexpr std::string_view kFinishedTitle = "Compression finished";
inline constexpr std::string_view kInterruptedTitle = "An earlier compression was interrupted";
[[nodiscard]] std::string interruptedExplanation();

} // namespace brevant::compression_texts
