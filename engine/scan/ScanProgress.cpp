#include "ScanProgress.hpp"

#include <ostream>

namespace brevant {

std::string_view rawValue(ScanProgress::Stage stage) {
    using Stage = ScanProgress::Stage;
    switch (stage) {
    case Stage::preparing:
        return "Checking the folders";
    case Stage::discovering:
        return "Finding pictures";
    case Stage::reading:
        return "Reading pictures";
    case Stage::comparing:
        return "Comparing contents";
    case Stage::verifying:
        return "Confirming matches byte by byte";
    case Stage::measuring:
        return "Measuring pictures for similarity";
    case Stage::checkingFaces:
        return "Checking eyes and smiles";
    case Stage::downloading:
        return "Downloading originals from iCloud";
    case Stage::finishing:
        return "Finishing";
    }
    return "Finishing";
}

void PrintTo(ScanProgress::Stage stage, std::ostream* os) {
    *os << rawValue(stage);
}

} // namespace brevant
