#pragma once

#include "app/cli/Command.hpp"
#include "engine/scan/ScanResult.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant scan [--live-photos] [--json] FOLDER...`: finds identical copies
// (or the movie halves of Live Photos) in the folders and prints them, or
// the whole scan result as JSON. Changes nothing.
class ScanCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "scan"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0, 1 when cancelled, or 3 when every folder was refused.
    [[nodiscard]] int run(const Environment& environment) override;

    // Each chosen folder that could not be scanned, with why, on `err`.
    static void reportRefused(const ScanResult& result, const Environment& environment);

    // The groups, then the summary and the counts of what was left out. The
    // summary counts Live Photo movies when the scan looked for them.
    [[nodiscard]] static std::string report(const ScanResult& result, std::string_view home,
                                            bool livePhotos = false);

private:
    bool json_ = false;
    bool livePhotos_ = false;
    std::vector<std::string> folders_;
};

} // namespace brevant::cli
