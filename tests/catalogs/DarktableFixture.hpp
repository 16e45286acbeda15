#pragma once

#include "tests/fixtures/CatalogFixtures.hpp"

#include <cstdint>
#include <fmt/format.h>
#include <memory>
#include <string>

// A darktable library made by the tests: library.db and data.db in one
// folder, with the tables darktable 4.2.1 (as Debian 12 ships it) creates
// through its database.c, statement for statement as that version left them
// in a new library (library schema 37, data schema 9), less the tables
// Brevant never looks at.
namespace brevant::testing {

inline constexpr std::string_view kDarktableLibrarySchema = R"sql(
CREATE TABLE db_info (key VARCHAR PRIMARY KEY, value VARCHAR);
CREATE TABLE film_rolls (id INTEGER PRIMARY KEY, access_timestamp INTEGER, folder VARCHAR(1024) NOT NULL);
CREATE INDEX film_rolls_folder_index ON film_rolls (folder);
CREATE TABLE images (id INTEGER PRIMARY KEY AUTOINCREMENT, group_id INTEGER, film_id INTEGER, width INTEGER, height INTEGER, filename VARCHAR, maker VARCHAR, model VARCHAR, lens VARCHAR, exposure REAL, aperture REAL, iso REAL, focal_length REAL, focus_distance REAL, datetime_taken INTEGER, flags INTEGER, output_width INTEGER, output_height INTEGER, crop REAL, raw_parameters INTEGER, raw_denoise_threshold REAL, raw_auto_bright_threshold REAL, raw_black INTEGER, raw_maximum INTEGER, license VARCHAR, sha1sum CHAR(40), orientation INTEGER, histogram BLOB, lightmap BLOB, longitude REAL, latitude REAL, altitude REAL, color_matrix BLOB, colorspace INTEGER, version INTEGER, max_version INTEGER, write_timestamp INTEGER, history_end INTEGER, position INTEGER, aspect_ratio REAL, exposure_bias REAL, import_timestamp INTEGER DEFAULT -1, change_timestamp INTEGER DEFAULT -1, export_timestamp INTEGER DEFAULT -1, print_timestamp INTEGER DEFAULT -1, FOREIGN KEY(film_id) REFERENCES film_rolls(id) ON DELETE CASCADE ON UPDATE CASCADE, FOREIGN KEY(group_id) REFERENCES images(id) ON DELETE RESTRICT ON UPDATE CASCADE);
CREATE INDEX images_group_id_index ON images (group_id, id);
CREATE INDEX images_film_id_index ON images (film_id, filename);
CREATE INDEX images_filename_index ON images (filename, version);
CREATE INDEX image_position_index ON images (position);
CREATE TABLE selected_images (imgid INTEGER PRIMARY KEY);
CREATE TABLE history (imgid INTEGER, num INTEGER, module INTEGER, operation VARCHAR(256), op_params BLOB, enabled INTEGER, blendop_params BLOB, blendop_version INTEGER, multi_priority INTEGER, multi_name VARCHAR(256), FOREIGN KEY(imgid) REFERENCES images(id) ON UPDATE CASCADE ON DELETE CASCADE);
CREATE INDEX history_imgid_op_index ON history (imgid, operation);
CREATE TABLE tagged_images (imgid INTEGER, tagid INTEGER, position INTEGER, PRIMARY KEY (imgid, tagid),FOREIGN KEY(imgid) REFERENCES images(id) ON UPDATE CASCADE ON DELETE CASCADE);
CREATE INDEX tagged_images_tagid_index ON tagged_images (tagid);
CREATE INDEX tagged_images_position_index ON tagged_images (position);
CREATE TABLE color_labels (imgid INTEGER, color INTEGER);
CREATE UNIQUE INDEX color_labels_idx ON color_labels (imgid, color);
CREATE TABLE meta_data (id INTEGER, key INTEGER, value VARCHAR);
CREATE UNIQUE INDEX metadata_index ON meta_data (id, key, value);
)sql";

inline constexpr std::string_view kDarktableDataSchema = R"sql(
CREATE TABLE db_info (key VARCHAR PRIMARY KEY, value VARCHAR);
CREATE TABLE tags (id INTEGER PRIMARY KEY, name VARCHAR, synonyms VARCHAR, flags INTEGER);
CREATE UNIQUE INDEX tags_name_idx ON tags (name);
CREATE TABLE locations (tagid INTEGER PRIMARY KEY, type INTEGER, longitude REAL, latitude REAL, delta1 REAL, delta2 REAL, ratio FLOAT, polygons BLOB, FOREIGN KEY(tagid) REFERENCES tags(id));
)sql";

