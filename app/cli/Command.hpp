#pragma once

#include "engine/scan/CancellationFlag.hpp"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// CLI11's own namespace, declared here to keep its header out of ours.
namespace CLI { // NOLINT(readability-identifier-naming)
class App;
class Option;
} // namespace CLI

namespace brevant::cli {

// What a command needs of the process around it. The program hands in its
// own streams, home folder and Ctrl-C flag; tests hand in their own.
struct Environment {
    std::FILE* out = stdout;
    std::FILE* err = stderr;
    // Where answers to questions come from.
    std::FILE* in = stdin;
    // Set by the first Ctrl-C; long work reads it between items and stops
    // cleanly ("stop after this one"). A second Ctrl-C ends the process at
    // once with status 1. The program watches Ctrl-C for the whole run, so
    // a command never installs a watcher of its own.
    const CancellationFlag* cancel = nullptr;
    // Written as "~" at the start of paths.
    std::string home;
    // `err` is a terminal, so progress may be drawn on it.
    bool showProgress = false;
    // `in` and `err` are terminals, so a question may be asked; without one,
    // nothing that needs a "yes" is done.
    bool interactive = false;

    // The process's own streams and home folder, with `cancel`.
    [[nodiscard]] static Environment ofProcess(const CancellationFlag* cancel);

    // The cancellation flag, or one that is never set.
    [[nodiscard]] const CancellationFlag& cancellation() const;
};

// One subcommand of `brevant`, as in `brevant scan FOLDER...`. A command
// declares its options on its own parser, which fills the command's
// members; once the whole line parsed, the program runs it. To add one,
// write a class in its own file and register it in Commands.cpp.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    Command(Command&&) = delete;
    Command& operator=(Command&&) = delete;
    virtual ~Command() = default;

    // The word after `brevant`.
    [[nodiscard]] virtual std::string_view name() const = 0;
    // One line for the list of commands in `brevant --help`.
    [[nodiscard]] virtual std::string_view summary() const = 0;
    // The usage lines, e.g. "brevant scan [--json] FOLDER...".
    [[nodiscard]] virtual std::vector<std::string> synopsis() const = 0;
    // Declares the options and arguments on the command's parser.
    virtual void define(CLI::App& app) = 0;
    // Runs once the arguments parsed; answers the exit status (ExitStatus).
    [[nodiscard]] virtual int run(const Environment& environment) = 0;

    // The message for the first required argument left out ("no folder
    // given"); nothing when none was marked missing this way.
    [[nodiscard]] virtual std::optional<std::string> missingArgument() const;

protected:
    // Marks the option required; `message` is what the user is told when it
    // is left out.
    CLI::Option* required(CLI::Option* option, std::string message);
    // The same for an argument of a command nested in this one (`owner`):
    // it is missing only when that command was given.
    CLI::Option* required(const CLI::App& owner, CLI::Option* option, std::string message);

    // The options every command spells the same way.
    // FOLDER... (one or more), "no folder given" when there is none.
    CLI::Option* addFolders(CLI::App& app, std::vector<std::string>& folders,
                            const std::string& description);
    // --similar [PRESET]: the preset, "balanced" when the option stands
    // alone; the command line joins a preset written after it to it, by
    // the report's rule, so any other word stays an argument.
    CLI::Option* addSimilar(CLI::App& app, std::string& preset, const std::string& description);
    // --json: the result as JSON on standard output instead of text.
    CLI::Option* addJson(CLI::App& app, bool& json, const std::string& description);

private:
    struct Required {
        const CLI::Option* option = nullptr;
        std::string message;
        const CLI::App* owner = nullptr;
    };

    std::vector<Required> required_;
};

} // namespace brevant::cli
