#pragma once

#include <ctime>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform {

// One trash directory of the freedesktop.org Trash: the trashed items lie in
// files/, and each item NAME has its record info/NAME.trashinfo.
struct TrashDirectory {
    std::string path;

    [[nodiscard]] std::string files() const { return path + "/files"; }

    [[nodiscard]] std::string info() const { return path + "/info"; }

    friend bool operator==(const TrashDirectory&, const TrashDirectory&) = default;
};

// Tests only: while one lives, its function is called on this thread in the
// instant between writing an item's record and renaming the item into the
// Trash, with the item's path, so that a test can change the item then.
class ScopedTrashMoveHook {
public:
    using Hook = std::function<void(const std::string& path)>;

    explicit ScopedTrashMoveHook(Hook hook);
    ScopedTrashMoveHook(const ScopedTrashMoveHook&) = delete;
    ScopedTrashMoveHook& operator=(const ScopedTrashMoveHook&) = delete;
    ScopedTrashMoveHook(ScopedTrashMoveHook&&) = delete;
    ScopedTrashMoveHook& operator=(ScopedTrashMoveHook&&) = delete;
    ~ScopedTrashMoveHook();

private:
    Hook hook_;
    const Hook* previous_;
};

// The freedesktop.org Trash, laid out so that desktop file managers and
// trash-cli list and restore what we put there. An item is only ever renamed
// within its own volume: never copied, never deleted. Errors are errno values.
struct FreedesktopTrash {
    // $XDG_DATA_HOME/Trash (the variable counts only when it holds an
    // absolute path), else ~/.local/share/Trash.
    [[nodiscard]] static TrashDirectory home();

    // The trash directories in which an item trashed from `path` can lie: the
    // home one and, when the item's folder is on another volume than the home
    // Trash, that volume's $topdir/.Trash/$uid and $topdir/.Trash-$uid.
    // Works for items that are gone; nothing is created.
    [[nodiscard]] static std::vector<TrashDirectory> candidates(const std::string& path);

    // Moves the item at the absolute `path` to the Trash of its own volume
    // and answers its new path in files/. The info record is created
    // exclusively and forced to disk before the item is renamed (without
    // replacing anything); if the rename fails the record is removed again
    // and the item is where it was. A name taken in files/ or info/ gives
    // the next of `candidateName`. EXDEV when no trash directory lies on the
    // item's volume; EINVAL for a relative path or an item already in that
    // Trash.
    [[nodiscard]] static std::expected<std::string, int> moveToTrash(const std::string& path);

    // The first step of moveToTrash alone: the trash directory on the item's
    // volume, made when missing, and the path in its files/ folder under the
    // first free name. Nothing is recorded or moved, so a caller can write
    // down where the item is about to go before it goes.
    [[nodiscard]] static std::expected<std::string, int> reserve(const std::string& path);

    // The second step: creates the record of `trashedPath` (a path reserve
    // answered) exclusively and on disk, then renames the item there without
    // replacing anything. EEXIST when the name was taken since it was
    // reserved; on any failure the item is where it was and no record of
    // ours is left.
    [[nodiscard]] static std::expected<void, int> moveInto(const std::string& path,
                                                           const std::string& trashedPath);

    // The original path that the record of the item at `trashedPath` names,
    // decoded; nothing when there is no readable record.
    [[nodiscard]] static std::optional<std::string> recordedPath(const std::string& trashedPath);

    // The text of the info record of an item trashed from `path` at
    // `deletionTime`, written in local time.
    [[nodiscard]] static std::string trashInfo(std::string_view path, std::time_t deletionTime);

    // `path` percent-encoded for the record's Path= key: every byte except
    // the unreserved characters of RFC 2396 and "/" becomes %XX, so spaces,
    // "%", non-ASCII and bytes that are not UTF-8 all survive.
    [[nodiscard]] static std::string encodedPath(std::string_view path);

    // The name tried on the given attempt (1, 2, ...): the item's own name,
    // then the number before the extension, "IMG_1.jpg", "IMG_1.2.jpg",
    // "IMG_1.3.jpg"; "README", "README.2". A name too long to carry its
    // ".trashinfo" record is shortened before the number, on a character
    // boundary, keeping the extension.
    [[nodiscard]] static std::string candidateName(std::string_view name, int attempt);

    // .../info/NAME.trashinfo for the trashed item .../files/NAME; nothing
    // when the path does not lie directly in a folder named "files".
    [[nodiscard]] static std::optional<std::string> infoPathFor(std::string_view trashedPath);

    // After a Put Back: removes the info record of the item that lay at
    // `trashedPath`. Refused with EEXIST while anything is still there, so an
    // item in the Trash never loses its record; EINVAL when the path is not
    // in a files/ folder or the record is not a regular file.
    // Without `sync` the caller synchronises the info/ folder itself, once
    // for many records.
    [[nodiscard]] static std::expected<void, int> removeTrashInfo(const std::string& trashedPath,
                                                                  bool sync = true);

    // Put Back in one call: renames the trashed item to `destination` without
    // replacing anything (EEXIST: occupied, nothing moved), then removes its
    // info record. The result is the rename's: once the item is back, a
    // record that could not be removed does not undo that.
    [[nodiscard]] static std::expected<void, int> putBack(const std::string& trashedPath,
                                                          const std::string& destination);
};

} // namespace brevant::platform
