#include "ChangeLock.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/support/PathNames.hpp"
#include "engine/support/Texts.hpp"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>

namespace brevant {

namespace {

using Refusal = ChangeLock::Refusal;

// "brevant clean" for a command line "/usr/bin/brevant clean --yes ~/P": the
// program and its command, without the files it was given.
std::string programOf(const std::string& commandLine) {
    std::string_view line = commandLine;
    std::size_t space = line.find(' ');
    std::string program = PathNames::lastComponent(line.substr(0, space));
    if (program == "brevant-desktop") {
        return fmt::format("the {} window", texts::kApplication);
    }
    if (space == std::string_view::npos) {
        return program;
    }
    std::string_view rest = line.substr(space + 1);
    std::string_view command = rest.substr(0, rest.find(' '));
    if (command.empty() || command.starts_with('-') || command.starts_with('/')) {
        return program;
    }
    return fmt::format("{} {}", program, command);
}

Refusal busy(const platform::DataFolder& data) {
    Refusal refusal{.kind = Refusal::Kind::busy, .folder = data.path};
    refusal.processID = platform::FileLock::holderOf(data.changeLock());
    if (refusal.processID) {
        if (auto line = platform::commandLineOf(*refusal.processID)) {
            refusal.program = programOf(*line);
        }
    }
    return refusal;
}

std::string holderText(const Refusal& refusal) {
    if (refusal.program && refusal.processID) {
        return fmt::format(": {} (process {})", *refusal.program, *refusal.processID);
    }
    if (refusal.processID) {
        return fmt::format(" (process {})", *refusal.processID);
    }
    return {};
}

std::expected<ChangeLock, Refusal> unavailable(const platform::DataFolder& data, int code) {
    return std::unexpected(
        Refusal{.kind = Refusal::Kind::unavailable, .code = code, .folder = data.path});
}

} // namespace

std::string Refusal::message() const {
    switch (kind) {
    case Kind::busy:
        return fmt::format("Another {} run is changing pictures or {}\u2019s records{}. Nothing "
                           "was changed; try again when it has finished.",
                           texts::kApplication, texts::kApplication, holderText(*this));
    case Kind::unavailable:
        return fmt::format("{} could not lock its data folder {} ({}), so nothing was changed.",
                           texts::kApplication, folder, platform::errorText(code));
    }
    return {};
}

std::string Refusal::waitingMessage() const {
    return fmt::format("Waiting for another {} run to finish{}\u2026", texts::kApplication,
                       holderText(*this));
}

std::expected<ChangeLock, Refusal> ChangeLock::tryTake(const platform::DataFolder& data) {
    return take(data, {});
}

std::expected<ChangeLock, Refusal> ChangeLock::take(const platform::DataFolder& data,
                                                    const Waiting& waiting) {
    std::error_code folderError;
    std::filesystem::create_directories(data.path, folderError);
    std::optional<Refusal> holding;
    bool gaveUp = false;
    auto keepWaiting = [&]() {
        if (!waiting) {
            gaveUp = true;
            return false;
        }
        if (!holding) {
            holding = busy(data);
        }
        gaveUp = !waiting(*holding);
        return !gaveUp;
    };
    auto taken = platform::FileLock::take(data.changeLock(), true, keepWaiting);
    if (taken) {
        return ChangeLock(std::move(*taken));
    }
    if (gaveUp || taken.error() == EWOULDBLOCK) {
        return std::unexpected(holding ? *holding : busy(data));
    }
    return unavailable(data, folderError ? folderError.value() : taken.error());
}

std::optional<Refusal> ChangeLock::holder(const platform::DataFolder& data) {
    if (!platform::FileLock::isHeld(data.changeLock())) {
        return std::nullopt;
    }
    return busy(data);
}

} // namespace brevant
