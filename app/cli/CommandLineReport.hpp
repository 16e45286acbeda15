#pragma once

#include "app/cli/ExitStatus.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/similarity/SimilarityIndex.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace brevant::cli {

// Prints similar groups or series for some folders when the program is
// started with --similar or --series, without changing any file.
struct CommandLineReport {
    enum class Mode {
        similar,
        series,
    };

    struct Request {
        Mode mode = Mode::similar;
        SimilarityPreset preset = SimilarityPreset::balanced;
        std::vector<std::string> folders;

        friend bool operator==(const Request&, const Request&) = default;
    };

    // How every command tells a preset from a folder: the word right after
    // --similar names the preset only when it is one of the preset names,
    // exactly as written ("broad"; "Broad" and "./broad" are folders).
    // Otherwise the preset is Balanced and the word stays what it was.
    [[nodiscard]] static std::optional<SimilarityPreset> presetNamed(std::string_view word);

    // What the whole argument list (the program's path first) asks for;
    // nothing when it asks for no report.
    [[nodiscard]] static std::optional<Request> parse(const std::vector<std::string>& arguments);

    static constexpr int kSuccess = ExitStatus::kSuccess;
    static constexpr int kCancelled = ExitStatus::kCancelled;

    // When the arguments ask for a report: runs it, prints it to standard
    // output and answers the exit status (0, or 1 with "cancelled" when
    // Ctrl-C stopped it). Nothing otherwise, and the program goes on as usual.
    [[nodiscard]] static std::optional<int> runIfAsked(const std::vector<std::string>& arguments);

    // The run itself, with a progress line on standard error when `progress`.
    [[nodiscard]] static int run(const Request& request, std::FILE* out, bool progress);

    // The report's text for groups made from the index.
    [[nodiscard]] static std::string
    render(const Request& request, const std::vector<DuplicateGroup>& groups,
           const SimilarityIndex& index, const std::unordered_map<std::string, std::string>& hints,
           const std::unordered_map<std::string, int>& scores, const std::string& home);
};

} // namespace brevant::cli
