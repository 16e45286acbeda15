#include "app/cli/CommandLineReport.hpp"

#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fmt/format.h>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace brevant::cli {
namespace {

using Mode = CommandLineReport::Mode;
using Request = CommandLineReport::Request;

std::optional<Request> parse(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "/usr/bin/brevant");
    return CommandLineReport::parse(arguments);
}

TEST(CommandLineReport, Grammar) {
    EXPECT_EQ(parse({"--series", "~/A", "~/B", "-v"}),
              (Request{Mode::series, SimilarityPreset::balanced, {"~/A", "~/B"}}));
    EXPECT_EQ(parse({"--similar", "broad", "~/A"}),
              (Request{Mode::similar, SimilarityPreset::broad, {"~/A"}}));
    EXPECT_EQ(parse({"--similar", "~/A"}),
              (Request{Mode::similar, SimilarityPreset::balanced, {"~/A"}}));
    EXPECT_EQ(parse({"--similar", "Broad", "~/A"}),
              (Request{Mode::similar, SimilarityPreset::balanced, {"Broad", "~/A"}}));
    EXPECT_EQ(parse({"~/A"}), std::nullopt);
    EXPECT_EQ(parse({}), std::nullopt);
    // The similar mode wins, and its position decides where folders start.
    EXPECT_EQ(parse({"--series", "~/A", "--similar", "conservative", "~/B"}),
              (Request{Mode::similar, SimilarityPreset::conservative, {"~/B"}}));
    EXPECT_EQ(parse({"--similar"}), (Request{Mode::similar, SimilarityPreset::balanced, {}}));
    EXPECT_EQ(parse({"--series", "broad"}), (Request{Mode::series, SimilarityPreset::broad, {}}));
}

TEST(CommandLineReport, RendersGroupsScoresHintsAndSummary) {
    std::vector<PhotoAsset> pictures(3);
    pictures[0].path = "/home/anna/P/a.jpg";
    pictures[1].path = "/home/anna/P/b.jpg";
    pictures[2].path = "/srv/c.jpg";
    SimilarityIndex index(pictures, {ImageFeatures{}, ImageFeatures{}, std::nullopt},
                          {SimilarPair{.a = 0, .b = 1, .distance = 3, .shapesAgree = true}}, 1,
                          {"/srv/c.jpg"});
    auto groups = index.groups(SimilarityPreset::balanced);
    Request request{Mode::similar, SimilarityPreset::balanced, {}};
    std::string text = CommandLineReport::render(
        request, groups, index, {{"/home/anna/P/a.jpg", "Sharpest of the group"}},
        {{"/home/anna/P/a.jpg", 71}, {"/home/anna/P/b.jpg", 40}}, "/home/anna");
    EXPECT_EQ(text, "similar: 2 photos\n"
                    "  ~/P/a.jpg   quality 71   [Sharpest of the group]\n"
                    "  ~/P/b.jpg   quality 40\n"
                    "\n"
                    "2 pictures measured, 1 close pairs, 1 similar groups at Balanced\n");

    request.mode = Mode::series;
    EXPECT_EQ(CommandLineReport::render(request, {}, index, {}, {}, "/home/anna"),
              "\n2 pictures measured, 1 close pairs, 0 series\n");
}

// Standard output of a command line.
std::string outputOf(const std::string& commandLine) {
    std::string out;
    std::FILE* pipe = ::popen(commandLine.c_str(), "r");
    if (pipe == nullptr) {
        return out;
    }
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        out.append(buffer, n);
    }
    ::pclose(pipe);
    return out;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// The sample library's reports, byte for byte as kept in tests/app/expected
// (the library's folder written as SAMPLE): each preset and the series, and
// the identical copies of `brevant scan`.
TEST(CommandLineReport, PrintsTheSampleLibraryAsExpected) {
    testing::TempTree tree;
    std::string library = tree.path("library");
    ASSERT_EQ(
        testing::runCommand(std::string(BREVANT_SAMPLE_TOOL) + " '" + library + "' >/dev/null"), 0);

    struct Case {
        std::string arguments;
        std::string expected;
    };

    const std::vector<Case> cases{
        {"--similar", "sample-similar.txt"},
        {"--similar conservative", "sample-similar-conservative.txt"},
        {"--similar broad", "sample-similar-broad.txt"},
        {"--series", "sample-series.txt"},
        {"scan", "sample-scan.txt"},
    };
    for (const auto& [arguments, file] : cases) {
        std::string printed =
            outputOf(fmt::format("{} {} '{}' 2>/dev/null", BREVANT_BINARY, arguments, library));
        std::string expected =
            testing::readFile(std::string(BREVANT_SOURCE_DIR) + "/tests/app/expected/" + file);
        ASSERT_FALSE(expected.empty()) << file;
        EXPECT_EQ(replaced(printed, library, "SAMPLE"), expected) << arguments;
    }
    // Nothing was changed: the folder still holds what the tool wrote.
    EXPECT_EQ(testing::runCommand("test $(find '" + library + "' -type f | wc -l) -eq 22"), 0);
}

