#pragma once

#include "tests/fixtures/ImageFixtures.hpp"

#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

// Pictures for the scan's tests: real JPEG headers, so that inspection
// reads them, with sizes the test chooses.
namespace brevant::testing {

// A small real JPEG, different for every seed.
inline std::string jpegBytes(unsigned seed, int width = 48, int height = 32) {
    void* data = nullptr;
    std::size_t length = 0;
    makeScene(width, height, seed).write_to_buffer(".jpg", &data, &length);
    std::string bytes(static_cast<const char*>(data), length);
    g_free(data);
    return bytes;
}

// A JPEG of exactly `size` bytes: decoders stop at the end-of-image marker,
// so the bytes padded after it change the contents but not the header.
inline std::string photoOfSize(unsigned seed, std::size_t size) {
    std::string bytes = jpegBytes(seed);
    if (bytes.size() > size) {
        throw std::runtime_error("photo fixture larger than asked");
    }
    for (std::size_t i = bytes.size(); i < size; ++i) {
        bytes.push_back(static_cast<char>((i * 131 + seed * 7) & 0xFF));
    }
    return bytes;
}

// Writes other bytes of the same length into the file (same inode) and
// moves its modification time, as an editor saving over it would.
inline void rewriteKeepingSize(const std::string& path) {
    std::string bytes;
    {
        std::ifstream in(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    bytes.back() = static_cast<char>(bytes.back() ^ 0x5A);
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    struct stat status{};
    ::stat(path.c_str(), &status);
    timespec times[2] = {status.st_atim, status.st_mtim};
    times[1].tv_sec += 10;
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

// A file of the shared sample photos, when they are present beside the
// repository.
inline std::optional<std::string> sampleFile(const std::string& relative) {
    std::string path = std::string(BREVANT_SOURCE_DIR) + "/../shared/testdata/" + relative;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    return path;
}

} // namespace brevant::testing
