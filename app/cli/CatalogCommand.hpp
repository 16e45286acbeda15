#pragma once

#include "app/cli/Command.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// `brevant catalog scan|mark|history|undo`: duplicates inside a Lightroom
// Classic catalog (.lrcat) or a Capture One catalog (.cocatalog). Scanning
// only reads the catalog. Marking flags the suggested extra copies Rejected
// in Lightroom Classic, or tags them Red in Capture One, after a backup and
// only while that application is closed; the user then deletes them there.
// Every marking can be undone.
class CatalogCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "catalog"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0; 1 when cancelled, refused or failed; 2 for a record that is not
    // there; 3 when the catalog could not be read.
    [[nodiscard]] int run(const Environment& environment) override;

    // What the user did to a copy in its catalog, in words ("edited, 3
    // stars"); empty when nothing, or when it is no catalog photo.
    [[nodiscard]] static std::string work(const PhotoAsset& asset);

private:
    enum class Action {
        none,
        scan,
        mark,
        history,
        undo,
    };

    [[nodiscard]] int scan(const Environment& environment) const;
    [[nodiscard]] int mark(const Environment& environment) const;
    [[nodiscard]] int history(const Environment& environment) const;
    [[nodiscard]] int undo(const Environment& environment) const;

    Action action_ = Action::none;
    std::string catalog_;
    std::string record_;
    std::string similar_;
    bool series_ = false;
    bool json_ = false;
    bool yes_ = false;
    bool dryRun_ = false;
};

} // namespace brevant::cli
