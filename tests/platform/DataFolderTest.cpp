#include "engine/platform/DataFolder.hpp"

#include "tests/fixtures/ScopedEnvironment.hpp"

#include "engine/platform/ProcessInfo.hpp"

#include <gtest/gtest.h>

namespace brevant::platform {
namespace {

using testing::ScopedEnvironment;

DataFolder::Environment homeOnly() {
    return {std::nullopt, std::nullopt, "/home/anna", "/work"};
}

TEST(DataFolder, FollowsTheOverrideThenXdgThenTheHomeFolder) {
    auto environment = homeOnly();
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");

    environment.xdgDataHome = "/data/anna/";
    EXPECT_EQ(DataFolder::locate(environment).path, "/data/anna/Brevant");
    // The XDG rules ignore a relative or empty value.
    environment.xdgDataHome = "data";
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");
    environment.xdgDataHome = "";
    EXPECT_EQ(DataFolder::locate(environment).path, "/home/anna/.local/share/Brevant");

    environment.xdgDataHome = "/data/anna";
    environment.dataDir = "/tmp/brevant-test/";
    EXPECT_EQ(DataFolder::locate(environment).path, "/tmp/brevant-test");
    environment.dataDir = "state";
    EXPECT_EQ(DataFolder::locate(environment).path, "/work/state");
    environment.dataDir = "";
    EXPECT_EQ(DataFolder::locate(environment).path, "/data/anna/Brevant");

    // Only "." and ".." parts and trailing slashes go.
    environment.xdgDataHome = "/data/./anna/../bob//";
    EXPECT_EQ(DataFolder::dataHome(environment), "/data/bob");
    environment.dataDir = "../elsewhere/";
    EXPECT_EQ(DataFolder::locate(environment).path, "/elsewhere");
    environment.dataDir = std::nullopt;
    environment.xdgDataHome = std::nullopt;
    EXPECT_EQ(DataFolder::dataHome(environment), "/home/anna/.local/share");
}

TEST(DataFolder, NamesTheFilesInside) {
    DataFolder folder{"/home/anna/.local/share/Brevant"};
    EXPECT_EQ(folder.featureCache(), "/home/anna/.local/share/Brevant/features.plist");
    EXPECT_EQ(folder.lockStore(), "/home/anna/.local/share/Brevant/keep-locks.json");
    EXPECT_EQ(folder.cleanups(), "/home/anna/.local/share/Brevant/Cleanups");
    EXPECT_EQ(folder.markings(), "/home/anna/.local/share/Brevant/Markings");
    EXPECT_EQ(DataFolder{"/"}.lockStore(), "/keep-locks.json");
}

TEST(DataFolder, ReadsTheProcessEnvironmentEachTime) {
    {
        ScopedEnvironment data("BREVANT_DATA_DIR", std::nullopt);
        ScopedEnvironment xdg("XDG_DATA_HOME", std::nullopt);
        EXPECT_EQ(DataFolder::current().path, homeFolder() + "/.local/share/Brevant");
        EXPECT_EQ(DataFolder::dataHome(), homeFolder() + "/.local/share");
    }
    {
        ScopedEnvironment data("BREVANT_DATA_DIR", std::nullopt);
        ScopedEnvironment xdg("XDG_DATA_HOME", "/var/tmp/xdg");
        EXPECT_EQ(DataFolder::current().lockStore(), "/var/tmp/xdg/Brevant/keep-locks.json");
    }
    ScopedEnvironment xdg("XDG_DATA_HOME", "/var/tmp/xdg");
    ScopedEnvironment data("BREVANT_DATA_DIR", "/var/tmp/brevant-data");
    EXPECT_EQ(DataFolder::current().featureCache(), "/var/tmp/brevant-data/features.plist");
    EXPECT_EQ(DataFolder::processEnvironment().dataDir, "/var/tmp/brevant-data");
    // The data home is the user's, whatever folder Brevant is pointed at.
    EXPECT_EQ(DataFolder::dataHome(), "/var/tmp/xdg");
}

} // namespace
} // namespace brevant::platform
