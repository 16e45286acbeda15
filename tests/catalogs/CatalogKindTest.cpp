#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/catalogs/CaptureOneCatalog.hpp"
#include "engine/catalogs/LightroomCatalog.hpp"

#include <gtest/gtest.h>

#include <array>
#include <utility>

// What reading does alike for both kinds of catalog: each kind says how its
// catalog is made and read, and its own sentences.
namespace brevant {
namespace {

using testing::TempTree;

// A statement that takes away a part of the layout, and the part it names.
using LayoutGap = std::pair<const char*, const char*>;

struct LightroomKind {
    using Fixture = testing::LightroomCatalogFixture;
    static constexpr const char* kExtension = ".lrcat";
    static constexpr std::string_view kBusy = "The catalog could not be read: Lightroom Classic is "
                                              "busy with it. Try again in a moment.";
    static constexpr std::array<LayoutGap, 2> kGaps{
        {{"DROP TABLE AgLibraryKeywordImage", "no AgLibraryKeywordImage"},
         {"ALTER TABLE Adobe_images DROP COLUMN pick", "Adobe_images.pick"}}};

    static void add(Fixture& fixture, const std::string& path) { fixture.addPhotoAt(path); }

    static const std::string& file(const Fixture& fixture) { return fixture.path(); }

    static auto read(const Fixture& fixture) { return LightroomCatalog::read(fixture.path()); }
};

struct CaptureOneKind {
    using Fixture = testing::CaptureOneCatalogFixture;
    static constexpr const char* kExtension = ".cocatalog";
    static constexpr std::string_view kBusy =
        "The catalog could not be read: Capture One is busy with it. Try again in a moment.";
    static constexpr std::array<LayoutGap, 2> kGaps{
        {{"DROP TABLE ZVARIANTINCOLLECTION", "no ZVARIANTINCOLLECTION"},
         {"ALTER TABLE ZVARIANT DROP COLUMN ZLASTMETADATAMODIFICATIONDATE",
          "ZVARIANT.ZLASTMETADATAMODIFICATIONDATE"}}};

    static void add(Fixture& fixture, const std::string& path) { fixture.addImageAt(path); }

    static const std::string& file(const Fixture& fixture) { return fixture.databasePath(); }

    static auto read(const Fixture& fixture) { return CaptureOneCatalog::read(fixture.package()); }
};

template <typename Kind> class CatalogKind : public ::testing::Test {};

// CatalogKind/0 is Lightroom Classic, CatalogKind/1 Capture One.
using Kinds = ::testing::Types<LightroomKind, CaptureOneKind>;
TYPED_TEST_SUITE(CatalogKind, Kinds);

TYPED_TEST(CatalogKind, ACatalogLockedLongerThanTheTimeoutIsBusy) {
    TempTree tree;
    typename TypeParam::Fixture fixture(tree.path(std::string("Family") + TypeParam::kExtension),
                                        testing::Journal::writeAheadLog);
    TypeParam::add(fixture, tree.file("Photos/a.jpg", "a"));
    fixture.database().exec("PRAGMA locking_mode=EXCLUSIVE");
    fixture.database().exec("BEGIN EXCLUSIVE");
    TypeParam::add(fixture, tree.file("Photos/b.jpg", "b"));

    auto catalog = TypeParam::read(fixture);

    ASSERT_FALSE(catalog.has_value());
    EXPECT_EQ(catalog.error().text(), TypeParam::kBusy);
}

TYPED_TEST(CatalogKind, AnUnknownLayoutIsNamedAndLeftAlone) {
    TempTree tree;
    for (const auto& [statement, part] : TypeParam::kGaps) {
        SCOPED_TRACE(part);
        typename TypeParam::Fixture fixture(tree.path(part + std::string(TypeParam::kExtension)));
        fixture.database().exec(statement);
        fixture.close();
        std::string digest = testing::fileDigest(TypeParam::file(fixture));

        auto catalog = TypeParam::read(fixture);

        ASSERT_FALSE(catalog.has_value());
        EXPECT_EQ(catalog.error(), CatalogReadError::unknownLayout(part));
        EXPECT_EQ(catalog.error().text(), "This catalog is laid out in a way this version does "
                                          "not know (" +
                                              std::string(part) + "), so it was left alone.");
        EXPECT_EQ(testing::fileDigest(TypeParam::file(fixture)), digest);
    }
}

} // namespace
} // namespace brevant
