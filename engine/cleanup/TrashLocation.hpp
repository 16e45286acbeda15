#pragma once

#include "engine/scan/FileSnapshot.hpp"

#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Where in the Trash an item could be: the files/ folders of the
// freedesktop.org trash directories.
struct TrashLocation {
    // The current user's home Trash: $XDG_DATA_HOME/Trash/files, by default
    // ~/.local/share/Trash/files.
    [[nodiscard]] static std::string home();

    // The folders in which an item trashed from `path` can end up: the home
    // Trash and, when the item's folder is on another volume, that volume's
    // .Trash/$uid/files and .Trash-$uid/files. The item need not exist.
    [[nodiscard]] static std::vector<std::string> candidates(const std::string& path);

    // The first entry of the folder (one level, in name order) that is a
    // regular file, not a link, with the given device and inode; nothing
    // when there is none or the folder cannot be listed.
    [[nodiscard]] static std::optional<std::string> find(const std::string& folder,
                                                         const FileIdentity& identity);
};

} // namespace brevant
