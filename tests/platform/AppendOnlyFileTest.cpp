#include "engine/platform/AppendOnlyFile.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace brevant::platform {
namespace {

// The ASSERTs before each access guard these expecteds.
// NOLINTBEGIN(bugprone-unchecked-optional-access)

using testing::TempTree;

TEST(AppendOnlyFile, AddsOnlyAtTheEndWhoeverWrites) {
    TempTree tree;
    std::string path = tree.path("log");
    auto first = AppendOnlyFile::create(path, 0600);
    ASSERT_TRUE(first);
    EXPECT_EQ(AppendOnlyFile::create(path, 0600).error(), EEXIST);
    auto second = AppendOnlyFile::open(path);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->endsMidLine(), false);
    ASSERT_TRUE(first->append("one\n"));
    ASSERT_TRUE(second->append("two"));
    EXPECT_EQ(second->endsMidLine(), true);
    ASSERT_TRUE(first->append("three\n"));
    EXPECT_EQ(second->endsMidLine(), false);
    EXPECT_EQ(testing::readFile(path), "one\ntwothree\n");
    // The created handle is write-only.
    EXPECT_EQ(first->endsMidLine().error(), EBADF);
}

TEST(AppendOnlyFile, OpensNeitherLinksNorAnythingButRegularFiles) {
    TempTree tree;
    std::string target = tree.file("target", "x");
    EXPECT_EQ(AppendOnlyFile::open(tree.symbolicLink(target, "link")).error(), ELOOP);
    EXPECT_EQ(AppendOnlyFile::create(tree.path("link"), 0600).error(), EEXIST);
    EXPECT_EQ(AppendOnlyFile::open(tree.fifo("fifo")).error(), EINVAL);
    EXPECT_EQ(AppendOnlyFile::open(tree.path("missing")).error(), ENOENT);
    EXPECT_EQ(testing::readFile(target), "x");
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant::platform
