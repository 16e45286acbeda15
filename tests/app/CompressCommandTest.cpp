#include "app/cli/CompressCommand.hpp"

#include "tests/app/ProgramRun.hpp"
#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "app/cli/ExitStatus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;
namespace fs = std::filesystem;

// A folder with one big turned JPEG, its own data folder and Trash, driven
// through the built program.
class Album {
public:
    Album()
        : dataHome_("XDG_DATA_HOME", tree_.folder("xdg")) {
        (void)testing::writeScene(
            photo(), 1200, 800, 11,
            {.quality = 95, .orientation = 6, .exifDate = "2024:05:01 10:20:30"});
        bytes_ = testing::readFile(photo());
    }

    [[nodiscard]] std::string photos() const { return tree_.path("photos"); }

    [[nodiscard]] std::string photo() const { return tree_.path("photos/IMG_0001.JPG"); }

    [[nodiscard]] std::string copy() const { return tree_.path("photos/IMG_0001.HEIC"); }

    [[nodiscard]] const std::string& bytes() const { return bytes_; }

    [[nodiscard]] std::string trashed(std::string_view name) const {
        return tree_.path("xdg/Trash/files/" + std::string(name));
    }

    [[nodiscard]] Outcome brevant(const std::string& arguments) const {
        return runCaptured(tree_, fmt::format("BREVANT_DATA_DIR='{}' XDG_DATA_HOME='{}' TZ=UTC "
                                              "'{}' {} </dev/null",
                                              tree_.path("data"), tree_.path("xdg"), BREVANT_BINARY,
                                              arguments));
    }

private:
    testing::TempTree tree_;
    testing::ScopedEnvironment dataHome_;
    std::string bytes_;
};

TEST(CompressCommand, ShowsThePlanAsksWritesTheCopyListsItAndPutsTheOriginalBack) {
    Album album;
    std::string folder = "'" + album.photos() + "'";

    Outcome dry = album.brevant("compress --dry-run --min-size 0 " + folder);
    EXPECT_EQ(dry.status, ExitStatus::kSuccess) << dry.err;
    EXPECT_THAT(dry.out, HasSubstr(album.photo() + "  JPEG 800\u00d71200"));
    EXPECT_THAT(dry.out, HasSubstr("Dry run: nothing was written or moved.\n"));
    Outcome unasked = album.brevant("compress --min-size 0 " + folder);
    EXPECT_EQ(unasked.status, ExitStatus::kCancelled);
    EXPECT_THAT(unasked.out, HasSubstr("Nothing was changed: there is no terminal to ask on"));
    EXPECT_TRUE(testing::readFile(album.photo()) == album.bytes());
    EXPECT_FALSE(fs::exists(album.copy()));

    Outcome run = album.brevant("compress --yes --json --min-size 0 " + folder);
    ASSERT_EQ(run.status, ExitStatus::kSuccess) << run.out << run.err;
    Json document = Json::parse(run.out);
    EXPECT_EQ(document["compressed"], true);
    std::string id = document["report"]["planID"];
    EXPECT_TRUE(fs::exists(album.copy()));
    EXPECT_TRUE(testing::readFile(album.trashed("IMG_0001.JPG")) == album.bytes());

    Outcome history = album.brevant("history");
    EXPECT_THAT(history.out, HasSubstr("Compressions:\n"));
    EXPECT_THAT(history.out, HasSubstr(id + "  compression of 1 file: 1 compressed"));

    Outcome restore = album.brevant("restore " + id.substr(0, 8) + " --all");
    EXPECT_EQ(restore.status, ExitStatus::kSuccess) << restore.out << restore.err;
    EXPECT_THAT(restore.out, HasSubstr("Its copy IMG_0001.HEIC went to the Trash."));
    EXPECT_TRUE(testing::readFile(album.photo()) == album.bytes());
    EXPECT_FALSE(fs::exists(album.copy()));
    EXPECT_TRUE(fs::exists(album.trashed("IMG_0001.HEIC")));

    Json listed = Json::parse(album.brevant("history --json").out);
    ASSERT_EQ(listed["compressions"].size(), 1U);
    EXPECT_EQ(listed["compressions"][0]["restored"], 1);

    // Asked again, or for a file it never held, it says so in its own words.
    Outcome again =
        album.brevant("restore " + id + " '" + album.photo() + "' '" + album.copy() + "'");
    EXPECT_THAT(again.out, HasSubstr("It was put back already, at "));
    EXPECT_THAT(again.out, HasSubstr("IMG_0001.HEIC: This file is not part of this compression."));
}

TEST(CompressCommand, ReadsSizesInBytesOrWithAUnit) {
    struct Case {
        std::string text;
        std::optional<std::int64_t> bytes;
    };

    for (const auto& [text, bytes] : std::vector<Case>{{"5000", 5000},
                                                       {"800k", 800'000},
                                                       {"10M", 10'000'000},
                                                       {"1.5G", 1'500'000'000},
                                                       {"2MB", 2'000'000},
                                                       {"", std::nullopt},
                                                       {"-1M", std::nullopt},
                                                       {"ten", std::nullopt},
                                                       {"3T", std::nullopt}}) {
        EXPECT_EQ(CompressCommand::parseSize(text), bytes) << text;
    }
}

} // namespace
} // namespace brevant::cli
