#include "CommandLine.hpp"

#include "app/cli/CommandLineReport.hpp"
#include "app/cli/ExitStatus.hpp"
#include "engine/support/PathText.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>

namespace brevant::cli {

namespace {

// Usage lines of `brevant` itself, besides those of its commands.
constexpr std::array kReportUsage = {
    "brevant --similar [conservative|balanced|broad] FOLDER...",
    "brevant --series FOLDER...",
};
constexpr std::array kProgramUsage = {
    "brevant --version",
    "brevant --help",
};

constexpr std::string_view kReportNote =
    "--similar prints other versions of the same photo, --series bursts shot seconds\n"
    "apart; neither changes a file. Without arguments, brevant opens its window when\n"
    "a display is available. Run 'brevant COMMAND --help' for a command's options.\n"
    "\n";
constexpr std::string_view kExitStatuses =
    "Exit status: 0 done; 1 stopped by Ctrl-C, or the work failed; 2 wrong\n"
    "arguments; 3 every chosen folder was refused, so nothing was scanned.\n";

std::string usageText(const std::vector<std::string>& lines) {
    std::string text = "Usage:\n";
    for (const auto& line : lines) {
        text += fmt::format("  {}\n", line);
    }
    return text;
}

// "brevant scan" for the scan command's parser.
std::string commandPath(const CLI::App& app) {
    std::string path = app.get_name();
    for (const CLI::App* parent = app.get_parent(); parent != nullptr;
         parent = parent->get_parent()) {
        path.insert(0, parent->get_name() + " ");
    }
    return path;
}

// The innermost command the arguments named, or the program itself.
const CLI::App& innermost(const CLI::App& app) {
    const CLI::App* current = &app;
    for (auto chosen = current->get_subcommands(); !chosen.empty();
         chosen = current->get_subcommands()) {
        current = chosen.front();
    }
    return *current;
}

// What to tell the user about an argument nobody asked for.
std::string unexpected(const std::string& argument, bool commandExpected) {
    std::string shown = path_text::display(argument);
    if (argument.size() > 1 && argument.starts_with('-')) {
        return fmt::format("unknown option '{}'", shown);
    }
    if (commandExpected) {
        return fmt::format("unknown command '{}'", shown);
    }
    return fmt::format("unexpected argument '{}'", shown);
}

// The command the arguments name, by the words that name commands.
const CLI::App& namedCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
    const CLI::App* current = &app;
    for (const auto& argument : arguments) {
        if (argument == "--") {
            break;
        }
        auto named = current->get_subcommands(
            [&argument](const CLI::App* sub) { return sub->get_name() == argument; });
        if (!named.empty()) {
            current = named.front();
        }
    }
    return *current;
}

// The preset after --similar is optional in every command that has the
// option, as in the report: a word the report takes for a preset is joined
// to the option ("--similar=broad"), and any other word stays a folder or a
// catalog. After a lone "--" nothing is an option any more.
std::vector<std::string> presetsJoined(const CLI::App& app,
                                       const std::vector<std::string>& arguments) {
    if (namedCommand(app, arguments).get_option_no_throw("--similar") == nullptr) {
        return arguments;
    }
    std::vector<std::string> joined;
    joined.reserve(arguments.size());
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        if (*it == "--") {
            joined.insert(joined.end(), it, arguments.end());
            break;
        }
        auto next = std::next(it);
        if (*it == "--similar" && next != arguments.end() &&
            CommandLineReport::presetNamed(*next)) {
            joined.push_back(*it + "=" + *next);
            it = next;
            continue;
        }
        joined.push_back(*it);
    }
    return joined;
}

} // namespace

// Help laid out as `brevant` writes it: the usage lines each command gives,
// then its arguments and options as CLI11 lists them.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() {
        label("Positionals", "Arguments");
        column_width(20);
    }

    void setUsage(const CLI::App& app, std::vector<std::string> lines) {
        usage_[&app] = std::move(lines);
    }

    [[nodiscard]] std::string usage(const CLI::App& app) const {
        auto found = usage_.find(&app);
        return found != usage_.end() ? usageText(found->second)
                                     : CLI::Formatter::make_usage(&app, commandPath(app));
    }

    std::string make_help(const CLI::App* app, std::string /*name*/,
                          CLI::AppFormatMode mode) const override {
        if (mode == CLI::AppFormatMode::Sub) {
            return make_expanded(app);
        }
        std::string text;
        if (!app->get_description().empty()) {
            text += app->get_description() + "\n\n";
        }
        text += usage(*app);
        for (std::string part : {make_positionals(app), make_groups(app, mode),
                                 make_subcommands(app, mode), app->get_footer()}) {
            // CLI11 starts its sections with empty lines of its own.
            part.erase(0, part.find_first_not_of('\n'));
            if (!part.empty()) {
                text += "\n" + part;
            }
        }
        return text;
    }

    std::string make_option_name(const CLI::Option* option, bool positional) const override {
        if (!positional) {
            // Without the value a flag takes when given alone
            // ("--similar{balanced}").
            std::string name = CLI::Formatter::make_option_name(option, positional);
            for (auto open = name.find('{'); open != std::string::npos; open = name.find('{')) {
                name.erase(open, name.find('}', open) - open + 1);
            }
            return name;
        }
        bool many = option->get_expected_max() > 1;
        return option->get_name(true, false) + (many ? "..." : "");
    }

    // Only what a value is ("PRESET"); the usage lines already say what is
    // required and what repeats. A flag shows one only when it may take a
    // value ("[PRESET]").
    std::string make_option_opts(const CLI::Option* option) const override {
        bool valued = option->get_type_size() != 0 || option->get_type_name().starts_with('[');
        if (option->get_positional() || !valued || option->get_type_name().empty()) {
            return {};
        }
        return " " + option->get_type_name();
    }

