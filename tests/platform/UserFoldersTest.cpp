#include "engine/platform/UserFolders.hpp"

#include <gtest/gtest.h>

namespace brevant::platform {
namespace {

TEST(UserFolders, DownloadFolderFollowsTheDesktopsUserDirs) {
    const std::string home = "/home/anna";
    EXPECT_EQ(downloadFolder("XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n"
                             "XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"\n",
                             home),
              "/home/anna/Téléchargements");
    EXPECT_EQ(downloadFolder("XDG_DOWNLOAD_DIR=\"/data/incoming\"\n", home), "/data/incoming");
    // A commented line, a folder turned off and no file at all.
    EXPECT_EQ(downloadFolder("# XDG_DOWNLOAD_DIR=\"$HOME/x\"\n", home), "/home/anna/Downloads");
    EXPECT_EQ(downloadFolder("XDG_DOWNLOAD_DIR=\"$HOME/\"\n", home), "/home/anna/Downloads");
    EXPECT_EQ(downloadFolder("", home), "/home/anna/Downloads");
}

} // namespace
} // namespace brevant::platform
