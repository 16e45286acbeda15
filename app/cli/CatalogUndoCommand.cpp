#include "CatalogUndoCommand.hpp"

#include "app/cli/CatalogMarking.hpp"
#include "app/cli/CatalogText.hpp"
#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>

namespace brevant::cli {

std::string_view CatalogUndoCommand::summary() const {
    return "Undo one marking";
}

std::vector<std::string> CatalogUndoCommand::synopsis() const {
    return {"brevant catalog undo RECORD"};
}

void CatalogUndoCommand::define(CLI::App& app) {
    required(app.add_option("RECORD", record_, "The marking's id, as history shows it"),
             "no record given");
}

int CatalogUndoCommand::run(const Environment& environment) {
    // Held from before the records are read, so that no other run undoes
    // the same marking meanwhile.
    auto held = takeChangeLock(environment, "catalog undo");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto id = Uuid::parse(record_);
    auto markings = CatalogMarking::all();
    auto found = std::ranges::find_if(
        markings, [&id](const CatalogMarking& marking) { return id && marking.id() == *id; });
    if (found == markings.end()) {
        fmt::print(environment.err,
                   "brevant catalog undo: no marking has the id '{}'\nTry 'brevant catalog "
                   "history' to list them.\n",
                   record_);
        return ExitStatus::kUsage;
    }
    if (found->restored()) {
        fmt::print(environment.out, "That marking was undone already.\n");
        return ExitStatus::kSuccess;
    }
    std::string refusal = found->undo();
    if (!refusal.empty()) {
        return catalog_text::failed(environment, refusal);
    }
    bool lightroom = found->application() == CatalogSource::Application::lightroom;
    fmt::print(environment.out, "Undone: the photos still {} in {} have their earlier {} back.\n",
               lightroom ? "Rejected" : "tagged Red", shownPath(found->catalog(), environment.home),
               lightroom ? "flags" : "tags and dates");
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
