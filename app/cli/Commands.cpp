#include "Commands.hpp"

#include "app/cli/CatalogCommand.hpp"
#include "app/cli/ScanCommand.hpp"

#include <algorithm>

namespace brevant::cli {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<ScanCommand>());
    commands.push_back(std::make_unique<CatalogCommand>());
    return commands;
}

bool isCommandName(std::string_view word) {
    return std::ranges::any_of(makeCommands(),
                               [word](const auto& command) { return command->name() == word; });
}

} // namespace brevant::cli
