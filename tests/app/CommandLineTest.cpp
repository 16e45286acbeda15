#include "app/cli/CommandLine.hpp"

#include "tests/app/ProgramRun.hpp"

#include "app/cli/ExitStatus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

namespace brevant::cli {
namespace {

using ::testing::HasSubstr;

// A command shaped like those the program has: paths that must be given, a
// typed option, --json, and a status of its own.
class TouchCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "touch"; }

    [[nodiscard]] std::string_view summary() const override { return "Touch the paths"; }

    [[nodiscard]] std::vector<std::string> synopsis() const override {
        return {"brevant touch [--times N] [--json] PATH...", "brevant touch --json PATH..."};
    }

    void define(CLI::App& app) override {
        app.add_option("--times", times, "How often")->type_name("N");
        addJson(app, json, "Print JSON");
        required(app.add_option("PATH", paths, "The paths"), "no path given");
    }

    [[nodiscard]] int run(const Environment& environment) override {
        ran = true;
        fmt::print(environment.out, "touched {} {} times{}\n", fmt::join(paths, ","), times,
                   json ? " as JSON" : "");
        return status;
    }

    int times = 1;
    bool json = false;
    std::vector<std::string> paths;
    bool ran = false;
    int status = ExitStatus::kSuccess;
};

// One command taking one name, to see surplus arguments refused.
class NameCommand final : public Command {
public:
    [[nodiscard]] std::string_view name() const override { return "name"; }

    [[nodiscard]] std::string_view summary() const override { return "Name one thing"; }

    [[nodiscard]] std::vector<std::string> synopsis() const override {
        return {"brevant name NAME"};
    }

    void define(CLI::App& app) override {
        required(app.add_option("NAME", given, "The name"), "no name given");
    }

    [[nodiscard]] int run(const Environment& /*environment*/) override { return 0; }

    std::string given;
};

// Runs `brevant ARGUMENTS...` against the two commands, in memory; `ran`
// tells whether the touch command ran, `status` is the one it answers.
Outcome parse(std::vector<std::string> arguments, bool* ran = nullptr, int status = 0) {
    auto touch = std::make_unique<TouchCommand>();
    touch->status = status;
    TouchCommand& kept = *touch;
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(std::move(touch));
    commands.push_back(std::make_unique<NameCommand>());
    CommandLine line(std::move(commands));

    MemoryStream out;
    MemoryStream err;
    Environment environment{.out = out.get(), .err = err.get()};
    arguments.insert(arguments.begin(), "/usr/bin/brevant");
    int result = line.run(arguments, environment);
    if (ran != nullptr) {
        *ran = kept.ran;
    }
    return {result, out.text(), err.text()};
}

const std::string kTouchUsage = "Usage:\n"
                                "  brevant touch [--times N] [--json] PATH...\n"
                                "  brevant touch --json PATH...\n"
                                "Try 'brevant touch --help' for more information.\n";

TEST(CommandLine, RunsTheNamedCommandWithItsOptionsAndAnswersItsStatus) {
    bool ran = false;
    Outcome run = parse({"touch", "--times", "3", "a", "--json", "b c"}, &ran);
    EXPECT_TRUE(ran);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "touched a,b c 3 times as JSON\n");
    EXPECT_EQ(run.err, "");

    // "--" ends the options: what follows is a path even when it looks
    // like an option.
    run = parse({"touch", "--", "--times"});
    EXPECT_EQ(run.out, "touched --times 1 times\n");

    run = parse({"touch", "a"}, nullptr, ExitStatus::kNothingScanned);
    EXPECT_EQ(run.status, ExitStatus::kNothingScanned);
}

TEST(CommandLine, WrongArgumentsAreRefusedWithStatusTwoBeforeTheCommandRuns) {
    struct Case {
        std::vector<std::string> arguments;
        std::string err;
    };

    const std::string programUsage = "Usage:\n"
                                     "  brevant --similar [conservative|balanced|broad] FOLDER...\n"
                                     "  brevant --series FOLDER...\n"
                                     "  brevant touch [--times N] [--json] PATH...\n"
                                     "  brevant touch --json PATH...\n"
                                     "  brevant name NAME\n"
                                     "  brevant --version\n"
                                     "  brevant --help\n"
                                     "Try 'brevant --help' for more information.\n";
    std::vector<Case> cases = {
        {{"touch"}, "brevant touch: no path given\n" + kTouchUsage},
        {{"touch", "--json"}, "brevant touch: no path given\n" + kTouchUsage},
        {{"touch", "--jsn", "a"}, "brevant touch: unknown option '--jsn'\n" + kTouchUsage},
        {{"touch", "a", "-x"}, "brevant touch: unknown option '-x'\n" + kTouchUsage},
        {{"touch", "a", "--version"}, "brevant touch: unknown option '--version'\n" + kTouchUsage},
        {{"touch", "--times", "often", "a"},
         "brevant touch: Could not convert: --times = often\n" + kTouchUsage},
        {{"touch", "a", "--times"}, "brevant touch: --times: 1 required N missing\n" + kTouchUsage},
        {{"name", "x", "y"},
         "brevant name: unexpected argument 'y'\n"
         "Usage:\n  brevant name NAME\nTry 'brevant name --help' for more information.\n"},
        {{"touhc", "a"}, "brevant: unknown command 'touhc'\n" + programUsage},
        {{"--times", "2"}, "brevant: unknown option '--times'\n" + programUsage},
        {{"--"}, "brevant: no command given\n" + programUsage},
        // A name that is no text is shown escaped, on one line.
        {{"bad\nname"}, "brevant: unknown command 'bad\\nname'\n" + programUsage},
    };
    for (const auto& [arguments, err] : cases) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(arguments, " ")));
        bool ran = true;
        Outcome run = parse(arguments, &ran);
        EXPECT_FALSE(ran);
        EXPECT_EQ(run.status, ExitStatus::kUsage);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, err);
    }
}

TEST(CommandLine, HelpAndVersionGoToStandardOutput) {
    bool ran = true;
    Outcome help = parse({"touch", "--help"}, &ran);
    EXPECT_FALSE(ran);
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out, "Touch the paths\n"
                        "\n"
                        "Usage:\n"
                        "  brevant touch [--times N] [--json] PATH...\n"
                        "  brevant touch --json PATH...\n"
                        "\n"
                        "Arguments:\n"
                        "  PATH...           The paths\n"
                        "\n"
                        "Options:\n"
                        "  -h,--help         Show this help and exit\n"
                        "  --times N         How often\n"
                        "  --json            Print JSON\n"
                        "\n"
                        "Exit status: 0 done; 1 stopped by Ctrl-C, or the work failed; 2 wrong\n"
                        "arguments; 3 every chosen folder was refused, so nothing was scanned.\n");
    // Help wins over missing arguments, wherever it stands.
    EXPECT_EQ(parse({"touch", "-h"}).out, help.out);
    EXPECT_EQ(parse({"touch", "--json", "--help"}).out, help.out);

    Outcome overall = parse({"--help"});
    EXPECT_EQ(overall.status, 0);
    EXPECT_THAT(overall.out, HasSubstr("Commands:\n"
                                       "  touch             Touch the paths\n"
                                       "  name              Name one thing\n"));
    EXPECT_THAT(overall.out, HasSubstr("  brevant name NAME\n"));

    Outcome version = parse({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, fmt::format("brevant {}\n", BREVANT_VERSION));
}

} // namespace
} // namespace brevant::cli
