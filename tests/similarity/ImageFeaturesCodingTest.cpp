#include "engine/platform/BinaryPlist.hpp"
#include "engine/similarity/ImageFeatures.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

std::vector<std::string> keysOf(const PlistValue& value) {
    std::vector<std::string> keys;
    for (const auto& entry : *value.as<PlistValue::Dictionary>()) {
        keys.push_back(entry.first);
    }
    return keys;
}

ImageFeatures complete() {
    ImageFeatures features;
    features.hashes = {0, 1, ~0ULL, 0x8000000000000001ULL};
    features.detailHashes = {DetailHash{~0ULL, 0, 1, 2}, DetailHash{}, DetailHash{},
                             DetailHash{3, 3, 3, 3}};
    features.featurePrint = std::vector<std::uint8_t>{0, 1, 2};
    features.featurePrintRevision = 1;
    features.sharpness = 0.1 + 0.2;
    features.meanLuma = std::nextafter(0.5, 1.0);
    features.clipped = 1e-300;
    features.captureDate = Date{-12345.000001};
    features.pixelWidth = 6000;
    features.pixelHeight = 4000;
    features.qualityScore = 88;
    features.isUtility = true;
    features.qualityRevision = 1;
    features.faces = FaceReading{4, 1, 3, 1};
    return features;
}

TEST(ImageFeaturesCoding, KeysAreTheFieldNames) {
    EXPECT_EQ(keysOf(toPlist(complete())),
              (std::vector<std::string>{"hashes", "detailHashes", "featurePrint",
                                        "featurePrintRevision", "sharpness", "meanLuma", "clipped",
                                        "captureDate", "pixelWidth", "pixelHeight", "version",
                                        "qualityScore", "isUtility", "qualityRevision", "faces"}));
    // Absent optional fields are left out.
    EXPECT_EQ(
        keysOf(toPlist(ImageFeatures{})),
        (std::vector<std::string>{"hashes", "detailHashes", "featurePrintRevision", "sharpness",
                                  "meanLuma", "clipped", "pixelWidth", "pixelHeight", "version"}));
    EXPECT_EQ(keysOf(toPlist(FaceReading{1, 2, 3, 4})),
              (std::vector<std::string>{"faces", "eyesClosed", "smiling", "revision"}));
    EXPECT_EQ(toPlist(complete()).find("version")->intValue(), 5);
}

TEST(ImageFeaturesCoding, RoundTripsBitForBitThroughABinaryPropertyList) {
    for (const ImageFeatures& features : {complete(), ImageFeatures{}}) {
        auto bytes = platform::BinaryPlist::encode(toPlist(features));
        ASSERT_TRUE(bytes);
        auto decoded = platform::BinaryPlist::decode(*bytes);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(imageFeaturesFromPlist(*decoded), features);
    }
}

TEST(ImageFeaturesCoding, MissingOrMistypedFieldsAreNotARecord) {
    PlistValue good = toPlist(complete());
    auto without = [&](const std::string& key, std::optional<PlistValue> replacement) {
        PlistValue::Dictionary entries = *good.as<PlistValue::Dictionary>();
        for (auto& entry : entries) {
            if (entry.first == key) {
                if (replacement) {
                    entry.second = *replacement;
                } else {
                    entry.first = "renamed";
                }
            }
        }
        return imageFeaturesFromPlist(PlistValue(entries)).has_value();
    };
    EXPECT_TRUE(without("faces", std::nullopt));
    EXPECT_TRUE(without("captureDate", std::nullopt));
    EXPECT_FALSE(without("hashes", std::nullopt));
    EXPECT_FALSE(without("version", std::nullopt));
    EXPECT_FALSE(without("hashes", PlistValue(std::string("0"))));
    EXPECT_FALSE(without("detailHashes", PlistValue::Array{PlistValue::Array{1, 2, 3}}));
    EXPECT_FALSE(without("pixelWidth", PlistValue(std::int64_t{1} << 40)));
    EXPECT_FALSE(without("isUtility", PlistValue(1)));
    EXPECT_FALSE(without("faces", PlistValue::Dictionary{{"faces", 1}}));
    EXPECT_FALSE(imageFeaturesFromPlist(PlistValue::Array{}));
    // A date value stored by another writer reads as the same instant.
    auto dated = without("captureDate", PlistValue(Date{86400}));
    EXPECT_TRUE(dated);
}

} // namespace
} // namespace brevant
