#pragma once

#include "engine/scan/FileSnapshot.hpp"

#include <optional>
#include <string>

namespace brevant::platform {

// lstat: the path itself, a final symbolic link is not followed.
[[nodiscard]] std::optional<FileSnapshot> snapshotOfPath(const std::string& path);

// fstat of an open file.
[[nodiscard]] std::optional<FileSnapshot> snapshotOfOpenFile(int descriptor);

// realpath(3); nothing when it fails.
[[nodiscard]] std::optional<std::string> realPath(const std::string& path);

// stat (following links) says it is a folder.
[[nodiscard]] bool isDirectory(const std::string& path);

// The system's error text when the file may not be opened for reading,
// nothing when it may.
[[nodiscard]] std::optional<std::string> readAccessError(const std::string& path);

// strerror text for an errno value.
[[nodiscard]] std::string errorText(int error);

} // namespace brevant::platform
