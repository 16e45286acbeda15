#include "ScanCommand.hpp"

#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/pipeline/ScanPipeline.hpp"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <map>

namespace brevant::cli {

namespace {

using Kind = ExcludedItem::Kind;

const char* plural(std::int64_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

// How each kind of excluded item is counted in the summary.
std::string_view excludedLabel(Kind kind) {
    switch (kind) {
    case Kind::managedLibrary:
        return "Photo libraries and catalogues, never opened";
    case Kind::package:
        return "Packages, which are one thing, not folders of photos";
    case Kind::unreadableFolder:
        return "Folders that could not be opened";
    case Kind::refusedRoot:
        return "Chosen folders that cannot be scanned";
    case Kind::overlappingRoot:
        return "Chosen folders inside another chosen folder";
    }
    return "Folders left out";
}

// A heading and how many items there are of each kind, in the order of the
// kinds; nothing when there are no items.
template <class Item, class Key, class Label>
void appendCounts(std::string& text, std::string_view heading, const std::vector<Item>& items,
                  Key Item::* key, Label label) {
    std::map<Key, int> counts;
    for (const auto& item : items) {
        counts[item.*key] += 1;
    }
    if (counts.empty()) {
        return;
    }
    text += fmt::format("{}:\n", heading);
    for (const auto& [kind, count] : counts) {
        text += fmt::format("  {}: {}\n", label(kind), count);
    }
}

} // namespace

std::string_view ScanCommand::summary() const {
    return "Find byte-identical copies of photos; changes nothing";
}

std::vector<std::string> ScanCommand::synopsis() const {
    return {"brevant scan [--live-photos] [--json] FOLDER..."};
}

void ScanCommand::define(CLI::App& app) {
    app.add_flag("--live-photos", livePhotos_,
                 "Find the movie halves of Live Photos instead of identical copies");
    addJson(app, json_, "Print the whole scan result as JSON");
    addFolders(app, folders_, "The folders to look in");
}

int ScanCommand::run(const Environment& environment) {
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    ScanRequest request{.source = ScanSource::ofFolders(folders_)};
    if (livePhotos_) {
        request.mode = ScanMode::livePhotos();
    }
    auto outcome = ScanPipeline().run(request, environment.cancellation(),
                                      [&line](const PipelineProgress& now) { line.show(now); });
    line.clear();
    // Folders are refused one by one inside the scan, never all at once.
    if (!outcome) {
        fmt::print(environment.err, "brevant: {}\n", outcome.error());
        return ExitStatus::kNothingScanned;
    }
    const ScanResult& result = *outcome->result;

    reportRefused(result, environment);
    if (json_) {
        fmt::print(environment.out, "{}\n", result.encoded(2));
    } else {
        fmt::print(environment.out, "{}", report(result, environment.home, livePhotos_));
    }
    std::fflush(environment.out);
    if (result.roots.empty()) {
        return ExitStatus::kNothingScanned;
    }
    return result.cancelled ? ExitStatus::kCancelled : ExitStatus::kSuccess;
}

void ScanCommand::reportRefused(const ScanResult& result, const Environment& environment) {
    for (const auto& item : result.excluded) {
        if (item.kind == Kind::refusedRoot) {
            fmt::print(environment.err, "brevant: {}: {}\n", shownPath(item.path, environment.home),
                       item.detail);
        }
    }
}

std::string ScanCommand::report(const ScanResult& result, std::string_view home, bool livePhotos) {
    std::string text;
    std::int64_t freed = 0;
    for (const auto& group : result.groups) {
        text += fmt::format("{}: {} photos\n", rawValue(group.kind), group.members.size());
        for (const auto& member : group.members) {
            text += fmt::format("  {}\n", shownPath(member.path, home));
        }
        // A Live Photo keeps its photo, however big its movie is.
        freed += group.extraBytes();
    }
    int found = result.discovered - result.otherFiles;
    auto groups = static_cast<std::int64_t>(result.groups.size());
    if (livePhotos) {
        text += fmt::format("\n{} {} found, {} examined, {} Live Photo {}; moving their movies to "
                            "the Trash would free {}\n",
                            found, plural(found, "picture", "pictures"), result.examined, groups,
                            plural(groups, "movie", "movies"), humanBytes(freed));
    } else {
        text += fmt::format("\n{} {} found, {} examined, {} identical {}; removing the extra "
                            "copies would free {}\n",
                            found, plural(found, "picture", "pictures"), result.examined, groups,
                            plural(groups, "group", "groups"), humanBytes(freed));
    }

    appendCounts(text, "Skipped", result.skipped, &SkippedFile::reason,
                 [](SkipReason reason) -> std::string_view { return title(reason); });
    appendCounts(text, "Excluded", result.excluded, &ExcludedItem::kind, excludedLabel);
    if (result.cancelled) {
        text += "cancelled\n";
    }
    return text;
}

} // namespace brevant::cli
