#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/RawValue.hpp"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <iosfwd>
#include <optional>
#include <string>

namespace brevant {

namespace platform {
class ReadOnlyFile;
}

// The only code that reads the contents of pictures. Files are opened
// read-only, never through a symbolic link at the end of the path, and a
// file is trusted only while it is still the one the walk found: the same
// device, file number, size and modification time before and after reading.
struct ContentReader {
    struct Failure {
        enum class Kind {
            // Could not be opened or read; `detail` is the system's text.
            unreadable,
            // No longer the file the walk found.
            changed,
            cancelled,
        };

        Kind kind = Kind::unreadable;
        std::string detail;
        // The file that failed (for a comparison, one of the two).
        std::string path;

        friend bool operator==(const Failure&, const Failure&) = default;
    };

    static constexpr std::size_t kBufferSize = 1'048'576;

    // The SHA-256 of the file's first `limit` bytes (all of it when there is
    // no limit), as 64 lowercase hexadecimal digits.
    [[nodiscard]] static std::expected<std::string, Failure>
    sha256(const std::string& path, const FileSnapshot& expecting,
           std::optional<std::int64_t> limit, const CancellationFlag* cancel);

    // True when the two files hold the same bytes. Files of different sizes
    // are never opened.
    [[nodiscard]] static std::expected<bool, Failure>
    sameBytes(const std::string& a, const FileSnapshot& snapshotA, const std::string& b,
              const FileSnapshot& snapshotB, const CancellationFlag& cancel);

    struct Comparison {
        bool same = false;
        // The SHA-256 of a, when a was read to its end: only when the two
        // were the same.
        std::optional<std::string> digestOfA;

        friend bool operator==(const Comparison&, const Comparison&) = default;
    };

    // sameBytes, hashing a on the way, so that a copy and its digest cost
    // one read of each file.
    [[nodiscard]] static std::expected<Comparison, Failure>
    compareHashingFirst(const std::string& a, const FileSnapshot& snapshotA, const std::string& b,
                        const FileSnapshot& snapshotB, const CancellationFlag& cancel);

    // The open file is still the one of the snapshot.
    [[nodiscard]] static bool matches(const platform::ReadOnlyFile& file,
                                      const FileSnapshot& snapshot);
};

template <> struct EnumCases<ContentReader::Failure::Kind> {
    using Kind = ContentReader::Failure::Kind;
    static constexpr std::array kAll{Kind::unreadable, Kind::changed, Kind::cancelled};
};

[[nodiscard]] std::string_view rawValue(ContentReader::Failure::Kind kind);
void PrintTo(ContentReader::Failure::Kind kind, std::ostream* os);
void PrintTo(const ContentReader::Failure& failure, std::ostream* os);

} // namespace brevant