// What the report says after a member's path, up to its quality and hints;
// nullopt when the path is on no member line.
std::optional<std::string> wordsAfter(const std::string& report, const std::string& path) {
    std::string start = "  " + path;
    for (std::size_t at = report.find(start); at != std::string::npos;
         at = report.find(start, at + 1)) {
        std::size_t end = report.find('\n', at);
        std::string rest = report.substr(at + start.size(), end - at - start.size());
        if (!rest.empty() && !rest.starts_with("   ")) {
            continue; // a longer path
        }
        if (rest.empty() || rest.starts_with("   quality") || rest.starts_with("   [")) {
            return std::string();
        }
        rest = rest.substr(3);
        return rest.substr(0, rest.find("   "));
    }
    return std::nullopt;
}

// Copies made with libvips: left-right mirrors and quarter turns of one
// scene group with it under Balanced, each said to be as it was made
// (against the first member, the original); a mirror of another scene does
// not, and the original's line is as it always was.
TEST(CommandLineReport, SaysWhichCopiesAreTurnedOrMirrored) {
    testing::TempTree tree;
    std::string original = testing::writeScene(tree.path("photos/a-original.jpg"), 800, 600, 61);
    std::string other = testing::writeScene(tree.path("elsewhere/other.jpg"), 800, 600, 62);
    vips::VImage scene = testing::openImage(original);

    struct Case {
        std::string name;
        std::function<vips::VImage(const vips::VImage&)> made;
        std::string said;
    };

    const std::vector<Case> cases{
        {"b-mirrored.jpg", [](const vips::VImage& i) { return i.fliphor(); }, "mirrored"},
        {"c-turned.jpg", [](const vips::VImage& i) { return i.rot90(); }, "turned 90°"},
        {"d-turned.jpg", [](const vips::VImage& i) { return i.rot270(); }, "turned 270°"},
        {"e-mirrored-turned.jpg", [](const vips::VImage& i) { return i.fliphor().rot90(); },
         "mirrored, turned 90°"},
        {"f-mirrored-turned.jpg", [](const vips::VImage& i) { return i.fliphor().rot180(); },
         "mirrored, turned 180°"},
    };
    for (const auto& copy : cases) {
        testing::saveImage(copy.made(scene), tree.path("photos/" + copy.name));
    }
    testing::saveImage(testing::openImage(other).fliphor(), tree.path("photos/g-other.jpg"));

    Outcome run =
        runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' '{}' --similar '{}'",
                                      tree.path("data"), BREVANT_BINARY, tree.path("photos")));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("similar: 6 photos\n"), std::string::npos) << run.out;
    EXPECT_EQ(wordsAfter(run.out, original), "") << run.out;
    for (const auto& copy : cases) {
        EXPECT_EQ(wordsAfter(run.out, tree.path("photos/" + copy.name)), copy.said)
            << copy.name << "\n"
            << run.out;
    }
    EXPECT_EQ(wordsAfter(run.out, tree.path("photos/g-other.jpg")), std::nullopt) << run.out;

    // The cleanup's plan says it on the copy, in --json too.
    Outcome plan =
        runCaptured(tree, fmt::format("BREVANT_DATA_DIR='{}' '{}' clean --similar "
                                      "--dry-run --json '{}'",
                                      tree.path("data"), BREVANT_BINARY, tree.path("photos")));
    ASSERT_EQ(plan.status, 0) << plan.err;
    auto json = nlohmann::json::parse(plan.out);
    std::map<std::string, nlohmann::json> orientations;
    for (const auto& group : json.at("plan").at("groups")) {
        for (const char* side : {"keep", "move"}) {
            for (const auto& copy : group.at(side)) {
                if (copy.contains("orientation")) {
                    orientations[copy.at("path").get<std::string>()] = copy.at("orientation");
                }
            }
        }
    }
    EXPECT_EQ(orientations.size(), cases.size()) << plan.out;
    EXPECT_EQ(orientations[tree.path("photos/b-mirrored.jpg")],
              (nlohmann::json{{"mirrored", true}, {"degrees", 0}}));
    EXPECT_EQ(orientations[tree.path("photos/c-turned.jpg")],
              (nlohmann::json{{"mirrored", false}, {"degrees", 90}}));
}

TEST(CommandLineReport, ReportsOverNothingWithZeroCounts) {
    testing::TempTree tree;
    std::string printed = outputOf(std::string(BREVANT_BINARY) + " --series '" +
                                   tree.path("missing") + "' 2>/dev/null; echo status $?");
    EXPECT_EQ(printed, "\n0 pictures measured, 0 close pairs, 0 series\nstatus 0\n");
}

} // namespace
} // namespace brevant::cli
