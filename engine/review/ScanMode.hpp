#pragma once

#include "engine/similarity/SimilarityPreset.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string_view>

namespace brevant {

// What a scan looks for. Identical copies are proven whatever the mode;
// similar versions (at a preset) and series need every picture measured.
// The Live Photos mode looks for the movie halves of Live Photos alone.
struct ScanMode {
    enum class Kind {
        identical,
        similar,
        series,
        livePhotos,
    };

    Kind kind = Kind::identical;
    // Only the similar mode has one; a regroup changes it without measuring
    // again.
    SimilarityPreset preset = SimilarityPreset::balanced;

    [[nodiscard]] static ScanMode identical() { return {}; }

    [[nodiscard]] static ScanMode similar(SimilarityPreset preset) {
        return {.kind = Kind::similar, .preset = preset};
    }

    [[nodiscard]] static ScanMode series() { return {.kind = Kind::series}; }

    [[nodiscard]] static ScanMode livePhotos() { return {.kind = Kind::livePhotos}; }

    [[nodiscard]] bool measures() const { return kind == Kind::similar || kind == Kind::series; }

    friend bool operator==(const ScanMode&, const ScanMode&) = default;
};

template <> struct EnumCases<ScanMode::Kind> {
    using Kind = ScanMode::Kind;
    static constexpr std::array kAll{Kind::identical, Kind::similar, Kind::series,
                                     Kind::livePhotos};
};

[[nodiscard]] std::string_view rawValue(ScanMode::Kind kind);
void PrintTo(ScanMode::Kind kind, std::ostream* os);
// "similar (broad)", "series".
void PrintTo(const ScanMode& mode, std::ostream* os);

} // namespace brevant
