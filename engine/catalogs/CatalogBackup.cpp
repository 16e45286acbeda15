#include "CatalogBackup.hpp"

#include "engine/catalogs/SQLiteReader.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/LocalTime.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"

#include <sqlite3.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <memory>

namespace brevant {

namespace {

namespace fs = std::filesystem;

// Plain read-write for the source (no URI, no create): a catalog in
// write-ahead-log mode needs its shared-memory file to be read whole.
constexpr int kSourceFlags = 0x2;
// Read-write and create for the destination.
constexpr int kDestinationFlags = 0x2 | 0x4;

struct Close {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};

using Connection = std::unique_ptr<sqlite3, Close>;

bool exists(const std::string& path) {
    return FileSnapshot::read(path).has_value();
}

// Creates the destination as an empty file, failing when anything is at that
// name already; SQLite takes an empty file as an empty database.
bool createExclusively(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wbx");
    if (file == nullptr) {
        return false;
    }
    std::fclose(file);
    return true;
}

std::string folderOf(const std::string& path) {
    std::string parent = PathRules::parentFolder(PathNames::withoutTrailingSlashes(path));
    return parent.empty() ? "." : parent;
}

std::string stemOf(const std::string& path) {
    return std::string(PathRules::deletingExtension(PathRules::lastComponent(path)));
}

std::expected<void, CatalogBackup::Failure> copyPages(sqlite3* source, sqlite3* destination) {
    sqlite3_backup* backup = sqlite3_backup_init(destination, "main", source, "main");
    if (backup == nullptr) {
        return std::unexpected(CatalogBackup::Failure{sqlite3_errmsg(destination)});
    }
    int stepped = sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup);
    if (stepped != SQLITE_DONE) {
        return std::unexpected(
            CatalogBackup::Failure{CatalogBackup::stoppedPartWaySentence(stepped)});
    }
    return {};
}

} // namespace

std::expected<void, CatalogBackup::Failure> CatalogBackup::copyDatabase(const std::string& from,
                                                                        const std::string& to) {
    auto status = FileSnapshot::read(from);
    if (status && status->isSymbolicLink) {
        return std::unexpected(Failure{SQLiteReader::symbolicLinkMessage()});
    }
    sqlite3* handle = nullptr;
    int opened = sqlite3_open_v2(from.c_str(), &handle, kSourceFlags, nullptr);
    Connection source(handle);
    if (opened != SQLITE_OK || handle == nullptr) {
        return std::unexpected(
            Failure{handle != nullptr ? sqlite3_errmsg(handle) : couldNotOpenSentence()});
    }
    std::string name = PathRules::lastComponent(to);
    if (!createExclusively(to)) {
        return std::unexpected(Failure{couldNotCreateSentence(name)});
    }
    handle = nullptr;
    opened = sqlite3_open_v2(to.c_str(), &handle, kDestinationFlags, nullptr);
    Connection destination(handle);
    if (opened != SQLITE_OK || handle == nullptr) {
        return std::unexpected(Failure{couldNotCreateSentence(name)});
    }
    return copyPages(source.get(), destination.get());
}

std::expected<std::string, CatalogBackup::Failure>
CatalogBackup::folder(const std::string& catalog) {
    std::string path = folderOf(catalog) + "/" + std::string(kFolderName);
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        return std::unexpected(
            Failure{fmt::format("{} ({})", couldNotCreateSentence(kFolderName), error.message())});
    }
    return path;
}

std::string CatalogBackup::dateText(Date now) {
    auto local = platform::localTime(static_cast<std::int64_t>(std::floor(now.unixSeconds())));
    return fmt::format("{:04}-{:02}-{:02} {:02}{:02}{:02}", local.year, local.month, local.day,
                       local.hour, local.minute, local.second);
}

std::string CatalogBackup::freeName(const std::string& folder, std::string_view stem,
                                    std::string_view date, std::string_view extension) {
    std::string candidate = fmt::format("{}/{} {}.{}", folder, stem, date, extension);
    for (int counter = 2; exists(candidate); ++counter) {
        candidate = fmt::format("{}/{} {} {}.{}", folder, stem, date, counter, extension);
    }
    return candidate;
}

std::expected<std::string, CatalogBackup::Failure>
CatalogBackup::backUpLightroom(const std::string& catalog, Date now) {
    return backUpFile(catalog, "lrcat", now);
}

std::expected<std::string, CatalogBackup::Failure>
CatalogBackup::backUpFile(const std::string& catalog, std::string_view extension, Date now) {
    auto backups = folder(catalog);
    if (!backups) {
        return std::unexpected(backups.error());
    }
    std::string target = freeName(*backups, stemOf(catalog), dateText(now), extension);
    if (auto copied = copyDatabase(catalog, target); !copied) {
        return std::unexpected(copied.error());
    }
    return target;
}

std::expected<std::string, CatalogBackup::Failure>
CatalogBackup::backUpCaptureOne(const std::string& package, const std::string& database, Date now) {
    auto backups = folder(package);
    if (!backups) {
        return std::unexpected(backups.error());
    }
    std::string target = freeName(*backups, stemOf(package), dateText(now), "cocatalog");
    std::error_code error;
    // Not with its parents: the backup folder was made just before, and a
    // folder that appeared at this name in between is not ours to fill.
    if (!fs::create_directory(target, error)) {
        std::string reason = error ? error.message() : platform::errorText(EEXIST);
        return std::unexpected(Failure{fmt::format(
            "{} ({})", couldNotCreateSentence(PathRules::lastComponent(target)), reason)});
    }
    std::string copy = target + "/" + PathRules::lastComponent(database);
    if (auto copied = copyDatabase(database, copy); !copied) {
        return std::unexpected(copied.error());
    }
    return target;
}

std::expected<std::string, CatalogBackup::Failure>
CatalogBackup::backUpDarktable(const std::string& library, const std::string& data, Date now) {
    auto backups = folder(library);
    if (!backups) {
        return std::unexpected(backups.error());
    }
    std::string date = dateText(now);
    std::string target = fmt::format("{}/darktable {}", *backups, date);
    for (int counter = 2; exists(target); ++counter) {
        target = fmt::format("{}/darktable {} {}", *backups, date, counter);
    }
    std::error_code error;
    if (!fs::create_directory(target, error)) {
        std::string reason = error ? error.message() : platform::errorText(EEXIST);
        return std::unexpected(Failure{fmt::format(
            "{} ({})", couldNotCreateSentence(PathRules::lastComponent(target)), reason)});
    }
    for (const auto& database : {library, data}) {
        std::string copy = target + "/" + PathRules::lastComponent(database);
        if (auto copied = copyDatabase(database, copy); !copied) {
            return std::unexpected(copied.error());
        }
    }
    return target;
}

const std::string& CatalogBackup::couldNotOpenSentence() {
    static const std::string text = "could not open the catalog";
    return text;
}

std::string CatalogBackup::couldNotCreateSentence(std::string_view name) {
    return fmt::format("could not create {}", name);
}

std::string CatalogBackup::stoppedPartWaySentence(int code) {
    return fmt::format("the copy stopped part way ({})", code);
}

} // namespace brevant
