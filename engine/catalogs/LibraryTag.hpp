#pragma once

#include "engine/catalogs/SQLiteWriter.hpp"
#include "engine/catalogs/TagMarkRecord.hpp"

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

namespace brevant {

// The tag "Brevant Duplicates" as one marking of a photo library finds or
// makes it. Which tags the marking made is remembered on its connection, in
// a temporary table that never reaches the file: every item of the marking
// then says the tag is new, and whichever undo finds it unused last takes it
// away.
struct LibraryTag {
    std::int64_t id = 0;
    bool created = false;

    // The tag `find` selects (its id in the first column), made by `make`
    // when `find` selects none. Both statements name the tag as "{0}", which
    // is filled in as an SQL literal.
    [[nodiscard]] static std::expected<LibraryTag, SQLiteWriter::Failure>
    foundOrMade(const SQLiteWriter& writer, std::string_view find, std::string_view make);

    // A marking's item for one photo: the tag found or made as above; the
    // rows given the tag are the kind's to add.
    [[nodiscard]] static std::expected<TagMarkItem, SQLiteWriter::Failure>
    item(const SQLiteWriter& writer, std::int64_t imageID, const std::string& path,
         std::string_view find, std::string_view make);

    static constexpr std::string_view kMadeTable = "temp.brevant_made_tags";
};

} // namespace brevant
