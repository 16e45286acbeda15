#include "engine/cleanup/Trasher.hpp"

#include "tests/fixtures/FakeTrasher.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using testing::FakeTrasher;
using testing::ScopedEnvironment;
using testing::TempTree;

bool exists(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

TEST(Trasher, ErrorsCarryTheErrnoAndTheSystemsWords) {
    EXPECT_EQ(TrashError::fromErrno(EROFS), (TrashError{EROFS, "Read-only file system"}));
    EXPECT_EQ(TrashError::fromErrno(ENOENT), (TrashError{ENOENT, "No such file or directory"}));
    EXPECT_EQ(TrashError::fromErrno(EXDEV).description, "Invalid cross-device link");
}

TEST(Trasher, FileManagerTrasherMovesIntoTheTrashAndSaysWhere) {
    TempTree tree;
    ScopedEnvironment dataHome("XDG_DATA_HOME", tree.path("data"));
    std::string photo = tree.file("Pictures/a.jpg", "picture");
    FileManagerTrasher trasher;
    const Trasher& anyTrasher = trasher;

    auto moved = anyTrasher.trash(photo);
    ASSERT_TRUE(moved.has_value());
    EXPECT_EQ(*moved, tree.path("data/Trash/files/a.jpg"));
    EXPECT_EQ(testing::readFile(tree.path("data/Trash/files/a.jpg")), "picture");
    EXPECT_TRUE(exists(tree.path("data/Trash/info/a.jpg.trashinfo")));
    EXPECT_FALSE(exists(photo));

    auto gone = anyTrasher.trash(photo);
    ASSERT_FALSE(gone.has_value());
    EXPECT_EQ(gone.error(), TrashError::fromErrno(ENOENT));
}

TEST(Trasher, FakeFailsWithoutTouchingAnythingAndRecordsCalls) {
    TempTree tree;
    ScopedEnvironment dataHome("XDG_DATA_HOME", tree.path("data"));
    std::string first = tree.file("a.jpg", "a");
    std::string second = tree.file("b.jpg", "b");

    FakeTrasher readOnly(EROFS);
    EXPECT_EQ(readOnly.trash(first).error(), TrashError::fromErrno(EROFS));
    EXPECT_EQ(testing::readFile(first), "a");
    EXPECT_FALSE(exists(tree.path("data/Trash/files/a.jpg")));
    EXPECT_FALSE(exists(tree.path("data/Trash/info/a.jpg.trashinfo")));
    EXPECT_THAT(readOnly.calls(), ElementsAre(first));

    FakeTrasher some;
    some.failFor(first, EACCES);
    EXPECT_EQ(some.trash(first).error().code, EACCES);
    EXPECT_EQ(some.trash(second), tree.path("data/Trash/files/b.jpg"));
    EXPECT_EQ(testing::readFile(first), "a");
    EXPECT_FALSE(exists(second));

    EXPECT_THAT(some.calls(), ElementsAre(first, second));
}

} // namespace
} // namespace brevant
