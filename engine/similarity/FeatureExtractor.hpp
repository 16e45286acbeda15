#pragma once

#include "engine/platform/DecodedImage.hpp"
#include "engine/platform/FeaturePrint.hpp"
#include "engine/platform/GreyRendering.hpp"
#include "engine/platform/ImageDecoder.hpp"
#include "engine/similarity/ImageFeatures.hpp"
#include "engine/support/Date.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Measures pictures into ImageFeatures and compares measurements.
struct FeatureExtractor {
    // Long side of the one thumbnail every measurement is made from.
    static constexpr int kRenditionSize = 512;
    static constexpr int kHashSide = 32;
    static constexpr int kDetailSide = 64;
    static constexpr int kMeasureSide = 256;

    // Measures a picture file from one decode to an upright thumbnail;
    // absent when the file cannot be read as an image.
    [[nodiscard]] static std::optional<ImageFeatures> features(const std::string& path,
                                                               bool withFeaturePrint);

    // The same for a picture already decoded upright, whose pixel size and
    // capture date the caller knows.
    [[nodiscard]] static std::optional<ImageFeatures> features(const platform::DecodedImage& image,
                                                               int width, int height,
                                                               std::optional<Date> captureDate,
                                                               bool withFeaturePrint);

    // 64-bit DCT hash of a 32x32 square: the 8x8 lowest frequencies, a bit
    // set where a value is strictly above their lower median.
    [[nodiscard]] static std::uint64_t phash(const platform::GreySquare& square);

    // 256-bit DCT hash of a 64x64 square from its 16x16 lowest frequencies.
    [[nodiscard]] static DetailHash detailHash(const platform::GreySquare& square);

    struct Measures {
        double sharpness = 0;
        double meanLuma = 0;
        double clipped = 0;

        friend bool operator==(const Measures&, const Measures&) = default;
    };

    // Variance of the Laplacian over the interior, mean grey value and the
    // fraction of pure black or white values of a square.
    [[nodiscard]] static Measures measure(const platform::GreySquare& square);

    // The square turned a quarter clockwise: row y, column x goes to row x,
    // column n - 1 - y.
    [[nodiscard]] static platform::GreySquare turnedClockwise(const platform::GreySquare& square);

    // An EXIF date text "yyyy:MM:dd HH:mm:ss" read as GMT whatever the
    // computer's time zone, so that the dates of one camera compare among
    // themselves. Nothing for any other text.
    [[nodiscard]] static std::optional<Date> captureDateFromExif(std::string_view text);

    // The pixel size as displayed: the header's, exchanged for the
    // quarter-turned orientations 5-8; the upright thumbnail's when the
    // header has none.
    struct PixelSize {
        int width = 0;
        int height = 0;

        friend bool operator==(const PixelSize&, const PixelSize&) = default;
    };

    [[nodiscard]] static PixelSize displayedSize(const platform::ImageProperties& properties,
                                                 const platform::DecodedImage& thumbnail);

    struct HashMatch {
        int distance = 64;
        int turn = 0;

        friend bool operator==(const HashMatch&, const HashMatch&) = default;
    };

    // a's unturned hash against each of b's orientations (four turns, and
    // their mirrors when measured): the smallest Hamming distance and the
    // first orientation that reaches it, an index into b's hashes; (64, 0)
    // when b has none.
    [[nodiscard]] static HashMatch hashMatch(const ImageFeatures& a, const ImageFeatures& b);
    [[nodiscard]] static int hashDistance(const ImageFeatures& a, const ImageFeatures& b);

    // a's unturned detail hash against each of b's orientations: the
    // smallest distance, 256 when either side has none.
    [[nodiscard]] static int detailDistance(const ImageFeatures& a, const ImageFeatures& b);

    // Aspect ratios within 1.35 of each other; with `turn`, b is compared on
    // exchanged sides (it matched at an odd quarter turn, mirrored or not).
    [[nodiscard]] static bool shapesAgree(const ImageFeatures& a, const ImageFeatures& b,
                                          bool turn);

    // A stored feature print made usable for comparing; nothing for absent
    // or unreadable bytes.
    [[nodiscard]] static std::optional<platform::FeaturePrint::Observation>
    observation(const std::optional<std::vector<std::uint8_t>>& bytes);

    [[nodiscard]] static std::optional<float>
    featureDistance(const platform::FeaturePrint::Observation& a,
                    const platform::FeaturePrint::Observation& b);
};

} // namespace brevant
