#include "Restorer.hpp"

#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FreedesktopTrash.hpp"
#include "engine/support/Texts.hpp"

#include <cerrno>
#include <fmt/format.h>

namespace brevant {

std::expected<std::vector<Restorer::Result>, std::string>
Restorer::restore(const Batch& batch, const CancellationFlag& cancel, const Progress& progress) {
    return PutBack<CleanupJournalKind>::restore(batch, cancel, progress);
}

RestoreOutcome Restorer::restore(const PlannedRemoval& removal, const std::string& journalPath,
                                 const std::string& destination, Date now) {
    Batch batch{.journalPath = journalPath, .requests = {{removal.path, destination}}, .now = now};
    CancellationFlag never;
    auto results = restore(batch, never);
    if (!results) {
        return RestoreOutcome::failed(results.error());
    }
    if (results->empty()) {
        return RestoreOutcome::notInTrash();
    }
    return results->front().outcome;
}

RestoreOutcome Restorer::attempt(const FileIdentity& trashed,
                                 const std::optional<std::string>& trashPath,
                                 const std::string& destination) {
    if (auto refused = put_back::precheck(trashed, trashPath, destination)) {
        return *refused;
    }
    if (!trashPath) {
        return RestoreOutcome::notInTrash();
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

std::optional<std::string> Restorer::noteFor(const RestoreOutcome& outcome, Date when) {
    return put_back::noteFor(outcome, when);
}

std::string Restorer::alternativePath(const std::string& path) {
    return put_back::alternativePath(path);
}

std::string Restorer::generalNote() {
    return fmt::format("Space is freed when you empty the Trash. An emptied Trash cannot be "
                       "undone by {}.",
                       texts::kApplication);
}

} // namespace brevant
