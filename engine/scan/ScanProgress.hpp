#pragma once

#include "engine/support/RawValue.hpp"

#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace brevant {

// Where a scan is and how far it got.
struct ScanProgress {
    enum class Stage {
        preparing,
        discovering,
        reading,
        comparing,
        verifying,
        measuring,
        checkingFaces,
        downloading,
        finishing,
    };

    Stage stage = Stage::preparing;
    int discovered = 0;
    int examined = 0;
    int skipped = 0;
    int matched = 0;
    std::int64_t downloadedBytes = 0;
    std::int64_t downloadLimit = 0;

    friend bool operator==(const ScanProgress&, const ScanProgress&) = default;
};

template <> struct EnumCases<ScanProgress::Stage> {
    using Stage = ScanProgress::Stage;
    static constexpr std::array kAll{Stage::preparing,     Stage::discovering, Stage::reading,
                                     Stage::comparing,     Stage::verifying,   Stage::measuring,
                                     Stage::checkingFaces, Stage::downloading, Stage::finishing};
};

// The stage's raw value is the text shown to the user.
[[nodiscard]] std::string_view rawValue(ScanProgress::Stage stage);
void PrintTo(ScanProgress::Stage stage, std::ostream* os);

} // namespace brevant
