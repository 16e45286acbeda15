#include "CleanCommand.hpp"

#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/CleanupText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/LockCommands.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/ScanCommand.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/UserFolders.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/RawValue.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <sys/stat.h>

namespace brevant::cli {

namespace {

using Json = nlohmann::ordered_json;
using Priority = KeeperPolicy::Priority;

// Folders named with --protect and --inbox must exist: a mistyped
// protected folder would leave the copies it was meant to keep unprotected.
CLI::Validator existingFolder() {
    return {[](std::string& folder) -> std::string {
                struct stat status{};
                if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
                    return "no such folder: " + folder;
                }
                return {};
            },
            "DIR"};
}

CLI::Validator priorityName() {
    return {[](std::string& name) -> std::string {
                if (fromRawValue<Priority>(name)) {
                    return {};
                }
                std::vector<std::string> names;
                names.reserve(EnumCases<Priority>::kAll.size());
                for (Priority priority : EnumCases<Priority>::kAll) {
                    names.emplace_back(rawValue(priority));
                }
                return fmt::format("unknown priority '{}' (choose from {})", name,
                                   fmt::join(names, ", "));
            },
            "NAME"};
}

// A folder as the scan writes paths, and where it really is when a link
// leads there: a copy is protected under either name.
std::vector<std::string> folderForms(const std::string& folder) {
    std::vector<std::string> forms{PathRules::standardized(folder)};
    if (auto real = platform::realPath(forms.front()); real && *real != forms.front()) {
        forms.push_back(*real);
    }
    return forms;
}

// The document `--json` prints: always the same keys, null where a step
// was not reached.
struct Outcome {
    Json document{{"resumed", nullptr},
                  {"plan", nullptr},
                  {"moved", false},
                  {"report", nullptr},
                  {"message", nullptr}};

    int end(const Environment& environment, bool json, const std::string& message, int status) {
        if (json) {
            if (!message.empty()) {
                document["message"] = message;
            }
            fmt::print(environment.out, "{}\n", document.dump(2));
        } else if (!message.empty()) {
            fmt::print(environment.out, "{}\n", message);
        }
        std::fflush(environment.out);
        return status;
    }
};

bool approved(const CleanupPlan& plan, bool yes, const Environment& environment,
              std::string& refusal) {
    if (yes) {
        return true;
    }
    if (!environment.interactive) {
        refusal = "Nothing was moved: there is no terminal to ask on, and --yes was not given.";
        return false;
    }
    if (!confirm(cleanup_text::question(plan), environment.in, environment.err,
                 environment.cancellation())) {
        refusal = "Nothing was moved.";
        return false;
    }
    return true;
}

// Takes back what the saved review decided, then the suggestions where it
// decided nothing: a group the user marked in or looked through is left as
// they left it. Answers how many copies are marked.
int markForCleanup(const ScanOutcome& scanned) {
    ReviewSession& session = *scanned.session;
    if (!scanned.resumed) {
        session.markAllSuggested();
        return static_cast<int>(session.marks().size());
    }
    for (const auto& group : session.groups()) {
        bool marked = std::ranges::any_of(
            group.members, [&](const PhotoAsset& copy) { return session.isMarked(copy.path); });
        if (!marked && !scanned.resumed->reviewed.contains(group.id)) {
            session.markSuggested(group);
        }
    }
    return static_cast<int>(session.marks().size());
}

Json resumedJson(const ResumedReview& resumed) {
    return {{"restored", resumed.restored},
            {"changed", resumed.changed},
            {"refused", resumed.refused},
            {"reviewedGroups", resumed.reviewed.size()}};
}

} // namespace

std::string_view CleanCommand::summary() const {
    return "Move the suggested extra copies to the Trash, under a journal";
}

std::vector<std::string> CleanCommand::synopsis() const {
    return {"brevant clean [--similar [PRESET] | --series | --live-photos] [--protect DIR]... "
            "[--inbox DIR]... [--priorities NAME,...] [--dry-run] [--yes] [--json] FOLDER..."};
}

void CleanCommand::define(CLI::App& app) {
    auto* similar = addSimilar(app, similar_,
                               "Also clean up other versions of a photo matched by appearance "
                               "(default preset: balanced)");
    auto* series = app.add_flag("--series", series_, "Also clean up bursts shot seconds apart")
                       ->excludes(similar);
    app.add_flag("--live-photos", livePhotos_,
                 "Only move the movie halves of Live Photos, keeping their photos as stills")
        ->excludes(similar)
        ->excludes(series);
    app.add_option("--protect", protect_, "Never move copies in this folder (repeatable)")
        ->check(existingFolder())
        ->allow_extra_args(false);
    app.add_option("--inbox", inbox_,
                   "A folder of new arrivals whose copies go first (repeatable; "
                   "default: the Downloads folder)")
        ->check(existingFolder())
        ->allow_extra_args(false);
    app.add_option("--priorities", priorities_,
                   "The keeper rules in the order to apply them, comma-separated")
        ->delimiter(',')
        ->check(priorityName())
        ->allow_extra_args(false);
    app.add_flag("--dry-run", dryRun_, "Show the plan and stop; nothing is moved");
    app.add_flag("--yes", yes_, "Move without asking");
    addJson(app, json_, "Print the plan and the report as JSON");
    addFolders(app, folders_, "The folders to clean up");
}

