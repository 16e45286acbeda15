#include "engine/platform/ExclusiveRename.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace brevant::platform {
namespace {

using testing::readFile;
using testing::TempTree;

TEST(ExclusiveRename, MovesOnlyToAFreeName) {
    TempTree tree;
    std::string from = tree.file("a", "first");
    std::string taken = tree.file("b", "second");
    EXPECT_EQ(renameExclusive(from, taken), EEXIST);
    EXPECT_EQ(readFile(from), "first");
    EXPECT_EQ(readFile(taken), "second");

    EXPECT_EQ(renameExclusive(from, tree.path("c")), 0);
    EXPECT_EQ(readFile(tree.path("c")), "first");
    EXPECT_EQ(renameExclusive(from, tree.path("d")), ENOENT);
}

} // namespace
} // namespace brevant::platform
