#pragma once

#include "app/cli/Command.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant compress [--photos] [--videos] [--min-size SIZE] [--dry-run]
// [--yes] [--json] FOLDER...`: finds big JPEG and TIFF photos and videos not
// yet HEVC at 1080p, shows them with the expected saving, asks, then writes
// a checked smaller copy of each beside it and moves the original to the
// Trash under a journal, printing the report read back from it. Ctrl-C
// stops after the file in hand.
class CompressCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "compress"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0 when done (or nothing to do, or a dry run); 1 when declined,
    // stopped, refused or when a copy was refused; 3 when every folder was
    // refused.
    [[nodiscard]] int run(const Environment& environment) override;

    // "10M", "1.5G", "800k", "5000" (bytes; powers of 1000); nothing when
    // the text is not a size.
    [[nodiscard]] static std::optional<std::int64_t> parseSize(std::string_view text);

private:
    bool photos_ = false;
    bool videos_ = false;
    bool motionPhotos_ = false;
    std::string minSize_;
    bool dryRun_ = false;
    bool yes_ = false;
    bool json_ = false;
    std::vector<std::string> folders_;
};

} // namespace brevant::cli
