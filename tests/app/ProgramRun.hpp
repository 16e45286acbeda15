#pragma once

#include "tests/fixtures/TempTree.hpp"

#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <string>

namespace brevant::cli {

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

// A stream whose bytes stay in memory.
class MemoryStream {
public:
    MemoryStream()
        : stream_(::open_memstream(&bytes_, &size_)) {}

    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;
    MemoryStream(MemoryStream&&) = delete;
    MemoryStream& operator=(MemoryStream&&) = delete;

    ~MemoryStream() {
        std::fclose(stream_);
        std::free(bytes_);
    }

    [[nodiscard]] std::FILE* get() const { return stream_; }

    // What was written so far.
    [[nodiscard]] std::string text() {
        std::fflush(stream_);
        return {bytes_, size_};
    }

private:
    char* bytes_ = nullptr;
    std::size_t size_ = 0;
    std::FILE* stream_;
};

// Runs a shell command line with its output captured in files of the tree.
inline Outcome runCaptured(const testing::TempTree& tree, const std::string& commandLine) {
    Outcome run;
    std::string out = tree.path("stdout.txt");
    std::string err = tree.path("stderr.txt");
    run.status = testing::runCommand(fmt::format("{} >'{}' 2>'{}'", commandLine, out, err));
    run.out = testing::readFile(out);
    run.err = testing::readFile(err);
    return run;
}

// Runs the built program with the arguments (shell words).
inline Outcome runProgram(const testing::TempTree& tree, const std::string& arguments) {
    return runCaptured(tree, fmt::format("'{}' {}", BREVANT_BINARY, arguments));
}

} // namespace brevant::cli
