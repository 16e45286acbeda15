#include "ContentReader.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ReadOnlyFile.hpp"
#include "engine/platform/Sha256.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <span>

namespace brevant {

namespace {

using Failure = ContentReader::Failure;
using Kind = Failure::Kind;
using platform::ReadOnlyFile;

Failure unreadable(const std::string& path, int error) {
    return {Kind::unreadable, platform::errorText(error), path};
}

Failure changed(const std::string& path) {
    return {Kind::changed, {}, path};
}

Failure cancelled(const std::string& path) {
    return {Kind::cancelled, {}, path};
}

std::expected<ReadOnlyFile, Failure> openMatching(const std::string& path,
                                                  const FileSnapshot& snapshot) {
    auto file = ReadOnlyFile::open(path);
    if (!file) {
        return std::unexpected(unreadable(path, file.error()));
    }
    if (!ContentReader::matches(*file, snapshot)) {
        return std::unexpected(changed(path));
    }
    return std::move(*file);
}

using Buffer = std::unique_ptr<std::byte[]>;

Buffer makeBuffer() {
    return std::make_unique_for_overwrite<std::byte[]>(ContentReader::kBufferSize);
}

} // namespace

std::expected<std::string, Failure> ContentReader::sha256(const std::string& path,
                                                          const FileSnapshot& expecting,
                                                          std::optional<std::int64_t> limit,
                                                          const CancellationFlag* cancel) {
    auto file = openMatching(path, expecting);
    if (!file) {
        return std::unexpected(std::move(file.error()));
    }
    if (!limit) {
        file->adviseSequential();
    }
    std::int64_t budget = limit.value_or(std::numeric_limits<std::int64_t>::max());
    Buffer buffer = makeBuffer();
    platform::Sha256 digest;
    while (budget > 0) {
        if (cancel != nullptr && cancel->isCancelled()) {
            return std::unexpected(cancelled(path));
        }
        auto asked = static_cast<std::size_t>(
            std::min<std::int64_t>(static_cast<std::int64_t>(kBufferSize), budget));
        auto count = file->read({buffer.get(), asked});
        if (!count) {
            return std::unexpected(unreadable(path, count.error()));
        }
        if (*count == 0) {
            break;
        }
        digest.update({buffer.get(), *count});
        budget -= static_cast<std::int64_t>(*count);
    }
    if (!matches(*file, expecting)) {
        return std::unexpected(changed(path));
    }
    return digest.hexDigest();
}

namespace {

// The byte comparison, adding a's bytes to `digest` when there is one.
std::expected<bool, Failure> compareFiles(const std::string& a, const FileSnapshot& snapshotA,
                                          const std::string& b, const FileSnapshot& snapshotB,
                                          const CancellationFlag& cancel,
                                          platform::Sha256* digest) {
    if (snapshotA.size != snapshotB.size) {
        return false;
    }
    auto fileA = ReadOnlyFile::open(a);
    if (!fileA) {
        return std::unexpected(unreadable(a, fileA.error()));
    }
    auto fileB = ReadOnlyFile::open(b);
    if (!fileB) {
        return std::unexpected(unreadable(b, fileB.error()));
    }
    if (!ContentReader::matches(*fileA, snapshotA)) {
        return std::unexpected(changed(a));
    }
    if (!ContentReader::matches(*fileB, snapshotB)) {
        return std::unexpected(changed(b));
    }
    fileA->adviseSequential();
    fileB->adviseSequential();
    Buffer bufferA = makeBuffer();
    Buffer bufferB = makeBuffer();
    for (;;) {
        if (cancel.isCancelled()) {
            return std::unexpected(cancelled(a));
        }
        auto filledA = fileA->fill({bufferA.get(), ContentReader::kBufferSize});
        if (!filledA) {
            return std::unexpected(unreadable(a, filledA.error()));
        }
        auto filledB = fileB->fill({bufferB.get(), ContentReader::kBufferSize});
        if (!filledB) {
            return std::unexpected(unreadable(b, filledB.error()));
        }
        if (*filledA != *filledB) {
            return false;
        }
        if (*filledA == 0) {
            if (!ContentReader::matches(*fileA, snapshotA)) {
                return std::unexpected(changed(a));
            }
            if (!ContentReader::matches(*fileB, snapshotB)) {
                return std::unexpected(changed(b));
            }
            return true;
        }
        if (std::memcmp(bufferA.get(), bufferB.get(), *filledA) != 0) {
            return false;
        }
        if (digest != nullptr) {
            digest->update({bufferA.get(), *filledA});
        }
    }
}

} // namespace

std::expected<bool, Failure>
ContentReader::sameBytes(const std::string& a, const FileSnapshot& snapshotA, const std::string& b,
                         const FileSnapshot& snapshotB, const CancellationFlag& cancel) {
    return compareFiles(a, snapshotA, b, snapshotB, cancel, nullptr);
}

std::expected<ContentReader::Comparison, Failure>
ContentReader::compareHashingFirst(const std::string& a, const FileSnapshot& snapshotA,
                                   const std::string& b, const FileSnapshot& snapshotB,
                                   const CancellationFlag& cancel) {
    platform::Sha256 digest;
    auto same = compareFiles(a, snapshotA, b, snapshotB, cancel, &digest);
    if (!same) {
        return std::unexpected(std::move(same.error()));
    }
    if (!*same) {
        return Comparison{};
    }
    return Comparison{.same = true, .digestOfA = digest.hexDigest()};
}

bool ContentReader::matches(const platform::ReadOnlyFile& file, const FileSnapshot& snapshot) {
    auto now = file.status();
    return now && now->device == snapshot.identity.device &&
           now->inode == snapshot.identity.inode && now->size == snapshot.size &&
           now->modifiedSeconds == snapshot.modifiedSeconds &&
           now->modifiedNanoseconds == snapshot.modifiedNanoseconds;
}

std::string_view rawValue(ContentReader::Failure::Kind kind) {
    switch (kind) {
    case Kind::unreadable:
        return "unreadable";
    case Kind::changed:
        return "changed";
    case Kind::cancelled:
        return "cancelled";
    }
    return "unreadable";
}

void PrintTo(ContentReader::Failure::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const ContentReader::Failure& failure, std::ostream* os) {
    *os << rawValue(failure.kind) << "(" << failure.path;
    if (!failure.detail.empty()) {
        *os << ": " << failure.detail;
    }
    *os << ")";
}

} // namespace brevant
