#include "app/cli/DesktopStart.hpp"

#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace brevant::cli {
namespace {

using Surroundings = DesktopStart::Surroundings;
using testing::TempTree;

// A window program stand-in in the folder; executable unless told.
std::string program(const TempTree& tree, std::string_view folder, bool executable = true) {
    std::string path =
        tree.file(std::string(folder) + "/" + std::string(DesktopStart::kProgram), "#!/bin/sh\n");
    auto permissions =
        executable ? std::filesystem::perms::owner_all : std::filesystem::perms::owner_read;
    std::error_code error;
    std::filesystem::permissions(path, permissions, error);
    return path;
}

TEST(DesktopStart, StartsTheWindowOnlyWithADisplay) {
    TempTree tree;
    std::string beside = program(tree, "bin");
    Surroundings surroundings{.ownFolder = tree.path("bin")};

    EXPECT_EQ(DesktopStart::program(surroundings), std::nullopt);
    surroundings.display = ":0";
    EXPECT_EQ(DesktopStart::program(surroundings), beside);
    surroundings.display = "";
    surroundings.waylandDisplay = "wayland-0";
    EXPECT_EQ(DesktopStart::program(surroundings), beside);
}

TEST(DesktopStart, PrefersTheProgramBesideItselfThenThePath) {
    TempTree tree;
    std::string onPath = program(tree, "path/second");
    program(tree, "path/third");
    Surroundings surroundings{.display = ":0",
                              .ownFolder = tree.path("bin"),
                              .searchPath = tree.path("path/first") + ":" +
                                            tree.path("path/second") + ":" +
                                            tree.path("path/third")};
    EXPECT_EQ(DesktopStart::program(surroundings), onPath);

    std::string beside = program(tree, "bin");
    EXPECT_EQ(DesktopStart::program(surroundings), beside);
}

TEST(DesktopStart, PassesOverWhatIsNoProgramAndRelativePathEntries) {
    TempTree tree;
    program(tree, "bin", false);
    tree.folder("folder/" + std::string(DesktopStart::kProgram));
    program(tree, "relative");
    Surroundings surroundings{.display = ":0",
                              .ownFolder = tree.path("bin"),
                              .searchPath = "::relative:" + tree.path("folder")};
    // Run from inside the tree, "relative" and the empty entries would name
    // programs; they are never looked at.
    std::error_code error;
    auto before = std::filesystem::current_path(error);
    std::filesystem::current_path(tree.root(), error);
    EXPECT_EQ(DesktopStart::program(surroundings), std::nullopt);
    std::filesystem::current_path(before, error);

    std::string last = program(tree, "last");
    surroundings.searchPath += ":" + tree.path("last");
    EXPECT_EQ(DesktopStart::program(surroundings), last);
}

TEST(DesktopStart, KnowsTheFolderOfTheRunningProgram) {
    Surroundings surroundings = DesktopStart::current();
    std::error_code error;
    EXPECT_TRUE(std::filesystem::exists(surroundings.ownFolder + "/brevant_tests", error))
        << surroundings.ownFolder;
}

} // namespace
} // namespace brevant::cli
