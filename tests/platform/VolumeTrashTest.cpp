#include "tests/fixtures/MountNamespace.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/fixtures/TrashCli.hpp"

#include "engine/platform/FolderListing.hpp"
#include "engine/platform/FreedesktopTrash.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevant::platform {
namespace {

using testing::ChildOutcome;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::ScopedEnvironment;
using testing::TempTree;

bool exists(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

mode_t permissions(const std::string& path) {
    struct stat status{};
    ::lstat(path.c_str(), &status);
    return status.st_mode & 07777;
}

std::vector<std::string> entries(const std::string& folder) {
    return folderEntries(folder).value_or(std::vector<std::string>{});
}

// Runs the body with its own mounts; skips when the system allows none.
void inOwnMountNamespace(const std::function<void()>& body) {
    ChildOutcome outcome = testing::runInOwnMountNamespace(body);
    if (outcome == ChildOutcome::notAllowed) {
        GTEST_SKIP() << "mounting is not allowed here (no mount namespace)";
    }
    EXPECT_EQ(outcome, ChildOutcome::passed) << "see the failures printed above";
}

class VolumeTrashTest : public ::testing::Test {
protected:
    TempTree tree;
    ScopedEnvironment dataHome{"XDG_DATA_HOME", tree.path("data")};
    std::string uid = std::to_string(::getuid());
    std::string volume = tree.folder("volume");
};

TEST_F(VolumeTrashTest, UsesTheTrashAtTheTopOfTheItemsOwnVolume) {
    inOwnMountNamespace([&] {
        if (!testing::mountTmpfs(volume)) {
            ADD_FAILURE() << "tmpfs could not be mounted in the namespace";
            return;
        }
        std::string photo = tree.file("volume/DCIM/a b.jpg", "on the card");
        std::string own = volume + "/.Trash-" + uid;
        EXPECT_EQ(FreedesktopTrash::candidates(photo),
                  (std::vector<TrashDirectory>{
                      FreedesktopTrash::home(), {volume + "/.Trash/" + uid}, {own}}));
        EXPECT_EQ(FreedesktopTrash::candidates(tree.path("elsewhere/x.jpg")),
                  std::vector<TrashDirectory>{FreedesktopTrash::home()});

        auto moved = FreedesktopTrash::moveToTrash(photo);
        ASSERT_TRUE(moved.has_value()) << moved.error();
        EXPECT_EQ(*moved, own + "/files/a b.jpg");
        EXPECT_EQ(testing::readFile(*moved), "on the card");
        EXPECT_FALSE(exists(photo));
        EXPECT_EQ(permissions(own), 0700u);
        EXPECT_THAT(testing::readFile(own + "/info/a b.jpg.trashinfo"),
                    HasSubstr("\nPath=" + volume + "/DCIM/a%20b.jpg\n"));
        // Nothing went to the home Trash on the other volume.
        EXPECT_FALSE(exists(tree.path("data/Trash")));

        if (testing::trashCliMissing()) {
            return;
        }
        EXPECT_THAT(testing::trashList(), HasSubstr(" " + photo + "\n"));
        EXPECT_EQ(testing::trashRestoreFirst(photo), 0);
        EXPECT_EQ(testing::readFile(photo), "on the card");
        EXPECT_THAT(entries(own + "/info"), IsEmpty());
    });
}

TEST_F(VolumeTrashTest, TheSharedTrashOnlyWhenItIsARealStickyFolder) {
    inOwnMountNamespace([&] {
        if (!testing::mountTmpfs(volume)) {
            ADD_FAILURE() << "tmpfs could not be mounted in the namespace";
            return;
        }
        std::string shared = volume + "/.Trash";
        std::string own = volume + "/.Trash-" + uid;
        ASSERT_EQ(::mkdir(shared.c_str(), 0777), 0);
        ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
        auto sticky = FreedesktopTrash::moveToTrash(tree.file("volume/a.jpg", "a"));
        ASSERT_TRUE(sticky.has_value()) << sticky.error();
        EXPECT_EQ(*sticky, shared + "/" + uid + "/files/a.jpg");
        EXPECT_EQ(permissions(shared + "/" + uid), 0700u);
        EXPECT_TRUE(exists(shared + "/" + uid + "/info/a.jpg.trashinfo"));

        // Without the sticky bit anyone could remove another user's trash.
        ASSERT_EQ(::chmod(shared.c_str(), 0777), 0);
        auto plain = FreedesktopTrash::moveToTrash(tree.file("volume/b.jpg", "b"));
        ASSERT_TRUE(plain.has_value()) << plain.error();
        EXPECT_EQ(*plain, own + "/files/b.jpg");

        // A link in the place of .Trash is not followed, even to a sticky
        // folder.
        std::string elsewhere = volume + "/elsewhere";
        ASSERT_EQ(::rename(shared.c_str(), elsewhere.c_str()), 0);
        ASSERT_EQ(::chmod(elsewhere.c_str(), 01777), 0);
        ASSERT_EQ(::symlink(elsewhere.c_str(), shared.c_str()), 0);
        auto linked = FreedesktopTrash::moveToTrash(tree.file("volume/c.jpg", "c"));
        ASSERT_TRUE(linked.has_value()) << linked.error();
        EXPECT_EQ(*linked, own + "/files/c.jpg");
        EXPECT_THAT(entries(elsewhere + "/" + uid + "/files"), ElementsAre("a.jpg"));

        // Nor a link in the place of the user's own folder in it.
        ASSERT_EQ(::unlink(shared.c_str()), 0);
        ASSERT_EQ(::mkdir(shared.c_str(), 01777), 0);
        ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
        ASSERT_EQ(::symlink((elsewhere + "/" + uid).c_str(), (shared + "/" + uid).c_str()), 0);
        auto userLink = FreedesktopTrash::moveToTrash(tree.file("volume/d.jpg", "d"));
        ASSERT_TRUE(userLink.has_value()) << userLink.error();
        EXPECT_EQ(*userLink, own + "/files/d.jpg");
        EXPECT_THAT(entries(own + "/files"), ElementsAre("b.jpg", "c.jpg", "d.jpg"));
        EXPECT_THAT(entries(elsewhere + "/" + uid + "/files"), ElementsAre("a.jpg"));
    });
}

TEST_F(VolumeTrashTest, AReadOnlyVolumeKeepsItsPicture) {
    inOwnMountNamespace([&] {
        if (!testing::mountTmpfs(volume)) {
            ADD_FAILURE() << "tmpfs could not be mounted in the namespace";
            return;
        }
        std::string photo = tree.file("volume/a.jpg", "read-only");
        ASSERT_EQ(::mount(nullptr, volume.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        auto moved = FreedesktopTrash::moveToTrash(photo);
        ASSERT_FALSE(moved.has_value());
        EXPECT_EQ(moved.error(), EROFS);
        EXPECT_EQ(testing::readFile(photo), "read-only");
        EXPECT_THAT(entries(volume), ElementsAre("a.jpg"));
    });
}

TEST_F(VolumeTrashTest, NeverCopiesAcrossMounts) {
    // A bind mount shares the home Trash's device but a rename out of it
    // crosses mounts: the move fails, nothing is copied, and the record made
    // for it is taken back.
    std::string photo = tree.file("source/a.jpg", "bound");
    inOwnMountNamespace([&] {
        ASSERT_EQ(::mount(tree.path("source").c_str(), volume.c_str(), nullptr, MS_BIND, nullptr),
                  0);
        auto moved = FreedesktopTrash::moveToTrash(volume + "/a.jpg");
        ASSERT_FALSE(moved.has_value());
        EXPECT_EQ(moved.error(), EXDEV);
        EXPECT_EQ(testing::readFile(volume + "/a.jpg"), "bound");
    });
    EXPECT_EQ(testing::readFile(photo), "bound");
    EXPECT_THAT(entries(tree.path("data/Trash/info")), IsEmpty());
    EXPECT_THAT(entries(tree.path("data/Trash/files")), IsEmpty());
}

} // namespace
} // namespace brevant::platform
