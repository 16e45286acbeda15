#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/similarity/SimilarityIndex.hpp"
#include "engine/similarity/SimilarityPreset.hpp"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace brevant {

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

    // What the whole argument list (the program's path first) asks for;
    // nothing when it asks for no report.
    [[nodiscard]] static std::optional<Request> parse(const std::vector<std::string>& arguments);

    // When the arguments ask for a report: runs it, prints it to standard
    // output and answers the exit status (0, or 1 when measuring was
    // cancelled). Nothing otherwise, and the program goes on as usual.
    [[nodiscard]] static std::optional<int> runIfAsked(const std::vector<std::string>& arguments);

    // The report's text for groups made from the index.
    [[nodiscard]] static std::string
    render(const Request& request, const std::vector<DuplicateGroup>& groups,
           const SimilarityIndex& index, const std::unordered_map<std::string, std::string>& hints,
           const std::unordered_map<std::string, int>& scores, const std::string& home);

    // The path as shown: the home folder as "~", on one line.
    [[nodiscard]] static std::string shownPath(const std::string& path, const std::string& home);
};

} // namespace brevant
