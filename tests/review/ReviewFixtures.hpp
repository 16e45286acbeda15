#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <cstdint>
#include <string>
#include <vector>

// Copies made up for the keeper and review tests: all alike but for their
// path and file number, so each test changes only what it is about.
namespace brevant::testing {

inline PhotoAsset copyAt(const std::string& path, std::uint64_t inode) {
    PhotoAsset asset;
    asset.path = path;
    asset.root = "/photos";
    asset.snapshot.identity = {2049, inode};
    asset.snapshot.size = 1000;
    asset.snapshot.modifiedSeconds = 1'700'000'000;
    asset.snapshot.linkCount = 1;
    asset.snapshot.isRegularFile = true;
    asset.format = PhotoFormat::jpeg;
    asset.pixelWidth = 4000;
    asset.pixelHeight = 3000;
    return asset;
}

inline DuplicateGroup groupOf(std::vector<PhotoAsset> members) {
    std::string id = members.empty() ? std::string() : members.front().path;
    std::int64_t size = members.empty() ? 0 : members.front().size();
    return DuplicateGroup::make(id, size, std::move(members), MatchKind::identical);
}

} // namespace brevant::testing
