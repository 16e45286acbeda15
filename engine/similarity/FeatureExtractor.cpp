#include "FeatureExtractor.hpp"

#include "engine/similarity/QualityScore.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <numbers>
#include <type_traits>

namespace brevant {

using platform::GreySquare;

namespace {

constexpr double kShapeTolerance = 1.35;
// Pure black or white: at most 2/255 or at least 253/255.
constexpr double kClippedDark = 0.007843138;
constexpr double kClippedBright = 0.99215686;

// cos(u * (2x + 1) * pi / 2n) for the `Frequencies` lowest u, without
// normalising factors: only the order of the values matters to a hash.
template <std::size_t Side, std::size_t Frequencies> struct CosineTable {
    std::array<double, Side * Frequencies> values{};

    CosineTable() {
        for (std::size_t u = 0; u < Frequencies; ++u) {
            for (std::size_t x = 0; x < Side; ++x) {
                values[u * Side + x] =
                    std::cos(static_cast<double>(u) * (2.0 * static_cast<double>(x) + 1) *
                             std::numbers::pi / (2.0 * Side));
            }
        }
    }

    [[nodiscard]] double at(std::size_t u, std::size_t x) const { return values[u * Side + x]; }
};

// Built once, on first use; function statics are thread-safe.
template <std::size_t Side, std::size_t Frequencies>
const CosineTable<Side, Frequencies>& cosineTable() {
    static const CosineTable<Side, Frequencies> table;
    return table;
}

// The lowest Frequencies x Frequencies DCT values of a Side x Side square,
// separably: rows first, then columns, at index v * Frequencies + u.
template <std::size_t Side, std::size_t Frequencies>
std::array<double, Frequencies * Frequencies> lowFrequencies(const GreySquare& square) {
    const auto& table = cosineTable<Side, Frequencies>();
    std::array<double, Side * Frequencies> rows{};
    for (std::size_t y = 0; y < Side; ++y) {
        const float* row = square.values.data() + y * Side;
        for (std::size_t u = 0; u < Frequencies; ++u) {
            double sum = 0;
            for (std::size_t x = 0; x < Side; ++x) {
                sum += static_cast<double>(row[x]) * table.at(u, x);
            }
            rows[y * Frequencies + u] = sum;
        }
    }
    std::array<double, Frequencies * Frequencies> values{};
    for (std::size_t v = 0; v < Frequencies; ++v) {
        for (std::size_t u = 0; u < Frequencies; ++u) {
            double sum = 0;
            for (std::size_t y = 0; y < Side; ++y) {
                sum += table.at(v, y) * rows[y * Frequencies + u];
            }
            values[v * Frequencies + u] = sum;
        }
    }
    return values;
}

// Bit i of the hash words is set when value i is strictly above the lower
// median, so at most half the bits are set when all values differ.
template <std::size_t Count, std::size_t Words>
std::array<std::uint64_t, Words> hashBits(const std::array<double, Count>& values) {
    static_assert(Count == Words * 64);
    std::array<double, Count> sorted = values;
    auto median = sorted.begin() + (Count / 2 - 1);
    std::nth_element(sorted.begin(), median, sorted.end());
    double threshold = *median;
    std::array<std::uint64_t, Words> words{};
    for (std::size_t i = 0; i < Count; ++i) {
        if (values[i] > threshold) {
            words[i / 64] |= std::uint64_t{1} << (i % 64);
        }
    }
    return words;
}

bool hasSide(const GreySquare& square, int side) {
    return square.side == side &&
           square.values.size() == static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
}

// A left-right mirror negates the odd horizontal frequencies (u at index
// v * Frequencies + u), so the mirror's DCT needs no second transform.
template <std::size_t Frequencies>
std::array<double, Frequencies * Frequencies>
mirrored(std::array<double, Frequencies * Frequencies> values) {
    for (std::size_t v = 0; v < Frequencies; ++v) {
        for (std::size_t u = 1; u < Frequencies; u += 2) {
            values[v * Frequencies + u] = -values[v * Frequencies + u];
        }
    }
    return values;
}

// The hashes of a square in the eight orientations ImageFeatures lists:
// turn t at index t, turn t then mirrored at index 4 + t. All zero for a
// square of another side.
template <std::size_t Side, std::size_t Frequencies, class Hash>
std::vector<Hash> orientationHashes(GreySquare square) {
    constexpr std::size_t kCount = Frequencies * Frequencies;
    constexpr std::size_t kWords = kCount / 64;
    auto hashOf = [](const std::array<double, kCount>& values) -> Hash {
        std::array<std::uint64_t, kWords> words = hashBits<kCount, kWords>(values);
        if constexpr (std::is_same_v<Hash, std::uint64_t>) {
            return words[0];
        } else {
            return words;
        }
    };
    std::vector<Hash> hashes(ImageFeatures::kOrientations);
    if (!hasSide(square, static_cast<int>(Side))) {
        return hashes;
    }
    for (int turn = 0; turn < ImageFeatures::kTurns; ++turn) {
        if (turn > 0) {
            square = FeatureExtractor::turnedClockwise(square);
        }
        auto values = lowFrequencies<Side, Frequencies>(square);
        hashes[turn] = hashOf(values);
        hashes[ImageFeatures::kTurns + turn] = hashOf(mirrored<Frequencies>(values));
    }
    return hashes;
}

bool isDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int numberOf(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

int daysInMonth(int year, int month) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

} // namespace

std::optional<ImageFeatures> FeatureExtractor::features(const std::string& path,
                                                        bool withFeaturePrint) {
    std::optional<platform::DecodedPicture> decoded =
        platform::ImageDecoder::decode(path, kRenditionSize);
    if (!decoded) {
        return std::nullopt;
    }
    PixelSize size = displayedSize(decoded->properties, decoded->thumbnail);
    std::optional<Date> captureDate;
    if (decoded->properties.dateTimeOriginal) {
        captureDate = captureDateFromExif(*decoded->properties.dateTimeOriginal);
    }
    return features(decoded->thumbnail, size.width, size.height, captureDate, withFeaturePrint);
}

std::optional<ImageFeatures> FeatureExtractor::features(const platform::DecodedImage& image,
                                                        int width, int height,
                                                        std::optional<Date> captureDate,
                                                        bool withFeaturePrint) {
    constexpr std::array kSides = {kHashSide, kDetailSide, kMeasureSide};
    std::optional<std::vector<GreySquare>> squares =
        platform::GreyRendering::squares(image, kSides);
    if (!squares) {
        return std::nullopt;
    }
    ImageFeatures features;
    features.hashes = orientationHashes<kHashSide, 8, std::uint64_t>((*squares)[0]);
    features.detailHashes = orientationHashes<kDetailSide, 16, DetailHash>((*squares)[1]);
    Measures measures = measure((*squares)[2]);
    features.sharpness = measures.sharpness;
    features.meanLuma = measures.meanLuma;
    features.clipped = measures.clipped;
    if (withFeaturePrint) {
        if (std::optional<platform::FeaturePrint::Made> print =
                platform::FeaturePrint::make(image)) {
            features.featurePrint = std::move(print->archived);
            features.featurePrintRevision = print->revision;
        }
    }
    QualityScore::Result quality = QualityScore::score(image);
    // The three quality fields are all present or all absent.
    if (quality.score && quality.isUtility && quality.revision) {
        features.qualityScore = quality.score;
        features.isUtility = quality.isUtility;
        features.qualityRevision = quality.revision;
    }
    features.captureDate = captureDate;
    features.pixelWidth = width;
    features.pixelHeight = height;
    features.version = ImageFeatures::kPipelineVersion;
    return features;
}

std::uint64_t FeatureExtractor::phash(const GreySquare& square) {
    if (!hasSide(square, kHashSide)) {
        return 0;
    }
    return hashBits<64, 1>(lowFrequencies<kHashSide, 8>(square))[0];
}

DetailHash FeatureExtractor::detailHash(const GreySquare& square) {
    if (!hasSide(square, kDetailSide)) {
        return {};
    }
    return hashBits<256, 4>(lowFrequencies<kDetailSide, 16>(square));
}

FeatureExtractor::Measures FeatureExtractor::measure(const GreySquare& square) {
    Measures measures;
    int n = square.side;
    if (n < 1 || !hasSide(square, n)) {
        return measures;
    }
    double sum = 0;
    std::size_t clipped = 0;
    for (float value : square.values) {
        sum += value;
        if (value <= kClippedDark || value >= kClippedBright) {
            ++clipped;
        }
    }
    auto count = static_cast<double>(square.values.size());
    measures.meanLuma = sum / count;
    measures.clipped = static_cast<double>(clipped) / count;
    if (n < 3) {
        return measures;
    }
    double laplacianSum = 0;
    double squaresSum = 0;
    for (int y = 1; y <= n - 2; ++y) {
        for (int x = 1; x <= n - 2; ++x) {
            double laplacian = 4.0 * square.at(y, x) - square.at(y - 1, x) - square.at(y + 1, x) -
                               square.at(y, x - 1) - square.at(y, x + 1);
            laplacianSum += laplacian;
            squaresSum += laplacian * laplacian;
        }
    }
    double interior = static_cast<double>(n - 2) * static_cast<double>(n - 2);
    double mean = laplacianSum / interior;
    measures.sharpness = squaresSum / interior - mean * mean;
    return measures;
}

GreySquare FeatureExtractor::turnedClockwise(const GreySquare& square) {
    if (!hasSide(square, square.side)) {
        return square;
    }
    auto n = static_cast<std::size_t>(square.side);
    GreySquare turned{square.side, std::vector<float>(square.values.size())};
    for (std::size_t y = 0; y < n; ++y) {
        for (std::size_t x = 0; x < n; ++x) {
            turned.values[x * n + (n - 1 - y)] = square.values[y * n + x];
        }
    }
    return turned;
}

std::optional<Date> FeatureExtractor::captureDateFromExif(std::string_view text) {
    // Exactly "yyyy:MM:dd HH:mm:ss".
    constexpr std::string_view kPattern = "dddd:dd:dd dd:dd:dd";
    if (text.size() != kPattern.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < kPattern.size(); ++i) {
        bool fits = kPattern[i] == 'd' ? isDigits(text.substr(i, 1)) : text[i] == kPattern[i];
        if (!fits) {
            return std::nullopt;
        }
    }
    int year = numberOf(text.substr(0, 4));
    int month = numberOf(text.substr(5, 2));
    int day = numberOf(text.substr(8, 2));
    int hour = numberOf(text.substr(11, 2));
    int minute = numberOf(text.substr(14, 2));
    int second = numberOf(text.substr(17, 2));
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month) ||
        hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    // timegm reads the fields as GMT, never the local zone.
    std::time_t seconds = ::timegm(&fields);
    return Date::fromUnix(static_cast<std::int64_t>(seconds), 0);
}

FeatureExtractor::PixelSize
FeatureExtractor::displayedSize(const platform::ImageProperties& properties,
                                const platform::DecodedImage& thumbnail) {
    if (!properties.pixelWidth || !properties.pixelHeight || *properties.pixelWidth < 1 ||
        *properties.pixelHeight < 1) {
        // The thumbnail is already upright.
        return {thumbnail.width(), thumbnail.height()};
    }
    int orientation = properties.orientation.value_or(1);
    bool quarterTurned = orientation >= 5 && orientation <= 8;
    if (quarterTurned) {
        return {*properties.pixelHeight, *properties.pixelWidth};
    }
    return {*properties.pixelWidth, *properties.pixelHeight};
}

std::optional<platform::FeaturePrint::Observation>
FeatureExtractor::observation(const std::optional<std::vector<std::uint8_t>>& bytes) {
    if (!bytes) {
        return std::nullopt;
    }
    return platform::FeaturePrint::observation(*bytes);
}

std::optional<float>
FeatureExtractor::featureDistance(const platform::FeaturePrint::Observation& a,
                                  const platform::FeaturePrint::Observation& b) {
    return platform::FeaturePrint::distance(a, b);
}

FeatureExtractor::HashMatch FeatureExtractor::hashMatch(const ImageFeatures& a,
                                                        const ImageFeatures& b) {
    HashMatch best;
    if (a.hashes.empty() || b.hashes.empty()) {
        return best;
    }
    std::uint64_t unturned = a.hashes[0];
    for (std::size_t turn = 0; turn < b.hashes.size(); ++turn) {
        int distance = std::popcount(unturned ^ b.hashes[turn]);
        // A later equal distance keeps the earlier turn.
        if (turn == 0 || distance < best.distance) {
            best = {distance, static_cast<int>(turn)};
        }
    }
    return best;
}

int FeatureExtractor::hashDistance(const ImageFeatures& a, const ImageFeatures& b) {
    return hashMatch(a, b).distance;
}

// Counted for every kept pair: with the population-count instruction where
// the processor has one.
[[gnu::target_clones("popcnt", "default")]] int
FeatureExtractor::detailDistance(const ImageFeatures& a, const ImageFeatures& b) {
    constexpr int kNone = 256;
    if (a.detailHashes.empty() || b.detailHashes.empty()) {
        return kNone;
    }
    const DetailHash& unturned = a.detailHashes[0];
    int best = kNone;
    for (const DetailHash& turned : b.detailHashes) {
        int distance = 0;
        for (std::size_t word = 0; word < unturned.size(); ++word) {
            distance += std::popcount(unturned[word] ^ turned[word]);
        }
        best = std::min(best, distance);
    }
    return best;
}

bool FeatureExtractor::shapesAgree(const ImageFeatures& a, const ImageFeatures& b, bool turn) {
    if (a.pixelHeight < 1 || b.pixelHeight < 1 || b.pixelWidth < 1) {
        return false;
    }
    double ra = static_cast<double>(a.pixelWidth) / a.pixelHeight;
    double rb = turn ? static_cast<double>(b.pixelHeight) / b.pixelWidth
                     : static_cast<double>(b.pixelWidth) / b.pixelHeight;
    if (ra <= 0) {
        return false;
    }
    return std::max(ra, rb) / std::min(ra, rb) <= kShapeTolerance;
}

} // namespace brevant
