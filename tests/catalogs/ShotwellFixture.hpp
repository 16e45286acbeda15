#pragma once

#include "tests/fixtures/CatalogFixtures.hpp"

#include <cstdint>
#include <fmt/format.h>
#include <string>
#include <string_view>

// A Shotwell library built the way Shotwell builds its "photo.db".
namespace brevant::testing {

// The tables as Shotwell 0.30 (Debian 12, schema version 20) creates them,
// statement for statement from its src/db/*.vala; schema 24, which the
// current Shotwell writes, adds PhotoTable's GPS columns as its upgrade does.
inline constexpr std::string_view kShotwellSchema = R"(
CREATE TABLE IF NOT EXISTS VersionTable (id INTEGER PRIMARY KEY, schema_version INTEGER,
    app_version TEXT, user_data TEXT NULL);
CREATE TABLE IF NOT EXISTS PhotoTable (id INTEGER PRIMARY KEY, filename TEXT UNIQUE NOT NULL,
    width INTEGER, height INTEGER, filesize INTEGER, timestamp INTEGER, exposure_time INTEGER,
    orientation INTEGER, original_orientation INTEGER, import_id INTEGER, event_id INTEGER,
    transformations TEXT, md5 TEXT, thumbnail_md5 TEXT, exif_md5 TEXT, time_created INTEGER,
    flags INTEGER DEFAULT 0, rating INTEGER DEFAULT 0, file_format INTEGER DEFAULT 0,
    title TEXT, backlinks TEXT, time_reimported INTEGER, editable_id INTEGER DEFAULT -1,
    metadata_dirty INTEGER DEFAULT 0, developer TEXT, develop_shotwell_id INTEGER DEFAULT -1,
    develop_camera_id INTEGER DEFAULT -1, develop_embedded_id INTEGER DEFAULT -1,
    comment TEXT);
CREATE INDEX IF NOT EXISTS PhotoEventIDIndex ON PhotoTable (event_id);
CREATE TABLE IF NOT EXISTS VideoTable (id INTEGER PRIMARY KEY, filename TEXT UNIQUE NOT NULL,
    width INTEGER, height INTEGER, clip_duration REAL, is_interpretable INTEGER,
    filesize INTEGER, timestamp INTEGER, exposure_time INTEGER, import_id INTEGER,
    event_id INTEGER, md5 TEXT, time_created INTEGER, rating INTEGER DEFAULT 0, title TEXT,
    backlinks TEXT, time_reimported INTEGER, flags INTEGER DEFAULT 0, comment TEXT);
CREATE INDEX IF NOT EXISTS VideoEventIDIndex ON VideoTable (event_id);
CREATE TABLE IF NOT EXISTS TagTable (id INTEGER PRIMARY KEY, name TEXT UNIQUE NOT NULL,
    photo_id_list TEXT, time_created INTEGER);
CREATE TABLE IF NOT EXISTS EventTable (id INTEGER PRIMARY KEY, name TEXT,
    primary_photo_id INTEGER, time_created INTEGER, primary_source_id TEXT, comment TEXT);
)";

// What a photo is given; Shotwell's defaults otherwise.
struct ShotwellPhotoOptions {
    std::int64_t flags = 0;
    int rating = 0;
    std::string transformations;
    std::int64_t editableID = -1;
};

class ShotwellLibraryFixture {
public:
    explicit ShotwellLibraryFixture(std::string path, int schemaVersion = 20)
        : path_(std::move(path))
        , db_(path_) {
        db_.exec(std::string(kShotwellSchema));
        if (schemaVersion >= 21) {
            db_.exec("ALTER TABLE PhotoTable ADD COLUMN has_gps INTEGER DEFAULT -1;"
                     "ALTER TABLE PhotoTable ADD COLUMN gps_lat REAL;"
                     "ALTER TABLE PhotoTable ADD COLUMN gps_lon REAL;");
        }
        db_.exec(fmt::format("INSERT INTO VersionTable (schema_version, app_version, user_data) "
                             "VALUES ({}, '{}', NULL)",
                             schemaVersion, schemaVersion >= 24 ? "0.32.13" : "0.30.17"));
    }

    std::int64_t addPhoto(const std::string& file, const ShotwellPhotoOptions& options = {}) {
        return db_.insert(fmt::format(
            "INSERT INTO PhotoTable (filename, width, height, filesize, timestamp, "
            "exposure_time, orientation, original_orientation, import_id, event_id, "
            "transformations, md5, time_created, flags, rating, file_format, title, "
            "editable_id, developer) VALUES ({}, 64, 48, 1000, 1700000000, 1700000000, 1, 1, "
            "1700000100, -1, {}, 'md5', 1700000100, {}, {}, 0, NULL, {}, 'CAMERA')",
            sqlText(file),
            options.transformations.empty() ? "NULL" : sqlText(options.transformations),
            options.flags, options.rating, options.editableID));
    }

    std::int64_t addVideo(const std::string& file) {
        return db_.insert(fmt::format(
            "INSERT INTO VideoTable (filename, width, height, clip_duration, is_interpretable, "
            "filesize, timestamp, exposure_time, import_id, event_id, md5, time_created, title, "
            "comment) VALUES ({}, 64, 48, 1.5, 1, 1000, 1700000000, 1700000000, 1700000100, -1, "
            "'md5', 1700000100, NULL, NULL)",
            sqlText(file)));
    }

    // `list` as Shotwell writes it, "thumb0000000000000001,...,", or NULL
    // when empty.
    std::int64_t addTag(const std::string& name, const std::string& list) {
        return db_.insert(
            fmt::format("INSERT INTO TagTable (name, photo_id_list, time_created) VALUES ({}, {}, "
                        "1700000200)",
                        sqlText(name), list.empty() ? "NULL" : sqlText(list)));
    }

    void setVersion(int schemaVersion) {
        db_.exec(fmt::format("UPDATE VersionTable SET schema_version = {}", schemaVersion));
    }

    [[nodiscard]] std::string tagList(const std::string& name) const {
        return db_.value(fmt::format(
            "SELECT COALESCE(photo_id_list, '') FROM TagTable WHERE name = {}", sqlText(name)));
    }

    [[nodiscard]] std::string tagCount(const std::string& name) const {
        return db_.value(
            fmt::format("SELECT COUNT(*) FROM TagTable WHERE name = {}", sqlText(name)));
    }

    void setTagList(const std::string& name, const std::string& list) {
        db_.exec(fmt::format("UPDATE TagTable SET photo_id_list = {} WHERE name = {}",
                             sqlText(list), sqlText(name)));
    }

    [[nodiscard]] const std::string& path() const { return path_; }

    [[nodiscard]] SQLiteFile& database() { return db_; }

private:
    std::string path_;
    SQLiteFile db_;
};

} // namespace brevant::testing
