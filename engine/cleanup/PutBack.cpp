#include "PutBack.hpp"

#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Uuid.hpp"

#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <set>

namespace brevant::put_back {

namespace {

constexpr int kNumberedNames = 999;
constexpr std::size_t kUuidCharacters = 8;
// A clash with a fresh UUID is all but impossible; the bound only keeps a
// broken folder from holding us forever.
constexpr int kUuidAttempts = 16;

std::string joined(const std::string& folder, std::string_view name) {
    return folder == "/" ? fmt::format("/{}", name) : fmt::format("{}/{}", folder, name);
}

std::string nameWith(std::string_view base, std::string_view extension, std::string_view tag) {
    if (extension.empty()) {
        return fmt::format("{} ({})", base, tag);
    }
    return fmt::format("{} ({}).{}", base, tag, extension);
}

bool isFree(const std::string& path) {
    return !FileSnapshot::read(path).has_value();
}

} // namespace

std::optional<RestoreOutcome> precheck(const FileIdentity& trashed,
                                       const std::optional<std::string>& trashPath,
                                       const std::string& destination) {
    if (!trashPath) {
        return RestoreOutcome::notInTrash();
    }
    auto inTrash = FileSnapshot::read(*trashPath);
    if (!inTrash || inTrash->identity != trashed) {
        std::string trashFolder = PathNames::parentFolder(*trashPath);
        if (!inTrash && !platform::isDirectory(trashFolder)) {
            return RestoreOutcome::failed(
                fmt::format("Its Trash, {}, is not there \u2014 perhaps its drive is not connected",
                            PathNames::parentFolder(trashFolder)));
        }
        return RestoreOutcome::notInTrash();
    }
    std::string folder = PathNames::parentFolder(destination);
    if (!platform::isDirectory(folder)) {
        return RestoreOutcome::failed(
            fmt::format("Its folder, {}, is not there any more \u2014 perhaps its drive is not "
                        "connected",
                        folder));
    }
    return std::nullopt;
}

RestoreOutcome renamed(const std::string& trashPath, const std::string& destination) {
    auto moved = platform::renameNoReplace(trashPath, destination);
    if (moved) {
        return RestoreOutcome::restored(destination);
    }
    if (moved.error() == EEXIST) {
        return RestoreOutcome::occupied(destination);
    }
    return RestoreOutcome::failed(platform::errorText(moved.error()));
}

void settleMoved(const std::vector<std::pair<std::string, std::string>>& trashPathAndDestination) {
    std::set<std::string> folders;
    for (const auto& [trashPath, destination] : trashPathAndDestination) {
        folders.insert(PathNames::parentFolder(destination));
        folders.insert(PathNames::parentFolder(trashPath));
    }
    for (const auto& folder : folders) {
        platform::syncFolder(folder);
    }
    std::set<std::string> infoFolders;
    for (const auto& [trashPath, destination] : trashPathAndDestination) {
        auto record = platform::FreedesktopTrash::infoPathFor(trashPath);
        if (record && platform::FreedesktopTrash::removeTrashInfo(trashPath, false)) {
            infoFolders.insert(PathNames::parentFolder(*record));
        }
    }
    for (const auto& folder : infoFolders) {
        platform::syncFolder(folder);
    }
}

std::optional<std::string> noteFor(const RestoreOutcome& outcome, Date when) {
    std::string date =
        platform::shortDateTime(static_cast<std::int64_t>(std::floor(when.unixSeconds())));
    switch (outcome.kind) {
    case RestoreOutcome::Kind::restored:
        return std::nullopt;
    case RestoreOutcome::Kind::occupied:
        return fmt::format("Put Back refused {}: something else is now at {}, and it is never "
                           "overwritten.",
                           date, outcome.path);
    case RestoreOutcome::Kind::notInTrash:
        return fmt::format("Put Back tried {}: it is not in the Trash any more (emptied, or put "
                           "back another way).",
                           date);
    case RestoreOutcome::Kind::failed:
        return fmt::format("Put Back failed {}: {}. It is still in the Trash.", date,
                           outcome.reason);
    }
    return std::nullopt;
}

std::string alternativePath(const std::string& path) {
    std::string folder = PathNames::parentFolder(path);
    std::string name = PathNames::lastComponent(path);
    std::string_view base = PathNames::deletingExtension(name);
    std::string_view extension = PathNames::extension(name);
    for (int n = 1; n <= kNumberedNames; ++n) {
        std::string tag = n == 1 ? std::string("restored") : fmt::format("restored {}", n);
        std::string candidate = joined(folder, nameWith(base, extension, tag));
        if (isFree(candidate)) {
            return candidate;
        }
    }
    std::string candidate;
    for (int attempt = 0; attempt < kUuidAttempts; ++attempt) {
        std::string piece = Uuid::make().text().substr(0, kUuidCharacters);
        candidate = joined(folder, nameWith(base, extension, "restored " + piece));
        if (isFree(candidate)) {
            break;
        }
    }
    return candidate;
}

std::string dataFolderOf(const std::string& journalPath) {
    return PathNames::parentFolder(PathNames::parentFolder(journalPath));
}

} // namespace brevant::put_back
