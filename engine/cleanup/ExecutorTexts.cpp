#include "ExecutorTexts.hpp"

#include "engine/support/Texts.hpp"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace brevant::executor_texts {

std::string noKeeperLeft(const std::optional<MatchKind>& kind, std::vector<std::string> words) {
    std::ranges::sort(words);
    auto repeated = std::ranges::unique(words);
    words.erase(repeated.begin(), repeated.end());
    std::string joined = fmt::format("{}", fmt::join(words, ", "));
    if (!kind || *kind == MatchKind::identical) {
        return "No unchanged identical copy is left to keep (the kept copies are " + joined +
               "). Scan again.";
    }
    return "None of the pictures you kept from its group is still there unchanged (they are " +
           joined + "). Scan again.";
}

std::string trashRefused(int code, std::string_view description) {
    if (code == EROFS) {
        return "The drive is read-only, so nothing was moved.";
    }
    if (code == ENOENT) {
        return "It disappeared before it could be moved \u2014 perhaps the drive was "
               "disconnected.";
    }
    return fmt::format("{} would not move it to the Trash ({}). It was left where it was; nothing "
                       "was deleted.",
                       texts::kSystem, description);
}

} // namespace brevant::executor_texts
