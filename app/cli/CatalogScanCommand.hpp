#pragma once

#include "app/cli/Command.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant catalog scan [--similar [PRESET] | --series] [--json] CATALOG`:
// the duplicates among a Lightroom Classic or Capture One catalog's photos,
// the groups a review of it holds, with what the user did to each copy in
// the catalog. Only reads the catalog.
class CatalogScanCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "scan"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0; 1 when stopped; 3 when the catalog could not be read.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::string catalog_;
    std::string similar_;
    bool series_ = false;
    bool json_ = false;
};

} // namespace brevant::cli
