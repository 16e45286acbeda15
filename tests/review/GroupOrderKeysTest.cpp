#include "engine/review/GroupOrderKeys.hpp"

#include "tests/review/ReviewFixtures.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace brevant {
namespace {

using testing::copyAt;
using testing::groupOf;

// Ranks agree with sorting every group by its first copy's folder() text,
// whatever the first copy is: a root file, a library item, a nested folder.
TEST(GroupOrderKeys, RanksFollowTheFirstCopysFolderAndTheNewestCopy) {
    PhotoAsset item = copyAt("/library/originals/x.heic", 9);
    item.library = LibraryRef{.id = "x", .filename = "x.heic"};
    std::vector<DuplicateGroup> groups = {
        groupOf({copyAt("/photos/sun/a.jpg", 1), copyAt("/backup/a.jpg", 2)}),
        groupOf({copyAt("/photos/b.jpg", 3), copyAt("/photos/sun/b.jpg", 4)}),
        groupOf({copyAt("/root.jpg", 5), copyAt("/photos/root.jpg", 6)}),
        groupOf({item, copyAt("/photos/x.heic", 10)}),
        groupOf({copyAt("/photos/sun/c.jpg", 7), copyAt("/photos/c.jpg", 8)}),
        groupOf({copyAt("/photos/sun-set/d.jpg", 11), copyAt("/photos/d.jpg", 12)}),
    };
    groups[4].members[1].snapshot.modifiedSeconds = 1'800'000'000;
    groups[1].members[0].snapshot.modifiedSeconds = 1'750'000'000;

    GroupOrderKeys keys = GroupOrderKeys::of(groups);

    std::vector<int> bySlowSort(groups.size());
    std::iota(bySlowSort.begin(), bySlowSort.end(), 0);
    std::ranges::stable_sort(bySlowSort, [&](int x, int y) {
        return groups[x].members.front().folder() < groups[y].members.front().folder();
    });
    std::vector<int> byRank(groups.size());
    std::iota(byRank.begin(), byRank.end(), 0);
    std::ranges::stable_sort(
        byRank, [&](int x, int y) { return keys.folderRanks[x] < keys.folderRanks[y]; });
    EXPECT_EQ(byRank, bySlowSort);
    // "/", "/photos", "/photos/sun", "/photos/sun-set", "Photos Library".
    EXPECT_EQ(keys.folderRanks, (std::vector<int>{2, 1, 0, 4, 2, 3}));
    // 4 is newest, then 1; the rest share a date and keep index order.
    EXPECT_EQ(keys.newestRanks, (std::vector<int>{2, 1, 3, 4, 0, 5}));
    EXPECT_EQ(keys.folderCount, 5);

    // Ordering some of the groups: folder order with ties in index order,
    // then newest first with ties in index order.
    std::vector<int> some = {0, 2, 3, 4, 5};
    keys.orderByFolder(some);
    EXPECT_EQ(some, (std::vector<int>{2, 0, 4, 5, 3}));
    keys.orderByNewest(some);
    EXPECT_EQ(some, (std::vector<int>{4, 0, 2, 3, 5}));
    std::vector<int> all = {0, 1, 2, 3, 4, 5};
    keys.orderByNewest(all);
    EXPECT_EQ(all, (std::vector<int>{4, 1, 0, 2, 3, 5}));
    std::vector<int> none;
    keys.orderByFolder(none);
    keys.orderByNewest(none);
    EXPECT_TRUE(none.empty());
}

} // namespace
} // namespace brevant
