#include "MarkTexts.hpp"

namespace brevant::mark_texts {

std::string backupFailed(std::string_view reason) {
    return "The catalog could not be backed up, so nothing was changed: " + std::string(reason);
}

std::string writeFailed(std::string_view reason) {
    return "The catalog was not changed: " + std::string(reason);
}

std::string recordNotSaved(std::string_view reason) {
    return "The catalog was changed, but its record could not be saved: " + std::string(reason);
}

} // namespace brevant::mark_texts