// What an image row is given beside its place.
struct DarktableImageOptions {
    int version = 0;
    std::int64_t flags = 0;
};

class DarktableLibraryFixture {
public:
    // The library's folder; the two databases are made in it with darktable
    // 4.2.1's version rows.
    explicit DarktableLibraryFixture(const std::string& folder)
        : libraryPath_(folder + "/library.db")
        , dataPath_(folder + "/data.db")
        , library_(std::make_unique<SQLiteFile>(libraryPath_))
        , data_(std::make_unique<SQLiteFile>(dataPath_)) {
        library_->exec(std::string(kDarktableLibrarySchema));
        data_->exec(std::string(kDarktableDataSchema));
        setVersions("37", "9");
        // darktable's own tags, made on import; never the user's.
        data_->exec("INSERT INTO tags (id, name) VALUES (1, 'darktable|format|jpg')");
    }

    [[nodiscard]] const std::string& libraryPath() const { return libraryPath_; }

    [[nodiscard]] const std::string& dataPath() const { return dataPath_; }

    [[nodiscard]] SQLiteFile& library() { return *library_; }

    [[nodiscard]] SQLiteFile& data() { return *data_; }

    void setVersions(const std::string& library, const std::string& data) {
        library_->exec(fmt::format(
            "INSERT OR REPLACE INTO db_info (key, value) VALUES ('version', {})", library));
        data_->exec(fmt::format(
            "INSERT OR REPLACE INTO db_info (key, value) VALUES ('version', {})", data));
    }

    std::int64_t addFilmRoll(const std::string& folder) {
        return library_->insert(fmt::format(
            "INSERT INTO film_rolls (access_timestamp, folder) VALUES (0, {})", sqlText(folder)));
    }

    // An image row of the roll; a duplicate of a file is another row with
    // the same roll and name and the next version.
    std::int64_t addImage(std::int64_t filmRoll, const std::string& name,
                          const DarktableImageOptions& options = {}) {
        auto id = library_->insert(
            fmt::format("INSERT INTO images (film_id, filename, version, max_version, flags) "
                        "VALUES ({}, {}, {}, {}, {})",
                        filmRoll, sqlText(name), options.version, options.version, options.flags));
        library_->exec(fmt::format("UPDATE images SET group_id = {0} WHERE id = {0}", id));
        // Every import carries darktable's format tag.
        library_->exec(fmt::format(
            "INSERT INTO tagged_images (imgid, tagid, position) VALUES ({}, 1, 0)", id));
        return id;
    }

    // Tags the image as darktable's tagging module does, making the tag when
    // data.db has none; answers the tag's id.
    std::int64_t tag(std::int64_t image, const std::string& name) {
        data_->exec(
            fmt::format("INSERT OR IGNORE INTO tags (id, name) VALUES (NULL, {})", sqlText(name)));
        auto tagID = std::stoll(
            data_->value(fmt::format("SELECT id FROM tags WHERE name = {}", sqlText(name))));
        library_->exec(fmt::format(
            "INSERT INTO tagged_images (imgid, tagid, position) SELECT {}, {}, "
            "(IFNULL(MAX(position), 0) & 0xFFFFFFFF00000000) + (1 << 32) FROM tagged_images",
            image, tagID));
        return tagID;
    }

    void label(std::int64_t image, int color) {
        library_->exec(
            fmt::format("INSERT INTO color_labels (imgid, color) VALUES ({}, {})", image, color));
    }

    void edit(std::int64_t image) {
        library_->exec(fmt::format("INSERT INTO history (imgid, num, operation, enabled) VALUES "
                                   "({}, 0, 'exposure', 1)",
                                   image));
    }

    // The images carrying the tag, "id id ..." in ascending order.
    [[nodiscard]] std::string taggedWith(std::int64_t tagID) {
        return library_->value(fmt::format("SELECT group_concat(imgid, ' ') FROM (SELECT imgid "
                                           "FROM tagged_images WHERE tagid = {} ORDER BY imgid)",
                                           tagID));
    }

    // The id of the tag of that name, "" when there is none.
    [[nodiscard]] std::string tagID(const std::string& name) {
        return data_->value(fmt::format("SELECT id FROM tags WHERE name = {}", sqlText(name)));
    }

private:
    std::string libraryPath_;
    std::string dataPath_;
    std::unique_ptr<SQLiteFile> library_;
    std::unique_ptr<SQLiteFile> data_;
};

} // namespace brevant::testing
