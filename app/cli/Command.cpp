#include "Command.hpp"

#include "app/cli/Terminal.hpp"
#include "engine/platform/ProcessInfo.hpp"

#include <CLI/CLI.hpp>

namespace brevant::cli {

Environment Environment::ofProcess(const CancellationFlag* cancel) {
    Environment environment;
    environment.cancel = cancel;
    environment.home = platform::homeFolder();
    environment.showProgress = isTerminal(stderr);
    environment.interactive = isTerminal(stdin) && environment.showProgress;
    return environment;
}

const CancellationFlag& Environment::cancellation() const {
    static const CancellationFlag never;
    return cancel != nullptr ? *cancel : never;
}

std::optional<std::string> Command::missingArgument() const {
    for (const auto& [option, message, owner] : required_) {
        if (option->count() == 0 && (owner == nullptr || owner->parsed())) {
            return message;
        }
    }
    return std::nullopt;
}

CLI::Option* Command::required(CLI::Option* option, std::string message) {
    option->required();
    required_.push_back({option, std::move(message)});
    return option;
}

CLI::Option* Command::required(const CLI::App& owner, CLI::Option* option, std::string message) {
    option->required();
    required_.push_back({option, std::move(message), &owner});
    return option;
}

CLI::Option* Command::addFolders(CLI::App& app, std::vector<std::string>& folders,
                                 const std::string& description) {
    return required(app.add_option("FOLDER", folders, description), "no folder given");
}

CLI::Option* Command::addSimilar(CLI::App& app, std::string& preset,
                                 const std::string& description) {
    return app.add_flag("--similar{balanced}", preset, description)
        ->check(CLI::IsMember({"conservative", "balanced", "broad"}))
        ->type_name("[PRESET]");
}

CLI::Option* Command::addJson(CLI::App& app, bool& json, const std::string& description) {
    return app.add_flag("--json", json, description);
}

} // namespace brevant::cli
