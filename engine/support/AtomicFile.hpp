#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace brevant {

// Files that the application keeps for itself, written so that a reader
// sees either the old contents or the new, never half of them.
struct AtomicFile {
    // Writes the bytes to a new temporary file in the same folder (created
    // exclusively, so nothing else is touched), flushes it and renames it
    // over `path`. The folder is created when missing. False on any failure,
    // after which `path` is as it was.
    [[nodiscard]] static bool write(const std::string& path, std::span<const std::uint8_t> bytes);

    // The whole contents of a regular file, opened read-only without
    // following a final symbolic link; nothing when it cannot be read.
    [[nodiscard]] static std::optional<std::vector<std::uint8_t>> read(const std::string& path);
};

} // namespace brevant
