#include "MediaScan.hpp"

#include "engine/platform/FolderListing.hpp"
#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <set>

namespace brevant {

namespace {

std::string lowercased(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string stemOf(const std::string& name) {
    auto dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

bool isLivePhotoHalf(const PhotoAsset& picture) {
    return std::ranges::find(picture.relationships, Relationship::livePhoto) !=
           picture.relationships.end();
}

// The movie as a member: found under the photo's root, on its volume. A
// movie that is not a plain file of its own (a link, empty) is no half.
std::optional<PhotoAsset> movieAsset(const PhotoAsset& photo, const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot || !snapshot->isRegularFile || snapshot->isSymbolicLink || snapshot->size <= 0 ||
        snapshot->isDataless()) {
        return std::nullopt;
    }
    PhotoAsset movie;
    movie.path = path;
    movie.root = photo.root;
    movie.snapshot = *snapshot;
    movie.format = PhotoFormat::other;
    movie.isCloudSynced = photo.isCloudSynced;
    movie.isReadOnlyVolume = photo.isReadOnlyVolume;
    movie.volumeName = photo.volumeName;
    movie.isExternalVolume = photo.isExternalVolume;
    return movie;
}

} // namespace

MediaScan::Readers MediaScan::Readers::standard() {
    return {.photo = &platform::LivePhotoTags::ofPhoto, .movie = &platform::LivePhotoTags::ofMovie};
}

bool MediaScan::confirms(const platform::LiveTags& photo, const platform::LiveTags& movie) {
    if (photo.contentIdentifier && movie.contentIdentifier) {
        return *photo.contentIdentifier == *movie.contentIdentifier;
    }
    if (!movie.durationSeconds || *movie.durationSeconds <= 0 ||
        *movie.durationSeconds > kLongestMovieSeconds) {
        return false;
    }
    if (!photo.captured || !movie.captured) {
        return false;
    }
    return std::llabs(*photo.captured - *movie.captured) <= kLargestDateGapSeconds;
}

std::optional<std::string> MediaScan::movieBeside(const PhotoAsset& photo) {
    std::string folder = PathNames::parentFolder(photo.path);
    auto names = platform::folderEntries(folder);
    if (!names) {
        return std::nullopt;
    }
    std::string wanted = lowercased(stemOf(PathNames::lastComponent(photo.path))) + ".mov";
    // Entries come in byte order, so the same one is chosen every time.
    auto found = std::ranges::find_if(
        *names, [&](const std::string& name) { return lowercased(name) == wanted; });
    if (found == names->end()) {
        return std::nullopt;
    }
    return folder == "/" ? "/" + *found : folder + "/" + *found;
}

std::vector<DuplicateGroup> MediaScan::liveMovies(const std::vector<PhotoAsset>& pictures,
                                                  const CancellationFlag& cancel,
                                                  const Readers& readers) {
    std::vector<DuplicateGroup> groups;
    std::set<std::string> paired;
    for (const auto& photo : pictures) {
        if (cancel.isCancelled()) {
            break;
        }
        if (!isLivePhotoHalf(photo)) {
            continue;
        }
        auto path = movieBeside(photo);
        if (!path || paired.contains(*path)) {
            continue;
        }
        auto movie = movieAsset(photo, *path);
        if (!movie || !confirms(readers.photo(photo.path), readers.movie(*path))) {
            continue;
        }
        paired.insert(*path);
        std::int64_t size = movie->size();
        groups.push_back(
            DuplicateGroup::make(std::string(rawValue(MatchKind::liveMovie)) + ":" + photo.path,
                                 size, {photo, std::move(*movie)}, MatchKind::liveMovie));
    }
    return groups;
}

} // namespace brevant
