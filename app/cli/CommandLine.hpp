#pragma once

#include "app/cli/Command.hpp"

#include <memory>
#include <string>
#include <vector>

// CLI11's own namespace, declared here to keep its header out of ours.
namespace CLI { // NOLINT(readability-identifier-naming)
class App;
} // namespace CLI

namespace brevant::cli {

class HelpFormatter;

// The program's own commands (`brevant scan ...`): parses an argument list
// against them with CLI11 and runs the one it names. Commands are filled by
// parsing, so a command line is used for one run only.
class CommandLine {
public:
    explicit CommandLine(std::vector<std::unique_ptr<Command>> commands);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;
    CommandLine(CommandLine&&) = delete;
    CommandLine& operator=(CommandLine&&) = delete;
    ~CommandLine();

    // `arguments` start with the program's path. Answers the exit status:
    // the command's own; 0 after --help or --version, printed on `out`; 2
    // for wrong arguments, with the message, the usage and a hint on `err`
    // and nothing on `out`.
    [[nodiscard]] int run(const std::vector<std::string>& arguments,
                          const Environment& environment);

    // The text of `brevant --help`, also printed when `brevant` starts
    // without arguments and without a window.
    [[nodiscard]] std::string help() const;

private:
    [[nodiscard]] int parse(const std::vector<std::string>& arguments,
                            const Environment& environment);
    [[nodiscard]] int refuse(const std::string& message, const Environment& environment) const;
    [[nodiscard]] Command* chosen() const;

    std::vector<std::unique_ptr<Command>> commands_;
    std::shared_ptr<HelpFormatter> formatter_;
    std::unique_ptr<CLI::App> app_;
};

} // namespace brevant::cli
