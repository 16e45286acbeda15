#include "ScanCommand.hpp"

#include "app/cli/Interrupts.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/scan/ExactMatcher.hpp"

#include <chrono>
#include <fmt/format.h>
#include <map>

namespace brevant::cli {

namespace {

using Kind = ExcludedItem::Kind;

struct Options {
    bool json = false;
    bool help = false;
    std::vector<std::string> folders;
};

// Nothing but the options when the arguments are right; otherwise the
// message that says what is wrong.
std::expected<Options, std::string> parse(const std::vector<std::string>& arguments) {
    Options options;
    bool optionsEnded = false;
    for (const auto& argument : arguments) {
        if (optionsEnded || !argument.starts_with("-") || argument == "-") {
            options.folders.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else {
            return std::unexpected(fmt::format("unknown option {}", argument));
        }
    }
    if (!options.help && options.folders.empty()) {
        return std::unexpected(std::string("no folder given"));
    }
    return options;
}

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

void printUsageError(std::FILE* err, std::string_view message) {
    fmt::print(err, "brevant scan: {}\n\nUsage:\n{}", message, ScanCommand::usage());
}

} // namespace

int ScanCommand::main(const std::vector<std::string>& arguments) {
    CancellationFlag cancel;
    InterruptWatcher watcher(cancel, kCancelled);
    Environment environment;
    environment.cancel = &cancel;
    environment.home = platform::homeFolder();
    environment.showProgress = isTerminal(stderr);
    return run(arguments, environment);
}

int ScanCommand::run(const std::vector<std::string>& arguments, const Environment& environment) {
    auto options = parse(arguments);
    if (!options) {
        printUsageError(environment.err, options.error());
        return kUsageError;
    }
    if (options->help) {
        fmt::print(environment.out, "Usage:\n{}", usage());
        return kSuccess;
    }
    CancellationFlag never;
    const CancellationFlag& cancel = environment.cancel != nullptr ? *environment.cancel : never;
    ProgressLine line(environment.err);
    ExactMatcher::Progress progress;
    if (environment.showProgress) {
        progress = [&line](const ScanProgress& now) { line.show(now); };
    }
    ScanResult result = ExactMatcher::scan(options->folders, false, std::nullopt, cancel, progress);
    line.clear();

    for (const auto& item : result.excluded) {
        if (item.kind == Kind::refusedRoot) {
            fmt::print(environment.err, "brevant: {}: {}\n", shownPath(item.path, environment.home),
                       item.detail);
        }
    }
    if (options->json) {
        fmt::print(environment.out, "{}\n", result.encoded(2));
    } else {
        fmt::print(environment.out, "{}", report(result, environment.home));
    }
    std::fflush(environment.out);
    return result.cancelled ? kCancelled : kSuccess;
}

std::string ScanCommand::report(const ScanResult& result, std::string_view home) {
    std::string text;
    std::int64_t freed = 0;
    for (const auto& group : result.groups) {
        text += fmt::format("{}: {} photos\n", rawValue(group.kind), group.members.size());
        for (const auto& member : group.members) {
            text += fmt::format("  {}\n", shownPath(member.path, home));
        }
        freed += group.extraBytes();
    }
    int found = result.discovered - result.otherFiles;
    auto groups = static_cast<std::int64_t>(result.groups.size());
    text += fmt::format("\n{} {} found, {} examined, {} identical {}; removing the extra copies "
                        "would free {}\n",
                        found, plural(found, "picture", "pictures"), result.examined, groups,
                        plural(groups, "group", "groups"), humanBytes(freed));

    appendCounts(text, "Skipped", result.skipped, &SkippedFile::reason,
                 [](SkipReason reason) -> std::string_view { return title(reason); });
    appendCounts(text, "Excluded", result.excluded, &ExcludedItem::kind, excludedLabel);
    if (result.cancelled) {
        text += "cancelled\n";
    }
    return text;
}

std::string_view ScanCommand::usage() {
    return "  brevant scan [--json] FOLDER...   find identical copies of photos in the folders\n";
}

} // namespace brevant::cli
