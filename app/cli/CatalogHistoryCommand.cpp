#include "CatalogHistoryCommand.hpp"

#include "app/cli/CatalogText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CatalogKinds.hpp"
#include "engine/support/IsoDate.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace brevant::cli {

std::string_view CatalogHistoryCommand::summary() const {
    return "List earlier markings, newest first";
}

std::vector<std::string> CatalogHistoryCommand::synopsis() const {
    return {"brevant catalog history [--json]"};
}

void CatalogHistoryCommand::define(CLI::App& app) {
    addJson(app, json_, "Print the markings as JSON");
}

int CatalogHistoryCommand::run(const Environment& environment) {
    auto markings = CatalogKinds(platform::DataFolder::current()).history();
    if (json_) {
        json::Json list = json::Json::array();
        for (const auto& marking : markings) {
            list.push_back({{"application", CatalogKindTexts::of(marking.application).key},
                            {"record", marking.record}});
        }
        fmt::print(environment.out, "{}\n", list.dump(2));
        return ExitStatus::kSuccess;
    }
    if (markings.empty()) {
        fmt::print(environment.out, "No markings yet.\n");
    }
    for (const auto& marking : markings) {
        const CatalogKindTexts& texts = CatalogKindTexts::of(marking.application);
        fmt::print(environment.out, "{}  {}  {}  {}  {}{}\n", marking.id.text(),
                   iso_date::text(marking.date), texts.name,
                   texts.doneText(catalog_text::counted(marking.count)),
                   shownPath(marking.catalogPath, environment.home),
                   marking.restored ? "  (undone)" : "");
    }
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
