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

std::string cannotOpen(std::string_view record, std::string_view name, std::string_view reason) {
    return fmt::format("The {} record \u201c{}\u201d couldn\u2019t be opened ({}).", record, name,
                       reason);
}

std::string cannotWrite(std::string_view record, std::string_view name, std::string_view reason) {
    return fmt::format("The {} record \u201c{}\u201d couldn\u2019t be written ({}).", record, name,
                       reason);
}

std::string unreadable(std::string_view record, std::string_view name) {
    return fmt::format("The {} record \u201c{}\u201d couldn\u2019t be read: none of its "
                       "lines could be read.",
                       record, name);
}

std::string cannotCreate(std::string_view record, std::string_view name, std::string_view folder,
                         std::string_view reason) {
    return fmt::format("The {} record \u201c{}\u201d couldn\u2019t be created in the folder "
                       "\u201c{}\u201d ({}).",
                       record, name, folder, reason);
}

std::string cannotRead(std::string_view record, std::string_view name, std::string_view reason) {
    return fmt::format("The {} record \u201c{}\u201d couldn\u2019t be read ({}).", record, name,
                       reason);
}

std::string notAFile(std::string_view record, std::string_view name) {
    return fmt::format("The {} record \u201c{}\u201d is not a file, so it cannot be read.", record,
                       name);
}

std::string inUse(std::string_view record, std::string_view name) {
    return fmt::format("The {} record \u201c{}\u201d is in use by a {} or Put Back that is still "
                       "running.",
                       record, name, record);
}

std::string isLink(std::string_view record, std::string_view path) {
    return fmt::format("This {} record is a symbolic link, which {} does not follow: {}. "
                       "Put the record itself there to see its pictures.",
                       record, texts::kApplication, path);
}

std::string putBackLost(std::string_view destination) {
    return fmt::format("Put Back stopped part way; the picture is neither in the Trash nor at {} "
                       "\u2014 look for it there and in the Trash.",
                       destination);
}

std::optional<std::string> damage(std::string_view record, bool planDamaged, int damagedLines) {
    if (planDamaged) {
        return fmt::format("Part of this {}\u2019s record is damaged: its plan could not be "
                           "read, so only the pictures its other lines name are listed.",
                           record);
    }
    if (damagedLines == 1) {
        return fmt::format("One line of this {}\u2019s record could not be read; its "
                           "pictures are listed from the rest.",
                           record);
    }
    if (damagedLines > 1) {
        return fmt::format("{} lines of this {}\u2019s record could not be read; its "
                           "pictures are listed from the rest.",
                           damagedLines, record);
    }
    return std::nullopt;
}

} // namespace brevant::journal_texts
