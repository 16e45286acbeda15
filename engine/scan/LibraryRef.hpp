#pragma once

#include "engine/support/Hashing.hpp"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace brevant {

// A picture's entry in the Photos library, filled by the library scan.
struct LibraryRef {
    std::string id;
    std::string filename;
    bool isFavorite = false;
    bool isLivePhoto = false;
    bool hasRAWPair = false;
    bool isEdited = false;

    friend bool operator==(const LibraryRef&, const LibraryRef&) = default;
};

void to_json(nlohmann::ordered_json& j, const LibraryRef& value);
void from_json(const nlohmann::ordered_json& j, LibraryRef& value);

} // namespace brevant

template <> struct std::hash<brevant::LibraryRef> {
    std::size_t operator()(const brevant::LibraryRef& v) const noexcept {
        return brevant::hashing::all(v.id, v.filename, v.isFavorite, v.isLivePhoto, v.hasRAWPair,
                                     v.isEdited);
    }
};
