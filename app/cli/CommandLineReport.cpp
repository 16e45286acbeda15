#include "CommandLineReport.hpp"

#include "app/cli/Interrupts.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/pipeline/ScanPipeline.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/similarity/QualityHints.hpp"

#include <algorithm>
#include <fmt/format.h>

namespace brevant::cli {

std::optional<SimilarityPreset> CommandLineReport::presetNamed(std::string_view word) {
    return fromRawValue<SimilarityPreset>(word);
}

std::optional<CommandLineReport::Request>
CommandLineReport::parse(const std::vector<std::string>& arguments) {
    Request request;
    // The similar mode wins wherever it stands, and its position decides
    // where the folders start.
    auto flag = std::ranges::find(arguments, "--similar");
    if (flag == arguments.end()) {
        flag = std::ranges::find(arguments, "--series");
        if (flag == arguments.end()) {
            return std::nullopt;
        }
        request.mode = Mode::series;
    }
    auto end = std::find_if(flag + 1, arguments.end(),
                            [](const std::string& argument) { return argument.starts_with('-'); });
    request.folders.assign(flag + 1, end);
    if (!request.folders.empty()) {
        if (auto preset = presetNamed(request.folders.front())) {
            request.preset = *preset;
            request.folders.erase(request.folders.begin());
        }
    }
    return request;
}

std::optional<int> CommandLineReport::runIfAsked(const std::vector<std::string>& arguments) {
    auto request = parse(arguments);
    if (!request) {
        return std::nullopt;
    }
    return run(*request, stdout, isTerminal(stderr));
}

int CommandLineReport::run(const Request& request, std::FILE* out, bool progress) {
    ScanRequest scan{.source = ScanSource::ofFolders(request.folders),
                     .mode = request.mode == Mode::similar ? ScanMode::similar(request.preset)
                                                           : ScanMode::series(),
                     .notDuplicates = platform::DataFolder::current().notDuplicates()};
    std::expected<ScanOutcome, std::string> outcome;
    {
        CancellationFlag cancel;
        InterruptWatcher watcher(cancel, kCancelled);
        ProgressLine line(stderr, progress, &cancel);
        outcome = ScanPipeline().run(scan, cancel,
                                     [&line](const PipelineProgress& now) { line.show(now); });
    }
    // Only stopping ends a scan of folders early: a folder it cannot use is
    // left out on its own.
    if (!outcome || outcome->cancelled() || !outcome->index) {
        fmt::print(out, "cancelled\n");
        return kCancelled;
    }

    const SimilarityIndex& index = *outcome->index;
    std::vector<DuplicateGroup> groups = outcome->found();
    std::unordered_map<std::string, std::string> hints;
    std::unordered_map<std::string, int> scores;
    for (const auto& group : groups) {
        hints.merge(QualityHints::hints(group, index));
        scores.merge(QualityHints::scores(group, index));
    }
    fmt::print(out, "{}", render(request, groups, index, hints, scores, platform::homeFolder()));
    std::fflush(out);
    return kSuccess;
}

std::string CommandLineReport::render(const Request& request,
                                      const std::vector<DuplicateGroup>& groups,
                                      const SimilarityIndex& index,
                                      const std::unordered_map<std::string, std::string>& hints,
                                      const std::unordered_map<std::string, int>& scores,
                                      const std::string& home) {
    std::string out;
    for (const auto& group : groups) {
        out += fmt::format("{}: {} photos\n", rawValue(group.kind), group.members.size());
        for (const auto& member : group.members) {
            out += "  " + shownPath(member.path, home);
            if (std::string turned = group.orientationOf(member.path).words(); !turned.empty()) {
                out += "   " + turned;
            }
            if (auto score = scores.find(member.path); score != scores.end()) {
                out += fmt::format("   quality {}", score->second);
            }
            if (auto hint = hints.find(member.path); hint != hints.end()) {
                out += fmt::format("   [{}]", hint->second);
            }
            out += "\n";
        }
    }
    auto measured =
        std::ranges::count_if(index.features, [](const auto& f) { return f.has_value(); });
    std::string what = request.mode == Mode::similar
                           ? fmt::format("similar groups at {}", displayName(request.preset))
                           : std::string("series");
    out += fmt::format("\n{} pictures measured, {} close pairs, {} {}\n", measured,
                       index.pairs.size(), groups.size(), what);
    return out;
}

} // namespace brevant::cli
