#include "app/cli/Program.hpp"

#include <string>
#include <vector>

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv, argv + argc);
    return brevant::cli::run(arguments);
}
