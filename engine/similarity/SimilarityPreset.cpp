#include "SimilarityPreset.hpp"

#include "engine/similarity/SimilarityThresholds.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(SimilarityPreset preset) {
    switch (preset) {
    case SimilarityPreset::conservative:
        return "conservative";
    case SimilarityPreset::balanced:
        return "balanced";
    case SimilarityPreset::broad:
        return "broad";
    }
    return "balanced";
}

std::string_view displayName(SimilarityPreset preset) {
    switch (preset) {
    case SimilarityPreset::conservative:
        return "Conservative";
    case SimilarityPreset::balanced:
        return "Balanced";
    case SimilarityPreset::broad:
        return "Broad";
    }
    return "Balanced";
}

std::string_view explanation(SimilarityPreset preset) {
    switch (preset) {
    case SimilarityPreset::conservative:
        return "Only near-copies: resized, re-saved, rotated or lightly edited versions of one "
               "photo.";
    case SimilarityPreset::balanced:
        return "Also lightly cropped or filtered versions. Check each group.";
    case SimilarityPreset::broad:
        return "Reaches further and will include look-alikes that are different photos. Check "
               "every group carefully.";
    }
    return "";
}

double maxDistance(SimilarityPreset preset) {
    switch (preset) {
    case SimilarityPreset::conservative:
        return SimilarityThresholds::kConservative;
    case SimilarityPreset::balanced:
        return SimilarityThresholds::kBalanced;
    case SimilarityPreset::broad:
        return SimilarityThresholds::kBroad;
    }
    return SimilarityThresholds::kBalanced;
}

bool accepts(SimilarityPreset preset, const SimilarPair& pair) {
    if (!pair.shapesAgree || pair.distance > maxDistance(preset)) {
        return false;
    }
    if (preset == SimilarityPreset::conservative) {
        return pair.detail <= SimilarityThresholds::kConservativeDetail;
    }
    return true;
}

void PrintTo(SimilarityPreset preset, std::ostream* os) {
    *os << rawValue(preset);
}

} // namespace brevant
