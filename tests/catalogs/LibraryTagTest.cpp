#include "engine/catalogs/LibraryTag.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

namespace brevant {
namespace {

using testing::SQLiteFile;
using testing::TempTree;

constexpr std::string_view kFind = "SELECT id FROM Tags WHERE name = {0}";
constexpr std::string_view kMake = "INSERT INTO Tags (name) VALUES ({0})";

std::string makeTags(const TempTree& tree, const std::string& rows) {
    std::string path = tree.path("library.db");
    SQLiteFile db(path);
    db.exec("CREATE TABLE Tags (id INTEGER PRIMARY KEY, name TEXT)");
    if (!rows.empty()) {
        db.exec("INSERT INTO Tags (id, name) VALUES " + rows);
    }
    return path;
}

std::optional<std::int64_t> count(const SQLiteWriter& writer, const std::string& sql) {
    auto found = writer.firstInteger(sql);
    return found ? *found : std::nullopt;
}

TEST(LibraryTag, EveryItemOfTheMarkingThatMadeTheTagSaysSoAndNoOtherConnectionDoes) {
    TempTree tree;
    std::string path = makeTags(tree, "(3, 'Family')");
    {
        auto writer = SQLiteWriter::open(path);
        ASSERT_TRUE(writer.has_value());
        ASSERT_TRUE(writer->run("BEGIN IMMEDIATE").has_value());
        auto first = LibraryTag::foundOrMade(*writer, kFind, kMake);
        auto second = LibraryTag::foundOrMade(*writer, kFind, kMake);
        ASSERT_TRUE(writer->run("COMMIT").has_value());
        ASSERT_TRUE(first.has_value() && second.has_value());
        EXPECT_EQ(first->id, 4);
        EXPECT_TRUE(first->created);
        EXPECT_EQ(second->id, 4);
        EXPECT_TRUE(second->created);
        EXPECT_EQ(count(*writer, "SELECT COUNT(*) FROM Tags"), 2);
    }
    auto later = SQLiteWriter::open(path);
    ASSERT_TRUE(later.has_value());
    auto again = LibraryTag::foundOrMade(*later, kFind, kMake);
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->id, 4);
    EXPECT_FALSE(again->created);
    EXPECT_EQ(count(*later, "SELECT COUNT(*) FROM Tags"), 2);
    // What the marking remembered never reached the file.
    EXPECT_EQ(count(*later, "SELECT COUNT(*) FROM main.sqlite_master WHERE name LIKE 'brevant%'"),
              0);
}

TEST(LibraryTag, TheUsersOwnTagIsFoundAndATagThatCannotBeMadeFails) {
    TempTree tree;
    auto writer = SQLiteWriter::open(makeTags(tree, "(7, 'Brevant Duplicates')"));
    ASSERT_TRUE(writer.has_value());
    auto found = LibraryTag::foundOrMade(*writer, kFind, kMake);
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->id, 7);
    EXPECT_FALSE(found->created);
    EXPECT_EQ(count(*writer, "SELECT COUNT(*) FROM Tags"), 1);
    EXPECT_EQ(count(*writer, "SELECT id FROM Tags WHERE name = 'none'"), std::nullopt);

    TempTree other;
    auto empty = SQLiteWriter::open(makeTags(other, ""));
    ASSERT_TRUE(empty.has_value());
    auto unmade = LibraryTag::foundOrMade(*empty, kFind, "INSERT INTO Tags (name) VALUES ('x')");
    ASSERT_FALSE(unmade.has_value());
    EXPECT_EQ(unmade.error().description, "The tag could not be made.");
}

} // namespace
} // namespace brevant
