#pragma once

#include "engine/platform/LivePhotoTags.hpp"
#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace brevant {

// Finds the movie halves of Live Photos: a photo and a .mov of the same stem
// in one folder, confirmed by what the two halves say. Each confirmed pair
// becomes a liveMovie group whose photo is the fixed keeper and whose movie
// is the copy offered for removal. Nothing is opened for writing.
struct MediaScan {
    // A Live Photo's movie lasts about three seconds and starts just before
    // the photo is taken; without identifiers a pair must fit both bounds.
    static constexpr double kLongestMovieSeconds = 5.0;
    static constexpr std::int64_t kLargestDateGapSeconds = 5;

    // How each half's tags are read; tests swap them.
    struct Readers {
        std::function<platform::LiveTags(const std::string& path)> photo;
        std::function<platform::LiveTags(const std::string& path)> movie;

        [[nodiscard]] static Readers standard();
    };

    // Whether the two halves belong together. Identifiers on both halves
    // decide alone: equal is a pair, different is not, whatever the names
    // say. Otherwise the movie must be short and dated within a few seconds
    // of the photo.
    [[nodiscard]] static bool confirms(const platform::LiveTags& photo,
                                       const platform::LiveTags& movie);

    // The .mov beside the photo with its stem, in any case of letters;
    // nothing when there is none.
    [[nodiscard]] static std::optional<std::string> movieBeside(const PhotoAsset& photo);

    // The liveMovie groups among the pictures (those with a livePhoto
    // relationship), in the pictures' order. A movie pairs with one photo
    // only. Stops between two pictures when cancelled.
    [[nodiscard]] static std::vector<DuplicateGroup>
    liveMovies(const std::vector<PhotoAsset>& pictures, const CancellationFlag& cancel,
               const Readers& readers = Readers::standard());
};

} // namespace brevant
