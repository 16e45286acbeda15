#include "engine/catalogs/SQLiteWriter.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/catalogs/SQLiteReader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
using testing::SQLiteFile;
using testing::TempTree;

std::string makeImages(const TempTree& tree) {
    std::string path = tree.path("Family.lrcat");
    SQLiteFile db(path);
    db.exec("CREATE TABLE Adobe_images (id_local INTEGER PRIMARY KEY, masterImage, pick)");
    db.exec("INSERT INTO Adobe_images VALUES (1, NULL, 0.0), (2, NULL, 1.0), (3, 1, 0.0)");
    return path;
}

TEST(SQLiteWriter, RunAnswersTheRowsChangedAndZeroWhenNothingMatched) {
    TempTree tree;
    std::string path = makeImages(tree);
    auto writer = SQLiteWriter::open(path);
    ASSERT_TRUE(writer.has_value());

    ASSERT_TRUE(writer->run("BEGIN IMMEDIATE").has_value());
    EXPECT_EQ(writer->run("UPDATE Adobe_images SET pick = -1.0 WHERE id_local = 1 AND masterImage "
                          "IS NULL"),
              1);
    EXPECT_EQ(writer->run("UPDATE Adobe_images SET pick = -1.0 WHERE id_local = 3 AND masterImage "
                          "IS NULL"),
              0);
    EXPECT_EQ(writer->run("UPDATE Adobe_images SET pick = 0 WHERE pick >= 0"), 2);
    ASSERT_TRUE(writer->run("COMMIT").has_value());

    auto rows = writer->rows("SELECT id_local, pick FROM Adobe_images ORDER BY id_local");
    ASSERT_TRUE(rows.has_value());
    ASSERT_EQ(rows->size(), 3u);
    EXPECT_THAT((*rows)[0],
                ElementsAre(Optional(SQLiteValue(std::int64_t{1})), Optional(SQLiteValue(-1.0))));
    EXPECT_THAT((*rows)[1], ElementsAre(Optional(SQLiteValue(std::int64_t{2})),
                                        Optional(SQLiteValue(std::int64_t{0}))));
}

TEST(SQLiteWriter, AQuotedNameReadsBackAsItWas) {
    TempTree tree;
    std::string path = makeImages(tree);
    auto writer = SQLiteWriter::open(path);
    ASSERT_TRUE(writer.has_value());
    const std::string name = "Anna's 'best' \"shots\"";
    EXPECT_EQ(SQLiteWriter::quoted(name), "'Anna''s ''best'' \"shots\"'");
    auto rows = writer->rows("SELECT " + SQLiteWriter::quoted(name));
    ASSERT_TRUE(rows.has_value());
    ASSERT_EQ(rows->size(), 1u);
    EXPECT_THAT((*rows)[0], ElementsAre(Optional(SQLiteValue(name))));
}

TEST(SQLiteWriter, ARolledBackTransactionLeavesTheCatalogAsItWas) {
    TempTree tree;
    std::string path = makeImages(tree);
    std::string digest = testing::fileDigest(path);
    {
        auto writer = SQLiteWriter::open(path);
        ASSERT_TRUE(writer.has_value());
        ASSERT_TRUE(writer->run("BEGIN IMMEDIATE").has_value());
        ASSERT_EQ(writer->run("UPDATE Adobe_images SET pick = -1.0"), 3);
        ASSERT_TRUE(writer->run("ROLLBACK").has_value());
    }
    EXPECT_EQ(testing::fileDigest(path), digest);
}

TEST(SQLiteWriter, FailuresCarrySQLiteMessagesAndAMissingFileIsNeverCreated) {
    TempTree tree;
    std::string missing = tree.path("missing.lrcat");
    auto absent = SQLiteWriter::open(missing);
    ASSERT_FALSE(absent.has_value());
    EXPECT_EQ(absent.error().description, "unable to open database file");
    EXPECT_FALSE(std::filesystem::exists(missing));

    std::string path = makeImages(tree);
    auto writer = SQLiteWriter::open(path);
    ASSERT_TRUE(writer.has_value());
    auto run = writer->run("UPDATE Adobe_pictures SET pick = 1");
    ASSERT_FALSE(run.has_value());
    EXPECT_EQ(run.error().description, "no such table: Adobe_pictures");
    auto rows = writer->rows("SELECT flag FROM Adobe_images");
    ASSERT_FALSE(rows.has_value());
    EXPECT_EQ(rows.error().description, "no such column: flag");

    std::string link = tree.symbolicLink(path, "link.lrcat");
    auto linked = SQLiteWriter::open(link);
    ASSERT_FALSE(linked.has_value());
    EXPECT_EQ(linked.error().description, SQLiteReader::symbolicLinkMessage());
}

TEST(SQLiteWriter, ALockOutlastingTheTimeoutFailsWithSQLitesOwnMessage) {
    TempTree tree;
    std::string path = makeImages(tree);
    SQLiteFile holder(path);
    holder.exec("BEGIN EXCLUSIVE");
    auto writer = SQLiteWriter::open(path);
    ASSERT_TRUE(writer.has_value());

    auto begun = writer->run("BEGIN IMMEDIATE");

    ASSERT_FALSE(begun.has_value());
    EXPECT_EQ(begun.error().description, "database is locked");
}

} // namespace
} // namespace brevant
