#include "CopyLabels.hpp"

#include "engine/support/PathNames.hpp"

#include <algorithm>

namespace brevant {

std::string CopyLabels::folderInRoot(const PhotoAsset& asset) {
    std::string whole = asset.folder();
    const std::string& root = asset.root;
    if (asset.library || root.empty() || root == "/" || !PathNames::isInside(whole, root)) {
        return whole;
    }
    return PathNames::lastComponent(root) + whole.substr(root.size());
}

std::string CopyLabels::distinctName(const PhotoAsset& asset, const DuplicateGroup& group) {
    std::string name = asset.name();
    bool shared = std::ranges::any_of(group.members, [&](const PhotoAsset& other) {
        return other.path != asset.path && other.name() == name;
    });
    return shared ? name + " in " + folderInRoot(asset) : name;
}

} // namespace brevant
