#include "ProgressLine.hpp"

#include "app/cli/Terminal.hpp"

#include <algorithm>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr std::string_view kStopping = " - stopping; Ctrl-C again stops at once";
constexpr int kShortestBar = 10;
constexpr int kLongestBar = 40;

// Columns a UTF-8 text takes, one for each character.
int columns(std::string_view text) {
    return static_cast<int>(
        std::ranges::count_if(text, [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// The text cut to at most `limit` columns, never inside a character.
std::string cut(std::string text, int limit) {
    int seen = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if ((text[at] & 0xC0) != 0x80 && seen++ == limit) {
            text.resize(at);
            break;
        }
    }
    return text;
}

std::string bar(double fraction, int length) {
    fraction = std::clamp(fraction, 0.0, 1.0);
    auto filled = static_cast<int>(fraction * length);
    return fmt::format(" [{}{}] {:3}%", std::string(filled, '#'), std::string(length - filled, '-'),
                       static_cast<int>(fraction * 100));
}

} // namespace

ProgressLine::ProgressLine(std::FILE* stream, bool enabled, const CancellationFlag* cancel)
    : stream_(stream)
    , enabled_(enabled)
    , cancel_(cancel) {}

ProgressLine::~ProgressLine() {
    clear();
}

std::string ProgressLine::render(const State& state, int width) {
    int limit = std::max(width - 1, 0);
    std::string text = state.counts.empty() ? state.stage : state.stage + ": " + state.counts;
    if (state.stopping) {
        text += kStopping;
    } else if (state.fraction) {
        // " [" + bar + "] " + "100%"
        int room = limit - columns(text) - 8;
        if (room >= kShortestBar) {
            text += bar(*state.fraction, std::min(room, kLongestBar));
        }
    }
    return cut(std::move(text), limit);
}

void ProgressLine::show(const ScanProgress& progress) {
    draw({std::string(rawValue(progress.stage)),
          fmt::format("{} found, {} examined, {} skipped, {} matched", progress.discovered,
                      progress.examined, progress.skipped, progress.matched)},
         false);
}

void ProgressLine::show(ScanProgress::Stage stage, int done, int total) {
    show(rawValue(stage), done, total);
}

void ProgressLine::show(const PipelineProgress& progress) {
    if (progress.total) {
        show(progress.scan.stage, progress.done, *progress.total);
    } else {
        show(progress.scan);
    }
}

void ProgressLine::show(std::string_view stage, std::int64_t done, std::int64_t total,
                        std::string_view more) {
    std::optional<double> fraction;
    if (total > 0) {
        fraction = static_cast<double>(done) / static_cast<double>(total);
    }
    draw({std::string(stage), fmt::format("{} of {}{}", done, total, more), fraction},
         done == total);
}

void ProgressLine::show(std::string_view stage, std::string_view counts) {
    draw({std::string(stage), std::string(counts)}, false);
}

void ProgressLine::draw(State state, bool always) {
    if (!enabled_) {
        return;
    }
    state.stopping = cancel_ != nullptr && cancel_->isCancelled();
    auto now = std::chrono::steady_clock::now();
    bool changed = state.stage != shown_.stage || state.stopping != shown_.stopping;
    if (drawn_ && !always && !changed && now - drawnAt_ < kInterval) {
        return;
    }
    fmt::print(stream_, "\r\033[K{}", render(state, terminalWidth(stream_)));
    std::fflush(stream_);
    shown_ = std::move(state);
    drawnAt_ = now;
    drawn_ = true;
}

void ProgressLine::clear() {
    if (drawn_) {
        fmt::print(stream_, "\r\033[K");
        std::fflush(stream_);
        drawn_ = false;
    }
}

} // namespace brevant::cli
