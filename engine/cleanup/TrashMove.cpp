#include "TrashMove.hpp"

#include "engine/cleanup/ExecutorTexts.hpp"

#include <cerrno>

namespace brevant {

namespace {

namespace sentences = executor_texts;

TrashMove::Result failedMove(const TrashError& error) {
    return {.outcome = ItemOutcome::failed(sentences::trashRefused(error.code, error.description))};
}

TrashMove::Result verified(const Trasher& trasher, const std::string& path,
                           const FileSnapshot& expected, const std::string& trashPath) {
    auto moved = FileSnapshot::read(trashPath);
    if (!moved) {
        return {.outcome = ItemOutcome::unknown(std::string(sentences::kGoneFromTrash))};
    }
    if (moved->isRegularFile && !moved->isSymbolicLink && TrashMove::sameFile(*moved, expected)) {
        return {.outcome = ItemOutcome::movedToTrash(trashPath, moved->identity),
                .trashed = moved->identity};
    }
    if (trasher.putBack(trashPath, path)) {
        return {.outcome = ItemOutcome::skipped(std::string(sentences::kChangedWhileMoving))};
    }
    return {.outcome = ItemOutcome::movedToTrash(trashPath, moved->identity),
            .note = std::string(sentences::kChangedKeptInTrash),
            .trashed = moved->identity};
}

} // namespace

bool TrashMove::sameFile(const FileSnapshot& now, const FileSnapshot& planned) {
    return planned.isRegularFile && !planned.isSymbolicLink && now.identity == planned.identity &&
           now.size == planned.size && now.modifiedSeconds == planned.modifiedSeconds &&
           now.modifiedNanoseconds == planned.modifiedNanoseconds;
}

TrashMove::Result TrashMove::run(const Trasher& trasher, const std::string& path,
                                 const FileSnapshot& expected, const WriteIntent& writeIntent) {
    constexpr int kAttempts = 16;
    auto reserved = trasher.reserve(path);
    if (!reserved) {
        if (!writeIntent(std::nullopt)) {
            return {};
        }
        return failedMove(reserved.error());
    }
    for (int attempt = 1;; ++attempt) {
        if (!writeIntent(*reserved)) {
            return {};
        }
        auto moved = trasher.moveInto(path, *reserved);
        if (moved) {
            return verified(trasher, path, expected, *reserved);
        }
        if (moved.error().code != EEXIST || attempt == kAttempts) {
            return failedMove(moved.error());
        }
        reserved = trasher.reserve(path);
        if (!reserved) {
            return failedMove(reserved.error());
        }
    }
}

} // namespace brevant
