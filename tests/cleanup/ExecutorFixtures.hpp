#pragma once

#include "tests/cleanup/CleanupFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/fixtures/TempTree.hpp"

#include "engine/cleanup/CleanupApproval.hpp"
#include "engine/cleanup/CleanupExecutor.hpp"
#include "engine/cleanup/CleanupJournal.hpp"
#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/scan/ContentReader.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// Real files for the executor and Put Back: a folder of photos, the Trash
// under XDG_DATA_HOME and the journals, all inside one temporary folder.
namespace brevant::testing {

struct CleanupWorkspace {
    TempTree tree;
    ScopedEnvironment dataHome{"XDG_DATA_HOME", tree.path("data")};
    std::string photos = tree.folder("photos");
    // The data folder: the journals, the lock store and the change lock.
    platform::DataFolder data{tree.root()};
    std::string journals = data.cleanups();

    // A photo under photos/.
    [[nodiscard]] std::string photo(std::string_view relative, std::string_view bytes) const {
        return tree.file("photos/" + std::string(relative), bytes);
    }

    [[nodiscard]] std::string trashFiles() const { return tree.path("data/Trash/files"); }

    [[nodiscard]] std::string trashInfo(std::string_view name) const {
        return tree.path("data/Trash/info/" + std::string(name) + ".trashinfo");
    }

    [[nodiscard]] std::string journalOf(const CleanupPlan& plan) const {
        return CleanupJournal::pathFor(plan.id, journals);
    }

    // The plan run with its approval; `run` fails the test on a refusal.
    [[nodiscard]] std::expected<CleanupReport, ExecutionRefusal>
    attempt(const CleanupPlan& plan, std::shared_ptr<const Trasher> trasher = nullptr) const;
    [[nodiscard]] CleanupReport run(const CleanupPlan& plan,
                                    std::shared_ptr<const Trasher> trasher = nullptr) const;
};

// File operations a test makes; a failure ends the test with the reason.
inline void moveFile(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) {
        throw std::runtime_error("rename " + from + ": " + std::strerror(errno));
    }
}

inline void removeFile(const std::string& path) {
    if (::remove(path.c_str()) != 0) {
        throw std::runtime_error("remove " + path + ": " + std::strerror(errno));
    }
}

inline void linkTo(const std::string& target, const std::string& at) {
    if (::symlink(target.c_str(), at.c_str()) != 0) {
        throw std::runtime_error("symlink " + at + ": " + std::strerror(errno));
    }
}

inline void setMode(const std::string& path, mode_t mode) {
    if (::chmod(path.c_str(), mode) != 0) {
        throw std::runtime_error("chmod " + path + ": " + std::strerror(errno));
    }
}

inline bool exists(const std::string& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

// A picture as the scan found it under `root`.
inline PhotoAsset assetAt(const std::string& path, const std::string& root) {
    PhotoAsset asset;
    asset.path = path;
    asset.root = root;
    asset.snapshot = snapshotOf(path);
    asset.format = PhotoFormat::jpeg;
    return asset;
}

// An identical group named, as the matcher names it, by its content digest.
inline DuplicateGroup identicalGroup(const std::vector<std::string>& paths,
                                     const std::string& root) {
    std::vector<PhotoAsset> members;
    members.reserve(paths.size());
    for (const auto& path : paths) {
        members.push_back(assetAt(path, root));
    }
    auto digest =
        ContentReader::sha256(paths.front(), members.front().snapshot, std::nullopt, nullptr);
    if (!digest) {
        throw std::runtime_error("cannot hash " + paths.front());
    }
    std::int64_t size = members.front().size();
    return DuplicateGroup::make(*digest, size, std::move(members), MatchKind::identical);
}

inline DuplicateGroup similarGroup(std::string id, const std::vector<std::string>& paths,
                                   const std::string& root, MatchKind kind = MatchKind::similar) {
    std::vector<PhotoAsset> members;
    members.reserve(paths.size());
    for (const auto& path : paths) {
        members.push_back(assetAt(path, root));
    }
    std::int64_t size = members.front().size();
    return DuplicateGroup::make(std::move(id), size, std::move(members), kind, 0.1F);
}

inline CleanupApproval approvalOf(const CleanupPlan& plan) {
    return {plan.id, fixedDate()};
}

inline std::expected<CleanupReport, ExecutionRefusal>
CleanupWorkspace::attempt(const CleanupPlan& plan, std::shared_ptr<const Trasher> trasher) const {
    CancellationFlag cancel;
    return CleanupExecutor(data, std::move(trasher)).execute(plan, approvalOf(plan), cancel);
}

inline CleanupReport CleanupWorkspace::run(const CleanupPlan& plan,
                                           std::shared_ptr<const Trasher> trasher) const {
    auto report = attempt(plan, std::move(trasher));
    EXPECT_TRUE(report.has_value()) << report.error().message();
    return report.value_or(CleanupReport{});
}

// Sets the modification time to the given seconds and nanoseconds, without
// following a final link.
inline void setModified(const std::string& path, std::int64_t seconds, std::int64_t nanoseconds) {
    std::array<timespec, 2> times{};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<std::time_t>(seconds);
    times[1].tv_nsec = static_cast<long>(nanoseconds);
    if (::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
        throw std::runtime_error("utimensat " + path + ": " + std::strerror(errno));
    }
}

// The same size and modification time, other bytes, same file number: a
// change that only reading the contents can see.
inline void overwriteKeepingTimes(const std::string& path, std::string_view bytes) {
    FileSnapshot before = snapshotOf(path);
    int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0 ||
        ::pwrite(descriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("cannot overwrite " + path);
    }
    ::close(descriptor);
    setModified(path, before.modifiedSeconds, before.modifiedNanoseconds);
}

// The journal's lines as (kind, itemID) pairs, read from the file itself.
inline std::vector<std::pair<std::string, std::string>> journalLines(const std::string& path) {
    std::vector<std::pair<std::string, std::string>> lines;
    std::string contents = readFile(path);
    std::size_t start = 0;
    while (start < contents.size()) {
        std::size_t end = contents.find('\n', start);
        auto entry = CleanupJournal::Entry::decode(contents.substr(start, end - start));
        if (entry) {
            lines.emplace_back(std::string(rawValue(entry->kind)), entry->itemID.value_or(""));
        } else {
            lines.emplace_back("?", "");
        }
        start = end == std::string::npos ? contents.size() : end + 1;
    }
    return lines;
}

} // namespace brevant::testing
