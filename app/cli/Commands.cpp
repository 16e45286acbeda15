#include "Commands.hpp"

#include "app/cli/CatalogCommand.hpp"
#include "app/cli/CleanCommand.hpp"
#include "app/cli/CompressCommand.hpp"
#include "app/cli/DifferCommand.hpp"
#include "app/cli/HistoryCommand.hpp"
#include "app/cli/LockCommands.hpp"
#include "app/cli/RestoreCommand.hpp"
#include "app/cli/ScanCommand.hpp"

#include <algorithm>

namespace brevant::cli {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<ScanCommand>());
    commands.push_back(std::make_unique<CleanCommand>());
    commands.push_back(std::make_unique<CompressCommand>());
    commands.push_back(std::make_unique<HistoryCommand>());
    commands.push_back(std::make_unique<RestoreCommand>());
    commands.push_back(std::make_unique<LockCommand>());
    commands.push_back(std::make_unique<UnlockCommand>());
    commands.push_back(std::make_unique<LocksCommand>());
    commands.push_back(std::make_unique<DifferCommand>());
    commands.push_back(std::make_unique<CatalogCommand>());
    return commands;
}

bool isCommandName(std::string_view word) {
    return std::ranges::any_of(makeCommands(),
                               [word](const auto& command) { return command->name() == word; });
}

} // namespace brevant::cli
