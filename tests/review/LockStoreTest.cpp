#include "engine/review/LockStore.hpp"

#include "tests/fixtures/TempTree.hpp"
#include "tests/review/ReviewFixtures.hpp"

#include "engine/support/Json.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <thread>

namespace brevant {
namespace {

using testing::copyAt;
using testing::readFile;
using testing::TempTree;

// 2023-11-14 22:13:20.75 UTC.
constexpr double kUnixNow = 1'700'000'000.75;

LockStore::Clock fixedClock() {
    return [] { return Date::fromUnixSeconds(kUnixNow); };
}

std::string storePath(const TempTree& tree) {
    return tree.path("data/keep-locks.json");
}

// The copy at a real file, with the file's own identity.
PhotoAsset copyOfFile(const std::string& path) {
    PhotoAsset asset = copyAt(path, 0);
    auto snapshot = FileSnapshot::read(path);
    EXPECT_TRUE(snapshot.has_value()) << path;
    asset.snapshot = snapshot.value_or(FileSnapshot{});
    return asset;
}

bool exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() !=
           std::filesystem::file_type::not_found;
}

TEST(LockStore, WritesTheFileAfterEveryChangeAndReadsItBack) {
    TempTree tree;
    PhotoAsset file = copyAt("/photos/a.jpg", 77);
    PhotoAsset libraryItem = copyAt("ABCD-1234/L0/001", 0);
    {
        LockStore store(storePath(tree), fixedClock());
        EXPECT_TRUE(store.all().empty());
        EXPECT_FALSE(exists(storePath(tree))) << "nothing is written before a change";
        store.add(file);
        store.add(libraryItem);
        EXPECT_EQ(LockStore::decode(readFile(storePath(tree))), store.all());
    }
    Date created = Date::fromUnixSeconds(kUnixNow);
    LockStore again(storePath(tree));
    EXPECT_EQ(again.all(),
              (std::vector<LockStore::Lock>{{"/photos/a.jpg", FileIdentity{2049, 77}, created},
                                            {"ABCD-1234/L0/001", std::nullopt, created}}));
    EXPECT_EQ(again.damage(), std::nullopt);

    // Locking again changes nothing; removing saves at once.
    again.add(file);
    EXPECT_EQ(again.all().size(), 2U);
    again.remove(libraryItem);
    EXPECT_EQ(LockStore(storePath(tree)).all().size(), 1U);
}

TEST(LockStore, FileFormatIsAnArrayWithDatesSince2001) {
    std::vector<LockStore::Lock> locks{
        {"/photos/a.jpg", FileIdentity{2049, 77}, Date{721692800.75}},
        {std::string("/photos/caf\xE9.jpg"), std::nullopt, Date{0}}};
    std::string text = LockStore::encode(locks);
    // U+EFE9 stands for the stray byte 0xE9.
    EXPECT_EQ(json::parse(text), json::parse(R"([
        {"path": "/photos/a.jpg", "identity": {"device": 2049, "inode": 77},
         "created": 721692800.75},
        {"path": "/photos/caf\uefe9.jpg", "created": 0.0}])"));
    EXPECT_EQ(LockStore::decode(text), locks);
    // Keys in the listed order; an absent identity is left out.
    EXPECT_LT(text.find("\"path\""), text.find("\"identity\""));
    EXPECT_LT(text.find("\"identity\""), text.find("\"created\""));
    EXPECT_EQ(LockStore::encode({}), "[]\n");
}

TEST(LockStore, DecodingRefusesWhatIsNotAListOfLocks) {
    EXPECT_EQ(LockStore::decode("[]"), std::vector<LockStore::Lock>{});
    EXPECT_EQ(LockStore::decode(R"([{"path": "/a", "identity": null, "created": 5}])"),
              (std::vector<LockStore::Lock>{{"/a", std::nullopt, Date{5}}}));
    for (const char* damaged : {
             "",
             "not json",
             "{}",
             "[1]",
             R"([{"path": "/a"}])",
             R"([{"created": 1}])",
             R"([{"path": 7, "created": 1}])",
             R"([{"path": "/a", "created": "today"}])",
             R"([{"path": "/a", "created": 1e999}])",
             R"([{"path": "/a", "identity": {"device": -1, "inode": 2}, "created": 1}])",
             R"([{"path": "/a", "identity": {"device": 1, "inode": 2.5}, "created": 1}])",
             R"([{"path": "/a", "identity": {"device": 1}, "created": 1}])",
             R"([{"path": "/a", "identity": 3, "created": 1}])",
             "[{\"path\": \"/a\xFF\", \"created\": 1}]",
         }) {
        auto decoded = LockStore::decode(damaged);
        ASSERT_FALSE(decoded.has_value()) << damaged;
        EXPECT_TRUE(decoded.error().starts_with("The lock file could not be read: "))
            << decoded.error();
    }
}

TEST(LockStore, ALockFollowsItsFileAndHoldsItsPath) {
    TempTree tree;
    std::string original = tree.file("photos/a.jpg", "first");
    LockStore store(storePath(tree));
    store.add(copyOfFile(original));

    // Given another name on the same volume: the identity still matches.
    std::string renamed = tree.path("photos/renamed.jpg");
    ASSERT_EQ(std::rename(original.c_str(), renamed.c_str()), 0);
    EXPECT_TRUE(store.isLocked(copyOfFile(renamed)));

    // A different file put at the locked path: the path still matches.
    tree.file("photos/a.jpg", "second");
    PhotoAsset newcomer = copyOfFile(original);
    EXPECT_NE(newcomer.snapshot.identity, copyOfFile(renamed).snapshot.identity);
    EXPECT_TRUE(store.isLocked(newcomer));

    PhotoAsset other = copyOfFile(tree.file("photos/b.jpg", "other"));
    EXPECT_FALSE(store.isLocked(other));
    // Items without a file identity never match one another by it.
    EXPECT_FALSE(store.isLocked(copyAt("/library/x", 0)));
    store.add(copyAt("/library/y", 0));
    EXPECT_FALSE(store.isLocked(copyAt("/library/x", 0)));

    // Unlocking by the new name removes the lock made under the old one.
    store.remove(copyOfFile(renamed));
    EXPECT_FALSE(store.isLocked(newcomer));
    EXPECT_EQ(store.all().size(), 1U);
}

// A file that cannot be read leaves the store damaged: it is never saved
// over and never moved without the user asking, since it may hold locks.
TEST(LockStore, ADamagedFileStaysAsItIsUntilTheUserSetsItAside) {
    struct Case {
        std::string name;
        std::function<void(TempTree&)> make;
        std::string reason;
    };

    std::vector<Case> cases{
        {"cut short",
         [](TempTree& tree) {
             tree.file("data/keep-locks.json", "[{\"path\": \"/photos/a.jpg\", \"crea");
         },
         "The lock file could not be read: "},
        {"not a list",
         [](TempTree& tree) { tree.file("data/keep-locks.json", "{\"damaged\": true}"); },
         "The lock file could not be read: expected an array of locks"},
        {"a symbolic link",
         [](TempTree& tree) {
             tree.symbolicLink(tree.file("elsewhere.json", "[]"), "data/keep-locks.json");
         },
         "it is a symbolic link, which is never followed"},
        {"a folder", [](TempTree& tree) { tree.folder("data/keep-locks.json/inside"); },
         "it is not a file"},
    };
    for (const auto& damaged : cases) {
        SCOPED_TRACE(damaged.name);
        TempTree tree;
        damaged.make(tree);
        std::string path = storePath(tree);
        auto before = std::filesystem::symlink_status(path).type();
        LockStore store(path, fixedClock());
        ASSERT_TRUE(store.damage().has_value());
        EXPECT_TRUE(store.damage()->starts_with(damaged.reason)) << *store.damage();
        EXPECT_TRUE(store.all().empty());

        // Changes live in memory only; the file is not touched.
        store.add(copyAt("/photos/b.jpg", 2));
        EXPECT_TRUE(store.isLocked(copyAt("/photos/b.jpg", 2)));
        EXPECT_EQ(std::filesystem::symlink_status(path).type(), before);
        EXPECT_TRUE(LockStore(path).damage().has_value());

        // Set aside on request: moved under its damaged- name, then saved anew.
        auto aside = store.setAside();
        ASSERT_TRUE(aside.has_value()) << aside.error();
        EXPECT_EQ(*aside, path + ".damaged-1700000000");
        EXPECT_EQ(std::filesystem::symlink_status(*aside).type(), before);
        EXPECT_EQ(store.damage(), std::nullopt);
        EXPECT_EQ(LockStore(path).all().size(), 1U);
    }
    EXPECT_EQ(
        LockStore::damageMessage("~/.local/share/Brevant/keep-locks.json", "it is not a file"),
        "The lock file ~/.local/share/Brevant/keep-locks.json cannot be read (it is not a "
        "file), so Brevant cannot tell which copies you locked, and no cleanup runs until it "
        "can. Repair the file, or set it aside to start again without locks.");
}

TEST(LockStore, SettingAsideNeverMovesOverAnotherFile) {
    TempTree tree;
    std::string path = storePath(tree);
    std::string aside = tree.file("data/keep-locks.json.damaged-1700000000", "moved earlier");
    tree.file("data/keep-locks.json", "{\"damaged\": true}");
    LockStore store(path, fixedClock());
    auto refused = store.setAside();
    ASSERT_FALSE(refused.has_value());
    EXPECT_TRUE(refused.error().starts_with("The lock file could not be moved aside to " + aside))
        << refused.error();
    EXPECT_TRUE(store.damage().has_value());
    EXPECT_EQ(readFile(path), "{\"damaged\": true}");
    EXPECT_EQ(readFile(aside), "moved earlier");

    // A store that reads is never set aside.
    TempTree fine;
    LockStore good(storePath(fine), fixedClock());
    EXPECT_FALSE(good.setAside().has_value());
}

TEST(LockStore, AMissingFileOrNoneAtAllStartsEmpty) {
    TempTree tree;
    std::string path = tree.path("not/yet/there/keep-locks.json");
    LockStore store(path);
    EXPECT_TRUE(store.all().empty());
    EXPECT_EQ(store.damage(), std::nullopt);
    // The folders are made on the first save.
    store.add(copyAt("/photos/a.jpg", 1));
    EXPECT_EQ(LockStore(path).all().size(), 1U);

    LockStore memory(std::nullopt);
    memory.add(copyAt("/photos/a.jpg", 1));
    EXPECT_TRUE(memory.isLocked(copyAt("/photos/a.jpg", 1)));
    memory.remove(copyAt("/photos/a.jpg", 1));
    EXPECT_TRUE(memory.all().empty());
}

TEST(LockStore, ThreadsLockAndAskAtOnce) {
    TempTree tree;
    LockStore store(storePath(tree));
    constexpr std::uint64_t kThreads = 4;
    constexpr std::uint64_t kPerThread = 30;
    std::atomic<int> wrongAnswers = 0;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (std::uint64_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&store, &wrongAnswers, t] {
            for (std::uint64_t i = 0; i < kPerThread; ++i) {
                std::uint64_t n = t * kPerThread + i + 1;
                PhotoAsset asset = copyAt("/photos/" + std::to_string(n) + ".jpg", n);
                store.add(asset);
                if (!store.isLocked(asset)) {
                    ++wrongAnswers;
                }
                // Another thread's copy, locked or not yet.
                static_cast<void>(store.isLocked(copyAt("/photos/x.jpg", n + kPerThread)));
                static_cast<void>(store.all());
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrongAnswers, 0);
    EXPECT_EQ(store.all().size(), kThreads * kPerThread);
    // The last save holds every lock.
    auto saved = LockStore::decode(readFile(storePath(tree)));
    ASSERT_TRUE(saved.has_value());
    EXPECT_EQ(saved->size(), kThreads * kPerThread);
}

} // namespace
} // namespace brevant
