#pragma once

#include "engine/review/ScanMode.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"

#include <set>
#include <string>
#include <vector>

namespace brevant {

// What the user had decided in the review of some folders in one mode: the
// copies marked and the groups looked through, each with the snapshot of its
// files at that moment, so that a later scan takes back only what still
// holds for the same files.
struct SavedReview {
    struct Copy {
        std::string path;
        FileSnapshot snapshot;

        friend bool operator==(const Copy&, const Copy&) = default;
    };

    struct Group {
        std::string id;
        std::vector<Copy> members;

        friend bool operator==(const Group&, const Group&) = default;
    };

    // The scanned roots, sorted: with the mode's kind, what a review is
    // known by. The preset is not part of it, since changing it only regroups
    // the same pictures.
    std::vector<std::string> folders;
    ScanMode mode;
    Date saved;
    std::vector<Copy> marks;
    std::vector<Group> reviewed;

    [[nodiscard]] bool sameKey(const std::vector<std::string>& otherFolders,
                               ScanMode::Kind kind) const;
    // The roots in the order that keys compare them.
    [[nodiscard]] static std::vector<std::string> keyFolders(std::vector<std::string> folders);

    friend bool operator==(const SavedReview&, const SavedReview&) = default;
};

} // namespace brevant
