#pragma once

#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/Date.hpp"
#include "engine/support/RawValue.hpp"
#include "engine/support/Uuid.hpp"

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// What a file to compress is. A motion photo loses its appended movie and
// becomes a still.
enum class MediaKind {
    photo,
    video,
    motionPhoto,
};

template <> struct EnumCases<MediaKind> {
    static constexpr std::array kAll{MediaKind::photo, MediaKind::video, MediaKind::motionPhoto};
};

[[nodiscard]] std::string_view rawValue(MediaKind kind);
void PrintTo(MediaKind kind, std::ostream* os);

// One big file that gets a smaller copy, with everything needed to check it
// again just before its copy is written: its snapshot when it was found.
struct PlannedCompression {
    std::string path;
    // The chosen folder it was found under.
    std::string root;
    FileSnapshot snapshot;
    MediaKind kind = MediaKind::photo;
    // What it is now: "JPEG", "TIFF", "motion photo", or the video's codec
    // ("h264").
    std::string format;
    // The size as shown.
    int width = 0;
    int height = 0;
    // Videos: how long it plays.
    double durationSeconds = 0;
    // What the copy is expected to save, in bytes.
    std::int64_t estimatedSaving = 0;

    friend bool operator==(const PlannedCompression&, const PlannedCompression&) = default;
};

// The files one compression run gives smaller copies, as approved. Fixed
// once made.
struct CompressionPlan {
    Uuid id;
    // Stored to the second.
    Date created;
    // The chosen folders, sorted.
    std::vector<std::string> roots;
    // In walk order.
    std::vector<PlannedCompression> items;

    // The items' sizes when they were found.
    [[nodiscard]] std::int64_t plannedBytes() const;
    [[nodiscard]] std::int64_t estimatedSaving() const;

    friend bool operator==(const CompressionPlan&, const CompressionPlan&) = default;
};

// Keys are the field names; paths go through path_text; dates are ISO 8601.
void to_json(nlohmann::ordered_json& j, const PlannedCompression& value);
void from_json(const nlohmann::ordered_json& j, PlannedCompression& value);
void to_json(nlohmann::ordered_json& j, const CompressionPlan& value);
void from_json(const nlohmann::ordered_json& j, CompressionPlan& value);

} // namespace brevant
