#include "CatalogMarkCommand.hpp"

#include "app/cli/CatalogText.hpp"
#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/support/Json.hpp"

#include <CLI/CLI.hpp>
#include <expected>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

using Application = CatalogSource::Application;
using catalog_text::failed;
using catalog_text::plural;

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

// What a marking did, the same for both catalogs.
struct Marked {
    std::optional<Uuid> record;
    std::string backup;
    std::vector<std::string> marked;
    std::vector<SkippedMark> skipped;
    json::Json document;
};

template <class Report> Marked markedOf(const Report& report) {
    Marked marked{.marked = report.marked, .skipped = report.skipped};
    if (const auto& record = report.record) {
        marked.record = record->id;
        marked.backup = record->backupPath;
        marked.document = json::Json(*record);
    }
    return marked;
}

std::expected<Marked, std::string> markCatalog(Application application, const CleanupPlan& plan,
                                               const std::string& catalog) {
    CleanupApproval approval{plan.id, Date::now()};
    if (application == Application::lightroom) {
        LightroomRejecter rejecter{LightroomRejecter::defaultRecordDirectory()};
        auto report = rejecter.mark(plan, approval, catalog, Date::now());
        if (!report) {
            return std::unexpected(report.error().text());
        }
        return markedOf(*report);
    }
    CaptureOneMarker marker{CaptureOneMarker::defaultRecordDirectory()};
    auto report = marker.mark(plan, approval, catalog, Date::now());
    if (!report) {
        return std::unexpected(report.error().text());
    }
    return markedOf(*report);
}

std::string markedText(Application application, const Marked& marked, std::string_view home) {
    std::string text;
    std::size_t count = marked.marked.size();
    if (count == 0) {
        text += "Nothing was marked.\n";
    } else if (application == Application::lightroom) {
        text += fmt::format("Marked {} {} Rejected in Lightroom Classic.\n", count,
                            plural(count, "photo", "photos"));
    } else {
        text += fmt::format("Tagged {} {} Red in Capture One.\n", count,
                            plural(count, "photo", "photos"));
    }
    for (const auto& skipped : marked.skipped) {
        text += fmt::format("Skipped {}: {}\n", skipped.name, skipped.reason);
    }
    if (!marked.record) {
        return text;
    }
    text += fmt::format("Backup: {}\n", shownPath(marked.backup, home));
    text += fmt::format("Undo with: brevant catalog undo {}\n", marked.record->text());
    text += application == Application::lightroom ? LightroomRejecter::kFreedNothing
                                                  : CaptureOneMarker::kFinishNote;
    return text + "\n";
}

json::Json markedDocument(const Marked& marked) {
    json::Json skipped = json::Json::array();
    for (const auto& one : marked.skipped) {
        skipped.push_back({{"name", json::text(one.name)}, {"reason", one.reason}});
    }
    return {{"record", marked.record ? marked.document : json::Json()},
            {"marked", json::textList(marked.marked)},
            {"skipped", skipped}};
}

std::string question(Application application, std::size_t count) {
    return application == Application::lightroom
               ? fmt::format("Mark {} {} Rejected in Lightroom Classic? [y/N]", count,
                             plural(count, "photo", "photos"))
               : fmt::format("Tag {} {} Red in Capture One? [y/N]", count,
                             plural(count, "photo", "photos"));
}

} // namespace

std::string_view CatalogMarkCommand::summary() const {
    return "Mark the suggested extra copies Rejected (Lightroom) or Red (Capture One)";
}

std::vector<std::string> CatalogMarkCommand::synopsis() const {
    return {"brevant catalog mark [--yes] [--dry-run] [--json] CATALOG"};
}

void CatalogMarkCommand::define(CLI::App& app) {
    app.add_flag("--yes", yes_, "Mark without asking");
    app.add_flag("--dry-run", dryRun_, "Show what would be marked and stop");
    addJson(app, json_, "Print the result as JSON");
    required(
        app.add_option("CATALOG", catalog_, "The catalog: a .lrcat file or a .cocatalog package"),
        "no catalog given");
}

int CatalogMarkCommand::run(const Environment& environment) {
    std::string catalog = catalog_text::absolute(catalog_);
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
        if (!confirm(question(facts->application, plan.removals.size()), environment.in,
                     environment.err, environment.cancellation())) {
            fmt::print(environment.out, "Nothing was marked.\n");
            return ExitStatus::kCancelled;
        }
    }
    auto held = takeChangeLock(environment, "catalog mark");
    if (!held) {
        return ExitStatus::kFailed;
    }
    auto marked = markCatalog(facts->application, plan, catalog);
    if (!marked) {
        return failed(environment, marked.error());
    }
    if (json_) {
        fmt::print(environment.out, "{}\n", markedDocument(*marked).dump(2));
    } else {
        fmt::print(environment.out, "{}",
                   markedText(facts->application, *marked, environment.home));
    }
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
