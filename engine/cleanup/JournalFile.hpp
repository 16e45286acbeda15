#pragma once

#include "engine/platform/AppendOnlyFile.hpp"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Why a journal file could not be made, opened, written or read.
struct JournalError {
    // The errno value behind it (EINVAL for a journal without a plan).
    int code = 0;
    // A sentence for display.
    std::string description;

    friend bool operator==(const JournalError&, const JournalError&) = default;
};

// The file under every kind of journal: created once, exclusively, then only
// appended to, each write forced to the storage device; held under an
// exclusive lock by its one writer, so that a file still being written is
// never taken for one a crash left behind. `record` names the kind in
// sentences ("cleanup", "compression").
class JournalFile {
public:
    // Creates the directory with its parents when missing, then the file,
    // which must not exist (write-only, append, mode 0600), and takes its
    // lock for the life of the handle.
    [[nodiscard]] static std::expected<JournalFile, JournalError> create(const std::string& path,
                                                                         std::string_view record);

    // Opens an existing journal to add to it, holding its lock: refused with
    // EWOULDBLOCK while another writer holds it. When its last byte is not a
    // line feed (a line torn by a crash) one is written first, so the torn
    // piece stays a line of its own and the next entry starts cleanly.
    [[nodiscard]] static std::expected<JournalFile, JournalError>
    appendingTo(const std::string& path, std::string_view record);

    // The lines (each with its line feed) in one write call, then fsync.
    [[nodiscard]] std::expected<void, JournalError> append(std::string lines);

    [[nodiscard]] const std::string& path() const { return path_; }

    // The whole file, never through a final symbolic link.
    [[nodiscard]] static std::expected<std::string, JournalError> contents(const std::string& path,
                                                                           std::string_view record);

    // The error for a journal that holds no readable entry at all.
    [[nodiscard]] static JournalError unreadable(const std::string& path, std::string_view record);

    // The files directly in `directory` named prefix + ... + ".jsonl".
    [[nodiscard]] static std::vector<std::string> files(const std::string& directory,
                                                        std::string_view prefix);

    // The text between the prefix and ".jsonl" of such a file's name.
    [[nodiscard]] static std::string idText(const std::string& path, std::string_view prefix);

    // True while a writer holds the journal.
    [[nodiscard]] static bool isRunning(const std::string& path);

    static constexpr std::string_view kSuffix = ".jsonl";

private:
    JournalFile(std::string path, platform::AppendOnlyFile file, std::string_view record)
        : path_(std::move(path))
        , file_(std::move(file))
        , record_(record) {}

    std::string path_;
    platform::AppendOnlyFile file_;
    std::string_view record_;
};

} // namespace brevant
