#pragma once

#include "engine/platform/Volumes.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ContentReader.hpp"
#include "engine/scan/FolderSource.hpp"
#include "engine/scan/ScanProgress.hpp"
#include "engine/scan/ScanResult.hpp"
#include "engine/support/ParallelMap.hpp"

#include <cstddef>
#include <expected>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace brevant {

// The scan of chosen folders: walks them, reads every picture's header and
// proves byte-for-byte identical copies in narrowing passes: same size, same
// SHA-256 of the first 64 KiB, then the same bytes, compared one by one with
// the first of them, which alone is hashed in full for the group's id (its
// copies hold the same bytes, so the same digest). Files that still look
// alike after two such rounds are hashed in full and compared within equal
// digests.
struct ExactMatcher {
    using Counter = brevant::Counter;
    template <class Result> using ResultBox = brevant::ResultBox<Result>;
    using VolumeInfo = platform::VolumeInfo;

    using Progress = std::function<void(const ScanProgress&)>;
    using HashResult = std::expected<std::string, ContentReader::Failure>;
    // Digest to the indices of the items that have it, in item order.
    using Buckets = std::unordered_map<std::string, std::vector<std::size_t>>;
    using Failures = std::map<std::size_t, ContentReader::Failure>;

    // Places where a test can step into a running scan.
    struct Hooks {
        // Called for each batch of size groups once its first 64 KiB are
        // hashed, before its byte-by-byte pass.
        std::function<void()> beforeVerifying;
    };

    // Bytes hashed first: enough to tell most different photos apart.
    static constexpr std::int64_t kPartialHashBytes = 65'536;

    // Files hashed, or pairs compared, in one parallel pass. Most size
    // groups hold two pictures: passes over several groups at once keep
    // every worker busy. Size groups are settled (hashed, compared and
    // grouped), and progress reported, a batch at a time.
    static constexpr std::size_t kBatchSize = 64;

    // `only`, when given, limits the walk to those paths; `keepPictures`
    // returns every picture read in `ScanResult::pictures`. `progress` is
    // called on the calling thread and must not block.
    [[nodiscard]] static ScanResult scan(const std::vector<std::string>& paths, bool keepPictures,
                                         const FolderSource::OnlyPaths& only,
                                         const CancellationFlag& cancel, const Progress& progress,
                                         const Hooks& hooks = {});

    // The path lies in a folder that a cloud service keeps in sync.
    [[nodiscard]] static bool isCloudSynced(std::string_view path);

    // At most four workers; results in input order; a slot is empty only
    // when cancellation came before its item was taken.
    template <class Item, class Transform>
    [[nodiscard]] static auto parallelMap(const std::vector<Item>& items,
                                          const CancellationFlag& cancel, Transform transform) {
        return brevant::parallelMap(items, cancel, std::move(transform));
    }

    // Groups the items by digest; every failed item's failure goes to
    // `failures` by index, and an empty slot counts as cancelled.
    [[nodiscard]] static Buckets buckets(const std::vector<std::optional<HashResult>>& results,
                                         Failures& failures);

    // The detail of a picture skipped because no decoder for it is here.
    [[nodiscard]] static std::string cannotDecodeSentence(PhotoFormat format);
    // The detail of a RAW picture this computer cannot render in full.
    [[nodiscard]] static const std::string& cannotRenderRawSentence();
};

} // namespace brevant
