#include "engine/scan/GroupSummary.hpp"
#include "engine/scan/ScanProgress.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>
#include <vector>

namespace brevant {
namespace {

PhotoAsset asset(std::string path, std::int64_t size = 10) {
    PhotoAsset result;
    result.path = std::move(path);
    result.root = "/photos";
    result.snapshot.size = size;
    result.snapshot.linkCount = 1;
    result.snapshot.isRegularFile = true;
    result.format = PhotoFormat::jpeg;
    return result;
}

TEST(PhotoFormat, FromExtensionIgnoresCase) {
    EXPECT_EQ(photoFormatFromExtension("JPG"), PhotoFormat::jpeg);
    EXPECT_EQ(photoFormatFromExtension("jpe"), PhotoFormat::jpeg);
    EXPECT_EQ(photoFormatFromExtension("Heif"), PhotoFormat::heic);
    EXPECT_EQ(photoFormatFromExtension("TIF"), PhotoFormat::tiff);
    EXPECT_EQ(photoFormatFromExtension("CR3"), PhotoFormat::raw);
    EXPECT_EQ(photoFormatFromExtension("3fr"), PhotoFormat::raw);
    EXPECT_EQ(photoFormatFromExtension("GIF"), PhotoFormat::gif);
    EXPECT_EQ(photoFormatFromExtension("WebP"), PhotoFormat::webp);
    EXPECT_EQ(photoFormatFromExtension("avif"), PhotoFormat::avif);
    EXPECT_EQ(photoFormatFromExtension("jxl"), PhotoFormat::jxl);
    EXPECT_EQ(photoFormatFromExtension("psd"), std::nullopt);
    EXPECT_EQ(photoFormatFromExtension("bmp"), std::nullopt);
    EXPECT_EQ(photoFormatFromExtension(""), std::nullopt);
}

// Each format's stored and shown names, and the stored name read back.
TEST(PhotoFormat, NamesEveryFormat) {
    const std::vector<std::tuple<PhotoFormat, std::string_view, std::string_view>> cases{
        {PhotoFormat::jpeg, "jpeg", "JPEG"}, {PhotoFormat::png, "png", "PNG"},
        {PhotoFormat::heic, "heic", "HEIC"}, {PhotoFormat::tiff, "tiff", "TIFF"},
        {PhotoFormat::webp, "webp", "WebP"}, {PhotoFormat::avif, "avif", "AVIF"},
        {PhotoFormat::gif, "gif", "GIF"},    {PhotoFormat::jxl, "jxl", "JPEG XL"},
        {PhotoFormat::raw, "raw", "RAW"},    {PhotoFormat::other, "other", "Other"}};
    ASSERT_EQ(cases.size(), EnumCases<PhotoFormat>::kAll.size());
    for (const auto& [format, raw, shown] : cases) {
        EXPECT_EQ(rawValue(format), raw);
        EXPECT_EQ(displayName(format), shown);
        EXPECT_EQ(fromRawValue<PhotoFormat>(raw), format);
    }
}

TEST(PhotoFormat, FromTypeIdentifierOrMimeType) {
    EXPECT_EQ(photoFormatFromUti(std::nullopt), PhotoFormat::other);
    EXPECT_EQ(photoFormatFromUti("public.jpeg"), PhotoFormat::jpeg);
    EXPECT_EQ(photoFormatFromUti("image/jpeg"), PhotoFormat::jpeg);
    EXPECT_EQ(photoFormatFromUti("public.heif"), PhotoFormat::heic);
    EXPECT_EQ(photoFormatFromUti("image/tiff"), PhotoFormat::tiff);
    EXPECT_EQ(photoFormatFromUti("image/x-nikon-nef"), PhotoFormat::raw);
    EXPECT_EQ(photoFormatFromUti("image/x-adobe-dng"), PhotoFormat::raw);
    EXPECT_EQ(photoFormatFromUti("image/gif"), PhotoFormat::gif);
    EXPECT_EQ(photoFormatFromUti("org.webmproject.webp"), PhotoFormat::webp);
    EXPECT_EQ(photoFormatFromUti("image/avif"), PhotoFormat::avif);
    EXPECT_EQ(photoFormatFromUti("image/jxl"), PhotoFormat::jxl);
    EXPECT_EQ(photoFormatFromUti("image/vnd.adobe.photoshop"), PhotoFormat::other);
    EXPECT_EQ(photoFormatFromUti("com.example.unknown"), PhotoFormat::other);
}

TEST(FileSnapshot, LinkCountAndFlagsAreNotAChange) {
    FileSnapshot a{{1, 2}, 100, 1700000000, 5, 1, true, false, 0};
    FileSnapshot b = a;
    b.linkCount = 3;
    b.flags = FileSnapshot::kDatalessFlag;
    EXPECT_TRUE(a.isUnchanged(b));
    EXPECT_TRUE(b.isDataless());
    b.modifiedNanoseconds = 6;
    EXPECT_FALSE(a.isUnchanged(b));
    FileSnapshot c = a;
    c.identity.inode = 9;
    EXPECT_FALSE(a.isUnchanged(c));
}

TEST(PhotoAsset, NameAndFolder) {
    auto photo = asset("/photos/2020/IMG_1.JPG");
    EXPECT_EQ(photo.name(), "IMG_1.JPG");
    EXPECT_EQ(photo.folder(), "/photos/2020");
    photo.library = LibraryRef{.id = "ABC/L0/001", .filename = "IMG_9.HEIC"};
    EXPECT_EQ(photo.name(), "IMG_9.HEIC");
    EXPECT_EQ(photo.folder(), "Photos Library");
}

TEST(PhotoAsset, FixedKeepReasonFirstMatchWins) {
    auto photo = asset("/p/a.jpg");
    EXPECT_EQ(photo.fixedKeepReason(), std::nullopt);

    photo.isReadOnlyVolume = true;
    EXPECT_EQ(photo.fixedKeepReason(), "On a volume this computer cannot change");
    photo.snapshot.linkCount = 2;
    EXPECT_EQ(photo.fixedKeepReason(),
              "Has another name on disk (a hard link), so moving it to the Trash would free "
              "nothing");
    photo.catalog = CatalogReference{CaptureOneRef{.variants = 2}};
    EXPECT_EQ(photo.fixedKeepReason(), "Has a second variant in Capture One, which is another "
                                       "edit of this very file, so it is kept");
    photo.catalog = CatalogReference{LightroomRef{.virtualCopies = 1}};
    EXPECT_EQ(photo.fixedKeepReason(), "Has a virtual copy in Lightroom Classic, which is an "
                                       "edit of this very file, so it is kept");

    // With a catalog, the sidecar belongs to the catalog and does not count.
    photo.relationships = {Relationship::sidecar, Relationship::livePhoto};
    EXPECT_EQ(photo.fixedKeepReason(),
              "Part of a Live Photo (a .mov with the same name), so it is kept");
    photo.library = LibraryRef{.isFavorite = true};
    EXPECT_EQ(photo.fixedKeepReason(), "A favourite in Photos, so it is kept");
}

TEST(PhotoAsset, LightroomRawPairWithSidecarsFallsThrough) {
    auto photo = asset("/p/a.jpg");
    photo.relationships = {Relationship::rawPair};
    EXPECT_EQ(photo.fixedKeepReason(), "Has a RAW file with the same name, so it is kept with it");
    photo.catalog = CatalogReference{LightroomRef{.sidecarExtensions = {"xmp"}}};
    EXPECT_EQ(photo.fixedKeepReason(), std::nullopt);
    photo.otherNames = {"/p/b.jpg"};
    EXPECT_EQ(photo.fixedKeepReason(),
              "Has another name on disk (a hard link), so moving it to the Trash would free "
              "nothing");
}

TEST(DuplicateGroup, ExtraBytesAndMatched) {
    auto group = DuplicateGroup::make("abc", 10, {asset("/a"), asset("/b"), asset("/c")},
                                      MatchKind::identical);
    EXPECT_EQ(group.extraBytes(), 20);
    EXPECT_EQ(DuplicateGroup{}.extraBytes(), 0);
    // The movie is what a Live Photo frees, even when it is bigger than the still.
    auto live = DuplicateGroup::make(
        "", 900, {asset("/p/IMG_1.HEIC", 300), asset("/p/IMG_1.MOV", 900)}, MatchKind::liveMovie);
    EXPECT_EQ(live.extraBytes(), 900);
    auto result = ScanResult::make({"/p"}, {group, group});
    EXPECT_EQ(result.matched(), 6);
    EXPECT_EQ(result.discovered, 0);
    EXPECT_GT(result.started.secondsSinceReferenceDate, 0);
}

TEST(GroupSummary, CountsEachKindFoundOnceInTheKindsOrder) {
    auto identical = DuplicateGroup::make("abc", 10, {asset("/a"), asset("/b"), asset("/c")},
                                          MatchKind::identical);
    auto live = DuplicateGroup::make(
        "", 900, {asset("/p/IMG_1.HEIC", 300), asset("/p/IMG_1.MOV", 900)}, MatchKind::liveMovie);
    // The live group comes first, yet the kinds keep MatchKind's order, and
    // no kind is listed without a group.
    GroupSummary summary = GroupSummary::of({live, identical, identical});
    EXPECT_EQ(summary.groups, 3);
    EXPECT_EQ(summary.pictures, 8);
    EXPECT_EQ(summary.bytesToFree, 940);
    EXPECT_EQ(summary.kinds, (std::vector<KindSummary>{{MatchKind::identical, 2, 6, 40},
                                                       {MatchKind::liveMovie, 1, 2, 900}}));
    EXPECT_EQ(GroupSummary::of({}), GroupSummary{});
}

TEST(ScanResult, WhatMakesAScanIncomplete) {
    auto result = ScanResult::make({"/p"}, {});
    EXPECT_FALSE(result.isIncomplete());
    result.skipped = {{"/p/l.jpg", SkipReason::symbolicLink, std::nullopt}};
    result.excluded = {{"/p/a.key", ExcludedItem::Kind::package, "x"},
                       {"/p/L.photoslibrary", ExcludedItem::Kind::managedLibrary, "x"},
                       {"/p/2020", ExcludedItem::Kind::overlappingRoot, "x"}};
    EXPECT_FALSE(result.isIncomplete());

    // Neither an empty file nor one that fails to decode can be a copy of a
    // picture.
    auto withNoPicture = result;
    withNoPicture.skipped.push_back({"/p/e.jpg", SkipReason::empty, std::nullopt});
    withNoPicture.skipped.push_back({"/p/b.jpg", SkipReason::corrupt, std::nullopt});
    EXPECT_FALSE(withNoPicture.isIncomplete());

    auto withUnreadable = result;
    withUnreadable.skipped.push_back({"/p/u.jpg", SkipReason::unreadable, std::nullopt});
    EXPECT_TRUE(withUnreadable.isIncomplete());
    auto withUnsupported = result;
    withUnsupported.skipped.push_back({"/p/x.jxl", SkipReason::unsupportedFormat, std::nullopt});
    EXPECT_TRUE(withUnsupported.isIncomplete());
    auto withCloud = result;
    withCloud.skipped.push_back({"/p/c.jpg", SkipReason::cloudPlaceholder, std::nullopt});
    EXPECT_TRUE(withCloud.isIncomplete());
    auto withFolder = result;
    withFolder.excluded.push_back({"/p/x", ExcludedItem::Kind::unreadableFolder, "x"});
    EXPECT_TRUE(withFolder.isIncomplete());
    auto withRoot = result;
    withRoot.excluded.push_back({"/q", ExcludedItem::Kind::refusedRoot, "x"});
    EXPECT_TRUE(withRoot.isIncomplete());
    auto cancelled = result;
    cancelled.cancelled = true;
    EXPECT_TRUE(cancelled.isIncomplete());
}

ScanResult fullResult() {
    auto first = asset("/photos/a/IMG_0001.JPG", 2048311);
    first.snapshot = {{16777220, 8812345}, 2048311, 1699999999, 123456789, 2, true, false, 0};
    first.pixelWidth = 4032;
    first.pixelHeight = 3024;
    first.otherNames = {"/photos/b/IMG_0001 copy.JPG"};
    first.relationships = {Relationship::sidecar, Relationship::livePhoto};
    first.isCloudSynced = true;
    first.volumeName = "Photos \xC3\xA9t\xC3\xA9";
    first.isExternalVolume = true;
    first.library = LibraryRef{"id/1", "IMG_0001.JPG", true, true, false, true};
    first.catalog = CatalogReference{LightroomRef{42, -1, 3, true, 1, 2, 3, "Red", {"xmp", "jpg"}}};
    auto second = asset("/photos/c/bad\xFF\xFEname.jpg", 2048311);
    second.catalog = CatalogReference{CaptureOneRef{7, 8, 2, 5, {1, 0}, true, 1, 1}};
    second.format = PhotoFormat::raw;

    auto result = ScanResult::make({"/photos"}, {});
    result.groups = {
        DuplicateGroup::make(std::string(64, 'a'), 2048311, {first, second}, MatchKind::identical),
        DuplicateGroup::make("similar-1", 10, {second, first}, MatchKind::similar, 7.0f)};
    result.discovered = 12;
    result.examined = 10;
    result.otherFiles = 3;
    result.skipped = {{"/photos/x.psd", SkipReason::unsupportedFormat, "PSD"},
                      {"/photos/l.jpg", SkipReason::symbolicLink, std::nullopt}};
    result.excluded = {{"/photos/L.photoslibrary", ExcludedItem::Kind::managedLibrary, "A."}};
    result.cancelled = true;
    result.started = Date::fromUnix(1699999999, 123456789);
    result.finished = Date{721000000.25};
    result.hardLinksFolded = 1;
    result.pictures = {first, second};
    result.downloadedBytes = 5'000'000'000;
    result.lightroomRejected = 4;
    result.captureOneRed = 5;
    return result;
}

TEST(ScanResult, RoundTripsThroughJson) {
    auto result = fullResult();
    auto decoded = ScanResult::decode(result.encoded());
    ASSERT_TRUE(decoded.has_value()) << decoded.error();
    EXPECT_EQ(*decoded, result);
}

TEST(ScanResult, StoredFormUsesTheListedKeysInOrder) {
    auto document = json::Json::parse(fullResult().encoded());
    std::vector<std::string> keys;
    for (const auto& [key, value] : document.items()) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "roots", "groups", "discovered", "examined", "otherFiles", "skipped",
                        "excluded", "cancelled", "started", "finished", "hardLinksFolded",
                        "pictures", "downloadedBytes", "lightroomRejected", "captureOneRed"}));
    const auto& picture = document["pictures"][0];
    EXPECT_EQ(picture["format"], "jpeg");
    EXPECT_EQ(picture["relationships"][1], "livePhoto");
    // Each catalog's record under the key of its kind.
    EXPECT_EQ(picture["lightroom"]["imageID"], 42);
    EXPECT_EQ(document["pictures"][1]["captureOne"]["imageID"], 7);
    EXPECT_EQ(picture["snapshot"].dump(),
              R"({"identity":{"device":16777220,"inode":8812345},"size":2048311,)"
              R"("modifiedSeconds":1699999999,"modifiedNanoseconds":123456789,"linkCount":2,)"
              R"("isRegularFile":true,"isSymbolicLink":false,"flags":0})");
    // Seconds since 1 January 2001.
    EXPECT_DOUBLE_EQ(document["finished"].get<double>(), 721000000.25);
    EXPECT_NEAR(document["started"].get<double>(), 1699999999.123456789 - 978307200.0, 1e-6);
    // Absent optionals are left out.
    EXPECT_FALSE(document["pictures"][1].contains("pixelWidth"));
    EXPECT_FALSE(document["groups"][0].contains("spread"));
    EXPECT_EQ(document["skipped"][1].dump(), R"({"path":"/photos/l.jpg","reason":"symbolicLink"})");
}

