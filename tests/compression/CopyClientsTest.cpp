#include "tests/compression/CompressionFixtures.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace brevant {
namespace {

// NOLINTBEGIN(bugprone-unchecked-optional-access)

using testing::CompressionWorkspace;

bool hasTool(const std::string& name) {
    return testing::runCommand("command -v " + name + " >/dev/null 2>&1") == 0;
}

// What a command printed on its standard output.
std::string outputOf(const std::string& commandLine) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(commandLine.c_str(), "r"), ::pclose);
    std::string output;
    std::array<char, 4096> buffer{};
    while (pipe && std::fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr) {
        output += buffer.data();
    }
    return output;
}

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

TEST(CopyClients, HeifInfoReadsThePhotoCopyWithItsTurnAndExif) {
    if (!hasTool("heif-info")) {
        GTEST_SKIP() << "heif-info (libheif-examples) is not installed";
    }
    CompressionWorkspace w;
    (void)w.turnedPhoto("IMG_0001.JPG");
    CancellationFlag cancel;
    auto report = Compressor(w.data).run(w.planOfAll(), cancel);
    ASSERT_TRUE(report && report->compressed() == 1);

    std::string info = outputOf("heif-info " + quoted(w.photos + "/IMG_0001.HEIC") + " 2>&1");

    // Shown upright: the container's own turn applied.
    EXPECT_NE(info.find("image: 800x1200"), std::string::npos) << info;
    EXPECT_NE(info.find("Exif"), std::string::npos) << info;
}

TEST(CopyClients, FfprobeReadsTheVideoCopyAsHvc1WithSoundDateAndRotation) {
    if (!hasTool("ffprobe")) {
        GTEST_SKIP() << "ffprobe (ffmpeg) is not installed";
    }
    CompressionWorkspace w;
    (void)w.video("clip.mov");
    Compressor compressor(w.data);
    compressor.setOptions({.video = {.preset = "ultrafast"}});
    CancellationFlag cancel;
    auto report = compressor.run(w.planOfAll(), cancel);
    ASSERT_TRUE(report && report->compressed() == 1);

    auto probe =
        nlohmann::json::parse(outputOf("ffprobe -v error -show_streams -show_format -of json " +
                                       quoted(w.photos + "/clip (HEVC).mov")));

    const auto& streams = probe.at("streams");
    ASSERT_EQ(streams.size(), 2U);
    const auto& video = streams.at(0);
    EXPECT_EQ(video.at("codec_name"), "hevc");
    EXPECT_EQ(video.at("codec_tag_string"), "hvc1");
    EXPECT_LE(video.at("height").get<int>(), 1080);
    EXPECT_EQ(video.at("side_data_list").at(0).at("rotation").get<int>(), -90);
    EXPECT_EQ(streams.at(1).at("codec_type"), "audio");
    EXPECT_EQ(probe.at("format").at("tags").at("creation_time"), "2024-05-01T10:20:30.000000Z");
}

// NOLINTEND(bugprone-unchecked-optional-access)

} // namespace
} // namespace brevant
