#include "engine/catalogs/CatalogSource.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

// How a catalog is told by its name and found from what the user wrote.
namespace brevant {
namespace {

using Application = CatalogSource::Application;
using testing::TempTree;

TEST(CatalogSource, TellsTheKindByExtensionOrWholeFileName) {
    const std::pair<const char*, std::optional<Application>> cases[] = {
        {"/p/Family.lrcat", Application::lightroom},
        {"/p/Family.LRCAT", Application::lightroom},
        {"/p/Studio.cocatalog/", Application::captureOne},
        {"/p/Studio.cocatalog//", Application::captureOne},
        {"/p/lrcat", std::nullopt},
        {"/p/Family.lrcat.zip", std::nullopt},
        {"/p/notes.db", std::nullopt},
        {"/home/a/Pictures/digikam4.db", Application::digikam},
        {"/home/a/.config/darktable/library.db", Application::darktable},
        {"/p/Photo.DB", Application::shotwell},
        {"/p/mylibrary.db", std::nullopt},
        {"/", std::nullopt},
    };
    for (const auto& [path, application] : cases) {
        EXPECT_EQ(CatalogSource::applicationOf(path), application) << path;
    }
    EXPECT_EQ(
        CatalogSource::notACatalog(),
        "That is not a Lightroom Classic catalog (.lrcat), a Capture One catalog (.cocatalog), a "
        "digiKam library (digikam4.db), a darktable library (library.db) or a Shotwell "
        "library (photo.db).");
}

TEST(CatalogSource, LocatesTheCatalogOfAFolderOrTakesThePathAsItIs) {
    TempTree tree;
    testing::LightroomCatalogFixture older(tree.path("shoot/Old.lrcat"));
    testing::LightroomCatalogFixture newer(tree.path("shoot/New.lrcat"));
    std::filesystem::last_write_time(older.path(), std::filesystem::file_time_type::clock::now() -
                                                       std::chrono::hours(24));

    auto chosen = CatalogSource::locate("shoot", tree.path("shoot"));
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->catalog, newer.path());
    EXPECT_EQ(chosen->notice,
              "This folder holds 2 catalogs; using New.lrcat, the most recently changed.");

    auto direct = CatalogSource::locate("shoot/Old.lrcat", older.path());
    ASSERT_TRUE(direct.has_value());
    EXPECT_EQ(direct->catalog, older.path());
    EXPECT_EQ(direct->notice, std::nullopt);

    // A folder with no catalog says so; a path that is not there is left for
    // the scan to explain.
    auto empty = CatalogSource::locate("empty", tree.folder("empty"));
    EXPECT_EQ(empty, std::unexpected(CatalogSource::notACatalog()));
    auto gone = CatalogSource::locate("gone/Family.lrcat", tree.path("gone/Family.lrcat"));
    ASSERT_TRUE(gone.has_value());
    EXPECT_EQ(gone->catalog, tree.path("gone/Family.lrcat"));
}

TEST(CatalogSource, AnApplicationsNameFindsItsCatalogAtItsUsualPlace) {
    std::string folder = CatalogSource::defaultFolder(Application::lightroom);
    if (std::filesystem::exists(folder)) {
        GTEST_SKIP() << "this user keeps Lightroom Classic catalogs in " << folder;
    }
    TempTree tree;
    auto none = CatalogSource::locate("Lightroom", tree.path("Lightroom"));
    EXPECT_EQ(none, std::unexpected("There is no Lightroom Classic catalog (.lrcat) in " + folder +
                                    ". Choose the folder the catalog file is in."));
    // A file of that name is what the user meant, not the application.
    std::string file = tree.file("lightroom", "notes");
    auto taken = CatalogSource::locate("lightroom", file);
    ASSERT_TRUE(taken.has_value());
    EXPECT_EQ(taken->catalog, file);
}

} // namespace
} // namespace brevant
