#include "CatalogRecheck.hpp"

#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <ostream>

namespace brevant {

void PrintTo(const SkippedMark& skipped, std::ostream* os) {
    *os << "SkippedMark(\"" << skipped.name << "\", \"" << skipped.reason << "\")";
}

bool CatalogRecheck::isUnchanged(const std::string& path, const FileSnapshot& planned) {
    auto now = FileSnapshot::read(path);
    return now && !now->isSymbolicLink && now->isRegularFile && now->isUnchanged(planned);
}

bool CatalogRecheck::hasKeeperLeft(const PlannedRemoval& removal) {
    return std::ranges::any_of(removal.keepers, [&](const KeeperEvidence& keeper) {
        return keeper.path != removal.path && isUnchanged(keeper.path, keeper.snapshot);
    });
}

SkippedMark CatalogRecheck::skipped(const PlannedRemoval& removal, std::string_view reason) {
    return {PathNames::lastComponent(removal.path), std::string(reason)};
}

} // namespace brevant
