#include "engine/catalogs/SQLiteReader.hpp"

#include "tests/fixtures/CatalogFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace brevant {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
using testing::SQLiteFile;
using testing::TempTree;

const std::string kBusy = "Lightroom Classic is busy with it. Try again in a moment.";

std::vector<std::string> names(const SQLiteReader& reader) {
    auto rows = reader.rows("SELECT name FROM people ORDER BY id");
    EXPECT_TRUE(rows.has_value()) << (rows ? "" : rows.error().text());
    std::vector<std::string> result;
    for (const auto& row : rows.value_or(std::vector<SQLiteRow>{})) {
        result.push_back(SQLiteValues::text(row.at(0)));
    }
    return result;
}

void makePeople(const SQLiteFile& db) {
    db.exec("CREATE TABLE people (id INTEGER PRIMARY KEY, name TEXT, born, picture BLOB)");
}

TEST(SQLiteReader, AnAbsentOrEmptyLogOpensImmutableAndANonEmptyOneShowsItsRows) {
    TempTree tree;
    std::string path = tree.path("people.db");
    SQLiteFile writer(path);
    writer.exec("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
    makePeople(writer);
    writer.exec("INSERT INTO people (name) VALUES ('Ada')");
    writer.exec("PRAGMA wal_checkpoint(TRUNCATE)");

    {
        // The log is there but empty: the main file holds everything.
        ASSERT_TRUE(SQLiteReader::writeAheadLogIsEmpty(path));
        auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
        ASSERT_TRUE(reader.has_value());
        EXPECT_TRUE(reader->isImmutable());
        EXPECT_THAT(names(*reader), ElementsAre("Ada"));
    }
    {
        // Rows the owning application has only in its log.
        writer.exec("INSERT INTO people (name) VALUES ('Grace')");
        ASSERT_FALSE(SQLiteReader::writeAheadLogIsEmpty(path));
        auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
        ASSERT_TRUE(reader.has_value());
        EXPECT_FALSE(reader->isImmutable());
        EXPECT_THAT(names(*reader), ElementsAre("Ada", "Grace"));
        // Read as immutable, the same file misses them.
        auto forced = SQLiteReader::open(path, true, kBusy);
        ASSERT_TRUE(forced.has_value());
        EXPECT_THAT(names(*forced), ElementsAre("Ada"));
    }
    // Closed, the last connection writes the log back and removes it.
    writer.close();
    ASSERT_FALSE(std::filesystem::exists(path + "-wal"));
    auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
    ASSERT_TRUE(reader.has_value());
    EXPECT_TRUE(reader->isImmutable());
    EXPECT_THAT(names(*reader), ElementsAre("Ada", "Grace"));
}

TEST(SQLiteReader, AnImmutableReaderIsNotStoppedByALock) {
    TempTree tree;
    std::string path = tree.path("people.db");
    SQLiteFile writer(path);
    makePeople(writer);
    writer.exec("INSERT INTO people (name) VALUES ('Ada')");
    SQLiteFile holder(path);
    holder.exec("BEGIN EXCLUSIVE");

    auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
    ASSERT_TRUE(reader.has_value());
    EXPECT_TRUE(reader->isImmutable());
    EXPECT_THAT(names(*reader), ElementsAre("Ada"));
}

TEST(SQLiteReader, ALockOutlastingTheTimeoutGivesTheBusySentence) {
    TempTree tree;
    std::string path = tree.path("people.db");
    SQLiteFile writer(path);
    makePeople(writer);
    writer.exec("INSERT INTO people (name) VALUES ('Ada')");
    auto reader = SQLiteReader::open(path, false, kBusy);
    ASSERT_TRUE(reader.has_value());
    EXPECT_THAT(names(*reader), ElementsAre("Ada"));

    writer.exec("BEGIN EXCLUSIVE");
    auto rows = reader->rows("SELECT name FROM people");

    ASSERT_FALSE(rows.has_value());
    EXPECT_EQ(rows.error(), CatalogReadError::unreadable(kBusy));
    EXPECT_EQ(rows.error().text(), "The catalog could not be read: " + kBusy);
    writer.exec("ROLLBACK");
    EXPECT_THAT(names(*reader), ElementsAre("Ada"));
}

TEST(SQLiteReader, RowsCarryTextDoublesAndIntegersAndNothingForNullAndBlobs) {
    TempTree tree;
    std::string path = tree.path("people.db");
    SQLiteFile writer(path);
    makePeople(writer);
    writer.exec("INSERT INTO people (name, born, picture) VALUES ('Ada', 1815.5, x'00ff')");
    writer.exec("INSERT INTO people (name, born) VALUES (NULL, 1906)");
    writer.close();
    auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
    ASSERT_TRUE(reader.has_value());

    auto rows = reader->rows("SELECT id, name, born, picture FROM people ORDER BY id");

    ASSERT_TRUE(rows.has_value());
    ASSERT_EQ(rows->size(), 2u);
    EXPECT_THAT((*rows)[0],
                ElementsAre(Optional(SQLiteValue(std::int64_t{1})), Optional(SQLiteValue("Ada")),
                            Optional(SQLiteValue(1815.5)), std::nullopt));
    EXPECT_THAT((*rows)[1], ElementsAre(Optional(SQLiteValue(std::int64_t{2})), std::nullopt,
                                        Optional(SQLiteValue(std::int64_t{1906})), std::nullopt));
}

TEST(SQLiteReader, ValuesConvertTheWayCatalogsStoreThem) {
    using V = SQLiteValues;
    EXPECT_EQ(V::integer(SQLiteValue(std::int64_t{-7})), -7);
    EXPECT_EQ(V::integer(SQLiteValue(-1.0)), -1);
    EXPECT_EQ(V::integer(SQLiteValue(4.9)), 4);
    EXPECT_EQ(V::integer(SQLiteValue("42")), 42);
    EXPECT_EQ(V::integer(SQLiteValue("-3")), -3);
    EXPECT_EQ(V::integer(SQLiteValue("4 stars")), 0);
    EXPECT_EQ(V::integer(SQLiteValue("")), 0);
    EXPECT_EQ(V::integer(SQLiteValue(1e300)), 0);
    EXPECT_EQ(V::integer(std::nullopt), 0);
    EXPECT_EQ(V::text(SQLiteValue("Rot")), "Rot");
    EXPECT_EQ(V::text(SQLiteValue(std::int64_t{5})), "");
    EXPECT_EQ(V::text(std::nullopt), "");
    EXPECT_EQ(V::real(SQLiteValue(2.5)), 2.5);
    EXPECT_EQ(V::real(SQLiteValue(std::int64_t{3})), 3.0);
    EXPECT_EQ(V::real(SQLiteValue("2.5")), std::nullopt);
    EXPECT_EQ(V::real(std::nullopt), std::nullopt);
    EXPECT_EQ(V::column(SQLiteRow{SQLiteValue("a")}, 3), std::nullopt);
}

TEST(SQLiteReader, APathWithSpacesHashesAndQuestionMarksOpens) {
    TempTree tree;
    std::string path = tree.path("My Catalogs #1?/Family 50% ?x=1#top.lrcat");
    SQLiteFile writer(path);
    makePeople(writer);
    writer.exec("INSERT INTO people (name) VALUES ('Ada')");
    writer.close();
    std::string digest = testing::fileDigest(path);

    for (bool immutable : {true, false}) {
        auto reader = SQLiteReader::open(path, immutable, kBusy);
        ASSERT_TRUE(reader.has_value()) << reader.error().text();
        EXPECT_THAT(names(*reader), ElementsAre("Ada"));
    }
    EXPECT_EQ(testing::fileDigest(path), digest);
    // Nothing was created beside it under a cut-off name.
    EXPECT_FALSE(std::filesystem::exists(tree.path("My Catalogs #1")));
    EXPECT_EQ(SQLiteReader::uri("/a b/c#?%é", true),
              "file:///a%20b/c%23%3F%25%C3%A9?mode=ro&immutable=1");
    EXPECT_EQ(SQLiteReader::uri("//srv/x", false), "file:////srv/x?mode=ro");
    EXPECT_EQ(SQLiteReader::uri("rel/x.lrcat", false), "file:rel/x.lrcat?mode=ro");
}

TEST(SQLiteReader, FailuresCarrySQLiteMessagesAndNeverCreateAFile) {
    TempTree tree;
    std::string missing = tree.path("missing.lrcat");

    auto absent = SQLiteReader::open(missing, std::nullopt, kBusy);
    ASSERT_FALSE(absent.has_value());
    EXPECT_EQ(absent.error(), CatalogReadError::unreadable("unable to open database file"));
    EXPECT_FALSE(std::filesystem::exists(missing));

    std::string junk = tree.file("junk.lrcat", std::string(4096, 'x'));
    auto opened = SQLiteReader::open(junk, std::nullopt, kBusy);
    ASSERT_TRUE(opened.has_value());
    auto rows = opened->rows("SELECT 1 FROM sqlite_master");
    ASSERT_FALSE(rows.has_value());
    EXPECT_EQ(rows.error(), CatalogReadError::unreadable("file is not a database"));

    std::string path = tree.path("people.db");
    SQLiteFile(path).exec("CREATE TABLE people (id INTEGER)");
    auto reader = SQLiteReader::open(path, std::nullopt, kBusy);
    ASSERT_TRUE(reader.has_value());
    auto bad = reader->rows("SELECT shoe_size FROM people");
    ASSERT_FALSE(bad.has_value());
    EXPECT_EQ(bad.error(), CatalogReadError::unreadable("no such column: shoe_size"));
    auto none = reader->rows("  -- nothing to run\n");
    ASSERT_TRUE(none.has_value());
    EXPECT_TRUE(none->empty());
}

TEST(SQLiteReader, AFinalSymbolicLinkIsNeverOpened) {
    TempTree tree;
    std::string path = tree.path("people.db");
    SQLiteFile(path).exec("CREATE TABLE people (id INTEGER)");
    std::string link = tree.symbolicLink(path, "link.lrcat");

    auto reader = SQLiteReader::open(link, std::nullopt, kBusy);

    ASSERT_FALSE(reader.has_value());
    EXPECT_EQ(reader.error(), CatalogReadError::unreadable(SQLiteReader::symbolicLinkMessage()));
}

} // namespace
} // namespace brevant
