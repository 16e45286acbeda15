#include "Program.hpp"

#include "app/cli/CommandLineReport.hpp"
#include "app/cli/ScanCommand.hpp"

#include <cstdio>
#include <fmt/format.h>

namespace brevant::cli {

namespace {

constexpr int kUsageStatus = 2;

void printUsage(std::FILE* stream) {
    fmt::print(stream,
               "Brevant {}: finds photos saved more than once.\n"
               "\n"
               "Usage:\n"
               "  brevant --similar [conservative|balanced|broad] FOLDER...\n"
               "  brevant --series FOLDER...\n"
               "{}"
               "  brevant --version\n"
               "  brevant --help\n",
               BREVANT_VERSION, ScanCommand::usage());
}

} // namespace

int run(const std::vector<std::string>& arguments) {
    // The report looks at the whole argument list before anything else.
    if (auto status = CommandLineReport::runIfAsked(arguments)) {
        return *status;
    }
    if (arguments.size() >= 2 && arguments[1] == "scan") {
        return ScanCommand::main({arguments.begin() + 2, arguments.end()});
    }
    if (arguments.size() == 2 && arguments[1] == "--version") {
        fmt::print("brevant {}\n", BREVANT_VERSION);
        return 0;
    }
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        printUsage(stdout);
        return 0;
    }
    printUsage(stderr);
    return arguments.size() == 1 ? 0 : kUsageStatus;
}

} // namespace brevant::cli
