#include "engine/support/AtomicFile.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

// The ASSERTs before each access guard these optionals; the check cannot
// see through GoogleTest's macros.

using testing::TempTree;

std::vector<std::uint8_t> bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(AtomicFile, WritesReplacesAndReadsBack) {
    TempTree tree;
    std::string path = tree.path("deeper/folder/file.bin");
    ASSERT_TRUE(AtomicFile::write(path, bytesOf("first")));
    ASSERT_TRUE(AtomicFile::write(path, bytesOf("second")));
    EXPECT_EQ(AtomicFile::read(path), bytesOf("second"));
    std::error_code error;
    auto entries =
        std::distance(std::filesystem::directory_iterator(tree.path("deeper/folder"), error), {});
    EXPECT_EQ(entries, 1);
    ASSERT_TRUE(AtomicFile::write(path, {}));
    EXPECT_EQ(AtomicFile::read(path), std::vector<std::uint8_t>{});
}

TEST(AtomicFile, ReadsOnlyRegularFilesWithoutFollowingLinks) {
    TempTree tree;
    std::string target = tree.file("target", "contents");
    EXPECT_FALSE(AtomicFile::read(tree.path("missing")));
    EXPECT_FALSE(AtomicFile::read(tree.symbolicLink(target, "link")));
    EXPECT_FALSE(AtomicFile::read(tree.folder("folder")));
    EXPECT_FALSE(AtomicFile::read(tree.fifo("fifo")));
}

TEST(AtomicFile, AFailedWriteLeavesTheOldFile) {
    TempTree tree;
    std::string folder = tree.folder("taken");
    // A folder cannot be replaced by a file: the rename fails and nothing
    // is left behind.
    EXPECT_FALSE(AtomicFile::write(folder, bytesOf("x")));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    std::error_code error;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tree.root(), error), {}), 1);
    EXPECT_FALSE(AtomicFile::write(tree.file("plain", "old") + "/child", bytesOf("x")));
    EXPECT_EQ(testing::readFile(tree.path("plain")), "old");
}

} // namespace
} // namespace brevant
