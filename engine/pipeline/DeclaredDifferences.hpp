#pragma once

#include "engine/review/NotDuplicateStore.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

namespace brevant {

// Brings the user's "not duplicates" decisions into a scan's index. Only
// pictures that are in some pair and have the size of a decided photo are
// read, so a scan with no decisions reads nothing more.
struct DeclaredDifferences {
    // Sets the index's declaredDifferent pairs from the store. A picture that
    // cannot be read is left as it is.
    static void apply(SimilarityIndex& index, const NotDuplicateStore& store,
                      const CancellationFlag& cancel);
};

} // namespace brevant
