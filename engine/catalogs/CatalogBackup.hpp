#pragma once

#include "engine/catalogs/SQLiteWriter.hpp"
#include "engine/support/Date.hpp"

#include <expected>
#include <string>
#include <string_view>

namespace brevant {

// The copy of a catalog taken before any change to it, in a folder
// "Brevant Backups" beside the catalog. Backups are never deleted or
// overwritten; their paths go into the mark records.
struct CatalogBackup {
    using Failure = SQLiteWriter::Failure;

    static constexpr std::string_view kFolderName = "Brevant Backups";

    // Copies one database through SQLite's online backup: a single
    // consistent file that already holds whatever sat in the source's
    // write-ahead log. `to` is created exclusively, so nothing is ever
    // overwritten.
    [[nodiscard]] static std::expected<void, Failure> copyDatabase(const std::string& from,
                                                                   const std::string& to);

    // Backs up a Lightroom Classic catalog file; answers the backup's path,
    // for example "Brevant Backups/Family 2024-05-01 093015.lrcat".
    [[nodiscard]] static std::expected<std::string, Failure>
    backUpLightroom(const std::string& catalog, Date now);

    // Backs up a catalog that is one database file: "Brevant
    // Backups/<stem> <date>.<extension>" beside it.
    [[nodiscard]] static std::expected<std::string, Failure>
    backUpFile(const std::string& catalog, std::string_view extension, Date now);

    // Backs up a Capture One catalog package: a new ".cocatalog" folder that
    // holds only a copy of the database file, under its own name (not the
    // previews or settings).
    [[nodiscard]] static std::expected<std::string, Failure>
    backUpCaptureOne(const std::string& package, const std::string& database, Date now);

    // Backs up a darktable library: a new folder "darktable <date>" that
    // holds copies of its two databases under their own names.
    [[nodiscard]] static std::expected<std::string, Failure>
    backUpDarktable(const std::string& library, const std::string& data, Date now);

    // The folder beside the catalog, created with its parents when missing.
    [[nodiscard]] static std::expected<std::string, Failure> folder(const std::string& catalog);

    // "yyyy-MM-dd HHmmss" in the system time zone, always with ASCII digits
    // and the Gregorian calendar, whatever the user's locale.
    [[nodiscard]] static std::string dateText(Date now);

    // The first free name in `folder`: "stem date.ext", then "stem date 2.ext",
    // "stem date 3.ext" and so on.
    [[nodiscard]] static std::string freeName(const std::string& folder, std::string_view stem,
                                              std::string_view date, std::string_view extension);

    // The texts of the failures.
    [[nodiscard]] static const std::string& couldNotOpenSentence();
    [[nodiscard]] static std::string couldNotCreateSentence(std::string_view name);
    [[nodiscard]] static std::string stoppedPartWaySentence(int code);
};

} // namespace brevant
