#include "CopyCheck.hpp"

#include "engine/compression/CompressionTexts.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/MotionPhoto.hpp"
#include "engine/platform/PhotoProbe.hpp"
#include "engine/platform/VideoDecoding.hpp"
#include "engine/platform/VideoProbe.hpp"
#include "engine/similarity/FeatureExtractor.hpp"

#include <bit>
#include <cmath>

namespace brevant {

namespace {

namespace texts = compression_texts;

int hashBits(std::uint64_t a, std::uint64_t b) {
    return std::popcount(a ^ b);
}

std::optional<std::uint64_t> uprightHash(const std::string& path) {
    auto features = FeatureExtractor::features(path, false);
    if (!features || features->hashes.empty()) {
        return std::nullopt;
    }
    return features->hashes.front();
}

std::optional<std::uint64_t> frameHash(const platform::DecodedImage& frame) {
    auto features =
        FeatureExtractor::features(frame, frame.width(), frame.height(), std::nullopt, false);
    if (!features || features->hashes.empty()) {
        return std::nullopt;
    }
    return features->hashes.front();
}

// The original's picture against the copy's, as shown: a copy that matches
// only when turned is turned differently.
std::optional<std::string> samePhotoPicture(const std::string& original, const std::string& copy) {
    auto originalFeatures = FeatureExtractor::features(original, false);
    auto copyHash = uprightHash(copy);
    if (!originalFeatures || originalFeatures->hashes.empty() || !copyHash) {
        return std::string(texts::kPictureUnmeasured);
    }
    int bits = hashBits(originalFeatures->hashes.front(), *copyHash);
    if (bits <= CopyCheck::kMaxHashBits) {
        return std::nullopt;
    }
    for (std::size_t turn = 1; turn < originalFeatures->hashes.size(); ++turn) {
        if (hashBits(originalFeatures->hashes[turn], *copyHash) <= CopyCheck::kMaxHashBits) {
            return std::string(texts::kOtherOrientation);
        }
    }
    return texts::otherPicture(bits);
}

std::optional<std::string> sameDate(const std::optional<std::string>& copy,
                                    const std::optional<std::string>& original) {
    if (!original) {
        return std::nullopt;
    }
    if (!copy) {
        return std::string(texts::kDateLost);
    }
    if (*copy != *original) {
        return texts::otherDate(*copy, *original);
    }
    return std::nullopt;
}

std::optional<std::string> sameSound(const platform::VideoFacts& copy,
                                     const platform::VideoFacts& original) {
    if (copy.sound.size() != original.sound.size()) {
        return copy.sound.empty() ? std::string(texts::kSoundLost)
                                  : texts::otherSound(copy.sound.size(), original.sound.size());
    }
    for (std::size_t i = 0; i < copy.sound.size(); ++i) {
        if (copy.sound[i].channels != original.sound[i].channels ||
            copy.sound[i].sampleRate != original.sound[i].sampleRate) {
            return texts::otherSoundKind(i);
        }
    }
    return std::nullopt;
}

std::optional<std::string> sameVideoSize(const platform::VideoFacts& copy,
                                         const platform::VideoFacts& original,
                                         const platform::VideoEncoding& encoding) {
    if (copy.rotation != original.rotation) {
        return std::string(texts::kOtherRotation);
    }
    auto expected =
        platform::VideoTranscoder::targetSize(original.width, original.height, encoding);
    if (copy.width != expected.width || copy.height != expected.height) {
        bool upright = original.rotation % 180 == 0;
        return texts::otherSize(copy.displayedWidth(), copy.displayedHeight(),
                                upright ? expected.width : expected.height,
                                upright ? expected.height : expected.width);
    }
    if (std::max(copy.width, copy.height) > encoding.maxLongSide ||
        std::min(copy.width, copy.height) > encoding.maxShortSide) {
        return texts::tooLarge(copy.displayedWidth(), copy.displayedHeight());
    }
    return std::nullopt;
}

std::optional<std::string> sameMiddleFrame(const std::string& original,
                                           const platform::DecodedVideo& copy, double middle) {
    auto originalFrame = platform::VideoDecoding::frameAt(original, middle);
    if (!originalFrame || !copy.frame) {
        return std::string(texts::kPictureUnmeasured);
    }
    auto a = frameHash(*originalFrame);
    auto b = frameHash(*copy.frame);
    if (!a || !b) {
        return std::string(texts::kPictureUnmeasured);
    }
    if (int bits = hashBits(*a, *b); bits > CopyCheck::kMaxHashBits) {
        return texts::otherPicture(bits);
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> CopyCheck::check(const PlannedCompression& item, const std::string& copy,
                                            const platform::VideoEncoding& encoding) {
    switch (item.kind) {
    case MediaKind::photo:
        return checkPhoto(item.path, copy);
    case MediaKind::video:
        return checkVideo(item.path, copy, encoding);
    case MediaKind::motionPhoto:
        return checkStill(item.path, copy);
    }
    return checkPhoto(item.path, copy);
}

std::optional<std::string> CopyCheck::checkStill(const std::string& original,
                                                 const std::string& still) {
    if (auto decoded = platform::PhotoProbe::decodeFully(still); !decoded) {
        return texts::unreadable(decoded.error());
    }
    auto same = platform::MotionPhoto::samePixels(original, still);
    if (!same) {
        return std::string(texts::kPictureUnmeasured);
    }
    if (!*same) {
        return std::string(texts::kOtherPixels);
    }
    if (platform::MotionPhoto::declaresMotion(still)) {
        return std::string(texts::kStillMoves);
    }
    auto lost = platform::MotionPhoto::tagsLost(original, still);
    if (!lost) {
        return std::string(texts::kPictureUnmeasured);
    }
    if (!lost->empty()) {
        return texts::tagsLost(*lost);
    }
    return checkSmaller(original, still);
}

std::optional<std::string> CopyCheck::checkSmaller(const std::string& original,
                                                   const std::string& copy) {
    auto originalStatus = platform::statusOfPath(original);
    auto copyStatus = platform::statusOfPath(copy);
    if (!originalStatus || !copyStatus) {
        return texts::unreadable(platform::errorText(ENOENT));
    }
    if (copyStatus->size >= originalStatus->size) {
        return texts::notSmaller(copyStatus->size, originalStatus->size);
    }
    return std::nullopt;
}

std::optional<std::string> CopyCheck::checkPhoto(const std::string& original,
                                                 const std::string& copy) {
    if (auto decoded = platform::PhotoProbe::decodeFully(copy); !decoded) {
        return texts::unreadable(decoded.error());
    }
    auto copyFacts = platform::PhotoProbe::read(copy);
    auto originalFacts = platform::PhotoProbe::read(original);
    if (!copyFacts) {
        return texts::unreadable(copyFacts.error());
    }
    if (!originalFacts) {
        return texts::unreadable(originalFacts.error());
    }
    if (copyFacts->displayedWidth != originalFacts->displayedWidth ||
        copyFacts->displayedHeight != originalFacts->displayedHeight) {
        bool turned = copyFacts->displayedWidth == originalFacts->displayedHeight &&
                      copyFacts->displayedHeight == originalFacts->displayedWidth;
        if (turned) {
            return std::string(texts::kOtherOrientation);
        }
        return texts::otherSize(copyFacts->displayedWidth, copyFacts->displayedHeight,
                                originalFacts->displayedWidth, originalFacts->displayedHeight);
    }
    if (auto date = sameDate(copyFacts->dateTimeOriginal, originalFacts->dateTimeOriginal)) {
        return date;
    }
    if (originalFacts->hasExif && !copyFacts->hasExif) {
        return std::string(texts::kExifLost);
    }
    if (originalFacts->hasXmp && !copyFacts->hasXmp) {
        return std::string(texts::kXmpLost);
    }
    if (originalFacts->hasColourProfile && !copyFacts->hasColourProfile) {
        return std::string(texts::kProfileLost);
    }
    if (auto smaller = checkSmaller(original, copy)) {
        return smaller;
    }
    return samePhotoPicture(original, copy);
}

std::optional<std::string> CopyCheck::checkVideo(const std::string& original,
                                                 const std::string& copy,
                                                 const platform::VideoEncoding& encoding) {
    auto originalFacts = platform::VideoProbe::read(original);
    if (!originalFacts) {
        return texts::unreadable(originalFacts.error());
    }
    auto copyFacts = platform::VideoProbe::read(copy);
    if (!copyFacts) {
        return texts::unreadable(copyFacts.error());
    }
    double middle = originalFacts->durationSeconds / 2;
    auto decoded = platform::VideoDecoding::decodeAll(copy, middle);
    if (!decoded) {
        return texts::unreadable(decoded.error());
    }
    if (decoded->errors > 0) {
        return texts::damagedFrames(decoded->errors);
    }
    if (copyFacts->frameCount > 0 && decoded->frames < copyFacts->frameCount) {
        return texts::framesMissing(decoded->frames, copyFacts->frameCount);
    }
    if (auto size = sameVideoSize(*copyFacts, *originalFacts, encoding)) {
        return size;
    }
    double frame = originalFacts->frameRate > 0 ? 1.0 / originalFacts->frameRate : 0.04;
    if (std::abs(copyFacts->durationSeconds - originalFacts->durationSeconds) > frame + 1e-6) {
        return texts::otherDuration(copyFacts->durationSeconds, originalFacts->durationSeconds);
    }
    if (auto sound = sameSound(*copyFacts, *originalFacts)) {
        return sound;
    }
    if (auto date = sameDate(copyFacts->creationTime, originalFacts->creationTime)) {
        return date;
    }
    if (originalFacts->location && copyFacts->location != originalFacts->location) {
        return std::string(texts::kLocationLost);
    }
    if (auto smaller = checkSmaller(original, copy)) {
        return smaller;
    }
    return sameMiddleFrame(original, *decoded, middle);
}

} // namespace brevant
