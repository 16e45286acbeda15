#include "FreedesktopTrash.hpp"

#include "engine/platform/DataFolder.hpp"
#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/Mounts.hpp"
#include "engine/platform/ProcessInfo.hpp"
#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <glib.h>
#include <iterator>
#include <memory>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace brevant::platform {

namespace {

constexpr std::string_view kInfoExtension = ".trashinfo";
constexpr mode_t kPrivateFolderMode = 0700;
constexpr mode_t kRecordMode = 0600;
// Beyond this many taken names something is wrong; give up rather than spin.
constexpr int kMaxAttempts = 10000;
// An "extension" longer than this is part of the name, not a type.
constexpr std::size_t kMaxExtension = 32;
// A record holds a path of at most PATH_MAX bytes, each at most three when
// encoded, and a date.
constexpr std::size_t kMaxRecordSize = 3 * PATH_MAX + 256;

// Owns one open file descriptor.
class Descriptor {
public:
    explicit Descriptor(int descriptor = -1)
        : descriptor_(descriptor) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    Descriptor(Descriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}

    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    ~Descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    [[nodiscard]] int get() const { return descriptor_; }

    // Closes now, answering whether the close succeeded.
    [[nodiscard]] bool close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

private:
    int descriptor_ = -1;
};

// A trash directory whose files/ and info/ folders are open, so the move
// cannot be redirected by a folder swapped in on the way.
struct OpenTrash {
    Descriptor files;
    Descriptor info;
};

thread_local const ScopedTrashMoveHook::Hook* currentMoveHook = nullptr;

std::string userId() {
    return std::to_string(::getuid());
}

void syncFolder(int folder) {
    if (folder >= 0) {
        ::fsync(folder);
    }
}

// The device of the folder, or of its nearest ancestor that exists: where the
// folder is, or would be made.
dev_t deviceOfNearestFolder(std::string folder) {
    struct stat status{};
    while (::stat(folder.c_str(), &status) != 0 && folder != "/" && !folder.empty()) {
        folder = PathNames::parentFolder(folder);
    }
    return status.st_dev;
}

// The mount point of the volume holding the folder (or its nearest existing
// ancestor), found with the folder's links resolved.
std::optional<std::string> topDirectoryOf(std::string folder) {
    std::optional<std::string> real = realPath(folder);
    while (!real && folder != "/" && !folder.empty()) {
        folder = PathNames::parentFolder(folder);
        real = realPath(folder);
    }
    if (!real) {
        return std::nullopt;
    }
    MountTable mounts = MountTable::load();
    const MountEntry* mount = mounts.mountFor(*real);
    if (mount == nullptr) {
        return std::nullopt;
    }
    return mount->mountPoint;
}

std::vector<TrashDirectory> volumeTrashes(const std::string& topDirectory) {
    std::string top = topDirectory == "/" ? "" : topDirectory;
    return {TrashDirectory{top + "/.Trash/" + userId()},
            TrashDirectory{top + "/.Trash-" + userId()}};
}

// A real folder (not a link) that the current user owns, made with mode
// 0700 when missing.
std::expected<void, int> ensurePrivateFolder(const std::string& folder) {
    if (::mkdir(folder.c_str(), kPrivateFolderMode) != 0 && errno != EEXIST) {
        return std::unexpected(errno);
    }
    struct stat status{};
    if (::lstat(folder.c_str(), &status) != 0) {
        return std::unexpected(errno);
    }
    if (S_ISLNK(status.st_mode)) {
        return std::unexpected(ELOOP);
    }
    if (!S_ISDIR(status.st_mode)) {
        return std::unexpected(ENOTDIR);
    }
    if (status.st_uid != ::getuid()) {
        return std::unexpected(EACCES);
    }
    return {};
}

// The shared $topdir/.Trash is used only when it is a real folder with the
// sticky bit, so nobody can remove or replace another user's trash in it.
bool isUsableSharedTrash(const std::string& folder) {
    struct stat status{};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           (status.st_mode & S_ISVTX) != 0;
}

std::expected<TrashDirectory, int> volumeTrashFor(const std::string& topDirectory) {
    auto trashes = volumeTrashes(topDirectory);
    const TrashDirectory& shared = trashes[0];
    if (isUsableSharedTrash(PathNames::parentFolder(shared.path)) &&
        ensurePrivateFolder(shared.path)) {
        return shared;
    }
    const TrashDirectory& own = trashes[1];
    if (auto made = ensurePrivateFolder(own.path); !made) {
        return std::unexpected(made.error());
    }
    return own;
}

std::expected<TrashDirectory, int> homeTrashReady() {
    TrashDirectory home = FreedesktopTrash::home();
    std::error_code error;
    std::filesystem::create_directories(PathNames::parentFolder(home.path), error);
    if (::mkdir(home.path.c_str(), kPrivateFolderMode) != 0 && errno != EEXIST) {
        return std::unexpected(errno);
    }
    return home;
}

// Where an item on `device` is trashed: the home Trash when it shares the
// volume, else a trash directory at the top of the item's own volume.
std::expected<TrashDirectory, int> trashDirectoryFor(const std::string& path, dev_t device) {
    if (deviceOfNearestFolder(FreedesktopTrash::home().path) == device) {
        return homeTrashReady();
    }
    std::optional<std::string> top = topDirectoryOf(PathNames::parentFolder(path));
    struct stat status{};
    if (!top || ::lstat(top->c_str(), &status) != 0 || status.st_dev != device) {
        return std::unexpected(EXDEV);
    }
    return volumeTrashFor(*top);
}

std::expected<Descriptor, int> openSubfolder(const std::string& folder) {
    if (auto made = ensurePrivateFolder(folder); !made) {
        return std::unexpected(made.error());
    }
    Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (descriptor.get() < 0) {
        return std::unexpected(errno);
    }
    return descriptor;
}

std::expected<OpenTrash, int> openTrash(const TrashDirectory& directory) {
    auto files = openSubfolder(directory.files());
    if (!files) {
        return std::unexpected(files.error());
    }
    auto info = openSubfolder(directory.info());
    if (!info) {
        return std::unexpected(info.error());
    }
    return OpenTrash{std::move(*files), std::move(*info)};
}

bool isInsideTrash(const std::string& path, const TrashDirectory& directory) {
    auto folder = realPath(PathNames::parentFolder(path));
    auto trash = realPath(directory.path);
    return folder && trash && PathNames::isInside(*folder, *trash);
}

bool writeAll(int descriptor, std::span<const char> bytes) {
    while (!bytes.empty()) {
        ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

// Writes the record info/NAME.trashinfo, created exclusively and on disk
// before anything else happens.
std::expected<void, int> writeRecord(int infoFolder, const std::string& recordName,
                                     std::string_view text) {
    Descriptor record(::openat(infoFolder, recordName.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kRecordMode));
    if (record.get() < 0) {
        return std::unexpected(errno);
    }
    bool written = writeAll(record.get(), text) && ::fsync(record.get()) == 0;
    int error = errno;
    if (!record.close() && written) {
        written = false;
        error = errno;
    }
    if (!written) {
        ::unlinkat(infoFolder, recordName.c_str(), 0);
        return std::unexpected(error != 0 ? error : EIO);
    }
    syncFolder(infoFolder);
    return {};
}

// Records the move under `name`, then renames the item to files/NAME. When
// the rename fails the record of a move that never happened goes again.
std::expected<void, int> placeUnder(const OpenTrash& trash, const std::string& path,
                                    const std::string& name, std::string_view record) {
    std::string recordName = name + std::string(kInfoExtension);
    if (auto written = writeRecord(trash.info.get(), recordName, record); !written) {
        return written;
    }
    if (currentMoveHook != nullptr) {
        (*currentMoveHook)(path);
    }
    if (::renameat2(AT_FDCWD, path.c_str(), trash.files.get(), name.c_str(), RENAME_NOREPLACE) !=
        0) {
        int error = errno;
        ::unlinkat(trash.info.get(), recordName.c_str(), 0);
        syncFolder(trash.info.get());
        return std::unexpected(error);
    }
    syncFolder(trash.files.get());
    return {};
}

bool isTaken(int folder, const std::string& name) {
    struct stat status{};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isAcceptedPath(const std::string& path) {
    if (!path.starts_with('/') || path.ends_with('/')) {
        return false;
    }
    std::string name = PathNames::lastComponent(path);
    return name != "." && name != "..";
}

// Cuts the text to at most `limit` bytes without splitting a UTF-8
// sequence.
std::string_view cutOnCharacter(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    std::size_t cut = limit;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0U) == 0x80U) {
        --cut;
    }
    return text.substr(0, cut);
}

// The trash directory for the item, with its files/ and info/ folders open.
struct ItemTrash {
    TrashDirectory directory;
    OpenTrash open;
};

std::expected<ItemTrash, int> trashFor(const std::string& path) {
    if (!isAcceptedPath(path)) {
        return std::unexpected(EINVAL);
    }
    struct stat item{};
    if (::lstat(path.c_str(), &item) != 0) {
        return std::unexpected(errno);
    }
    auto directory = trashDirectoryFor(path, item.st_dev);
    if (!directory) {
        return std::unexpected(directory.error());
    }
    auto trash = openTrash(*directory);
    if (!trash) {
        return std::unexpected(trash.error());
    }
    if (isInsideTrash(path, *directory)) {
        return std::unexpected(EINVAL);
    }
    return ItemTrash{std::move(*directory), std::move(*trash)};
}

} // namespace

ScopedTrashMoveHook::ScopedTrashMoveHook(Hook hook)
    : hook_(std::move(hook))
    , previous_(std::exchange(currentMoveHook, &hook_)) {}

ScopedTrashMoveHook::~ScopedTrashMoveHook() {
    currentMoveHook = previous_;
}

TrashDirectory FreedesktopTrash::home() {
    return TrashDirectory{DataFolder::dataHome() + "/Trash"};
}

std::vector<TrashDirectory> FreedesktopTrash::candidates(const std::string& path) {
    TrashDirectory homeTrash = home();
    std::vector<TrashDirectory> found{homeTrash};
    std::string folder = PathNames::parentFolder(path);
    if (deviceOfNearestFolder(folder) == deviceOfNearestFolder(homeTrash.path)) {
        return found;
    }
    if (std::optional<std::string> top = topDirectoryOf(folder)) {
        std::ranges::copy(volumeTrashes(*top), std::back_inserter(found));
    }
    return found;
}

std::expected<std::string, int> FreedesktopTrash::moveToTrash(const std::string& path) {
    for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
        auto reserved = reserve(path);
        if (!reserved) {
            return std::unexpected(reserved.error());
        }
        auto moved = moveInto(path, *reserved);
        if (moved) {
            return *reserved;
        }
        if (moved.error() != EEXIST) {
            return std::unexpected(moved.error());
        }
    }
    return std::unexpected(EEXIST);
}

