#include "CatalogUndoCommand.hpp"

#include "app/cli/CatalogText.hpp"
#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CatalogKinds.hpp"

#include <CLI/CLI.hpp>
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
    auto id = Uuid::parse(record_);
    std::expected<std::optional<CatalogKinds::Undone>, CatalogRefusal> undone = std::nullopt;
    if (id) {
        undone = CatalogKinds(platform::DataFolder::current(), waitingOn(environment)).undo(*id);
    }
    if (!undone) {
        if (undone.error().kind == CatalogRefusal::Kind::changesBusy) {
            fmt::print(environment.err, "brevant catalog undo: {}\n", undone.error().text());
            return ExitStatus::kFailed;
        }
        return catalog_text::failed(environment, undone.error().text());
    }
    if (!*undone) {
        fmt::print(environment.err,
                   "brevant catalog undo: no marking has the id '{}'\nTry 'brevant catalog "
                   "history' to list them.\n",
                   record_);
        return ExitStatus::kUsage;
    }
    if ((*undone)->already) {
        fmt::print(environment.out, "That marking was undone already.\n");
        return ExitStatus::kSuccess;
    }
    const CatalogMarkingEntry& marking = (*undone)->marking;
    const CatalogKindTexts& texts = CatalogKindTexts::of(marking.application);
    fmt::print(environment.out, "Undone: the photos still {} in {} have their earlier {} back.\n",
               texts.stillMarked, shownPath(marking.catalogPath, environment.home),
               texts.givenBack);
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
