#include "Commands.hpp"

#include "app/cli/ScanCommand.hpp"

namespace brevant::cli {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::make_unique<ScanCommand>());
    return commands;
}

} // namespace brevant::cli
