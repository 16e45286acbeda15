#include "engine/catalogs/ApplicationCheck.hpp"

#include "tests/fixtures/TempTree.hpp"

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using platform::RunningApplication;
using testing::TempTree;

ApplicationCheck::RunningApplications listOf(std::vector<RunningApplication> applications,
                                             int* asked = nullptr) {
    return [applications = std::move(applications), asked] {
        if (asked != nullptr) {
            *asked += 1;
        }
        return applications;
    };
}

RunningApplication application(std::optional<std::string> bundle) {
    return {42, "process", "/usr/bin/process", std::move(bundle)};
}

TEST(ApplicationCheck, LightroomIsOpenByItsLockFileOrItsRunningApplication) {
    TempTree tree;
    std::string catalog = tree.file("Family.lrcat", "catalog");

    EXPECT_FALSE(LightroomCatalog::isOpen(catalog, listOf({})));
    EXPECT_FALSE(LightroomCatalog::isOpen(
        catalog, listOf({application(std::nullopt), application("com.adobe.Photoshop"),
                         application("com.captureone.captureone16")})));
    EXPECT_TRUE(LightroomCatalog::isOpen(
        catalog,
        listOf({application(std::nullopt), application("com.adobe.LightroomClassicCC7")})));
    EXPECT_FALSE(LightroomCatalog::isOpen(catalog, nullptr));

    // The lock file answers before the list is even asked for.
    tree.file("Family.lrcat.lock", "");
    int asked = 0;
    EXPECT_TRUE(LightroomCatalog::isOpen(catalog, listOf({}, &asked)));
    EXPECT_EQ(asked, 0);
}

TEST(ApplicationCheck, CaptureOneIsOpenByItsWriteLockOrItsRunningApplication) {
    TempTree tree;
    std::string package = tree.folder("Family.cocatalog");
    tree.file("Family.cocatalog/Family.cocatalogdb", "db");

    EXPECT_FALSE(CaptureOneCatalog::isOpen(package, listOf({})));
    EXPECT_FALSE(CaptureOneCatalog::isOpen(
        package,
        listOf({application("com.adobe.LightroomClassicCC7"), application("com.capture")})));
    EXPECT_TRUE(
        CaptureOneCatalog::isOpen(package, listOf({application("com.captureone.captureone16")})));
    EXPECT_TRUE(
        CaptureOneCatalog::isOpen(package, listOf({application("com.phaseone.captureone12")})));
    // A lock file beside the package, not in it, is someone else's.
    tree.file("writelock", "");
    EXPECT_FALSE(CaptureOneCatalog::isOpen(package, listOf({})));

    tree.file("Family.cocatalog/writelock", "");
    int asked = 0;
    EXPECT_TRUE(CaptureOneCatalog::isOpen(package + "/", listOf({}, &asked)));
    EXPECT_EQ(asked, 0);
}

TEST(ApplicationCheck, ThisMachinesOwnListFindsNeitherApplicationHere) {
    TempTree tree;
    std::string catalog = tree.file("Family.lrcat", "catalog");
    std::string package = tree.folder("Family.cocatalog");

    EXPECT_FALSE(LightroomCatalog::isOpen(catalog));
    EXPECT_FALSE(CaptureOneCatalog::isOpen(package));
}

} // namespace
} // namespace brevant
