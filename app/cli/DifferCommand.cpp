#include "DifferCommand.hpp"

#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/CleanupText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/review/NotDuplicateStore.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/PathText.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

namespace brevant::cli {

namespace {

std::string storePath() {
    return platform::DataFolder::current().notDuplicates();
}

// When the store cannot be read: says so, with how to set it aside.
bool refuseDamaged(const NotDuplicateStore& store, const Environment& environment) {
    auto damage = store.damage();
    if (!damage) {
        return false;
    }
    fmt::print(environment.err,
               "brevant differ: {}\nTo set it aside and start with no such decisions: brevant "
               "differ --reset\n",
               NotDuplicateStore::damageMessage(shownPath(storePath(), environment.home), *damage));
    return true;
}

std::string shownPhotos(const NotDuplicateStore::Decision& decision, const std::string& home) {
    std::vector<std::string> shown;
    shown.reserve(decision.photos.size());
    for (const auto& photo : decision.photos) {
        shown.push_back(shownPath(photo.path, home));
    }
    return fmt::format("{}", fmt::join(shown, "\n    "));
}

} // namespace

std::string_view DifferCommand::summary() const {
    return "Say that pictures are different photos, never to be grouped again";
}

std::vector<std::string> DifferCommand::synopsis() const {
    return {"brevant differ PATH PATH...", "brevant differ --list [--json]",
            "brevant differ --forget ID", "brevant differ --reset"};
}

void DifferCommand::define(CLI::App& app) {
    app.add_option("PATH", paths_, "The pictures that are different photos");
    auto* list = app.add_flag("--list", list_, "List what was said, oldest first");
    auto* json = addJson(app, json_, "Print the list as JSON");
    json->needs(list);
    auto* forget = app.add_option("--forget", forget_, "Forget the decision with this number");
    auto* reset =
        app.add_flag("--reset", reset_,
                     "Move a \"not duplicates\" file that cannot be read aside, starting anew");
    list->excludes(forget)->excludes(reset);
    forget->excludes(reset);
}

int DifferCommand::run(const Environment& environment) {
    bool other = list_ || reset_ || forget_ != 0;
    if (other && !paths_.empty()) {
        fmt::print(environment.err, "brevant differ: give either pictures or one option\n");
        return ExitStatus::kUsage;
    }
    if (list_) {
        return list(environment);
    }
    if (reset_) {
        return reset(environment);
    }
    if (forget_ != 0) {
        return forget(environment);
    }
    return declare(environment);
}

int DifferCommand::declare(const Environment& environment) const {
    if (paths_.size() < 2) {
        fmt::print(environment.err, "brevant differ: give two or more pictures\n");
        return ExitStatus::kUsage;
    }
    auto held = takeChangeLock(environment, "differ");
    if (!held) {
        return ExitStatus::kFailed;
    }
    NotDuplicateStore store(storePath());
    if (refuseDamaged(store, environment)) {
        return ExitStatus::kFailed;
    }
    auto decision = store.declare(paths_);
    if (!decision) {
        fmt::print(environment.err, "brevant differ: {}\n", decision.error());
        return ExitStatus::kUsage;
    }
    fmt::print(environment.out,
               "Different photos ({}), never grouped together again:\n    {}\nTo undo: brevant "
               "differ --forget {}\n",
               decision->id, shownPhotos(*decision, environment.home), decision->id);
    return ExitStatus::kSuccess;
}

int DifferCommand::list(const Environment& environment) const {
    NotDuplicateStore store(storePath());
    if (refuseDamaged(store, environment)) {
        return ExitStatus::kFailed;
    }
    auto decisions = store.all();
    if (json_) {
        nlohmann::ordered_json array = nlohmann::ordered_json::array();
        for (const auto& decision : decisions) {
            nlohmann::ordered_json photos = nlohmann::ordered_json::array();
            for (const auto& photo : decision.photos) {
                photos.push_back({{"path", path_text::encode(photo.path)},
                                  {"sha256", photo.sha256},
                                  {"size", photo.size}});
            }
            array.push_back({{"id", decision.id},
                             {"created", iso_date::text(decision.created)},
                             {"photos", std::move(photos)}});
        }
        fmt::print(environment.out, "{}\n", array.dump(2));
        return ExitStatus::kSuccess;
    }
    if (decisions.empty()) {
        fmt::print(environment.out, "No pictures were said to be different photos.\n");
    }
    for (const auto& decision : decisions) {
        fmt::print(environment.out, "{}  {}\n    {}\n", decision.id,
                   cleanup_text::localDate(decision.created),
                   shownPhotos(decision, environment.home));
    }
    return ExitStatus::kSuccess;
}

int DifferCommand::forget(const Environment& environment) const {
    auto held = takeChangeLock(environment, "differ");
    if (!held) {
        return ExitStatus::kFailed;
    }
    NotDuplicateStore store(storePath());
    if (refuseDamaged(store, environment)) {
        return ExitStatus::kFailed;
    }
    auto forgotten = store.forget(forget_);
    if (!forgotten) {
        fmt::print(environment.err, "brevant differ: {}\n", forgotten.error());
        return ExitStatus::kUsage;
    }
    fmt::print(environment.out, "Forgotten ({}); these may be grouped again:\n    {}\n",
               forgotten->id, shownPhotos(*forgotten, environment.home));
    return ExitStatus::kSuccess;
}

int DifferCommand::reset(const Environment& environment) const {
    auto held = takeChangeLock(environment, "differ");
    if (!held) {
        return ExitStatus::kFailed;
    }
    NotDuplicateStore store(storePath());
    if (!store.damage()) {
        fmt::print(environment.out,
                   "The \"not duplicates\" file can be read; nothing was moved.\n");
        return ExitStatus::kSuccess;
    }
    auto aside = store.setAside();
    if (!aside) {
        fmt::print(environment.err, "brevant differ: {}\n", aside.error());
        return ExitStatus::kFailed;
    }
    fmt::print(environment.out,
               "The \"not duplicates\" file was moved aside to {}; no pictures are said to be "
               "different photos now.\n",
               shownPath(*aside, environment.home));
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