std::expected<std::string, int> FreedesktopTrash::reserve(const std::string& path) {
    auto trash = trashFor(path);
    if (!trash) {
        return std::unexpected(trash.error());
    }
    std::string name = PathNames::lastComponent(path);
    for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
        std::string candidate = candidateName(name, attempt);
        if (!isTaken(trash->open.files.get(), candidate) &&
            !isTaken(trash->open.info.get(), candidate + std::string(kInfoExtension))) {
            return trash->directory.files() + "/" + candidate;
        }
    }
    return std::unexpected(EEXIST);
}

std::expected<void, int> FreedesktopTrash::moveInto(const std::string& path,
                                                    const std::string& trashedPath) {
    auto trash = trashFor(path);
    if (!trash) {
        return std::unexpected(trash.error());
    }
    std::string name = PathNames::lastComponent(trashedPath);
    if (PathNames::parentFolder(trashedPath) != trash->directory.files() || name.empty()) {
        return std::unexpected(EINVAL);
    }
    auto placed = placeUnder(trash->open, path, name, trashInfo(path, std::time(nullptr)));
    if (!placed) {
        return placed;
    }
    syncFolder(PathNames::parentFolder(path));
    return {};
}

std::optional<std::string> FreedesktopTrash::recordedPath(const std::string& trashedPath) {
    std::optional<std::string> record = infoPathFor(trashedPath);
    if (!record) {
        return std::nullopt;
    }
    Descriptor file(::open(record->c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) {
        return std::nullopt;
    }
    std::array<char, kMaxRecordSize> bytes{};
    ssize_t count = ::read(file.get(), bytes.data(), bytes.size());
    if (count <= 0) {
        return std::nullopt;
    }
    std::string_view text(bytes.data(), static_cast<std::size_t>(count));
    constexpr std::string_view kKey = "\nPath=";
    std::size_t start = text.find(kKey);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    start += kKey.size();
    std::string encoded(text.substr(start, text.find('\n', start) - start));
    std::unique_ptr<char, decltype(&g_free)> decoded(
        g_uri_unescape_segment(encoded.data(), encoded.data() + encoded.size(), nullptr), g_free);
    if (!decoded) {
        return std::nullopt;
    }
    return std::string(decoded.get());
}

std::string FreedesktopTrash::trashInfo(std::string_view path, std::time_t deletionTime) {
    std::tm local{};
    ::localtime_r(&deletionTime, &local);
    std::array<char, 32> date{};
    std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return fmt::format("[Trash Info]\nPath={}\nDeletionDate={}\n", encodedPath(path),
                       std::string_view(date.data(), length));
}

std::string FreedesktopTrash::encodedPath(std::string_view path) {
    static constexpr std::string_view kKept = "-_.!~*'()/";
    std::string encoded;
    encoded.reserve(path.size());
    for (char c : path) {
        bool isAsciiAlphanumeric =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (isAsciiAlphanumeric || kKept.find(c) != std::string_view::npos) {
            encoded.push_back(c);
        } else {
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        }
    }
    return encoded;
}

std::string FreedesktopTrash::candidateName(std::string_view name, int attempt) {
    std::size_t dot = name.rfind('.');
    bool hasExtension =
        dot != std::string_view::npos && dot != 0 && name.size() - dot <= kMaxExtension + 1;
    std::string_view stem = hasExtension ? name.substr(0, dot) : name;
    std::string_view extension = hasExtension ? name.substr(dot) : std::string_view();
    std::string number = attempt > 1 ? fmt::format(".{}", attempt) : std::string();
    std::size_t budget = NAME_MAX - kInfoExtension.size() - number.size() - extension.size();
    return fmt::format("{}{}{}", cutOnCharacter(stem, budget), number, extension);
}

std::optional<std::string> FreedesktopTrash::infoPathFor(std::string_view trashedPath) {
    std::string folder = PathNames::parentFolder(trashedPath);
    std::string name = PathNames::lastComponent(trashedPath);
    if (PathNames::lastComponent(folder) != "files" || name.empty() || name == "/" ||
        trashedPath.ends_with('/')) {
        return std::nullopt;
    }
    return PathNames::parentFolder(folder) + "/info/" + name + std::string(kInfoExtension);
}

std::expected<void, int> FreedesktopTrash::removeTrashInfo(const std::string& trashedPath,
                                                           bool sync) {
    std::optional<std::string> record = infoPathFor(trashedPath);
    if (!record) {
        return std::unexpected(EINVAL);
    }
    struct stat status{};
    if (::lstat(trashedPath.c_str(), &status) == 0) {
        return std::unexpected(EEXIST);
    }
    if (::lstat(record->c_str(), &status) != 0) {
        return std::unexpected(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected(EINVAL);
    }
    if (::unlink(record->c_str()) != 0) {
        return std::unexpected(errno);
    }
    if (sync) {
        syncFolder(PathNames::parentFolder(*record));
    }
    return {};
}

std::expected<void, int> FreedesktopTrash::putBack(const std::string& trashedPath,
                                                   const std::string& destination) {
    if (auto moved = renameNoReplace(trashedPath, destination); !moved) {
        return moved;
    }
    syncFolder(PathNames::parentFolder(destination));
    syncFolder(PathNames::parentFolder(trashedPath));
    (void)removeTrashInfo(trashedPath);
    return {};
}

} // namespace brevant::platform
