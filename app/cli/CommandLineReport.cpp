#include "CommandLineReport.hpp"

#include "engine/scan/PathRules.hpp"
#include "engine/support/PathText.hpp"

#include <algorithm>
#include <fmt/format.h>

namespace brevant {

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
        if (auto preset = fromRawValue<SimilarityPreset>(request.folders.front())) {
            request.preset = *preset;
            request.folders.erase(request.folders.begin());
        }
    }
    return request;
}

std::string CommandLineReport::shownPath(const std::string& path, const std::string& home) {
    if (!home.empty() && home != "/" && PathRules::isInside(path, home)) {
        return path_text::display("~" + path.substr(home.size()));
    }
    return path_text::display(path);
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

} // namespace brevant