ScanRequest CleanCommand::request(std::shared_ptr<LockStore> locks) const {
    ScanRequest request{.source = ScanSource::ofFolders(folders_),
                        .featureCache = platform::DataFolder::current().featureCache(),
                        .notDuplicates = platform::DataFolder::current().notDuplicates(),
                        .savedReviews = platform::DataFolder::current().reviews(),
                        .review = ReviewRules{.locks = std::move(locks)}};
    if (!similar_.empty()) {
        request.mode = ScanMode::similar(
            fromRawValue<SimilarityPreset>(similar_).value_or(SimilarityPreset::balanced));
    } else if (series_) {
        request.mode = ScanMode::series();
    } else if (livePhotos_) {
        request.mode = ScanMode::livePhotos();
    }
    ReviewRules& rules = *request.review;
    for (const auto& folder : protect_) {
        std::ranges::copy(folderForms(folder),
                          std::inserter(rules.protectedRoots, rules.protectedRoots.end()));
    }
    if (inbox_.empty()) {
        rules.inboxFolders = {platform::downloadFolder()};
    }
    for (const auto& folder : inbox_) {
        std::ranges::copy(folderForms(folder), std::back_inserter(rules.inboxFolders));
    }
    if (!priorities_.empty()) {
        rules.priorities.clear();
        for (const auto& name : priorities_) {
            // Checked when the arguments were parsed.
            if (auto priority = fromRawValue<Priority>(name)) {
                rules.priorities.push_back(*priority);
            }
        }
    }
    return request;
}

int CleanCommand::run(const Environment& environment) {
    auto locks = openLockStore();
    // Locked copies cannot be told: no cleanup until the file is repaired.
    if (refuseDamaged(*locks, environment, "clean")) {
        return ExitStatus::kFailed;
    }
    ScanRequest scan = request(std::move(locks));
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto outcome = ScanPipeline().run(scan, environment.cancellation(),
                                      [&line](const PipelineProgress& now) { line.show(now); });
    line.clear();
    // Folders are refused one by one inside the scan, never all at once.
    if (!outcome) {
        return Outcome{}.end(environment, json_, outcome.error(), ExitStatus::kNothingScanned);
    }
    ScanCommand::reportRefused(*outcome->result, environment);
    if (outcome->result->roots.empty()) {
        return ExitStatus::kNothingScanned;
    }
    if (outcome->cancelled()) {
        return Outcome{}.end(environment, json_, "cancelled", ExitStatus::kCancelled);
    }
    return clean(*outcome, environment);
}

int CleanCommand::clean(ScanOutcome& scanned, const Environment& environment) const {
    Outcome outcome;
    ReviewSession& session = *scanned.session;
    if (scanned.resumed) {
        outcome.document["resumed"] = resumedJson(*scanned.resumed);
        if (std::string said = scanned.resumed->message(); !said.empty() && !json_) {
            fmt::print(environment.out, "{}\n", said);
        }
    }
    if (session.groups().empty()) {
        return outcome.end(environment, json_,
                           livePhotos_ ? "No Live Photo movies found: nothing to clean up."
                                       : "No extra copies found: nothing to clean up.",
                           ExitStatus::kSuccess);
    }
    if (markForCleanup(scanned) == 0) {
        return outcome.end(environment, json_, std::string(ReviewSession::kNothingMoreToMark),
                           ExitStatus::kSuccess);
    }
    auto plan = CleanupPlanner::plan(session);
    if (!plan) {
        return outcome.end(environment, json_, plan.error().description(), ExitStatus::kFailed);
    }
    outcome.document["plan"] = cleanup_text::planJson(*plan, session);
    if (!json_) {
        fmt::print(environment.out, "{}", cleanup_text::plan(*plan, session, environment.home));
        std::fflush(environment.out);
    }
    if (dryRun_) {
        return outcome.end(environment, json_, "Dry run: nothing was moved.", ExitStatus::kSuccess);
    }
    std::string refusal;
    if (!approved(*plan, yes_, environment, refusal)) {
        return outcome.end(environment, json_, refusal, ExitStatus::kCancelled);
    }

    CleanupExecutor executor(platform::DataFolder::current());
    executor.setWaiting(waitingOn(environment));
    auto total = static_cast<std::int64_t>(plan->removals.size());
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto report =
        executor.execute(*plan, CleanupApproval{.planID = plan->id, .approvedAt = Date::now()},
                         environment.cancellation(), [&line, total](int handled) {
                             line.show("Moving to the Trash", handled, total);
                         });
    line.clear();
    if (!report) {
        return outcome.end(environment, json_, report.error().message(), ExitStatus::kFailed);
    }
    if (scanned.resumed) {
        // The moved copies leave the saved review; what failed stays marked.
        static_cast<void>(ScanPipeline::saveReview(ScanPipeline::afterCleanup(scanned, *report),
                                                   scanned.resumed->reviewed));
    }
    outcome.document["moved"] = report->moved() > 0;
    outcome.document["report"] = cleanup_text::reportJson(*report);
    if (!json_) {
        fmt::print(environment.out, "\n{}", cleanup_text::report(*report, environment.home));
    }
    std::string putBack =
        report->moved() > 0
            ? fmt::format("To put them back: brevant restore {} --all", report->planID.text())
            : std::string();
    bool complete = report->failed() == 0 && report->unknown() == 0 &&
                    !environment.cancellation().isCancelled();
    return outcome.end(environment, json_, putBack,
                       complete ? ExitStatus::kSuccess : ExitStatus::kFailed);
}

} // namespace brevant::cli
