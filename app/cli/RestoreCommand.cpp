#include "RestoreCommand.hpp"

#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/CleanupHistory.hpp"
#include "app/cli/CompressionHistory.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/compression/CompressionJournal.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/PathText.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>

namespace brevant::cli {

namespace {

using Json = nlohmann::ordered_json;
using Kind = RestoreOutcome::Kind;

// What became of one picture asked for.
struct Answer {
    std::string path;
    // A RestoreOutcome kind, or "alreadyBack", "notMoved", "notInCleanup",
    // "unknown", "notAttempted".
    std::string outcome;
    std::string message;
    // Where the picture is now, when it is back.
    std::string restoredAt;

    [[nodiscard]] bool isBack() const {
        return outcome == rawValue(Kind::restored) || outcome == "alreadyBack";
    }
};

Answer answerOf(const std::string& path, const RestoreOutcome& outcome,
                const Environment& environment) {
    std::string name = PathNames::lastComponent(path);
    Answer answer{.path = path,
                  .outcome = std::string(rawValue(outcome.kind)),
                  .message = outcome.message(shownPath(name, environment.home),
                                             shownPath(outcome.path, environment.home))};
    if (outcome.kind == Kind::restored) {
        answer.restoredAt = outcome.path;
    } else if (outcome.kind == Kind::occupied) {
        answer.message += " (--beside puts it back under another name.)";
    }
    return answer;
}

// What a kind of run calls its files and itself.
struct RunWords {
    std::string_view file;
    std::string_view run;
};

constexpr RunWords wordsOf(const ItemReport* /*item*/) {
    return {"picture", "cleanup"};
}

constexpr RunWords wordsOf(const CompressionItemReport* /*item*/) {
    return {"file", "compression"};
}

const std::string& pathOf(const ItemReport& item) {
    return item.removal.path;
}

const std::string& pathOf(const CompressionItemReport& item) {
    return item.item.path;
}

// Why a file named by the user is not put back from this run; nothing when
// it is in the Trash.
template <class Item>
std::optional<Answer> notPossible(const std::string& path, const Item* item,
                                  const Environment& environment) {
    RunWords words = wordsOf(item);
    if (item == nullptr) {
        return Answer{.path = path,
                      .outcome = "notInCleanup",
                      .message =
                          fmt::format("This {} is not part of this {}.", words.file, words.run)};
    }
    switch (item->outcome.kind) {
    case ItemOutcome::Kind::movedToTrash:
        return std::nullopt;
    case ItemOutcome::Kind::restored:
        return Answer{.path = path,
                      .outcome = "alreadyBack",
                      .message = "It was put back already, at " +
                                 shownPath(item->outcome.text, environment.home) + ".",
                      .restoredAt = item->outcome.text};
    case ItemOutcome::Kind::unknown:
        return Answer{.path = path, .outcome = "unknown", .message = item->outcome.text};
    case ItemOutcome::Kind::skipped:
    case ItemOutcome::Kind::failed:
        return Answer{.path = path,
                      .outcome = "notMoved",
                      .message = fmt::format("This {} did not move it to the Trash: {}", words.run,
                                             item->outcome.text)};
    }
    return std::nullopt;
}

template <class Report>
auto itemAt(const Report& report, const std::string& path) ->
    typename decltype(Report::items)::const_pointer {
    for (const auto& item : report.items) {
        if (pathOf(item) == path) {
            return &item;
        }
    }
    return nullptr;
}

// A picture put back now is named in its sentence already.
void print(const Answer& answer, const Environment& environment) {
    if (answer.outcome == rawValue(Kind::restored)) {
        fmt::print(environment.out, "{}\n", answer.message);
        return;
    }
    fmt::print(environment.out, "{}: {}\n", shownPath(answer.path, environment.home),
               answer.message);
}

// The answers and the requests for the files of a run, from --all or the
// paths given.
template <class Report>
void choose(const Report& report, bool all, const std::vector<std::string>& paths,
            const Environment& environment, std::vector<Answer>& answers,
            std::vector<PutBackRequest::Item>& requests) {
    if (all) {
        for (const auto& item : report.items) {
            const auto kind = item.outcome.kind;
            const std::string& path = pathOf(item);
            if (kind == ItemOutcome::Kind::movedToTrash) {
                requests.push_back({path, path});
            } else if (kind == ItemOutcome::Kind::unknown) {
                // Never passed over in silence: its place is not known.
                answers.push_back(*notPossible(path, &item, environment));
            }
        }
    }
    for (const auto& given : paths) {
        std::string path = PathRules::standardized(given);
        if (auto answer = notPossible(path, itemAt(report, path), environment)) {
            answers.push_back(std::move(*answer));
        } else {
            requests.push_back({path, path});
        }
    }
}

} // namespace

std::string_view RestoreCommand::summary() const {
    return "Put back what a cleanup or a compression moved to the Trash";
}

std::vector<std::string> RestoreCommand::synopsis() const {
    return {"brevant restore [--beside] [--json] ID PATH...",
            "brevant restore [--beside] [--json] ID --all"};
}

void RestoreCommand::define(CLI::App& app) {
    required(
        app.add_option("ID", id_, "The cleanup's or compression's id, or its first characters"),
        "no cleanup id given ('brevant history' lists them)");
    auto* paths = app.add_option("PATH", paths_, "The pictures to put back, by their old paths");
    app.add_flag("--all", all_, "Put back every picture the cleanup moved")->excludes(paths);
    app.add_flag("--beside", beside_,
                 "Put a picture whose place is taken back under a free name beside it");
    addJson(app, json_, "Print each picture's outcome as JSON");
}

int RestoreCommand::run(const Environment& environment) {
    if (paths_.empty() && !all_) {
        fmt::print(environment.err, "brevant restore: name the pictures to put back, or --all\n");
        return ExitStatus::kUsage;
    }
    // Held from before the journal is read, so that what it says is still
    // so when the pictures move.
    auto held = takeChangeLock(environment, "restore");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto data = platform::DataFolder::current();
    auto history = CleanupHistory::read(data.cleanups());
    auto report = history.find(id_);
    std::optional<CompressionReport> compression;
    if (!report) {
        auto compressions = CompressionHistory::read(data.compressions());
        auto found = compressions.find(id_);
        if (!found) {
            bool none = report.error().starts_with("no cleanup");
            fmt::print(environment.err, "brevant restore: {}\n",
                       none ? found.error() : report.error());
            return ExitStatus::kUsage;
        }
        compression = std::move(*found);
    }

    std::vector<Answer> answers;
    std::vector<PutBackRequest::Item> requests;
    if (compression) {
        choose(*compression, all_, paths_, environment, answers, requests);
    } else {
        choose(*report, all_, paths_, environment, answers, requests);
    }

    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    PutBackRequest batch{.journalPath =
                             compression ? compression->journalPath : report->journalPath,
                         .requests = requests,
                         .besideWhenOccupied = beside_,
                         .held = &*held};
    auto progress = [&line](int done, int total) { line.show("Putting back", done, total); };
    auto results =
        compression
            ? PutBack<CompressionJournalKind>::restore(batch, environment.cancellation(), progress)
            : Restorer::restore(batch, environment.cancellation(), progress);
    line.clear();
    if (!results) {
        fmt::print(environment.err, "brevant restore: {}\n", results.error());
        return ExitStatus::kFailed;
    }
    std::set<std::string> attempted;
    for (const auto& result : *results) {
        attempted.insert(result.itemID);
        answers.push_back(answerOf(result.itemID, result.outcome, environment));
        if (result.companion) {
            answers.back().message += " " + *result.companion;
        }
    }
    for (const auto& request : requests) {
        if (!attempted.contains(request.itemID)) {
            answers.push_back({.path = request.itemID,
                               .outcome = "notAttempted",
                               .message = "Not put back: stopped before reaching it."});
        }
    }
    Uuid planID = compression ? compression->planID : report->planID;

    bool allBack = std::ranges::all_of(answers, &Answer::isBack);
    if (json_) {
        Json items = Json::array();
        for (const auto& answer : answers) {
            Json item{{"path", path_text::encode(answer.path)},
                      {"outcome", answer.outcome},
                      {"message", answer.message}};
            if (!answer.restoredAt.empty()) {
                item["restoredAt"] = path_text::encode(answer.restoredAt);
            }
            items.push_back(std::move(item));
        }
        Json document{{"id", planID.text()}, {"items", std::move(items)}};
        fmt::print(environment.out, "{}\n", document.dump(2));
        return allBack ? ExitStatus::kSuccess : ExitStatus::kFailed;
    }
    if (answers.empty()) {
        fmt::print(environment.out, "{}\n",
                   compression ? "Nothing to put back: this compression has no original in the "
                                 "Trash."
                               : "Nothing to put back: this cleanup has no picture in the Trash.");
    }
    for (const auto& answer : answers) {
        print(answer, environment);
    }
    return allBack ? ExitStatus::kSuccess : ExitStatus::kFailed;
}

} // namespace brevant::cli
