#include "engine/review/NotDuplicateStore.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace brevant {
namespace {

using testing::readFile;
using testing::TempTree;

constexpr double kUnixNow = 1'700'000'000.75;

NotDuplicateStore::Clock fixedClock() {
    return [] { return Date::fromUnixSeconds(kUnixNow); };
}

std::string storePath(const TempTree& tree) {
    return tree.path("data/not-duplicates.json");
}

std::vector<std::string> paths(const NotDuplicateStore::Decision& decision) {
    std::vector<std::string> result;
    for (const auto& photo : decision.photos) {
        result.push_back(photo.path);
    }
    return result;
}

TEST(NotDuplicateStore, KeepsDecisionsByContentsAcrossOpenings) {
    TempTree tree;
    std::string a = tree.file("photos/a.jpg", "first photo");
    std::string b = tree.file("photos/b.jpg", "second photo!");
    std::string c = tree.file("photos/c.jpg", "third photo");
    {
        NotDuplicateStore store(storePath(tree), fixedClock());
        auto first = store.declare({a, b, a});
        ASSERT_TRUE(first.has_value()) << first.error();
        EXPECT_EQ(first->id, 1);
        EXPECT_EQ(paths(*first), (std::vector<std::string>{a, b}));
        EXPECT_EQ(first->photos[0].size, 11);
        auto second = store.declare({b, c});
        ASSERT_TRUE(second.has_value()) << second.error();
        EXPECT_EQ(second->id, 2);
    }
    NotDuplicateStore reopened(storePath(tree));
    ASSERT_EQ(reopened.damage(), std::nullopt);
    auto decisions = reopened.all();
    ASSERT_EQ(decisions.size(), 2U);
    EXPECT_EQ(decisions[0].created, Date::fromUnixSeconds(kUnixNow));
    EXPECT_EQ(reopened.sizes(), (std::set<std::int64_t>{11, 13}));
    // a-b and b-c are different photos; nothing was said of a and c.
    EXPECT_EQ(reopened.differentPairs().size(), 2U);

    auto forgotten = reopened.forget(1);
    ASSERT_TRUE(forgotten.has_value()) << forgotten.error();
    EXPECT_EQ(paths(*forgotten), (std::vector<std::string>{a, b}));
    EXPECT_EQ(NotDuplicateStore(storePath(tree)).all().size(), 1U);
    // Numbers go on from the highest one kept.
    EXPECT_EQ(reopened.declare({a, c})->id, 3);
    EXPECT_EQ(reopened.forget(1).error(), "There is no \"not duplicates\" decision 1.");
}

TEST(NotDuplicateStore, RefusesWhatCannotBeDifferentPhotosAndRecordsNothing) {
    TempTree tree;
    std::string a = tree.file("photos/a.jpg", "the same bytes");
    std::string copy = tree.file("photos/a copy.jpg", "the same bytes");
    std::string b = tree.file("photos/b.jpg", "other bytes");
    std::string link = tree.symbolicLink(b, "photos/link.jpg");
    std::string missing = tree.path("photos/missing.jpg");

    struct Case {
        std::vector<std::string> paths;
        std::string refusal;
    };

    const std::vector<Case> cases{
        {{a, b, copy},
         a + " and " + copy +
             " are identical copies, so they cannot be different photos; nothing was recorded."},
        {{a}, "Give two or more pictures that are different photos."},
        {{a, a}, "Give two or more pictures that are different photos."},
        {{a, link},
         link + ": not a picture file (symbolic links are never followed); nothing was recorded"},
        {{missing, a}, missing + ": no such file; nothing was recorded"},
    };
    NotDuplicateStore store(storePath(tree), fixedClock());
    for (const auto& refused : cases) {
        auto declared = store.declare(refused.paths);
        ASSERT_FALSE(declared.has_value());
        EXPECT_EQ(declared.error(), refused.refusal);
    }
    EXPECT_TRUE(store.all().empty());
    EXPECT_FALSE(std::filesystem::exists(storePath(tree)));
}

TEST(NotDuplicateStore, ADamagedFileIsNeverWrittenOverAndMovedAsideOnRequest) {
    struct Case {
        std::string name;
        std::function<void(TempTree&)> make;
        std::string reason;
    };

    const std::vector<Case> cases{
        {"cut short",
         [](TempTree& tree) { tree.file("data/not-duplicates.json", "[{\"id\": 1, \"pho"); },
         "The \"not duplicates\" file could not be read: "},
        {"not a digest",
         [](TempTree& tree) {
             tree.file("data/not-duplicates.json",
                       R"([{"id": 1, "photos": [{"sha256": "x", "size": 1, "path": "/a"},)"
                       R"({"sha256": "y", "size": 1, "path": "/b"}], "created": 1}])");
         },
         "The \"not duplicates\" file could not be read: \"sha256\" is not a SHA-256 digest"},
        {"a symbolic link",
         [](TempTree& tree) {
             tree.symbolicLink(tree.file("elsewhere.json", "[]"), "data/not-duplicates.json");
         },
         "it is a symbolic link, which is never followed"},
    };
    for (const auto& damaged : cases) {
        SCOPED_TRACE(damaged.name);
        TempTree tree;
        damaged.make(tree);
        std::string a = tree.file("photos/a.jpg", "one");
        std::string b = tree.file("photos/b.jpg", "two");
        std::string path = storePath(tree);
        auto before = std::filesystem::symlink_status(path).type();
        std::string bytes = readFile(path);
        NotDuplicateStore store(path, fixedClock());
        ASSERT_TRUE(store.damage().has_value());
        EXPECT_TRUE(store.damage()->starts_with(damaged.reason)) << *store.damage();

        EXPECT_FALSE(store.declare({a, b}).has_value());
        EXPECT_FALSE(store.forget(1).has_value());
        EXPECT_EQ(std::filesystem::symlink_status(path).type(), before);
        EXPECT_EQ(readFile(path), bytes);

        auto aside = store.setAside();
        ASSERT_TRUE(aside.has_value()) << aside.error();
        EXPECT_EQ(*aside, path + ".damaged-1700000000");
        EXPECT_EQ(readFile(*aside), bytes);
        ASSERT_TRUE(store.declare({a, b}).has_value());
        EXPECT_EQ(NotDuplicateStore(path).all().size(), 1U);
    }
}

TEST(NotDuplicateStore, SettingAsideNeverMovesOverAnotherFile) {
    TempTree tree;
    std::string aside = tree.file("data/not-duplicates.json.damaged-1700000000", "earlier");
    tree.file("data/not-duplicates.json", "{}");
    NotDuplicateStore store(storePath(tree), fixedClock());
    auto refused = store.setAside();
    ASSERT_FALSE(refused.has_value());
    EXPECT_TRUE(refused.error().starts_with(
        "The \"not duplicates\" file could not be moved aside to " + aside))
        << refused.error();
    EXPECT_EQ(readFile(storePath(tree)), "{}");
    EXPECT_EQ(readFile(aside), "earlier");
}

} // namespace
} // namespace brevant
