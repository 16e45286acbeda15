#pragma once

#include "app/cli/Command.hpp"
#include "engine/review/LockStore.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::cli {

// The lock store in the data folder.
[[nodiscard]] std::shared_ptr<LockStore> openLockStore();

// When the store cannot be read: says so on `err`, with how to repair or
// reset it, after "brevant COMMAND: ", and answers true.
[[nodiscard]] bool refuseDamaged(const LockStore& store, const Environment& environment,
                                 std::string_view command);

// `brevant lock PATH...`: always keep these copies, in this scan and later
// ones. Every path is checked first; when one cannot be locked nothing is.
class LockCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "lock"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    // 0, or 2 when a path is not a picture file that can be locked.
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::vector<std::string> paths_;
};

// `brevant unlock PATH...`: lets these copies be marked again.
class UnlockCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "unlock"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    [[nodiscard]] int run(const Environment& environment) override;

private:
    std::vector<std::string> paths_;
};

// `brevant locks [--json]`: the copies locked, oldest first.
// `brevant locks --reset`: moves a lock file that cannot be read aside.
class LocksCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "locks"; }

    [[nodiscard]] std::string_view summary() const override;
    [[nodiscard]] std::vector<std::string> synopsis() const override;
    void define(CLI::App& app) override;
    [[nodiscard]] int run(const Environment& environment) override;

private:
    [[nodiscard]] int reset(const Environment& environment) const;

    bool json_ = false;
    bool reset_ = false;
};

} // namespace brevant::cli
