#include "CatalogCommand.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/CaptureOneScanner.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/catalogs/LightroomScanner.hpp"
#include "engine/cleanup/CleanupPlanner.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/similarity/SimilarityMatcher.hpp"
#include "engine/similarity/SimilarityPreset.hpp"
#include "engine/similarity/SimilarityThresholds.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/Json.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <expected>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <variant>

namespace brevant::cli {

namespace {

enum class Kind {
    lightroom,
    captureOne,
};

const char* plural(std::size_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

std::optional<Kind> kindOf(const std::string& path) {
    std::string name = path;
    while (name.size() > 1 && name.ends_with('/')) {
        name.pop_back();
    }
    name = std::filesystem::path(name).extension().string();
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
    if (name == ".lrcat") {
        return Kind::lightroom;
    }
    if (name == ".cocatalog") {
        return Kind::captureOne;
    }
    return std::nullopt;
}

std::string_view applicationName(Kind kind) {
    return kind == Kind::lightroom ? "Lightroom Classic" : "Capture One";
}

std::string absolute(const std::string& path) {
    std::error_code error;
    auto made = std::filesystem::absolute(path, error);
    return error ? path : made.lexically_normal().string();
}

int failed(const Environment& environment, std::string_view message) {
    fmt::print(environment.err, "brevant: {}\n", message);
    return ExitStatus::kFailed;
}

struct Scanned {
    Kind kind = Kind::lightroom;
    std::size_t photos = 0;
    ScanResult result;
    // The refusal to mark a catalog of a version marking was not tested
    // with; reading and scanning it are fine.
    std::optional<std::string> untested;
};

std::expected<Scanned, std::string> scanCatalog(const std::string& path, bool keepPictures,
                                                const Environment& environment) {
    auto kind = kindOf(path);
    if (!kind) {
        return std::unexpected(std::string("That is not a Lightroom Classic catalog (.lrcat) or a "
                                           "Capture One catalog (.cocatalog)."));
    }
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto progress = [&line](const ScanProgress& now) { line.show(now); };
    Scanned scanned{.kind = *kind};
    if (*kind == Kind::lightroom) {
        auto catalog = LightroomCatalog::read(path);
        if (!catalog) {
            return std::unexpected(catalog.error().text());
        }
        scanned.photos = catalog->photos.size();
        if (!catalog->isTestedVersion()) {
            scanned.untested = LightroomRefusal::untestedVersion(catalog->schemaVersion).text();
        }
        scanned.result =
            LightroomScanner::scan(*catalog, keepPictures, environment.cancellation(), progress);
    } else {
        auto catalog = CaptureOneCatalog::read(path);
        if (!catalog) {
            return std::unexpected(catalog.error().text());
        }
        scanned.photos = catalog->photos.size();
        if (!catalog->isTestedVersion()) {
            scanned.untested = CaptureOneRefusal::untestedVersion(catalog->schemaVersion).text();
        }
        scanned.result =
            CaptureOneScanner::scan(*catalog, keepPictures, environment.cancellation(), progress);
    }
    line.clear();
    return scanned;
}

std::string captureOneWork(const CaptureOneRef& ref) {
    std::vector<std::string> phrases;
    if (ref.isEdited) {
        phrases.emplace_back("edited");
    }
    if (ref.variants > 1) {
        phrases.push_back(fmt::format("{} variants", ref.variants));
    }
    if (ref.rating > 0) {
        phrases.push_back(ref.rating == 1 ? "1 star" : fmt::format("{} stars", ref.rating));
    }
    for (int tag : ref.colorTags) {
        if (auto color = CaptureOneCatalog::colorName(tag); color && !color->empty()) {
            phrases.push_back(fmt::format("tagged {}", *color));
        }
    }
    if (ref.albums > 0) {
        phrases.push_back(ref.albums == 1 ? "in an album"
                                          : fmt::format("in {} albums", ref.albums));
    }
    if (ref.keywords > 0) {
        phrases.emplace_back("has keywords");
    }
    return fmt::format("{}", fmt::join(phrases, ", "));
}

std::string memberLine(const PhotoAsset& member, std::string_view home) {
    std::string line = "  " + shownPath(member.path, home);
    if (std::string work = CatalogCommand::work(member); !work.empty()) {
        line += fmt::format("   [{}]", work);
    }
    return line + "\n";
}

std::string groupsText(const std::vector<DuplicateGroup>& groups, std::string_view home) {
    std::string text;
    for (const auto& group : groups) {
        text += fmt::format("{}: {} photos\n", rawValue(group.kind), group.members.size());
        for (const auto& member : group.members) {
            text += memberLine(member, home);
        }
    }
    return text;
}

std::string summaryText(const Scanned& scanned, std::string_view what) {
    const ScanResult& result = scanned.result;
    std::string text = fmt::format("\n{} {} in the catalog, {} examined, {} {}\n", scanned.photos,
                                   plural(scanned.photos, "photo", "photos"), result.examined,
                                   result.groups.size(), what);
    if (!result.skipped.empty()) {
        text += fmt::format("Not where the catalog says: {}\n", result.skipped.size());
    }
    if (scanned.kind == Kind::lightroom && result.lightroomRejected > 0) {
        text +=
            fmt::format("Already Rejected in Lightroom Classic: {}\n", result.lightroomRejected);
    }
    if (scanned.kind == Kind::captureOne && result.captureOneRed > 0) {
        text += fmt::format("Already tagged Red in Capture One: {}\n", result.captureOneRed);
    }
    if (result.cancelled) {
        text += "cancelled\n";
    }
    return text;
}

// Similar groups or series among the catalog's photos; nothing when
// cancelled.
std::optional<std::vector<DuplicateGroup>> similarGroups(ScanResult& result,
                                                         std::optional<SimilarityPreset> preset,
                                                         const Environment& environment) {
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    int total = static_cast<int>(result.pictures.size());
    auto index = SimilarityMatcher::index(
        std::move(result.pictures), nullptr, false, environment.cancellation(),
        [&line, total](int done) { line.show(ScanProgress::Stage::measuring, done, total); });
    line.clear();
    if (!index) {
        return std::nullopt;
    }
    result.pictures = index->pictures;
    return preset ? index->groups(*preset)
                  : index->series(3.0, SimilarityThresholds::kSeriesRelated);
}

// One marking of either catalog, as history and undo show it.
struct Marking {
    std::variant<LightroomMarkRecord, CaptureOneMarkRecord> record;

    [[nodiscard]] Kind kind() const {
        return std::holds_alternative<LightroomMarkRecord>(record) ? Kind::lightroom
                                                                   : Kind::captureOne;
    }

    [[nodiscard]] Uuid id() const {
        return std::visit([](const auto& one) { return one.id; }, record);
    }

    [[nodiscard]] Date date() const {
        return std::visit([](const auto& one) { return one.date; }, record);
    }

    [[nodiscard]] std::size_t count() const {
        return std::visit([](const auto& one) { return one.marked.size(); }, record);
    }

    [[nodiscard]] bool restored() const {
        return std::visit([](const auto& one) { return one.restored; }, record);
    }

    [[nodiscard]] std::string catalog() const {
        return std::visit([](const auto& one) { return one.catalogPath; }, record);
    }

    [[nodiscard]] json::Json document() const {
        return {{"application", kind() == Kind::lightroom ? "lightroomClassic" : "captureOne"},
                {"record", std::visit([](const auto& one) { return json::Json(one); }, record)}};
    }

    // The refusal's text; empty when the marking was undone.
    [[nodiscard]] std::string undo() const {
        if (const auto* lightroom = std::get_if<LightroomMarkRecord>(&record)) {
            auto restored =
                LightroomRejecter{LightroomRejecter::defaultRecordDirectory()}.restore(*lightroom);
            return restored ? "" : restored.error().text();
        }
        const auto& captureOne = std::get<CaptureOneMarkRecord>(record);
        auto restored =
            CaptureOneMarker{CaptureOneMarker::defaultRecordDirectory()}.restore(captureOne);
        return restored ? "" : restored.error().text();
    }
};

std::vector<Marking> allMarkings() {
    std::vector<Marking> markings;
    for (auto& record : LightroomRejecter{LightroomRejecter::defaultRecordDirectory()}.history()) {
        markings.push_back({std::move(record)});
    }
    for (auto& record : CaptureOneMarker{CaptureOneMarker::defaultRecordDirectory()}.history()) {
        markings.push_back({std::move(record)});
    }
    std::ranges::stable_sort(markings, std::ranges::greater(), &Marking::date);
    return markings;
}

// The plan the suggestions make: in every group the copies the keeper
// policy does not keep, leaving out locked ones.
struct Suggested {
    std::optional<CleanupPlan> plan;
    std::string text;
    std::string refusal;
};

Suggested suggestedPlan(const ScanResult& result, std::string_view home) {
    auto locks = std::make_shared<LockStore>(platform::DataFolder::current().lockStore());
    ReviewSession session(result.groups, locks, {}, {});
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
                suggested.text += "  mark" + memberLine(member, home);
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

std::expected<Marked, std::string> markCatalog(Kind kind, const CleanupPlan& plan,
                                               const std::string& catalog) {
    CleanupApproval approval{plan.id, Date::now()};
    if (kind == Kind::lightroom) {
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

std::string markedText(Kind kind, const Marked& marked, std::string_view home) {
    std::string text;
    std::size_t count = marked.marked.size();
    if (count == 0) {
        text += "Nothing was marked.\n";
    } else if (kind == Kind::lightroom) {
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
    text +=
        kind == Kind::lightroom ? LightroomRejecter::kFreedNothing : CaptureOneMarker::kFinishNote;
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

} // namespace

std::string_view CatalogCommand::summary() const {
    return "Find duplicates in a Lightroom Classic or Capture One catalog and mark them there";
}

std::vector<std::string> CatalogCommand::synopsis() const {
    return {"brevant catalog scan [--similar PRESET | --series] [--json] CATALOG",
            "brevant catalog mark [--yes] [--dry-run] [--json] CATALOG",
            "brevant catalog history [--json]", "brevant catalog undo RECORD"};
}

void CatalogCommand::define(CLI::App& app) {
    const std::string catalogHelp = "The catalog: a .lrcat file or a .cocatalog package";
    CLI::App* scan = app.add_subcommand("scan", "Find duplicates among the catalog's photos; "
                                                "changes nothing");
    auto* similar =
        scan->add_option("--similar", similar_, "Other versions of the same photo, at this preset")
            ->type_name("PRESET")
            ->check(CLI::IsMember({"conservative", "balanced", "broad"}));
    scan->add_flag("--series", series_, "Bursts of shots taken seconds apart")->excludes(similar);
    addJson(*scan, json_, "Print the whole result as JSON");
    required(*scan, scan->add_option("CATALOG", catalog_, catalogHelp), "no catalog given");
    scan->callback([this] { action_ = Action::scan; });

    CLI::App* mark = app.add_subcommand(
        "mark", "Mark the suggested extra copies Rejected (Lightroom) or Red (Capture One)");
    mark->add_flag("--yes", yes_, "Mark without asking");
    mark->add_flag("--dry-run", dryRun_, "Show what would be marked and stop");
    addJson(*mark, json_, "Print the result as JSON");
    required(*mark, mark->add_option("CATALOG", catalog_, catalogHelp), "no catalog given");
    mark->callback([this] { action_ = Action::mark; });

    CLI::App* history = app.add_subcommand("history", "List earlier markings, newest first");
    addJson(*history, json_, "Print the markings as JSON");
    history->callback([this] { action_ = Action::history; });

    CLI::App* undo = app.add_subcommand("undo", "Undo one marking");
    required(*undo, undo->add_option("RECORD", record_, "The marking's id, as history shows it"),
             "no record given");
    undo->callback([this] { action_ = Action::undo; });
    app.require_subcommand(0, 1);
}

int CatalogCommand::run(const Environment& environment) {
    switch (action_) {
    case Action::scan:
        return scan(environment);
    case Action::mark:
        return mark(environment);
    case Action::history:
        return history(environment);
    case Action::undo:
        return undo(environment);
    case Action::none:
        break;
    }
    fmt::print(environment.err, "brevant catalog: no command given\nUsage:\n");
    for (const auto& line : synopsis()) {
        fmt::print(environment.err, "  {}\n", line);
    }
    fmt::print(environment.err, "Try 'brevant catalog --help' for more information.\n");
    return ExitStatus::kUsage;
}

std::string CatalogCommand::work(const PhotoAsset& asset) {
    if (asset.lightroom) {
        return asset.lightroom->workSummary();
    }
    if (asset.captureOne) {
        return captureOneWork(*asset.captureOne);
    }
    return {};
}

int CatalogCommand::scan(const Environment& environment) const {
    bool similar = !similar_.empty() || series_;
    std::string catalog = absolute(catalog_);
    auto scanned = scanCatalog(catalog, similar, environment);
    if (!scanned) {
        fmt::print(environment.err, "brevant: {}: {}\n", shownPath(catalog, environment.home),
                   scanned.error());
        return ExitStatus::kNothingScanned;
    }
    ScanResult& result = scanned->result;
    std::size_t count = result.groups.size();
    std::string what = fmt::format("identical {}", plural(count, "group", "groups"));
    if (similar && !result.cancelled) {
        auto preset = similar_.empty() ? std::nullopt : fromRawValue<SimilarityPreset>(similar_);
        auto groups = similarGroups(result, preset, environment);
        if (!groups) {
            result.cancelled = true;
        } else {
            result.groups = std::move(*groups);
            count = result.groups.size();
            what = preset ? fmt::format("similar {} at {}", plural(count, "group", "groups"),
                                        displayName(*preset))
                          : std::string("series");
        }
    }
    if (json_) {
        fmt::print(environment.out, "{}\n", result.encoded(2));
    } else {
        fmt::print(environment.out, "{}{}", groupsText(result.groups, environment.home),
                   summaryText(*scanned, what));
    }
    std::fflush(environment.out);
    return result.cancelled ? ExitStatus::kCancelled : ExitStatus::kSuccess;
}

int CatalogCommand::mark(const Environment& environment) const {
    std::string catalog = absolute(catalog_);
    auto scanned = scanCatalog(catalog, false, environment);
    if (!scanned) {
        fmt::print(environment.err, "brevant: {}: {}\n", shownPath(catalog, environment.home),
                   scanned.error());
        return ExitStatus::kNothingScanned;
    }
    if (scanned->result.cancelled) {
        fmt::print(environment.out, "cancelled\n");
        return ExitStatus::kCancelled;
    }
    // Said before the plan, since no plan could be carried out; a dry run
    // still shows what would be marked.
    if (scanned->untested && !dryRun_) {
        return failed(environment, *scanned->untested);
    }
    Kind kind = scanned->kind;
    Suggested suggested = suggestedPlan(scanned->result, environment.home);
    if (!suggested.refusal.empty()) {
        return failed(environment, suggested.refusal);
    }
    if (!suggested.plan) {
        fmt::print(environment.out, "Nothing to mark: no copy in this catalog is a duplicate "
                                    "that could go.\n");
        return ExitStatus::kSuccess;
    }
    const CleanupPlan& plan = *suggested.plan;
    std::size_t count = plan.removals.size();
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
        std::string question = kind == Kind::lightroom
                                   ? fmt::format("Mark {} {} Rejected in Lightroom Classic? [y/N]",
                                                 count, plural(count, "photo", "photos"))
                                   : fmt::format("Tag {} {} Red in Capture One? [y/N]", count,
                                                 plural(count, "photo", "photos"));
        if (!confirm(question, environment.in, environment.err, environment.cancellation())) {
            fmt::print(environment.out, "Nothing was marked.\n");
            return ExitStatus::kCancelled;
        }
    }
    auto marked = markCatalog(kind, plan, catalog);
    if (!marked) {
        return failed(environment, marked.error());
    }
    if (json_) {
        fmt::print(environment.out, "{}\n", markedDocument(*marked).dump(2));
    } else {
        fmt::print(environment.out, "{}", markedText(kind, *marked, environment.home));
    }
    return ExitStatus::kSuccess;
}

int CatalogCommand::history(const Environment& environment) const {
    auto markings = allMarkings();
    if (json_) {
        json::Json list = json::Json::array();
        for (const auto& marking : markings) {
            list.push_back(marking.document());
        }
        fmt::print(environment.out, "{}\n", list.dump(2));
        return ExitStatus::kSuccess;
    }
    if (markings.empty()) {
        fmt::print(environment.out, "No markings yet.\n");
    }
    for (const auto& marking : markings) {
        std::size_t count = marking.count();
        fmt::print(environment.out, "{}  {}  {}  {} {} {}  {}{}\n", marking.id().text(),
                   iso_date::text(marking.date()), applicationName(marking.kind()), count,
                   plural(count, "photo", "photos"),
                   marking.kind() == Kind::lightroom ? "marked Rejected" : "tagged Red",
                   shownPath(marking.catalog(), environment.home),
                   marking.restored() ? "  (undone)" : "");
    }
    return ExitStatus::kSuccess;
}

int CatalogCommand::undo(const Environment& environment) const {
    auto id = Uuid::parse(record_);
    auto markings = allMarkings();
    auto found = std::ranges::find_if(
        markings, [&id](const Marking& marking) { return id && marking.id() == *id; });
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
        return failed(environment, refusal);
    }
    fmt::print(environment.out, "Undone: the photos still {} in {} have their earlier {} back.\n",
               found->kind() == Kind::lightroom ? "Rejected" : "tagged Red",
               shownPath(found->catalog(), environment.home),
               found->kind() == Kind::lightroom ? "flags" : "tags and dates");
    return ExitStatus::kSuccess;
}

} // namespace brevant::cli
