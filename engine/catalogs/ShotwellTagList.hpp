#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// The photos and videos one Shotwell tag carries, as Shotwell writes them
// into its TagTable: each source id followed by a comma, "thumb" and the
// photo's id in sixteen hexadecimal digits for a photo, "video-" and the id
// for a video. Lists from very old libraries hold bare decimal photo ids.
// Entries are kept as they are and in their order; only ours are added or
// taken out.
struct ShotwellTagList {
    std::vector<std::string> entries;

    [[nodiscard]] static ShotwellTagList parse(std::string_view text);
    // "" for no entries, which is written as NULL.
    [[nodiscard]] std::string text() const;

    // "thumb000000000000002a" for 42.
    [[nodiscard]] static std::string sourceID(std::int64_t photoID);
    // The photo an entry names, in the current or the old form; nothing for
    // a video or an entry that is neither.
    [[nodiscard]] static std::optional<std::int64_t> photoID(std::string_view entry);

    [[nodiscard]] bool containsPhoto(std::int64_t photoID) const;
    // Appended in the current form unless the photo is there already;
    // answers whether it was added.
    bool addPhoto(std::int64_t photoID);
    // Takes out the entries in the current form that name the photo;
    // answers whether there was one.
    bool removePhoto(std::int64_t photoID);

    friend bool operator==(const ShotwellTagList&, const ShotwellTagList&) = default;
};

} // namespace brevant
