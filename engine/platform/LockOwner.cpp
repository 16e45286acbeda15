#include "LockOwner.hpp"

#include "engine/platform/ReadOnlyFile.hpp"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <string_view>

namespace brevant::platform {

std::optional<int> lockFileProcess(const std::string& path) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::nullopt;
    }
    std::array<std::byte, 64> buffer{};
    auto length = file->fill(buffer);
    if (!length) {
        return std::nullopt;
    }
    std::string_view text(reinterpret_cast<const char*>(buffer.data()), *length);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.remove_suffix(1);
    }
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value <= 0) {
        return std::nullopt;
    }
    return value;
}

bool isProcessAlive(int processID) {
    if (processID <= 0) {
        return false;
    }
    // Signal 0 only asks whether the process exists.
    return ::kill(processID, 0) == 0 || errno == EPERM;
}

} // namespace brevant::platform
