#include "Restorer.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/PathNames.hpp"
#include "engine/support/Texts.hpp"
#include "engine/support/Uuid.hpp"

#include <cerrno>
#include <cmath>
#include <fmt/format.h>

namespace brevant {

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

std::optional<std::string> recordedTrashPath(const PlannedRemoval& removal,
                                             const std::string& journalPath) {
    auto parsed = CleanupJournal::parse(journalPath);
    if (!parsed) {
        return std::nullopt;
    }
    auto recorded = parsed->outcomes.find(removal.path);
    if (recorded == parsed->outcomes.end() ||
        recorded->second.outcome.kind != ItemOutcome::Kind::movedToTrash) {
        return std::nullopt;
    }
    return recorded->second.outcome.trashPath;
}

} // namespace

RestoreOutcome Restorer::attempt(const PlannedRemoval& removal,
                                 const std::optional<std::string>& trashPath,
                                 const std::string& destination) {
    if (!trashPath) {
        return RestoreOutcome::notInTrash();
    }
    auto trashed = FileSnapshot::read(*trashPath);
    if (!trashed || trashed->identity != removal.snapshot.identity) {
        return RestoreOutcome::notInTrash();
    }
    std::string folder = PathNames::parentFolder(destination);
    if (!platform::isDirectory(folder)) {
        return RestoreOutcome::failed(
            fmt::format("Its folder, {}, is not there any more \u2014 perhaps its drive is not "
                        "connected",
                        folder));
    }
    auto moved = platform::FreedesktopTrash::putBack(*trashPath, destination);
    if (!moved) {
        if (moved.error() == EEXIST) {
            return RestoreOutcome::occupied(destination);
        }
        return RestoreOutcome::failed(platform::errorText(moved.error()));
    }
    return RestoreOutcome::restored(destination);
}

RestoreOutcome Restorer::restore(const PlannedRemoval& removal, const std::string& journalPath,
                                 const std::string& destination, Date now) {
    RestoreOutcome outcome = attempt(removal, recordedTrashPath(removal, journalPath), destination);
    if (outcome.kind == RestoreOutcome::Kind::restored) {
        (void)CleanupJournal::append(journalPath, ItemOutcome::restored(outcome.path), removal.path,
                                     now);
    } else if (auto note = noteFor(outcome, now)) {
        (void)CleanupJournal::note(journalPath, removal.path, *note, now);
    }
    return outcome;
}

std::optional<std::string> Restorer::noteFor(const RestoreOutcome& outcome, Date when) {
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

std::string Restorer::alternativePath(const std::string& path) {
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

std::string Restorer::generalNote() {
    return fmt::format("Space is freed when you empty the Trash. An emptied Trash cannot be "
                       "undone by {}.",
                       texts::kApplication);
}

} // namespace brevant
