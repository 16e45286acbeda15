#include "ConfigFiles.hpp"

#include "engine/platform/ProcessInfo.hpp"
#include "engine/platform/ReadOnlyFile.hpp"

#include <array>
#include <cstddef>
#include <cstdlib>

namespace brevant::platform {

namespace {

// A configuration file is small; anything past this is not one.
constexpr std::size_t kLargest = std::size_t{4} * 1024 * 1024;

} // namespace

std::string configFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME"); // NOLINT(concurrency-mt-unsafe)
    if (config != nullptr && config[0] == '/') {
        return config;
    }
    return homeFolder() + "/.config";
}

std::optional<std::string> configFile(std::string_view name) {
    auto file = ReadOnlyFile::open(configFolder() + "/" + std::string(name));
    if (!file) {
        return std::nullopt;
    }
    std::string text;
    std::array<std::byte, 16384> buffer{};
    while (text.size() < kLargest) {
        auto read = file->read(buffer);
        if (!read) {
            return std::nullopt;
        }
        if (*read == 0) {
            return text;
        }
        text.append(reinterpret_cast<const char*>(buffer.data()), *read);
    }
    return std::nullopt;
}

} // namespace brevant::platform
