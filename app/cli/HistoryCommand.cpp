#include "HistoryCommand.hpp"

#include "app/cli/CleanupHistory.hpp"
#include "app/cli/CleanupText.hpp"
#include "app/cli/CompressionHistory.hpp"
#include "app/cli/CompressionText.hpp"
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

Json compressionsJson(const std::vector<CompressionReport>& reports, bool full) {
    Json list = Json::array();
    for (const auto& report : reports) {
        list.push_back(full ? compression_text::reportJson(report)
                            : compression_text::historyJson(report));
    }
    return list;
}

} // namespace

std::string_view HistoryCommand::summary() const {
    return "List earlier cleanups and compressions, or show one with each file's outcome";
}

std::vector<std::string> HistoryCommand::synopsis() const {
    return {"brevant history [--json] [ID]"};
}

void HistoryCommand::define(CLI::App& app) {
    addJson(app, json_, "Print the cleanups and compressions as JSON");
    app.add_option("ID", id_, "A cleanup's or compression's id, or its first characters");
}

int HistoryCommand::run(const Environment& environment) {
    auto data = platform::DataFolder::current();
    auto history = CleanupHistory::read(data.cleanups());
    auto compressions = CompressionHistory::read(data.compressions());
    std::optional<CleanupReport> chosen;
    std::optional<CompressionReport> chosenCompression;
    if (!id_.empty()) {
        auto found = history.find(id_);
        if (found) {
            chosen = std::move(*found);
        } else if (auto compression = compressions.find(id_); compression) {
            chosenCompression = std::move(*compression);
        } else {
            bool none = found.error().starts_with("no cleanup");
            fmt::print(environment.err, "brevant history: {}\n",
                       none ? compression.error() : found.error());
            return ExitStatus::kUsage;
        }
    }
    if (json_) {
        return printJson(environment, history, compressions, chosen, chosenCompression);
    }
    for (const auto& report : history.recovered) {
        fmt::print(environment.out, "{}\n", cleanup_text::report(report, environment.home));
    }
    for (const auto& report : compressions.recovered) {
        fmt::print(environment.out, "{}\n", compression_text::report(report, environment.home));
    }
    if (chosen) {
        fmt::print(environment.out, "{}  {}\n{}", cleanup_text::localDate(chosen->started),
                   chosen->planID.text(), cleanup_text::report(*chosen, environment.home));
        return ExitStatus::kSuccess;
    }
    if (chosenCompression) {
        fmt::print(environment.out, "{}  {}\n{}",
                   cleanup_text::localDate(chosenCompression->started),
                   chosenCompression->planID.text(),
                   compression_text::report(*chosenCompression, environment.home));
        return ExitStatus::kSuccess;
    }
    fmt::print(environment.out, "{}\n", journal_texts::historyCaption());
    if (history.all.empty()) {
        fmt::print(environment.out, "No cleanups yet.\n");
    }
    for (const auto& report : history.all) {
        fmt::print(environment.out, "{}\n", cleanup_text::historyLine(report));
    }
    // Compressions are listed once there is one, below the cleanups.
    if (!compressions.all.empty()) {
        fmt::print(environment.out, "Compressions:\n");
    }
    for (const auto& report : compressions.all) {
        fmt::print(environment.out, "{}\n", compression_text::historyLine(report));
    }
    return ExitStatus::kSuccess;
}

int HistoryCommand::printJson(const Environment& environment, const CleanupHistory& history,
                              const CompressionHistory& compressions,
                              const std::optional<CleanupReport>& chosen,
                              const std::optional<CompressionReport>& chosenCompression) {
    Json document{{"recovered", listJson(history.recovered, true)}};
    if (!compressions.recovered.empty()) {
        document["recoveredCompressions"] = compressionsJson(compressions.recovered, true);
    }
    if (chosen) {
        document["cleanup"] = cleanup_text::reportJson(*chosen);
    } else if (chosenCompression) {
        document["compression"] = compression_text::reportJson(*chosenCompression);
    } else {
        document["cleanups"] = listJson(history.all, false);
        document["compressions"] = compressionsJson(compressions.all, false);
    }
    fmt::print(environment.out, "{}\n", document.dump(2));
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
