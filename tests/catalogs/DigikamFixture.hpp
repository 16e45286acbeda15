#pragma once

#include "tests/fixtures/CatalogFixtures.hpp"

#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>

namespace brevant::testing {

// A digiKam library made with the statements digiKam itself creates its
// SQLite database with (core/data/database/dbconfig.xml.cmake.in, the
// CreateDB, CreateIndices and CreateTriggers actions as digiKam 7 and 8
// have them; only the tables the reader and marker touch, and the triggers
// that keep TagsTree), with the version rows digiKam's schema updater
// writes and the internal tags it makes for labels.
class DigikamFixture {
public:
    static constexpr std::string_view kSchema = R"sql(
CREATE TABLE AlbumRoots
    (id INTEGER PRIMARY KEY,
    label TEXT,
    status INTEGER NOT NULL,
    type INTEGER NOT NULL,
    identifier TEXT,
    specificPath TEXT,
    UNIQUE(identifier, specificPath));
CREATE TABLE Albums
    (id INTEGER PRIMARY KEY,
    albumRoot INTEGER NOT NULL,
    relativePath TEXT NOT NULL,
    date DATE,
    caption TEXT,
    collection TEXT,
    icon INTEGER,
    UNIQUE(albumRoot, relativePath));
CREATE TABLE Images
    (id INTEGER PRIMARY KEY,
    album INTEGER,
    name TEXT NOT NULL,
    status INTEGER NOT NULL,
    category INTEGER NOT NULL,
    modificationDate DATETIME,
    fileSize INTEGER,
    uniqueHash TEXT,
    manualOrder INTEGER,
    UNIQUE (album, name));
CREATE TABLE ImageInformation
    (imageid INTEGER PRIMARY KEY,
    rating INTEGER,
    creationDate DATETIME,
    digitizationDate DATETIME,
    orientation INTEGER,
    width INTEGER,
    height INTEGER,
    format TEXT,
    colorDepth INTEGER,
    colorModel INTEGER);
CREATE TABLE IF NOT EXISTS Tags
    (id INTEGER PRIMARY KEY,
    pid INTEGER,
    name TEXT NOT NULL,
    icon INTEGER,
    iconkde TEXT,
    UNIQUE (name, pid));
CREATE TABLE IF NOT EXISTS TagsTree
    (id INTEGER NOT NULL,
    pid INTEGER NOT NULL,
    UNIQUE (id, pid));
CREATE TABLE IF NOT EXISTS ImageTags
    (imageid INTEGER NOT NULL,
    tagid INTEGER NOT NULL,
    UNIQUE (imageid, tagid));
CREATE TABLE IF NOT EXISTS Settings
    (keyword TEXT NOT NULL UNIQUE,
    value TEXT);
CREATE TABLE TagProperties
    (tagid INTEGER,
    property TEXT,
    value TEXT);
CREATE TABLE ImageTagProperties
    (imageid INTEGER,
    tagid INTEGER,
    property TEXT,
    value TEXT);
CREATE INDEX dir_index  ON Images (album);
CREATE INDEX tag_index  ON ImageTags (tagid);
CREATE INDEX tag_id_index  ON ImageTags (imageid);
CREATE TRIGGER delete_tag DELETE ON Tags
    BEGIN
        DELETE FROM ImageTags WHERE tagid=OLD.id;
        DELETE FROM TagProperties WHERE tagid=OLD.id;
        DELETE FROM ImageTagProperties WHERE tagid=OLD.id;
    END;
CREATE TRIGGER insert_tagstree AFTER INSERT ON Tags
    BEGIN
    INSERT INTO TagsTree
        SELECT NEW.id, NEW.pid
        UNION
        SELECT NEW.id, pid FROM TagsTree WHERE id=NEW.pid;
    END;
CREATE TRIGGER delete_tagstree DELETE ON Tags
    BEGIN
        DELETE FROM Tags
        WHERE id  IN (SELECT id FROM TagsTree WHERE pid=OLD.id);
        DELETE FROM TagsTree
        WHERE id IN (SELECT id FROM TagsTree WHERE pid=OLD.id);
        DELETE FROM TagsTree
        WHERE id=OLD.id;
    END;
)sql";

