#include "KeeperMeasures.hpp"

#include <memory>
#include <string>
#include <unordered_map>

namespace brevant {

namespace {

struct Measured {
    FileSnapshot snapshot;
    double sharpness = 0;
    std::optional<int> quality;
    std::optional<FaceReading> faces;
};

using Table = std::unordered_map<std::string, Measured>;

// The entry for this very file: the same path, and a file that has not
// changed since it was measured.
const Measured* lookup(const Table& table, const PhotoAsset& asset) {
    auto found = table.find(asset.path);
    if (found == table.end() || !found->second.snapshot.isUnchanged(asset.snapshot)) {
        return nullptr;
    }
    return &found->second;
}

} // namespace

KeeperMeasures KeeperMeasures::from(const SimilarityIndex& index) {
    auto table = std::make_shared<Table>();
    for (std::size_t i = 0; i < index.pictures.size() && i < index.features.size(); ++i) {
        const auto& features = index.features[i];
        if (!features) {
            continue;
        }
        const PhotoAsset& picture = index.pictures[i];
        table->insert_or_assign(picture.path, Measured{picture.snapshot, features->sharpness,
                                                       features->qualityScore, features->faces});
    }
    std::shared_ptr<const Table> shared = std::move(table);
    KeeperMeasures measures;
    measures.sharpness = [shared](const PhotoAsset& asset) -> std::optional<double> {
        const Measured* found = lookup(*shared, asset);
        return found != nullptr ? std::optional(found->sharpness) : std::nullopt;
    };
    measures.quality = [shared](const PhotoAsset& asset) -> std::optional<int> {
        const Measured* found = lookup(*shared, asset);
        return found != nullptr ? found->quality : std::nullopt;
    };
    measures.faces = [shared](const PhotoAsset& asset) -> std::optional<FaceReading> {
        const Measured* found = lookup(*shared, asset);
        return found != nullptr ? found->faces : std::nullopt;
    };
    return measures;
}

void KeeperMeasures::applyTo(KeeperPolicy::Context& context) const {
    context.sharpness = sharpness;
    context.quality = quality;
    context.faces = faces;
}

} // namespace brevant
