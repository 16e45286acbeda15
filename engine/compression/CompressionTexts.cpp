#include "CompressionTexts.hpp"

#include "engine/support/PathNames.hpp"
#include "engine/support/Texts.hpp"

#include <fmt/format.h>

namespace brevant::compression_texts {

std::string unreadable(std::string_view reason) {
    return fmt::format("Its copy could not be read back ({}).", reason);
}

std::string damagedFrames(int errors) {
    return errors == 1 ? std::string("One frame of its copy could not be decoded.")
                       : fmt::format("{} frames of its copy could not be decoded.", errors);
}

std::string framesMissing(std::int64_t decoded, std::int64_t declared) {
    return fmt::format("Only {} of its copy's {} frames could be decoded.", decoded, declared);
}

std::string otherSize(int width, int height, int expectedWidth, int expectedHeight) {
    return fmt::format("Its copy is {}\u00d7{} where it should be {}\u00d7{}.", width, height,
                       expectedWidth, expectedHeight);
}

std::string tooLarge(int width, int height) {
    return fmt::format("Its copy is {}\u00d7{}, larger than 1080p.", width, height);
}

std::string otherDate(std::string_view copy, std::string_view original) {
    return fmt::format("Its copy says it was taken {} where the original says {}.", copy, original);
}

std::string otherDuration(double copySeconds, double originalSeconds) {
    return fmt::format("Its copy plays for {:.3f} s where the original plays for {:.3f} s.",
                       copySeconds, originalSeconds);
}

std::string otherSound(std::size_t copyStreams, std::size_t originalStreams) {
    return fmt::format("Its copy has {} sound {} where the original has {}.", copyStreams,
                       copyStreams == 1 ? "stream" : "streams", originalStreams);
}

std::string otherSoundKind(std::size_t stream) {
    return fmt::format("Sound stream {} of its copy has other channels or another rate than the "
                       "original's.",
                       stream + 1);
}

std::string notSmaller(std::int64_t copyBytes, std::int64_t originalBytes) {
    return fmt::format("Its copy ({} bytes) is not smaller than the original ({} bytes).",
                       copyBytes, originalBytes);
}

std::string otherPicture(int bits) {
    return fmt::format("Its copy does not show the same picture (its fingerprint differs in {} "
                       "bits, 4 at most are allowed).",
                       bits);
}

std::string notWritten(std::string_view reason) {
    return fmt::format("Its copy could not be written ({}). Nothing of it was kept and the "
                       "original stays as it was.",
                       reason);
}

std::string copyKeptBeside(std::string_view copy) {
    return fmt::format("Its checked copy is kept beside it as {}.", PathNames::lastComponent(copy));
}

std::string leftoverNotRemoved(std::string_view temporary, std::string_view reason) {
    return fmt::format("The unfinished copy {} could not be removed ({}); it is {}'s own and can "
                       "be deleted.",
                       temporary, reason, texts::kApplication);
}

std::string stoppedWhileWriting() {
    return fmt::format("{} stopped while writing its copy. The unfinished copy was removed and "
                       "the original is in place.",
                       texts::kApplication);
}

std::string stoppedAfterCopy(std::string_view copy) {
    return fmt::format("{} stopped after writing its checked copy {}. The original is still in "
                       "place, so both are kept.",
                       texts::kApplication, PathNames::lastComponent(copy));
}

std::string copyTrashed(std::string_view copy) {
    return fmt::format("Its copy {} went to the Trash.", PathNames::lastComponent(copy));
}

std::string copyChanged(std::string_view copy) {
    return fmt::format("Its copy {} was changed since it was written, so it stays.",
                       PathNames::lastComponent(copy));
}

std::string copyGone(std::string_view copy) {
    return fmt::format("Its copy {} is no longer where it was written.",
                       PathNames::lastComponent(copy));
}

std::string copyNotTrashed(std::string_view copy, std::string_view reason) {
    return fmt::format("Its copy {} stays: {}", PathNames::lastComponent(copy), reason);
}

std::string journalUnavailable(std::string_view detail) {
    return fmt::format("The compression record could not be written, so nothing was changed: {}",
                       detail);
}

std::string unreadableVideo(std::string_view reason) {
    return fmt::format("It could not be read as a video ({}).", reason);
}

std::string interruptedExplanation() {
    return fmt::format("{} stopped while this compression was running. Each file's outcome below "
                       "was worked out afterwards by looking where it is \u2014 nothing was moved "
                       "again, and unfinished copies were removed.",
                       texts::kApplication);
}

std::string tagsLost(std::string_view tags) {
    return fmt::format("Its still lost or changed the photo's tags: {}.", tags);
}

} // namespace brevant::compression_texts
