#include "JournalTexts.hpp"

#include "engine/support/Texts.hpp"

#include <fmt/format.h>

namespace brevant::journal_texts {

std::string interruptedExplanation() {
    return fmt::format("{} stopped while this cleanup was running. Each picture's outcome below "
                       "was worked out afterwards by looking where it is \u2014 nothing was moved "
                       "again.",
                       texts::kApplication);
}

std::string_view title(const CleanupReport& report) {
    return report.reconciled ? kInterruptedTitle : kFinishedTitle;
}

std::string historyCaption() {
    return fmt::format("Every {} run, with each picture's outcome. Kept on {} only.",
                       texts::kApplication, texts::kMachine);
}

std::string alreadyExists(std::string_view name, std::string_view folder) {
    return fmt::format(
        "The file \u201c{}\u201d couldn\u2019t be saved in the folder \u201c{}\u201d "
        "because a file with the same name already exists.",
        name, folder);
}

std::string cannotOpen(std::string_view name, std::string_view reason) {
    return fmt::format("The cleanup record \u201c{}\u201d couldn\u2019t be opened ({}).", name,
                       reason);
}

std::string cannotWrite(std::string_view name, std::string_view reason) {
    return fmt::format("The cleanup record \u201c{}\u201d couldn\u2019t be written ({}).", name,
                       reason);
}

std::string unreadable(std::string_view name) {
    return fmt::format("The cleanup record \u201c{}\u201d couldn\u2019t be read: it has no plan.",
                       name);
}

} // namespace brevant::journal_texts
