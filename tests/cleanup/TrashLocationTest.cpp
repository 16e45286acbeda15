#include "engine/cleanup/TrashLocation.hpp"

#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/Trasher.hpp"
#include "engine/platform/ProcessInfo.hpp"

#include <gtest/gtest.h>

#include <cstdio>

namespace brevant {
namespace {

using testing::ScopedEnvironment;
using testing::TempTree;

TEST(TrashLocation, HomeFollowsXdgDataHome) {
    {
        ScopedEnvironment dataHome("XDG_DATA_HOME", "/srv/anna/data/");
        EXPECT_EQ(TrashLocation::home(), "/srv/anna/data/Trash/files");
    }
    std::string fallback = platform::homeFolder() + "/.local/share/Trash/files";
    {
        ScopedEnvironment dataHome("XDG_DATA_HOME", std::nullopt);
        EXPECT_EQ(TrashLocation::home(), fallback);
    }
    // The variable must hold an absolute path to count.
    ScopedEnvironment dataHome("XDG_DATA_HOME", "relative/data");
    EXPECT_EQ(TrashLocation::home(), fallback);
}

TEST(TrashLocation, OnTheHomeVolumeOnlyTheHomeTrash) {
    TempTree tree;
    ScopedEnvironment dataHome("XDG_DATA_HOME", tree.path("data"));
    std::vector<std::string> home{tree.path("data/Trash/files")};
    EXPECT_EQ(TrashLocation::candidates(tree.file("Pictures/a.jpg", "a")), home);
    // Also for a picture whose folder has gone.
    EXPECT_EQ(TrashLocation::candidates(tree.path("Gone/Deeper/a.jpg")), home);
}

TEST(TrashLocation, FindsByIdentityNotByName) {
    TempTree tree;
    ScopedEnvironment dataHome("XDG_DATA_HOME", tree.path("data"));
    std::string photo = tree.file("Pictures/a.jpg", "picture");
    auto identity = FileSnapshot::read(photo).value_or(FileSnapshot{}).identity;
    auto trashed = FileManagerTrasher().trash(photo);
    ASSERT_TRUE(trashed.has_value());
    std::string files = TrashLocation::home();

    EXPECT_EQ(TrashLocation::find(files, identity), *trashed);

    // Another file under the same name is not the picture; nor is a link to
    // the picture.
    std::string away = tree.path("away.jpg");
    ASSERT_EQ(std::rename(trashed->c_str(), away.c_str()), 0);
    tree.file("data/Trash/files/a.jpg", "picture");
    tree.symbolicLink(away, "data/Trash/files/0-link.jpg");
    EXPECT_EQ(TrashLocation::find(files, identity), std::nullopt);

    // A second name of the very file is the picture.
    std::string second = tree.hardLink("away.jpg", "data/Trash/files/b.jpg");
    EXPECT_EQ(TrashLocation::find(files, identity), second);
    EXPECT_EQ(TrashLocation::find(tree.path("missing"), identity), std::nullopt);
}

} // namespace
} // namespace brevant
