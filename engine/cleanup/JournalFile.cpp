#include "JournalFile.hpp"

#include "engine/cleanup/JournalTexts.hpp"
#include "engine/platform/FileLock.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/FolderListing.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/AtomicFile.hpp"

#include <cerrno>
#include <filesystem>

namespace brevant {

namespace {

constexpr mode_t kPermissions = 0600;
// Stands for "not a regular file" among the errno values readError takes.
constexpr int kNotAFile = -1;

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string folderOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

JournalError openError(std::string_view record, const std::string& path, int code) {
    if (code == EWOULDBLOCK) {
        return {code, journal_texts::inUse(record, nameOf(path))};
    }
    return {code, journal_texts::cannotOpen(record, nameOf(path), platform::errorText(code))};
}

JournalError writeError(std::string_view record, const std::string& path, int code) {
    return {code, journal_texts::cannotWrite(record, nameOf(path), platform::errorText(code))};
}

// A journal is only ever created once, for a plan not yet run, so a file of
// its name is one explanation; any other is said as it is.
JournalError createError(std::string_view record, const std::string& path, int code) {
    if (code == EEXIST) {
        return {code, journal_texts::alreadyExists(nameOf(path), folderOf(path))};
    }
    return {code, journal_texts::cannotCreate(record, nameOf(path), folderOf(path),
                                              platform::errorText(code))};
}

JournalError readError(std::string_view record, const std::string& path, int code) {
    if (code == ELOOP) {
        return {code, journal_texts::isLink(record, path)};
    }
    if (code == kNotAFile) {
        return {EINVAL, journal_texts::notAFile(record, nameOf(path))};
    }
    return {code, journal_texts::cannotRead(record, nameOf(path), platform::errorText(code))};
}

} // namespace

std::expected<JournalFile, JournalError> JournalFile::create(const std::string& path,
                                                             std::string_view record) {
    std::error_code folderError;
    std::filesystem::create_directories(folderOf(path), folderError);
    auto file = platform::AppendOnlyFile::create(path, kPermissions);
    if (!file) {
        // A folder that could not be made is the better explanation.
        int code = folderError ? folderError.value() : file.error();
        return std::unexpected(createError(record, path, code));
    }
    // Held until the run ends, so that nobody takes it for one cut short;
    // only a reader's brief look can hold it now.
    if (auto locked = file->lock(true); !locked) {
        return std::unexpected(writeError(record, path, locked.error()));
    }
    return JournalFile(path, std::move(*file), record);
}

std::expected<JournalFile, JournalError> JournalFile::appendingTo(const std::string& path,
                                                                  std::string_view record) {
    auto file = platform::AppendOnlyFile::open(path);
    if (!file) {
        return std::unexpected(openError(record, path, file.error()));
    }
    if (auto locked = file->lock(false); !locked) {
        return std::unexpected(openError(record, path, locked.error()));
    }
    auto torn = file->endsMidLine();
    if (!torn) {
        return std::unexpected(openError(record, path, torn.error()));
    }
    JournalFile journal(path, std::move(*file), record);
    if (*torn) {
        // Ends the torn line a crash left, so that it stays apart.
        if (auto ended = journal.file_.append("\n"); !ended) {
            return std::unexpected(writeError(record, path, ended.error()));
        }
    }
    return journal;
}

std::expected<void, JournalError> JournalFile::append(std::string lines) {
    if (lines.empty()) {
        return {};
    }
    if (file_.lastAppendCutShort()) {
        // Step past the piece of a line that write left, in the same call.
        lines.insert(lines.begin(), '\n');
    }
    if (auto appended = file_.append(lines); !appended) {
        return std::unexpected(writeError(record_, path_, appended.error()));
    }
    return {};
}

std::expected<std::string, JournalError> JournalFile::contents(const std::string& path,
                                                               std::string_view record) {
    auto bytes = AtomicFile::read(path);
    if (!bytes) {
        auto status = FileSnapshot::read(path);
        int code = !status                  ? ENOENT
                   : status->isSymbolicLink ? ELOOP
                   : status->isRegularFile  ? EACCES
                                            : kNotAFile;
        return std::unexpected(readError(record, path, code));
    }
    return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

JournalError JournalFile::unreadable(const std::string& path, std::string_view record) {
    return {EINVAL, journal_texts::unreadable(record, nameOf(path))};
}

std::vector<std::string> JournalFile::files(const std::string& directory, std::string_view prefix) {
    std::vector<std::string> paths;
    for (const auto& name :
         platform::folderEntries(directory).value_or(std::vector<std::string>{})) {
        if (name.starts_with(prefix) && name.ends_with(kSuffix)) {
            paths.push_back((std::filesystem::path(directory) / name).string());
        }
    }
    return paths;
}

std::string JournalFile::idText(const std::string& path, std::string_view prefix) {
    std::string name = nameOf(path);
    if (!name.starts_with(prefix) || !name.ends_with(kSuffix)) {
        return {};
    }
    return name.substr(prefix.size(), name.size() - prefix.size() - kSuffix.size());
}

bool JournalFile::isRunning(const std::string& path) {
    return platform::FileLock::isHeld(path);
}

} // namespace brevant
