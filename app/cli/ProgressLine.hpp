#pragma once

#include "engine/pipeline/PipelineProgress.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ScanProgress.hpp"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace brevant::cli {

// One line of progress for long work, redrawn in place at most ten times a
// second: the stage, counts so far and, where the total is known, a bar.
// Draws only on a terminal; on a pipe or into a file it prints nothing.
class ProgressLine {
public:
    // What one drawing shows.
    struct State {
        std::string stage;
        // "412 of 1000" or "1200 found, 800 examined".
        std::string counts;
        // How much of the work is done, 0 to 1, when the total is known.
        std::optional<double> fraction;
        // The first Ctrl-C came: the work stops after the current item.
        bool stopping = false;

        friend bool operator==(const State&, const State&) = default;
    };

    // `enabled` when `stream` is a terminal. With `cancel`, the line says
    // the work is stopping once the first Ctrl-C has set it.
    ProgressLine(std::FILE* stream, bool enabled, const CancellationFlag* cancel = nullptr);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ProgressLine(ProgressLine&&) = delete;
    ProgressLine& operator=(ProgressLine&&) = delete;
    ~ProgressLine();

    // The scan's stage and counts; a scan's total is not known ahead.
    void show(const ScanProgress& progress);
    // A stage that works through a known number of pictures.
    void show(ScanProgress::Stage stage, int done, int total);
    // Where a scan is on its way to a review: counted against a total once
    // one is known.
    void show(const PipelineProgress& progress);
    // Any work through a known number of items; `more` adds counts after
    // "done of total" (", 2 skipped").
    void show(std::string_view stage, std::int64_t done, std::int64_t total,
              std::string_view more = {});
    // Any work whose end is not known: its stage and counts.
    void show(std::string_view stage, std::string_view counts);
    // Removes the line, if one was drawn, so that output can follow.
    void clear();

    // The line as drawn into `width` columns: never longer than width - 1,
    // so that the terminal does not wrap it.
    [[nodiscard]] static std::string render(const State& state, int width);

private:
    void draw(State state, bool always);

    std::FILE* stream_;
    bool enabled_;
    const CancellationFlag* cancel_;
    State shown_;
    std::chrono::steady_clock::time_point drawnAt_;
    bool drawn_ = false;
};

} // namespace brevant::cli
