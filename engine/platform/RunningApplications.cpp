#include "RunningApplications.hpp"

#include "engine/platform/ReadOnlyFile.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <dirent.h>
#include <memory>

namespace brevant::platform {

namespace {

std::string asciiLowercased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

// The last component of a Unix or Windows path.
std::string_view programName(std::string_view path) {
    auto separator = path.find_last_of("/\\");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

// The start of a small /proc file, up to its first NUL or line break.
std::optional<std::string> firstField(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::nullopt;
    }
    std::array<std::byte, 4096> buffer{};
    auto length = file->fill(buffer);
    if (!length) {
        return std::nullopt;
    }
    std::string_view text(reinterpret_cast<const char*>(buffer.data()), *length);
    return std::string(text.substr(0, text.find_first_of(std::string_view("\0\n", 2))));
}

std::optional<int> processID(const char* entry) {
    int value = 0;
    for (const char* c = entry; *c != '\0'; ++c) {
        if (*c < '0' || *c > '9' || value > 100'000'000) {
            return std::nullopt;
        }
        value = value * 10 + (*c - '0');
    }
    return value > 0 ? std::optional<int>(value) : std::nullopt;
}

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

} // namespace

std::optional<std::string> bundleIdentifierOf(std::string_view name, std::string_view executable) {
    std::array<std::string, 2> names = {asciiLowercased(programName(name)),
                                        asciiLowercased(programName(executable))};
    for (const auto& candidate : names) {
        if (candidate == "lightroom.exe") {
            return std::string(kLightroomClassicBundleIdentifier);
        }
        if (candidate == "captureone.exe" || candidate.find("capture one") != std::string::npos) {
            return std::string(kCaptureOneBundleIdentifier);
        }
        if (candidate == "darktable") {
            return std::string(kDarktableBundleIdentifier);
        }
        if (candidate == "digikam") {
            return std::string(kDigikamIdentifier);
        }
        if (candidate == "shotwell") {
            return std::string(kShotwellBundleIdentifier);
        }
    }
    return std::nullopt;
}

std::vector<RunningApplication> runningApplications() {
    std::vector<RunningApplication> applications;
    std::unique_ptr<DIR, CloseDirectory> proc(::opendir("/proc"));
    if (!proc) {
        return applications;
    }
    while (const dirent* entry = ::readdir(proc.get())) {
        auto pid = processID(entry->d_name);
        if (!pid) {
            continue;
        }
        std::string folder = "/proc/" + std::string(entry->d_name);
        auto name = firstField(folder + "/comm");
        if (!name) {
            continue;
        }
        std::string executable = firstField(folder + "/cmdline").value_or("");
        auto bundle = bundleIdentifierOf(*name, executable);
        applications.push_back({*pid, std::move(*name), std::move(executable), std::move(bundle)});
    }
    return applications;
}

} // namespace brevant::platform
