#include "CatalogScanCommand.hpp"

#include "app/cli/CatalogText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/DataFolder.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

namespace brevant::cli {

namespace {

using catalog_text::plural;

// "3 similar groups at Balanced", and the identical groups beside them
// when there are any.
std::string found(const ScanOutcome& outcome) {
    auto count = [&outcome](MatchKind kind) {
        return static_cast<std::size_t>(
            std::ranges::count(outcome.groups, kind, &DuplicateGroup::kind));
    };
    std::size_t identical = count(MatchKind::identical);
    std::string identicalText =
        fmt::format("{} identical {}", identical, plural(identical, "group", "groups"));
    const ScanMode& mode = outcome.request.mode;
    if (!outcome.index || !mode.measures()) {
        return identicalText;
    }
    std::string what = mode.kind == ScanMode::Kind::series
                           ? fmt::format("{} series", count(MatchKind::series))
                           : fmt::format("{} similar {} at {}", count(MatchKind::similar),
                                         plural(count(MatchKind::similar), "group", "groups"),
                                         displayName(mode.preset));
    return identical > 0 ? what + ", " + identicalText : what;
}

// A count with the photos it counts, each on its own line as a group lists
// its members; nothing when there are none.
std::string listed(std::string_view heading, const std::vector<std::string>& paths,
                   std::string_view home) {
    if (paths.empty()) {
        return {};
    }
    std::string text = fmt::format("{}: {}\n", heading, paths.size());
    for (const auto& path : paths) {
        text += fmt::format("  {}\n", shownPath(path, home));
    }
    return text;
}

// Files the catalog lists and that are there, but could not be compared,
// by reason.
std::string otherSkipped(const ScanResult& result, const CatalogSource::Facts& facts,
                         std::string_view home) {
    std::set<std::string_view> gone(facts.missing.begin(), facts.missing.end());
    gone.insert(facts.notConnected.begin(), facts.notConnected.end());
    std::map<SkipReason, std::vector<std::string>> byReason;
    for (const auto& file : result.skipped) {
        if (!gone.contains(file.path)) {
            byReason[file.reason].push_back(file.path);
        }
    }
    std::string text;
    for (const auto& [reason, paths] : byReason) {
        text += listed(title(reason), paths, home);
    }
    return text;
}

std::string summaryText(const ScanOutcome& outcome, std::string_view home) {
    const ScanResult& result = *outcome.result;
    CatalogSource::Facts facts = outcome.catalog.value_or(CatalogSource::Facts{});
    std::string text =
        fmt::format("\n{} {} in the catalog, {} examined, {}\n", facts.photos,
                    plural(facts.photos, "photo", "photos"), result.examined, found(outcome));
    text += listed("Not where the catalog says", facts.missing, home);
    text += listed("On a drive that is not connected", facts.notConnected, home);
    text += otherSkipped(result, facts, home);
    text +=
        listed(CatalogSource::alreadyMarkedHeading(facts.application), facts.alreadyMarked, home);
    if (result.cancelled) {
        text += "cancelled\n";
    }
    return text;
}

// The whole result as JSON: the groups the review holds, and every picture
// measured when the mode measured them.
std::string document(const ScanOutcome& outcome) {
    ScanResult result = *outcome.result;
    result.groups = outcome.groups;
    if (outcome.index) {
        result.pictures = outcome.index->pictures;
    }
    return result.encoded(2);
}

} // namespace

std::string_view CatalogScanCommand::summary() const {
    return "Find duplicates among the catalog's photos; changes nothing";
}

std::vector<std::string> CatalogScanCommand::synopsis() const {
    return {"brevant catalog scan [--similar [PRESET] | --series] [--json] CATALOG"};
}

void CatalogScanCommand::define(CLI::App& app) {
    auto* similar = addSimilar(app, similar_,
                               "Other versions of the same photo, at this preset (default: "
                               "balanced)");
    app.add_flag("--series", series_, "Bursts of shots taken seconds apart")->excludes(similar);
    addJson(app, json_, "Print the whole result as JSON");
    required(app.add_option("CATALOG", catalog_, catalog_text::catalogArgument()),
             "no catalog given");
}

int CatalogScanCommand::run(const Environment& environment) {
    auto located = catalog_text::located(environment, catalog_);
    if (!located) {
        return ExitStatus::kNothingScanned;
    }
    std::string catalog = *located;
    ScanRequest request{.source = ScanSource::ofCatalog(catalog),
                        .featureCache = platform::DataFolder::current().featureCache(),
                        .notDuplicates = platform::DataFolder::current().notDuplicates()};
    if (auto preset = fromRawValue<SimilarityPreset>(similar_)) {
        request.mode = ScanMode::similar(*preset);
    } else if (series_) {
        request.mode = ScanMode::series();
    }
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto outcome = ScanPipeline().run(request, environment.cancellation(),
                                      [&line](const PipelineProgress& now) { line.show(now); });
    line.clear();
    if (!outcome) {
        fmt::print(environment.err, "brevant: {}: {}\n", shownPath(catalog, environment.home),
                   outcome.error());
        return ExitStatus::kNothingScanned;
    }
    if (json_) {
        fmt::print(environment.out, "{}\n", document(*outcome));
    } else {
        fmt::print(environment.out, "{}{}", catalog_text::groups(outcome->groups, environment.home),
                   summaryText(*outcome, environment.home));
    }
    std::fflush(environment.out);
    return outcome->cancelled() ? ExitStatus::kCancelled : ExitStatus::kSuccess;
}

} // namespace brevant::cli
