#include "CatalogMarkCommand.hpp"

#include "app/cli/CatalogText.hpp"
#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CatalogKinds.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/support/Json.hpp"

#include <CLI/CLI.hpp>
#include <expected>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

using catalog_text::failed;

// The plan the suggestions make: in every group the copies the keeper
// policy does not keep, leaving out locked ones.
struct Suggested {
    std::optional<CleanupPlan> plan;
    std::string text;
    std::string refusal;
};

Suggested suggestedPlan(ReviewSession& session, std::string_view home) {
    Suggested suggested;
    if (session.markAllSuggested() == 0) {
        return suggested;
    }
    for (const auto& group : session.groups()) {
        auto suggestion = session.suggestion(group);
        for (const auto& member : group.members) {
            if (suggestion && member.path == suggestion->keeperID) {
                suggested.text += fmt::format("Keep {}   ({})\n", shownPath(member.path, home),
                                              suggestion->reason);
            }
        }
        for (const auto& member : group.members) {
            if (session.isMarked(member.path)) {
                suggested.text += "  mark" + catalog_text::memberLine(member, home);
            }
        }
    }
    auto plan = CleanupPlanner::plan(session);
    if (!plan) {
        suggested.refusal = plan.error().description();
        return suggested;
    }
    suggested.plan = std::move(*plan);
    return suggested;
}

std::string markedText(const CatalogKindTexts& texts, const CatalogMarkOutcome& marked,
                       std::string_view home) {
    std::string text;
    std::size_t count = marked.marked.size();
    if (count == 0) {
        text += "Nothing was marked.\n";
    } else {
        text += texts.markedText(catalog_text::counted(count)) + "\n";
    }
    for (const auto& skipped : marked.skipped) {
        text += fmt::format("Skipped {}: {}\n", skipped.name, skipped.reason);
    }
    if (!marked.record) {
        return text;
    }
    text += fmt::format("Backup: {}\n", shownPath(marked.record->backupPath, home));
    text += fmt::format("Undo with: brevant catalog undo {}\n", marked.record->id.text());
    text += texts.finishNote;
    return text + "\n";
}

json::Json markedDocument(const CatalogMarkOutcome& marked) {
    json::Json skipped = json::Json::array();
    for (const auto& one : marked.skipped) {
        skipped.push_back({{"name", json::text(one.name)}, {"reason", one.reason}});
    }
    return {{"record", marked.record ? marked.record->record : json::Json()},
            {"marked", json::textList(marked.marked)},
            {"skipped", skipped}};
}

} // namespace

std::string_view CatalogMarkCommand::summary() const {
    return "Mark the suggested extra copies in the catalog, for deleting them in its application";
}

std::vector<std::string> CatalogMarkCommand::synopsis() const {
    return {"brevant catalog mark [--yes] [--dry-run] [--json] CATALOG"};
}

void CatalogMarkCommand::define(CLI::App& app) {
    app.add_flag("--yes", yes_, "Mark without asking");
    app.add_flag("--dry-run", dryRun_, "Show what would be marked and stop");
    addJson(app, json_, "Print the result as JSON");
    required(app.add_option("CATALOG", catalog_, catalog_text::catalogArgument()),
             "no catalog given");
}

int CatalogMarkCommand::run(const Environment& environment) {
    auto located = catalog_text::located(environment, catalog_);
    if (!located) {
        return ExitStatus::kNothingScanned;
    }
    std::string catalog = *located;
    auto locks = std::make_shared<LockStore>(platform::DataFolder::current().lockStore());
    ScanRequest request{.source = ScanSource::ofCatalog(catalog),
                        .notDuplicates = platform::DataFolder::current().notDuplicates(),
                        .review = ReviewRules{.locks = std::move(locks)}};
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto outcome = ScanPipeline().run(request, environment.cancellation(),
                                      [&line](const PipelineProgress& now) { line.show(now); });
    line.clear();
    if (!outcome) {
        fmt::print(environment.err, "brevant: {}: {}\n", shownPath(catalog, environment.home),
                   outcome.error());
        return ExitStatus::kNothingScanned;
    }
    std::optional<CatalogSource::Facts> facts = outcome->catalog;
    if (outcome->cancelled() || !facts || !outcome->session) {
        fmt::print(environment.out, "cancelled\n");
        return ExitStatus::kCancelled;
    }
    // Said before the plan, since no plan could be carried out; a dry run
    // still shows what would be marked.
    if (facts->untested && !dryRun_) {
        return failed(environment, *facts->untested);
    }
    Suggested suggested = suggestedPlan(*outcome->session, environment.home);
    if (!suggested.refusal.empty()) {
        return failed(environment, suggested.refusal);
    }
    if (!suggested.plan) {
        fmt::print(environment.out, "Nothing to mark: no copy in this catalog is a duplicate "
                                    "that could go.\n");
        return ExitStatus::kSuccess;
    }
    const CleanupPlan& plan = *suggested.plan;
    const CatalogKindTexts& texts = CatalogKindTexts::of(facts->application);
    if (json_ && dryRun_) {
        fmt::print(environment.out, "{}\n", json::Json::parse(plan.encoded()).dump(2));
        return ExitStatus::kSuccess;
    }
    fmt::print(json_ ? environment.err : environment.out, "{}", suggested.text);
    if (dryRun_) {
        return ExitStatus::kSuccess;
    }
    if (!yes_) {
        if (!environment.interactive) {
            return failed(environment, "nothing was marked: there is no terminal to ask on, and "
                                       "--yes was not given");
        }
        if (!confirm(texts.questionText(catalog_text::counted(plan.removals.size())),
                     environment.in, environment.err, environment.cancellation())) {
            fmt::print(environment.out, "Nothing was marked.\n");
            return ExitStatus::kCancelled;
        }
    }
    CleanupApproval approval{plan.id, Date::now()};
    auto marked = CatalogKinds(platform::DataFolder::current(), waitingOn(environment))
                      .mark(facts->application, plan, approval, catalog, Date::now());
    if (!marked) {
        if (marked.error().kind == CatalogRefusal::Kind::changesBusy) {
            fmt::print(environment.err, "brevant catalog mark: {}\n", marked.error().text());
            return ExitStatus::kFailed;
        }
        return failed(environment, marked.error().text());
    }
    if (json_) {
        fmt::print(environment.out, "{}\n", markedDocument(*marked).dump(2));
    } else {
        fmt::print(environment.out, "{}", markedText(texts, *marked, environment.home));
    }
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