TEST(ScanResult, ADocumentThatDoesNotDecodeIsAnError) {
    for (std::string_view bad :
         {"", "{", "[]", "{\"roots\": []}", "null", R"({"roots":"x","groups":[]})"}) {
        EXPECT_FALSE(ScanResult::decode(bad).has_value()) << bad;
    }
    auto document = json::Json::parse(fullResult().encoded());
    document["skipped"][0]["reason"] = "exploded";
    auto decoded = ScanResult::decode(document.dump());
    ASSERT_FALSE(decoded.has_value());
    EXPECT_NE(decoded.error().find("exploded"), std::string::npos);
}

TEST(ScanRecords, TextsUseThisPlatformsWords) {
    EXPECT_EQ(title(SkipReason::unreadable), "Could not be read");
    EXPECT_EQ(explanation(SkipReason::unreadable),
              "Linux refused to open these, usually because of their permissions.");
    EXPECT_EQ(explanation(SkipReason::unsupportedFormat),
              "PSD, BMP and other image types are not compared yet, nor RAW files from cameras "
              "this computer cannot read, nor JPEG XL where this computer cannot decode it. "
              "JPEG, PNG, HEIC, TIFF, WebP, AVIF, GIF and camera RAW are.");
    EXPECT_EQ(title(SkipReason::symbolicLink), "Aliases (symbolic links), not followed");
    EXPECT_EQ(rawValue(ScanProgress::Stage::verifying), "Confirming matches byte by byte");
    EXPECT_EQ(rawValue(ScanProgress::Stage::checkingFaces), "Checking eyes and smiles");
    EXPECT_EQ(fromRawValue<SkipReason>("changedDuringScan"), SkipReason::changedDuringScan);
    EXPECT_EQ(fromRawValue<MatchKind>("liveMovie"), MatchKind::liveMovie);
    EXPECT_EQ(fromRawValue<MatchKind>("Identical"), std::nullopt);
    EXPECT_EQ(reason(Relationship::rawPair),
              "Has a RAW file with the same name, so it is kept with it");
}

} // namespace
} // namespace brevant
