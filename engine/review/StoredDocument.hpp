#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace brevant {

// The JSON files the application keeps for the user in its data folder (the
// locks, the "not duplicates" decisions, the saved reviews): read without following a link,
// and, when damaged, moved aside on request rather than written over.
struct StoredDocument {
    // The file's text; nothing when no file is there; the reason when a file
    // is there but cannot be read as one (a symbolic link, a folder, no
    // permission).
    [[nodiscard]] static std::expected<std::optional<std::string>, std::string>
    read(const std::string& path);

    // Writes the text atomically; false when it could not be written.
    [[nodiscard]] static bool write(const std::string& path, const std::string& text);

    // Moves the file to "<path>.damaged-<unixSeconds>", never over anything.
    // Answers where it went, or "<where it would have gone> (<the system's
    // reason>)".
    [[nodiscard]] static std::expected<std::string, std::string> setAside(const std::string& path,
                                                                          std::int64_t unixSeconds);
};

} // namespace brevant
