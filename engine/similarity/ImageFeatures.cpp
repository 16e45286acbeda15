#include "ImageFeatures.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace brevant {

namespace {

PlistValue wordsOf(const std::vector<std::uint64_t>& words) {
    PlistValue::Array array;
    array.reserve(words.size());
    for (std::uint64_t word : words) {
        array.emplace_back(word);
    }
    return array;
}

PlistValue wordsOf(const DetailHash& words) {
    return wordsOf(std::vector<std::uint64_t>(words.begin(), words.end()));
}

std::optional<std::vector<std::uint64_t>> wordsFrom(const PlistValue* value) {
    const auto* array = value != nullptr ? value->as<PlistValue::Array>() : nullptr;
    if (array == nullptr) {
        return std::nullopt;
    }
    std::vector<std::uint64_t> words;
    words.reserve(array->size());
    for (const PlistValue& item : *array) {
        std::optional<std::uint64_t> word = item.unsignedValue();
        if (!word) {
            return std::nullopt;
        }
        words.push_back(*word);
    }
    return words;
}

std::optional<std::vector<DetailHash>> detailHashesFrom(const PlistValue* value) {
    const auto* array = value != nullptr ? value->as<PlistValue::Array>() : nullptr;
    if (array == nullptr) {
        return std::nullopt;
    }
    std::vector<DetailHash> hashes;
    hashes.reserve(array->size());
    for (const PlistValue& item : *array) {
        std::optional<std::vector<std::uint64_t>> words = wordsFrom(&item);
        DetailHash hash{};
        if (!words || words->size() != hash.size()) {
            return std::nullopt;
        }
        std::copy(words->begin(), words->end(), hash.begin());
        hashes.push_back(hash);
    }
    return hashes;
}

// A required field: its reading, or nothing when missing or mistyped.
template <class Read>
auto required(const PlistValue& dictionary, const char* key, Read read)
    -> decltype(read(std::declval<const PlistValue&>())) {
    const PlistValue* value = dictionary.find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    return read(*value);
}

// An optional field: absent is fine, present but mistyped is damage.
template <class Field, class Read>
bool readOptional(const PlistValue& dictionary, const char* key, Read read,
                  std::optional<Field>& field) {
    const PlistValue* value = dictionary.find(key);
    if (value == nullptr) {
        field.reset();
        return true;
    }
    field = read(*value);
    return field.has_value();
}

std::optional<Date> dateFrom(const PlistValue& value) {
    if (const Date* date = value.as<Date>()) {
        return *date;
    }
    std::optional<double> seconds = value.realValue();
    return seconds ? std::optional<Date>(Date{*seconds}) : std::nullopt;
}

} // namespace

PlistValue toPlist(const ImageFeatures& features) {
    PlistValue::Array detail;
    detail.reserve(features.detailHashes.size());
    for (const DetailHash& hash : features.detailHashes) {
        detail.push_back(wordsOf(hash));
    }
    PlistValue::Dictionary dictionary;
    dictionary.emplace_back("hashes", wordsOf(features.hashes));
    dictionary.emplace_back("detailHashes", std::move(detail));
    if (features.featurePrint) {
        dictionary.emplace_back("featurePrint", *features.featurePrint);
    }
    dictionary.emplace_back("featurePrintRevision", features.featurePrintRevision);
    dictionary.emplace_back("sharpness", features.sharpness);
    dictionary.emplace_back("meanLuma", features.meanLuma);
    dictionary.emplace_back("clipped", features.clipped);
    if (features.captureDate) {
        dictionary.emplace_back("captureDate", features.captureDate->secondsSinceReferenceDate);
    }
    dictionary.emplace_back("pixelWidth", features.pixelWidth);
    dictionary.emplace_back("pixelHeight", features.pixelHeight);
    dictionary.emplace_back("version", features.version);
    if (features.qualityScore) {
        dictionary.emplace_back("qualityScore", *features.qualityScore);
    }
    if (features.isUtility) {
        dictionary.emplace_back("isUtility", *features.isUtility);
    }
    if (features.qualityRevision) {
        dictionary.emplace_back("qualityRevision", *features.qualityRevision);
    }
    if (features.faces) {
        dictionary.emplace_back("faces", toPlist(*features.faces));
    }
    return dictionary;
}

std::optional<ImageFeatures> imageFeaturesFromPlist(const PlistValue& value) {
    auto asInt = [](const PlistValue& item) { return item.intValue(); };
    auto asReal = [](const PlistValue& item) { return item.realValue(); };
    auto hashes = wordsFrom(value.find("hashes"));
    auto detailHashes = detailHashesFrom(value.find("detailHashes"));
    auto featurePrintRevision = required(value, "featurePrintRevision", asInt);
    auto sharpness = required(value, "sharpness", asReal);
    auto meanLuma = required(value, "meanLuma", asReal);
    auto clipped = required(value, "clipped", asReal);
    auto pixelWidth = required(value, "pixelWidth", asInt);
    auto pixelHeight = required(value, "pixelHeight", asInt);
    auto version = required(value, "version", asInt);
    if (!hashes || !detailHashes || !featurePrintRevision || !sharpness || !meanLuma || !clipped ||
        !pixelWidth || !pixelHeight || !version) {
        return std::nullopt;
    }
    ImageFeatures features;
    features.hashes = std::move(*hashes);
    features.detailHashes = std::move(*detailHashes);
    features.featurePrintRevision = *featurePrintRevision;
    features.sharpness = *sharpness;
    features.meanLuma = *meanLuma;
    features.clipped = *clipped;
    features.pixelWidth = *pixelWidth;
    features.pixelHeight = *pixelHeight;
    features.version = *version;
    auto asData = [](const PlistValue& item) {
        const auto* data = item.as<PlistValue::Data>();
        return data != nullptr ? std::optional(*data) : std::nullopt;
    };
    auto asBool = [](const PlistValue& item) { return item.boolValue(); };
    bool optionalsRead = readOptional(value, "featurePrint", asData, features.featurePrint) &&
                         readOptional(value, "captureDate", dateFrom, features.captureDate) &&
                         readOptional(value, "qualityScore", asInt, features.qualityScore) &&
                         readOptional(value, "isUtility", asBool, features.isUtility) &&
                         readOptional(value, "qualityRevision", asInt, features.qualityRevision) &&
                         readOptional(value, "faces", faceReadingFromPlist, features.faces);
    if (!optionalsRead) {
        return std::nullopt;
    }
    return features;
}

} // namespace brevant
