#include "Program.hpp"

#include "app/cli/CommandLine.hpp"
#include "app/cli/CommandLineReport.hpp"
#include "app/cli/Commands.hpp"
#include "app/cli/DesktopStart.hpp"
#include "app/cli/ExitStatus.hpp"
#include "app/cli/Interrupts.hpp"

#include <cstdio>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

// Without arguments: the window when it can be shown, else the usage.
int startWithoutArguments() {
    if (auto program = DesktopStart::program(DesktopStart::current())) {
        std::string reason = DesktopStart::start(*program);
        fmt::print(stderr, "brevant: cannot start {}: {}\n", *program, reason);
        return ExitStatus::kFailed;
    }
    fmt::print("{}", CommandLine(makeCommands()).help());
    return ExitStatus::kSuccess;
}

} // namespace

int run(const std::vector<std::string>& arguments) {
    // The report looks at the whole argument list before anything else,
    // unless the list starts with one of our commands: those have options
    // of their own named --similar and --series (`brevant clean --similar
    // broad`), which must not start a report.
    bool namesCommand = arguments.size() >= 2 && isCommandName(arguments[1]);
    if (!namesCommand) {
        if (auto status = CommandLineReport::runIfAsked(arguments)) {
            return *status;
        }
    }
    if (arguments.size() <= 1) {
        return startWithoutArguments();
    }
    CancellationFlag cancel;
    InterruptWatcher watcher(cancel, ExitStatus::kCancelled);
    return runCommand(arguments, Environment::ofProcess(&cancel));
}

int runCommand(const std::vector<std::string>& arguments, const Environment& environment) {
    return CommandLine(makeCommands()).run(arguments, environment);
}

} // namespace brevant::cli
