#pragma once

#include "engine/scan/ScanProgress.hpp"

#include <chrono>
#include <cstdio>
#include <string>

namespace brevant::cli {

// Redraws one line of progress on a terminal, at most ten times a second.
class ProgressLine {
public:
    explicit ProgressLine(std::FILE* stream)
        : stream_(stream) {}

    // The scan's stage and counts.
    void show(const ScanProgress& progress);
    // A stage that works through a known number of pictures.
    void show(ScanProgress::Stage stage, int done, int total);
    // Removes the line, if one was drawn.
    void clear();

private:
    bool due(ScanProgress::Stage stage);
    void draw(const std::string& text);

    std::FILE* stream_;
    ScanProgress::Stage stage_ = ScanProgress::Stage::finishing;
    std::chrono::steady_clock::time_point shown_;
    bool drawn_ = false;
};

} // namespace brevant::cli
