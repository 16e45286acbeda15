#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <string>

namespace brevant {

// How a copy is told apart from the other copies of its group, whose file
// names are often the same.
struct CopyLabels {
    // The folder as seen from the chosen root, starting with the root's own
    // name ("Pictures/Backup"); the whole folder when the copy lies outside
    // its root or the root is "/".
    [[nodiscard]] static std::string folderInRoot(const PhotoAsset& asset);
    // The copy's file name, followed by " in " and its folderInRoot when
    // another copy of the group has the same name.
    [[nodiscard]] static std::string distinctName(const PhotoAsset& asset,
                                                  const DuplicateGroup& group);
};

} // namespace brevant
