#pragma once

#include "engine/cleanup/ChangeLock.hpp"
#include "engine/cleanup/Trasher.hpp"
#include "engine/compression/CompressionPlan.hpp"
#include "engine/compression/CompressionReport.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/platform/HeifWriter.hpp"
#include "engine/platform/VideoTranscoder.hpp"
#include "engine/scan/CancellationFlag.hpp"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Where a run is: the file in hand (its index from 0 in the plan) and, for
// a video, the frames written of those expected (0 when unknown).
struct CompressionProgress {
    std::size_t index = 0;
    std::size_t total = 0;
    std::int64_t frames = 0;
    std::int64_t totalFrames = 0;
    // The file is done (its outcome written).
    bool done = false;
};

// Carries out an approved compression plan: for each file, checks it is
// still the file found, writes its copy under a temporary name beside it
// (created exclusively, recorded in the journal first), checks the copy,
// gives it the original's modification time and a free name without ever
// replacing anything, and only then moves the original to the Trash the way
// a cleanup does (its Trash place in an intent first, the moved file checked
// after). A copy that fails a check is removed (it is our own unfinished
// output) and the reason recorded; the original stays. Nothing is ever
// deleted or overwritten. The run holds the data folder's change lock; its
// journal goes to the data folder's "Compressions" and the report is read
// back from it.
class Compressor {
public:
    using Progress = std::function<void(const CompressionProgress&)>;
    // Called with the item and its written copy before the copy is
    // checked; tests damage the copy here to see the check refuse it.
    using AfterWriting = std::function<void(const PlannedCompression&, const std::string& copy)>;

    struct Options {
        platform::PhotoEncoding photo;
        platform::VideoEncoding video;
        AfterWriting afterWriting;
    };

    explicit Compressor(platform::DataFolder data,
                        std::shared_ptr<const Trasher> trasher = nullptr);

    [[nodiscard]] std::string journalDirectory() const { return data_.compressions(); }

    void setWaiting(ChangeLock::Waiting waiting) { waiting_ = std::move(waiting); }

    void setOptions(Options options) { options_ = std::move(options); }

    // Settles the runs a crash cut short (their unfinished copies removed)
    // and answers their reports; under the change lock.
    [[nodiscard]] std::expected<std::vector<CompressionReport>, std::string> recover() const;

    // Refused, before anything is written, when another run holds the
    // change lock, when the plan ran before or its journal cannot be made.
    // The cancellation flag is read once per file, before it is touched:
    // the file in hand is finished, never left half-written.
    [[nodiscard]] std::expected<CompressionReport, std::string>
    run(const CompressionPlan& plan, const CancellationFlag& cancel,
        const Progress& progress = {}) const;

    // The re-check just before a file's copy is written; why it is passed
    // over, or nothing.
    [[nodiscard]] static std::optional<std::string> check(const PlannedCompression& item,
                                                          const CompressionPlan& plan);

private:
    platform::DataFolder data_;
    std::shared_ptr<const Trasher> trasher_;
    ChangeLock::Waiting waiting_;
    Options options_;
};

} // namespace brevant
