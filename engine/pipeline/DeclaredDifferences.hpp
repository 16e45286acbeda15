#pragma once

#include "engine/pipeline/ScanOutcome.hpp"
#include "engine/review/NotDuplicateStore.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/similarity/SimilarityIndex.hpp"

#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Brings the user's "not duplicates" decisions into a scan's index. Only
// pictures that are in some pair and have the size of a decided photo are
// read, so a scan with no decisions reads nothing more.
struct DeclaredDifferences {
    // Each decision lists pictures of which every two are different photos.
    using Decisions = std::vector<std::vector<std::string>>;

    // Why copies of an identical group cannot be said to be different photos.
    static constexpr std::string_view kIdenticalNotDifferent =
        "Identical copies hold the same picture, so they cannot be different photos.";

    // Sets the index's declaredDifferent pairs from the store. A picture that
    // cannot be read is left as it is.
    static void apply(SimilarityIndex& index, const NotDuplicateStore& store,
                      const CancellationFlag& cancel);

    // Records the decisions in the outcome's "not duplicates" file and
    // answers the outcome's index with every decision of the file applied.
    // Refused, with nothing recorded, without a similarity index (identical
    // copies are never different photos) or when the store refuses any
    // decision; the sentence says why. Reads neither the session nor the
    // groups, so it may run on another thread than the session's.
    [[nodiscard]] static std::expected<std::shared_ptr<const SimilarityIndex>, std::string>
    declare(const ScanOutcome& outcome, const Decisions& decisions, const CancellationFlag& cancel);

    // The outcome over the index `declare` answered: its groups formed again
    // as a rescan would (a group of different photos splits or goes), with a
    // fresh session that carries the marks over. Nothing is scanned again.
    [[nodiscard]] static ScanOutcome regrouped(const ScanOutcome& outcome,
                                               std::shared_ptr<const SimilarityIndex> index);
};

} // namespace brevant
