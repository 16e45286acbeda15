#include "CompressCommand.hpp"

#include "app/cli/ChangeLockWaiting.hpp"
#include "app/cli/CompressionText.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/ProgressLine.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/compression/Compressor.hpp"
#include "engine/platform/DataFolder.hpp"
#include "engine/support/PathNames.hpp"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

using Json = nlohmann::ordered_json;

// The document `--json` prints: always the same keys, null where a step
// was not reached.
struct Outcome {
    Json document{
        {"plan", nullptr}, {"compressed", false}, {"report", nullptr}, {"message", nullptr}};

    int end(const Environment& environment, bool json, const std::string& message, int status) {
        if (json) {
            if (!message.empty()) {
                document["message"] = message;
            }
            fmt::print(environment.out, "{}\n", document.dump(2));
        } else if (!message.empty()) {
            fmt::print(environment.out, "{}\n", message);
        }
        std::fflush(environment.out);
        return status;
    }
};

bool approved(const CompressionPlan& plan, bool yes, const Environment& environment,
              std::string& refusal) {
    if (yes) {
        return true;
    }
    if (!environment.interactive) {
        refusal = "Nothing was changed: there is no terminal to ask on, and --yes was not given.";
        return false;
    }
    if (!confirm(compression_text::question(plan), environment.in, environment.err,
                 environment.cancellation())) {
        refusal = "Nothing was changed.";
        return false;
    }
    return true;
}

CLI::Validator sizeText() {
    return {[](std::string& text) -> std::string {
                return CompressCommand::parseSize(text)
                           ? std::string()
                           : "not a size: " + text + " (write it as 5M, 800k or 1.5G)";
            },
            "SIZE"};
}

} // namespace

std::optional<std::int64_t> CompressCommand::parseSize(std::string_view text) {
    double number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0 || !std::isfinite(number)) {
        return std::nullopt;
    }
    std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    std::string lowered = PathNames::asciiLowercased(unit);
    if (lowered.ends_with('b')) {
        lowered.pop_back();
    }
    double scale = 0;
    if (lowered.empty()) {
        scale = 1;
    } else if (lowered == "k") {
        scale = 1e3;
    } else if (lowered == "m") {
        scale = 1e6;
    } else if (lowered == "g") {
        scale = 1e9;
    } else {
        return std::nullopt;
    }
    return std::llround(number * scale);
}

std::string_view CompressCommand::summary() const {
    return "Write checked smaller copies of big photos and videos; originals go to the Trash";
}

std::vector<std::string> CompressCommand::synopsis() const {
    return {"brevant compress [--photos] [--videos] [--motion-photos] [--min-size SIZE] "
            "[--dry-run] [--yes] [--json] FOLDER..."};
}

void CompressCommand::define(CLI::App& app) {
    app.add_flag("--photos", photos_, "Only photos (JPEG and TIFF to HEIC)");
    app.add_flag("--videos", videos_, "Only videos (to HEVC at 1080p or less)");
    app.add_flag(
        "--motion-photos", motionPhotos_,
        "Only motion photos (JPEGs with a movie appended, to stills), whatever their size");
    app.add_option("--min-size", minSize_, "Leave out files smaller than this (default: 1M)")
        ->check(sizeText());
    app.add_flag("--dry-run", dryRun_, "Show the files and stop; nothing is written or moved");
    app.add_flag("--yes", yes_, "Compress without asking");
    addJson(app, json_, "Print the plan and the report as JSON");
    addFolders(app, folders_, "The folders to look in");
}

int CompressCommand::run(const Environment& environment) {
    // None named: photos and videos. Motion photos only when named.
    bool none = !photos_ && !videos_ && !motionPhotos_;
    CompressionRequest request{.folders = folders_,
                               .photos = photos_ || none,
                               .videos = videos_ || none,
                               .motionPhotos = motionPhotos_};
    if (!minSize_.empty()) {
        request.minBytes = parseSize(minSize_).value_or(CompressionRequest::kDefaultMinBytes);
    }
    Compressor compressor(platform::DataFolder::current());
    compressor.setWaiting(waitingOn(environment));
    // Copies a crash left half-written are removed before anything is
    // looked at, so none is ever offered as a file to compress.
    if (auto recovered = compressor.recover(); recovered && !json_) {
        for (const auto& report : *recovered) {
            fmt::print(environment.out, "{}\n", compression_text::report(report, environment.home));
        }
    }
    ProgressLine looking(environment.err, environment.showProgress, environment.cancel);
    auto found = CompressionFinder::find(request, environment.cancellation(), [&](int looked) {
        looking.show("Looking", fmt::format("{} files", looked));
    });
    looking.clear();
    Outcome outcome;
    outcome.document["plan"] = compression_text::planJson(found);
    if (found.plan.roots.empty()) {
        for (const auto& refused : found.refused) {
            fmt::print(environment.err, "brevant compress: {}: {}\n", refused.path, refused.detail);
        }
        return outcome.end(environment, json_, "", ExitStatus::kNothingScanned);
    }
    if (found.cancelled) {
        return outcome.end(environment, json_, "cancelled", ExitStatus::kCancelled);
    }
    if (!json_) {
        fmt::print(environment.out, "{}", compression_text::plan(found, environment.home));
        std::fflush(environment.out);
    }
    if (found.plan.items.empty()) {
        return outcome.end(environment, json_, "Nothing to compress.", ExitStatus::kSuccess);
    }
    if (dryRun_) {
        return outcome.end(environment, json_, "Dry run: nothing was written or moved.",
                           ExitStatus::kSuccess);
    }
    std::string refusal;
    if (!approved(found.plan, yes_, environment, refusal)) {
        return outcome.end(environment, json_, refusal, ExitStatus::kCancelled);
    }
    ProgressLine line(environment.err, environment.showProgress, environment.cancel);
    auto report = compressor.run(
        found.plan, environment.cancellation(), [&line](const CompressionProgress& progress) {
            auto file = static_cast<std::int64_t>(progress.index + 1);
            auto total = static_cast<std::int64_t>(progress.total);
            std::string stage = fmt::format("Compressing file {} of {}: frames", file, total);
            if (progress.totalFrames > 0) {
                line.show(stage, progress.frames, progress.totalFrames);
            } else if (progress.frames > 0) {
                line.show(stage, fmt::format("{}", progress.frames));
            } else {
                line.show("Compressing", file, total);
            }
        });
    line.clear();
    if (!report) {
        return outcome.end(environment, json_, report.error(), ExitStatus::kFailed);
    }
    outcome.document["compressed"] = report->compressed() > 0;
    outcome.document["report"] = compression_text::reportJson(*report);
    if (!json_) {
        fmt::print(environment.out, "\n{}", compression_text::report(*report, environment.home));
    }
    std::string putBack = report->compressed() > 0
                              ? fmt::format("To put the originals back: brevant restore {} --all",
                                            report->planID.text())
                              : std::string();
    bool complete = report->refused() == 0 && report->count(ItemOutcome::Kind::unknown) == 0 &&
                    !environment.cancellation().isCancelled();
    return outcome.end(environment, json_, putBack,
                       complete ? ExitStatus::kSuccess : ExitStatus::kFailed);
}

} // namespace brevant::cli
