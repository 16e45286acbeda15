#pragma once

#include <ctime>
#include <expected>
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
    [[nodiscard]] static std::expected<void, int> removeTrashInfo(const std::string& trashedPath);

    // Put Back in one call: renames the trashed item to `destination` without
    // replacing anything (EEXIST: occupied, nothing moved), then removes its
    // info record. The result is the rename's: once the item is back, a
    // record that could not be removed does not undo that.
    [[nodiscard]] static std::expected<void, int> putBack(const std::string& trashedPath,
                                                          const std::string& destination);
};

} // namespace brevant::platform
