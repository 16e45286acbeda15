#include "engine/platform/RunningApplications.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <unistd.h>

namespace brevant::platform {
namespace {

TEST(RunningApplications, LightroomAndCaptureOneAreKnownByTheirWindowsProgramNames) {
    const std::string lightroom(kLightroomClassicBundleIdentifier);
    const std::string captureOne(kCaptureOneBundleIdentifier);
    EXPECT_EQ(bundleIdentifierOf("Lightroom.exe",
                                 R"(C:\Program Files\Adobe\Adobe Lightroom Classic\Lightroom.exe)"),
              lightroom);
    EXPECT_EQ(bundleIdentifierOf("wine64-preloade", "C:/Program Files/Adobe/LIGHTROOM.EXE"),
              lightroom);
    EXPECT_EQ(
        bundleIdentifierOf("CaptureOne.exe", R"(C:\Program Files\Capture One\CaptureOne.exe)"),
        captureOne);
    EXPECT_EQ(bundleIdentifierOf("Capture One 23.", R"(C:\Apps\Capture One 23.exe)"), captureOne);
    EXPECT_EQ(bundleIdentifierOf("wine", "/opt/Capture One/Capture One"), captureOne);

    // Files the program was given, or the folders it runs from, do not count.
    EXPECT_EQ(bundleIdentifierOf("brevant", "/usr/bin/brevant"), std::nullopt);
    EXPECT_EQ(bundleIdentifierOf("vim", "/home/ann/Capture One/notes"), std::nullopt);
    EXPECT_EQ(bundleIdentifierOf("Lightroom.exe.bak", "Lightroom.exe.bak"), std::nullopt);
    EXPECT_EQ(bundleIdentifierOf("lightroom", "/usr/bin/lightroom"), std::nullopt);
    EXPECT_EQ(bundleIdentifierOf("", ""), std::nullopt);
}

TEST(RunningApplications, TheListHoldsThisProcess) {
    auto applications = runningApplications();

    auto self = std::ranges::find(applications, static_cast<int>(::getpid()),
                                  &RunningApplication::processID);
    ASSERT_NE(self, applications.end());
    EXPECT_FALSE(self->name.empty());
    EXPECT_THAT(self->executable, ::testing::HasSubstr("brevant_tests"));
    EXPECT_EQ(self->bundleIdentifier, std::nullopt);
}

} // namespace
} // namespace brevant::platform
