#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/ExcludedItem.hpp"
#include "engine/scan/SkipReason.hpp"
#include "engine/similarity/SimilarPair.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>
#include <vector>

namespace brevant {
namespace {

PhotoAsset everyFieldSet() {
    PhotoAsset asset;
    asset.path = "/photos/a/IMG_1.jpg";
    asset.root = "/photos";
    asset.snapshot = {{7, 42}, 1000, 1'700'000'000, 5, 1, true, false, 0};
    asset.format = PhotoFormat::jpeg;
    asset.pixelWidth = 4000;
    asset.pixelHeight = 3000;
    asset.otherNames = {"/photos/b/IMG_1.jpg"};
    asset.relationships = {Relationship::sidecar};
    asset.volumeName = "Photos";
    asset.library = LibraryRef{"id", "IMG_1.jpg", false, false, false, false};
    asset.catalog = CatalogReference{LightroomRef{1, 0, 3, false, 0, 1, 2, "Red", {"xmp"}}};
    return asset;
}

LightroomRef& lightroomOf(PhotoAsset& asset) {
    return std::get<LightroomRef>(asset.catalog->record);
}

// Each change makes a record unequal to the original; its hash must follow,
// or some field was left out of it.
template <class T>
void expectEveryChangeHashesApart(const T& original,
                                  const std::vector<std::function<void(T&)>>& changes) {
    std::hash<T> hash;
    EXPECT_EQ(hash(original), hash(T(original)));
    for (std::size_t i = 0; i < changes.size(); ++i) {
        T changed = original;
        changes[i](changed);
        ASSERT_NE(changed, original) << "change " << i;
        EXPECT_NE(hash(changed), hash(original)) << "change " << i;
    }
}

TEST(RecordHashing, EveryFieldOfAPictureCounts) {
    using Change = std::function<void(PhotoAsset&)>;
    expectEveryChangeHashesApart<PhotoAsset>(
        everyFieldSet(),
        std::vector<Change>{
            [](PhotoAsset& a) { a.path += "x"; },
            [](PhotoAsset& a) { a.root = "/other"; },
            [](PhotoAsset& a) { a.snapshot.identity.inode += 1; },
            [](PhotoAsset& a) { a.snapshot.identity.device += 1; },
            [](PhotoAsset& a) { a.snapshot.size += 1; },
            [](PhotoAsset& a) { a.snapshot.modifiedSeconds += 1; },
            [](PhotoAsset& a) { a.snapshot.modifiedNanoseconds += 1; },
            [](PhotoAsset& a) { a.snapshot.linkCount += 1; },
            [](PhotoAsset& a) { a.snapshot.isRegularFile = false; },
            [](PhotoAsset& a) { a.snapshot.isSymbolicLink = true; },
            [](PhotoAsset& a) { a.snapshot.flags = FileSnapshot::kDatalessFlag; },
            [](PhotoAsset& a) { a.format = PhotoFormat::png; },
            [](PhotoAsset& a) { a.pixelWidth.reset(); },
            [](PhotoAsset& a) { a.pixelHeight = 0; },
            [](PhotoAsset& a) { a.otherNames.clear(); },
            [](PhotoAsset& a) { a.relationships.push_back(Relationship::rawPair); },
            [](PhotoAsset& a) { a.isCloudSynced = true; },
            [](PhotoAsset& a) { a.isReadOnlyVolume = true; },
            [](PhotoAsset& a) { a.volumeName.reset(); },
            [](PhotoAsset& a) { a.isExternalVolume = true; },
            [](PhotoAsset& a) { a.library->isFavorite = true; },
            [](PhotoAsset& a) { a.library->filename = "IMG_2.jpg"; },
            [](PhotoAsset& a) { lightroomOf(a).pick = -1; },
            [](PhotoAsset& a) { lightroomOf(a).colorLabel.clear(); },
            [](PhotoAsset& a) { lightroomOf(a).sidecarExtensions.clear(); },
            [](PhotoAsset& a) { lightroomOf(a).virtualCopies = 1; },
            [](PhotoAsset& a) {
                a.catalog = CatalogReference{CaptureOneRef{1, 2, 1, 4, {0}, false, 1, 1}};
            },
            [](PhotoAsset& a) { a.catalog.reset(); },
        });
}

TEST(RecordHashing, GroupsSkipsExclusionsAndPairs) {
    DuplicateGroup group = DuplicateGroup::make("ab12", 1000, {everyFieldSet(), everyFieldSet()},
                                                MatchKind::similar, 0.25F);
    group.members[1].path = "/photos/b/IMG_1.jpg";
    using GroupChange = std::function<void(DuplicateGroup&)>;
    expectEveryChangeHashesApart<DuplicateGroup>(
        group, std::vector<GroupChange>{
                   [](DuplicateGroup& g) { g.id = "cd34"; },
                   [](DuplicateGroup& g) { g.size += 1; },
                   [](DuplicateGroup& g) { std::swap(g.members[0], g.members[1]); },
                   [](DuplicateGroup& g) { g.members[1].snapshot.size += 1; },
                   [](DuplicateGroup& g) { g.kind = MatchKind::series; },
                   [](DuplicateGroup& g) { g.spread.reset(); },
               });

    using SkipChange = std::function<void(SkippedFile&)>;
    expectEveryChangeHashesApart<SkippedFile>(
        {"/a.jpg", SkipReason::unreadable, "Permission denied"},
        std::vector<SkipChange>{
            [](SkippedFile& s) { s.path = "/b.jpg"; },
            [](SkippedFile& s) { s.reason = SkipReason::corrupt; },
            [](SkippedFile& s) { s.detail.reset(); },
        });

    using ExcludedChange = std::function<void(ExcludedItem&)>;
    expectEveryChangeHashesApart<ExcludedItem>(
        {"/a", ExcludedItem::Kind::package, "A package."},
        std::vector<ExcludedChange>{
            [](ExcludedItem& e) { e.path = "/b"; },
            [](ExcludedItem& e) { e.kind = ExcludedItem::Kind::refusedRoot; },
            [](ExcludedItem& e) { e.detail = "Another."; },
        });

    using PairChange = std::function<void(SimilarPair&)>;
    expectEveryChangeHashesApart<SimilarPair>({1, 2, 4, true, 3, 0.2F},
                                              std::vector<PairChange>{
                                                  [](SimilarPair& p) { p.a = 0; },
                                                  [](SimilarPair& p) { p.b = 3; },
                                                  [](SimilarPair& p) { p.distance = 5; },
                                                  [](SimilarPair& p) { p.detail = 0; },
                                                  [](SimilarPair& p) { p.shapesAgree = false; },
                                                  [](SimilarPair& p) { p.vision.reset(); },
                                              });
}

TEST(RecordHashing, RecordsServeAsSetMembers) {
    PhotoAsset a = everyFieldSet();
    PhotoAsset b = a;
    b.path = "/photos/b/IMG_1.jpg";
    std::unordered_set<PhotoAsset> assets = {a, b, a};
    EXPECT_EQ(assets.size(), 2u);
    EXPECT_TRUE(assets.contains(b));

    // A changed snapshot is another value: the set must not take it for b.
    PhotoAsset touched = b;
    touched.snapshot.modifiedNanoseconds += 1;
    EXPECT_FALSE(assets.contains(touched));
}

} // namespace
} // namespace brevant
