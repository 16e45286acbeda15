#include "app/cli/CommandLineReport.hpp"

#include <gtest/gtest.h>

namespace brevant {
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

TEST(CommandLineReport, ShowsHomeAsTildeAndKeepsEachPathOnOneLine) {
    EXPECT_EQ(CommandLineReport::shownPath("/home/anna/Pictures/a.jpg", "/home/anna"),
              "~/Pictures/a.jpg");
    EXPECT_EQ(CommandLineReport::shownPath("/home/annabel/a.jpg", "/home/anna"),
              "/home/annabel/a.jpg");
    EXPECT_EQ(CommandLineReport::shownPath("/home/anna/two\nlines.jpg", "/home/anna"),
              "~/two\\nlines.jpg");
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

} // namespace
} // namespace brevant
