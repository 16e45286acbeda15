#include "ProgressLine.hpp"

#include <fmt/format.h>
#include <string>

namespace brevant::cli {

bool ProgressLine::due(ScanProgress::Stage stage) {
    auto now = std::chrono::steady_clock::now();
    if (stage == stage_ && now - shown_ < std::chrono::milliseconds(100)) {
        return false;
    }
    stage_ = stage;
    shown_ = now;
    return true;
}

void ProgressLine::draw(const std::string& text) {
    fmt::print(stream_, "\r\033[K{}", text);
    std::fflush(stream_);
    drawn_ = true;
}

void ProgressLine::show(const ScanProgress& progress) {
    if (!due(progress.stage)) {
        return;
    }
    draw(fmt::format("{}: {} found, {} examined, {} skipped, {} matched", rawValue(progress.stage),
                     progress.discovered, progress.examined, progress.skipped, progress.matched));
}

void ProgressLine::show(ScanProgress::Stage stage, int done, int total) {
    if (!due(stage) && done != total) {
        return;
    }
    draw(fmt::format("{}: {} of {}", rawValue(stage), done, total));
}

void ProgressLine::clear() {
    if (drawn_) {
        fmt::print(stream_, "\r\033[K");
        std::fflush(stream_);
        drawn_ = false;
    }
}

} // namespace brevant::cli
