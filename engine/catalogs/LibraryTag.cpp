#include "LibraryTag.hpp"

#include <fmt/format.h>

namespace brevant {

namespace {

using Failure = SQLiteWriter::Failure;

std::expected<bool, Failure> madeHere(const SQLiteWriter& writer, std::int64_t id) {
    auto made = writer.firstInteger(
        fmt::format("SELECT id FROM {} WHERE id = {}", LibraryTag::kMadeTable, id));
    if (!made) {
        return std::unexpected(made.error());
    }
    return made->has_value();
}

} // namespace

std::expected<LibraryTag, Failure> LibraryTag::foundOrMade(const SQLiteWriter& writer,
                                                           std::string_view findFormat,
                                                           std::string_view makeFormat) {
    std::string name = SQLiteWriter::quoted(kDuplicatesTag);
    std::string find = fmt::format(fmt::runtime(findFormat), name);
    std::string make = fmt::format(fmt::runtime(makeFormat), name);
    if (auto table = writer.run(
            fmt::format("CREATE TEMP TABLE IF NOT EXISTS {} (id INTEGER PRIMARY KEY)", kMadeTable));
        !table) {
        return std::unexpected(table.error());
    }
    auto found = writer.firstInteger(find);
    if (!found) {
        return std::unexpected(found.error());
    }
    if (std::optional<std::int64_t> existing = *found) {
        auto made = madeHere(writer, *existing);
        if (!made) {
            return std::unexpected(made.error());
        }
        return LibraryTag{*existing, *made};
    }
    if (auto inserted = writer.run(make); !inserted) {
        return std::unexpected(inserted.error());
    }
    auto again = writer.firstInteger(find);
    if (!again) {
        return std::unexpected(again.error());
    }
    std::optional<std::int64_t> id = *again;
    if (!id) {
        return std::unexpected(Failure{"The tag could not be made."});
    }
    if (auto noted = writer.run(fmt::format("INSERT INTO {} (id) VALUES ({})", kMadeTable, *id));
        !noted) {
        return std::unexpected(noted.error());
    }
    return LibraryTag{*id, true};
}

std::expected<TagMarkItem, Failure> LibraryTag::item(const SQLiteWriter& writer,
                                                     std::int64_t imageID, const std::string& path,
                                                     std::string_view find, std::string_view make) {
    auto tag = foundOrMade(writer, find, make);
    if (!tag) {
        return std::unexpected(tag.error());
    }
    return TagMarkItem{
        .imageID = imageID, .path = path, .tagID = tag->id, .tagCreated = tag->created};
}

} // namespace brevant
