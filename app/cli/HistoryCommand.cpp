#include "HistoryCommand.hpp"

#include "app/cli/CleanupHistory.hpp"
#include "app/cli/CleanupText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/platform/DataFolder.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

using Json = nlohmann::ordered_json;

Json listJson(const std::vector<CleanupReport>& reports, bool full) {
    Json list = Json::array();
    for (const auto& report : reports) {
        list.push_back(full ? cleanup_text::reportJson(report) : cleanup_text::historyJson(report));
    }
    return list;
}

} // namespace

std::string_view HistoryCommand::summary() const {
    return "List earlier cleanups, or show one with each picture's outcome";
}

std::vector<std::string> HistoryCommand::synopsis() const {
    return {"brevant history [--json] [ID]"};
}

void HistoryCommand::define(CLI::App& app) {
    addJson(app, json_, "Print the cleanups as JSON");
    app.add_option("ID", id_, "A cleanup's id, or its first characters");
}

int HistoryCommand::run(const Environment& environment) {
    auto history = CleanupHistory::read(platform::DataFolder::current().cleanups());
    std::optional<CleanupReport> chosen;
    if (!id_.empty()) {
        auto found = history.find(id_);
        if (!found) {
            fmt::print(environment.err, "brevant history: {}\n", found.error());
            return ExitStatus::kUsage;
        }
        chosen = std::move(*found);
    }
    if (json_) {
        Json document{{"recovered", listJson(history.recovered, true)}};
        if (chosen) {
            document["cleanup"] = cleanup_text::reportJson(*chosen);
        } else {
            document["cleanups"] = listJson(history.all, false);
        }
        fmt::print(environment.out, "{}\n", document.dump(2));
        return ExitStatus::kSuccess;
    }
    for (const auto& report : history.recovered) {
        fmt::print(environment.out, "{}\n", cleanup_text::report(report, environment.home));
    }
    if (chosen) {
        fmt::print(environment.out, "{}  {}\n{}", cleanup_text::localDate(chosen->started),
                   chosen->planID.text(), cleanup_text::report(*chosen, environment.home));
        return ExitStatus::kSuccess;
    }
    fmt::print(environment.out, "{}\n", journal_texts::historyCaption());
    if (history.all.empty()) {
        fmt::print(environment.out, "No cleanups yet.\n");
    }
    for (const auto& report : history.all) {
        fmt::print(environment.out, "{}\n", cleanup_text::historyLine(report));
    }
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