private:
    std::map<const CLI::App*, std::vector<std::string>> usage_;
};

CommandLine::CommandLine(std::vector<std::unique_ptr<Command>> commands)
    : commands_(std::move(commands))
    , formatter_(std::make_shared<HelpFormatter>())
    , app_(std::make_unique<CLI::App>(
          fmt::format("Brevant {}: finds photos saved more than once.", BREVANT_VERSION),
          "brevant")) {
    CLI::App& app = *app_;
    app.formatter(formatter_);
    app.set_help_flag("-h,--help", "Show this help and exit");
    app.set_version_flag("--version", fmt::format("brevant {}", BREVANT_VERSION),
                         "Show the version and exit");
    // Unknown arguments are collected, not thrown, so that the message
    // can say what they are in our own words.
    app.allow_extras();
    app.require_subcommand(0, 1);
    app.footer(fmt::format("{}{}", kReportNote, kExitStatuses));

    std::vector<std::string> usage(kReportUsage.begin(), kReportUsage.end());
    for (const auto& command : commands_) {
        CLI::App* sub =
            app.add_subcommand(std::string(command->name()), std::string(command->summary()));
        sub->group("Commands");
        sub->footer(std::string(kExitStatuses));
        command->define(*sub);
        auto lines = command->synopsis();
        usage.insert(usage.end(), lines.begin(), lines.end());
        formatter_->setUsage(*sub, std::move(lines));
    }
    usage.insert(usage.end(), kProgramUsage.begin(), kProgramUsage.end());
    formatter_->setUsage(app, std::move(usage));
}

CommandLine::~CommandLine() = default;

std::string CommandLine::help() const {
    return app_->help();
}

int CommandLine::run(const std::vector<std::string>& arguments, const Environment& environment) {
    try {
        return parse(arguments, environment);
    } catch (const CLI::Error& error) {
        // Only a command defined wrongly gets here; parsing errors are
        // handled where they are thrown.
        fmt::print(environment.err, "brevant: {}\n", error.what());
        return ExitStatus::kFailed;
    }
}

int CommandLine::parse(const std::vector<std::string>& arguments, const Environment& environment) {
    // CLI11 takes the arguments last first, without the program's path.
    std::vector<std::string> joined = presetsJoined(*app_, arguments);
    std::vector<std::string> reversed(joined.rbegin(), joined.rend());
    if (!reversed.empty()) {
        reversed.pop_back();
    }
    try {
        app_->parse(reversed);
    } catch (const CLI::CallForHelp&) {
        fmt::print(environment.out, "{}", app_->help());
        return ExitStatus::kSuccess;
    } catch (const CLI::CallForVersion& version) {
        fmt::print(environment.out, "{}\n", version.what());
        return ExitStatus::kSuccess;
    } catch (const CLI::RequiredError& error) {
        Command* command = chosen();
        auto missing = command != nullptr ? command->missingArgument() : std::nullopt;
        return refuse(missing.value_or(error.what()), environment);
    } catch (const CLI::ParseError& error) {
        return refuse(error.what(), environment);
    }

    auto extras = app_->remaining(true);
    // A lone "--" ends the options and is no argument itself.
    std::erase(extras, "--");
    Command* command = chosen();
    if (!extras.empty()) {
        return refuse(unexpected(extras.front(), command == nullptr), environment);
    }
    if (command == nullptr) {
        return refuse("no command given", environment);
    }
    return command->run(environment);
}

int CommandLine::refuse(const std::string& message, const Environment& environment) const {
    const CLI::App& app = innermost(*app_);
    std::string path = commandPath(app);
    fmt::print(environment.err, "{}: {}\n{}Try '{} --help' for more information.\n", path, message,
               formatter_->usage(app), path);
    return ExitStatus::kUsage;
}

Command* CommandLine::chosen() const {
    auto chosen = app_->get_subcommands();
    if (chosen.empty()) {
        return nullptr;
    }
    auto found = std::ranges::find(commands_, chosen.front()->get_name(), [](const auto& command) {
        return std::string(command->name());
    });
    return found != commands_.end() ? found->get() : nullptr;
}

} // namespace brevant::cli