    // The database at `path` (its folder made), at schema version
    // `version` ("16": digiKam 8).
    explicit DigikamFixture(std::string path, const std::string& version = "16")
        : path_(std::move(path)) {
        std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
        db_ = std::make_unique<SQLiteFile>(path_);
        db_->exec(std::string(kSchema));
        db_->exec(fmt::format("INSERT INTO Settings VALUES ('DBVersion', {0});"
                              "INSERT INTO Settings VALUES ('DBVersionRequired', {0});",
                              sqlText(version)));
        internal_ = addTag(0, "_Digikam_Internal_Tags_");
        for (auto name : {"Pick Label Rejected", "Pick Label Pending", "Pick Label Accepted",
                          "Color Label Red", "Color Label Blue"}) {
            addTag(internal_, name);
        }
    }

    [[nodiscard]] const std::string& path() const { return path_; }

    [[nodiscard]] SQLiteFile& database() { return *db_; }

    // A root on a volume of this UUID, or at a path ("volumeid:?path=").
    std::int64_t addUuidRoot(const std::string& uuid, const std::string& specificPath) {
        return db_->insert(fmt::format("INSERT INTO AlbumRoots (label, status, type, identifier, "
                                       "specificPath) VALUES ('Photos', 0, 1, {}, {})",
                                       sqlText("volumeid:?uuid=" + uuid), sqlText(specificPath)));
    }

    std::int64_t addPathRoot(const std::string& encodedPath) {
        return db_->insert(fmt::format("INSERT INTO AlbumRoots (label, status, type, identifier, "
                                       "specificPath) VALUES ('Photos', 0, 1, {}, '/')",
                                       sqlText("volumeid:?path=" + encodedPath)));
    }

    std::int64_t addAlbum(std::int64_t root, const std::string& relativePath) {
        return db_->insert(
            fmt::format("INSERT INTO Albums (albumRoot, relativePath) VALUES ({}, {})", root,
                        sqlText(relativePath)));
    }

    std::int64_t addImage(std::int64_t album, const std::string& name, int status = 1,
                          std::optional<int> rating = std::nullopt) {
        auto id = db_->insert(fmt::format("INSERT INTO Images (album, name, status, category) "
                                          "VALUES ({}, {}, {}, 1)",
                                          album, sqlText(name), status));
        db_->exec(fmt::format("INSERT INTO ImageInformation (imageid, rating) VALUES ({}, {})", id,
                              rating.value_or(-1)));
        return id;
    }

    // digiKam's insert for a new tag; the trigger files it into TagsTree.
    std::int64_t addTag(std::int64_t parent, const std::string& name) {
        return db_->insert(
            fmt::format("INSERT INTO Tags (pid, name) VALUES ({}, {})", parent, sqlText(name)));
    }

    [[nodiscard]] std::int64_t internalTag(const std::string& name) const {
        return std::stoll(db_->value(fmt::format("SELECT id FROM Tags WHERE pid = {} AND name = {}",
                                                 internal_, sqlText(name))));
    }

    void tag(std::int64_t image, std::int64_t tag) const {
        db_->exec(fmt::format("INSERT INTO ImageTags VALUES ({}, {})", image, tag));
    }

    void setVersion(const std::string& version) const {
        db_->exec(fmt::format("UPDATE Settings SET value = {} WHERE keyword = 'DBVersion'",
                              sqlText(version)));
    }

    void close() { db_->close(); }

private:
    std::string path_;
    std::unique_ptr<SQLiteFile> db_;
    std::int64_t internal_ = 0;
};

} // namespace brevant::testing
