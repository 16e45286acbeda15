#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform {

// One running process as the catalog tests need it. On Linux the photo
// applications run under Wine; a process that is one of them is given the
// bundle identifier the application has on the Mac, so that the rest of the
// engine asks one question on every platform.
struct RunningApplication {
    int processID = 0;
    // The kernel's short name (/proc/<pid>/comm).
    std::string name;
    // The first argument of its command line (/proc/<pid>/cmdline).
    std::string executable;
    std::optional<std::string> bundleIdentifier;

    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

// Lists the processes this user can see. Processes that end while the list
// is read are left out.
[[nodiscard]] std::vector<RunningApplication> runningApplications();

// The bundle identifier for a process with this short name and first
// argument: "Lightroom.exe" is Lightroom Classic; "CaptureOne.exe" or a
// program name containing "Capture One" is Capture One; "digikam",
// "darktable" and "shotwell" are known by their desktop ids. Windows names compare
// without regard to case; only the program's own name counts, never the
// files it was given.
[[nodiscard]] std::optional<std::string> bundleIdentifierOf(std::string_view name,
                                                            std::string_view executable);

inline constexpr std::string_view kLightroomClassicBundleIdentifier =
    "com.adobe.LightroomClassicCC7";
inline constexpr std::string_view kCaptureOneBundleIdentifier = "com.captureone.captureone16";
inline constexpr std::string_view kDarktableBundleIdentifier = "org.darktable.darktable";
inline constexpr std::string_view kDigikamIdentifier = "org.kde.digikam";
inline constexpr std::string_view kShotwellBundleIdentifier = "org.gnome.Shotwell";

} // namespace brevant::platform
