#include "LockCommands.hpp"

#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/CleanupText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/PathText.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace brevant::cli {

namespace {

// The copy at the path as the scan would see it: its standardized path and,
// when something is there, the file's identity (never through a final link).
PhotoAsset copyAt(const std::string& given) {
    PhotoAsset asset;
    asset.path = PathRules::standardized(given);
    if (auto snapshot = FileSnapshot::read(asset.path)) {
        asset.snapshot = *snapshot;
    }
    return asset;
}

// Why the copy cannot be locked; nothing when it can.
std::optional<std::string> lockRefusal(const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot) {
        return "no such file";
    }
    if (snapshot->isSymbolicLink) {
        return "a symbolic link; lock the file it leads to";
    }
    if (!snapshot->isRegularFile) {
        return "not a file; lock pictures one by one, or keep a whole folder with "
               "'brevant clean --protect'";
    }
    return std::nullopt;
}

} // namespace

std::shared_ptr<LockStore> openLockStore() {
    return std::make_shared<LockStore>(platform::DataFolder::current().lockStore());
}

bool refuseDamaged(const LockStore& store, const Environment& environment,
                   std::string_view command) {
    auto damage = store.damage();
    if (!damage) {
        return false;
    }
    std::string path = store.path().value_or(platform::DataFolder::current().lockStore());
    fmt::print(environment.err,
               "brevant {}: {}\nTo set it aside and start with no locks: brevant "
               "locks --reset\n",
               command, LockStore::damageMessage(shownPath(path, environment.home), *damage));
    return true;
}

std::string_view LockCommand::summary() const {
    return "Always keep these copies, in this scan and later ones";
}

std::vector<std::string> LockCommand::synopsis() const {
    return {"brevant lock PATH..."};
}

void LockCommand::define(CLI::App& app) {
    required(app.add_option("PATH", paths_, "The pictures to keep"), "no picture given");
}

int LockCommand::run(const Environment& environment) {
    std::vector<PhotoAsset> copies;
    bool refused = false;
    for (const auto& given : paths_) {
        PhotoAsset copy = copyAt(given);
        if (auto refusal = lockRefusal(copy.path)) {
            fmt::print(environment.err, "brevant lock: {}: {}\n",
                       shownPath(copy.path, environment.home), *refusal);
            refused = true;
        }
        copies.push_back(std::move(copy));
    }
    if (refused) {
        fmt::print(environment.err, "brevant lock: nothing was locked\n");
        return ExitStatus::kUsage;
    }
    auto held = takeChangeLock(environment, "lock");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto store = openLockStore();
    if (refuseDamaged(*store, environment, "lock")) {
        return ExitStatus::kFailed;
    }
    for (const auto& copy : copies) {
        bool already = store->isLocked(copy);
        store->add(copy);
        fmt::print(environment.out, "{} {}\n",
                   already ? "Already locked:" : "Locked:", shownPath(copy.path, environment.home));
    }
    return ExitStatus::kSuccess;
}

std::string_view UnlockCommand::summary() const {
    return "Let these copies be marked again";
}

std::vector<std::string> UnlockCommand::synopsis() const {
    return {"brevant unlock PATH..."};
}

void UnlockCommand::define(CLI::App& app) {
    required(app.add_option("PATH", paths_, "The pictures to unlock"), "no picture given");
}

int UnlockCommand::run(const Environment& environment) {
    auto held = takeChangeLock(environment, "unlock");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto store = openLockStore();
    if (refuseDamaged(*store, environment, "unlock")) {
        return ExitStatus::kFailed;
    }
    for (const auto& given : paths_) {
        PhotoAsset copy = copyAt(given);
        bool locked = store->isLocked(copy);
        if (locked) {
            store->remove(copy);
        }
        fmt::print(environment.out, "{} {}\n", locked ? "Unlocked:" : "Was not locked:",
                   shownPath(copy.path, environment.home));
    }
    return ExitStatus::kSuccess;
}

std::string_view LocksCommand::summary() const {
    return "List the copies that are always kept";
}

std::vector<std::string> LocksCommand::synopsis() const {
    return {"brevant locks [--json]", "brevant locks --reset"};
}

void LocksCommand::define(CLI::App& app) {
    auto* json = addJson(app, json_, "Print the locks as JSON");
    app.add_flag("--reset", reset_,
                 "Move a lock file that cannot be read aside and start with no locks")
        ->excludes(json);
}

int LocksCommand::reset(const Environment& environment) const {
    auto held = takeChangeLock(environment, "locks");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto store = openLockStore();
    if (!store->damage()) {
        fmt::print(environment.out, "The lock file can be read; nothing was moved.\n");
        return ExitStatus::kSuccess;
    }
    auto aside = store->setAside();
    if (!aside) {
        fmt::print(environment.err, "brevant locks: {}\n", aside.error());
        return ExitStatus::kFailed;
    }
    fmt::print(environment.out, "The lock file was moved aside to {}; no copy is locked now.\n",
               shownPath(*aside, environment.home));
    return ExitStatus::kSuccess;
}

int LocksCommand::run(const Environment& environment) {
    if (reset_) {
        return reset(environment);
    }
    auto store = openLockStore();
    if (refuseDamaged(*store, environment, "locks")) {
        return ExitStatus::kFailed;
    }
    auto locks = store->all();
    if (json_) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const auto& lock : locks) {
            list.push_back({{"path", path_text::encode(lock.path)},
                            {"created", iso_date::text(lock.created)}});
        }
        fmt::print(environment.out, "{}\n", list.dump(2));
        return ExitStatus::kSuccess;
    }
    if (locks.empty()) {
        fmt::print(environment.out, "No copy is locked.\n");
    }
    for (const auto& lock : locks) {
        fmt::print(environment.out, "{}  {}\n", cleanup_text::localDate(lock.created),
                   shownPath(lock.path, environment.home));
    }
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
