#pragma once

#include "app/cli/Command.hpp"
#include "engine/pipeline/ScanOutcome.hpp"
#include "engine/pipeline/ScanRequest.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/ReviewSession.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant clean [--similar [PRESET] | --series | --live-photos] [--protect DIR]...
// [--inbox DIR]... [--priorities a,b,...] [--dry-run] [--yes] [--json]
// FOLDER...`: scans, marks the suggested copies of every group, shows the
// plan, asks, then moves the marked copies to the Trash under a journal and
// prints the report read back from it. When the user left a review of the
// same folders and mode (in the window), its marks are taken back and stand:
// suggestions are marked only in the groups it neither marked nor reviewed,
// and after a cleanup the saved review is brought up to date.
class CleanCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "clean"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0 when done (or nothing to do, or a dry run); 1 when declined,
    // stopped, refused or when an item failed; 3 when every folder was
    // refused.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    // What to scan and how to judge the copies, from the arguments.
    [[nodiscard]] ScanRequest request(std::shared_ptr<LockStore> locks) const;
    [[nodiscard]] int clean(ScanOutcome& scanned, const Environment& environment) const;

    std::string similar_;
    bool series_ = false;
    bool livePhotos_ = false;
    std::vector<std::string> protect_;
    std::vector<std::string> inbox_;
    std::vector<std::string> priorities_;
    bool dryRun_ = false;
    bool yes_ = false;
    bool json_ = false;
    std::vector<std::string> folders_;
};

} // namespace brevant::cli
