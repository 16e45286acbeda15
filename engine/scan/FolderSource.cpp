#include "FolderSource.hpp"

#include "engine/platform/CameraRaw.hpp"
#include "engine/platform/ContentTypes.hpp"
#include "engine/platform/DirectoryWalker.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/ImageHeaders.hpp"
#include "engine/platform/Mounts.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/Texts.hpp"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <ostream>

namespace brevant {

namespace {

using Kind = ExcludedItem::Kind;

constexpr std::array<std::string_view, 9> kManagedLibraryExtensions = {
    "photoslibrary", "photolibrary", "migratedphotolibrary", "aplibrary",  "lrdata",
    "lrlibrary",     "cocatalog",    "cocatalogdb",          "cosessiondb"};

// Capture One keeps a session's own files in a folder of this name.
constexpr std::array<std::string_view, 1> kManagedFolderNames = {"CaptureOne"};

// Linux has no package bit, so a folder is a package when the Mac would show
// it as one file: these extensions.
constexpr std::array<std::string_view, 44> kPackageExtensions = {
    "app",           "appex",        "bundle",      "framework",
    "plugin",        "kext",         "pkg",         "mpkg",
    "rtfd",          "pages",        "numbers",     "key",
    "sparsebundle",  "sparseimage",  "fcpbundle",   "imovielibrary",
    "imovieproject", "musiclibrary", "tvlibrary",   "logicx",
    "band",          "xcodeproj",    "xcworkspace", "playground",
    "xcarchive",     "dsym",         "xpc",         "qlgenerator",
    "mdimporter",    "prefpane",     "saver",       "wdgt",
    "scptd",         "action",       "workflow",    "component",
    "vst",           "vst3",         "aaxplugin",   "docset",
    "textbundle",    "fcpxmld",      "mlmodelc",    "photoslibrarymigrator"};

constexpr std::array<std::string_view, 2> kSidecarExtensions = {"xmp", "aae"};
constexpr std::array<std::string_view, 6> kRawPartnerExtensions = {"jpg",  "jpeg", "heic",
                                                                   "heif", "tif",  "tiff"};

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& set, std::string_view value) {
    return std::ranges::find(set, value) != set.end();
}

bool anyFolderIsManagedLibrary(const std::string& path) {
    for (std::string current = path; current != "/" && !current.empty();
         current = PathRules::parentFolder(current)) {
        auto name = PathRules::lastComponent(current);
        auto extension = PathRules::asciiLowercased(PathRules::extension(name));
        if (contains(kManagedLibraryExtensions, extension)) {
            return true;
        }
    }
    return false;
}

std::optional<ExcludedItem> refusal(const std::string& chosen, std::string& resolved) {
    std::string path = PathRules::standardized(chosen);
    auto real = platform::realPath(path);
    if (!real) {
        return ExcludedItem{path, Kind::refusedRoot, FolderSource::notFoundSentence()};
    }
    if (!platform::isDirectory(*real)) {
        return ExcludedItem{path, Kind::refusedRoot, FolderSource::notAFolderSentence()};
    }
    if (anyFolderIsManagedLibrary(*real)) {
        return ExcludedItem{path, Kind::refusedRoot, FolderSource::insideLibrarySentence()};
    }
    if (platform::isOnNetworkVolume(*real)) {
        return ExcludedItem{path, Kind::refusedRoot, FolderSource::networkVolumeSentence()};
    }
    resolved = *real;
    return std::nullopt;
}

// The state of one walk over several roots.
class Walker {
public:
    Walker(const FolderSource::OnlyPaths& only, const CancellationFlag& cancel,
           const FolderSource::WalkProgress& progress, bool keepVideos)
        : only_(only)
        , cancel_(cancel)
        , progress_(progress)
        , keepVideos_(keepVideos) {}

    // False when the walk was cancelled.
    bool walkRoot(const std::string& root);

    FolderSource::Walk take() { return std::move(walk_); }

private:
    void visitDirectory(platform::DirectoryWalker& walker,
                        const platform::DirectoryWalker::Entry& entry);
    void visitFile(const std::string& root, const platform::DirectoryWalker::Entry& entry);
    void keep(const std::string& root, const std::string& path, PhotoFormat format,
              const FileSnapshot& snapshot);
    bool isImageType(const std::string& extension);
    bool isVideoType(const std::string& extension);
    // A plain, readable, non-empty file; else the reason is recorded.
    std::optional<FileSnapshot> plainFile(const std::string& path);

    const FolderSource::OnlyPaths& only_;
    const CancellationFlag& cancel_;
    const FolderSource::WalkProgress& progress_;
    bool keepVideos_ = false;
    std::unordered_map<std::string, bool> videoTypeByExtension_;
    FolderSource::Walk walk_;
    std::unordered_map<FileIdentity, std::size_t> foundByIdentity_;
    std::unordered_map<std::string, bool> imageTypeByExtension_;
};

bool Walker::walkRoot(const std::string& root) {
    // Checked before opening too: glibc's fts leaks when closed unread.
    if (cancel_.isCancelled()) {
        walk_.cancelled = true;
        return false;
    }
    std::vector<ExcludedItem> unreadable;
    int error = 0;
    auto walker = platform::DirectoryWalker::open(root, error);
    if (!walker) {
        walk_.excluded.push_back(
            {root, Kind::unreadableFolder, FolderSource::unreadableFolderSentence()});
        return true;
    }
    for (;;) {
        if (cancel_.isCancelled()) {
            walk_.cancelled = true;
            return false;
        }
        auto entry = walker->next();
        if (!entry) {
            break;
        }
        using EntryKind = platform::DirectoryWalker::Kind;
        switch (entry->kind) {
        case EntryKind::unreadableDirectory:
            unreadable.push_back(
                {entry->path, Kind::unreadableFolder, FolderSource::unreadableFolderSentence()});
            break;
        case EntryKind::symbolicLink:
            walk_.skipped.push_back({entry->path, SkipReason::symbolicLink, std::nullopt});
            break;
        case EntryKind::directory:
            if (entry->level > 0) {
                visitDirectory(*walker, *entry);
            }
            break;
        case EntryKind::regularFile:
        case EntryKind::special:
        case EntryKind::noStatus:
            visitFile(root, *entry);
            break;
        }
    }
    if (walker->failed() != 0 && unreadable.empty()) {
        unreadable.push_back(
            {root, Kind::unreadableFolder, FolderSource::unreadableFolderSentence()});
    }
    walk_.excluded.insert(walk_.excluded.end(), unreadable.begin(), unreadable.end());
    return true;
}

void Walker::visitDirectory(platform::DirectoryWalker& walker,
                            const platform::DirectoryWalker::Entry& entry) {
    auto extension = PathRules::asciiLowercased(PathRules::extension(entry.name));
    if (FolderSource::isManagedLibraryExtension(extension) ||
        contains(kManagedFolderNames, entry.name)) {
        walk_.excluded.push_back(
            {entry.path, Kind::managedLibrary, FolderSource::managedLibrarySentence()});
        walker.skipContents();
        return;
    }
    if (FolderSource::isPackageExtension(extension)) {
        walk_.excluded.push_back({entry.path, Kind::package, FolderSource::packageSentence()});
        walker.skipContents();
    }
}

void Walker::visitFile(const std::string& root, const platform::DirectoryWalker::Entry& entry) {
    const std::string& path = entry.path;
    walk_.namesByFolder[PathRules::parentFolder(path)].insert(PathRules::lowercased(entry.name));
    if (only_ && !only_->contains(path)) {
        return;
    }
    walk_.discovered += 1;
    if (walk_.discovered % FolderSource::kProgressInterval == 0 && progress_) {
        progress_(walk_.discovered);
    }
    auto extension = PathRules::asciiLowercased(PathRules::extension(entry.name));
    auto format = photoFormatFromExtension(extension);
    if (!format) {
        if (isImageType(extension)) {
            walk_.skipped.push_back(
                {path, SkipReason::unsupportedFormat, PathRules::asciiUppercased(extension)});
        } else if (keepVideos_ && isVideoType(extension)) {
            if (auto snapshot = plainFile(path)) {
                walk_.videos.push_back({path, root, *snapshot, PhotoFormat::other});
            }
        } else if (entry.kind == platform::DirectoryWalker::Kind::regularFile) {
            walk_.otherFiles += 1;
        }
        return;
    }
    if (auto snapshot = plainFile(path)) {
        keep(root, path, *format, *snapshot);
    }
}

std::optional<FileSnapshot> Walker::plainFile(const std::string& path) {
    auto snapshot = FileSnapshot::read(path);
    if (!snapshot || !snapshot->isRegularFile) {
        walk_.skipped.push_back(
            {path, SkipReason::unreadable, FolderSource::notPlainFileSentence()});
        return std::nullopt;
    }
    if (snapshot->isDataless()) {
        walk_.skipped.push_back({path, SkipReason::cloudPlaceholder, std::nullopt});
        return std::nullopt;
    }
    if (snapshot->size == 0) {
        walk_.skipped.push_back({path, SkipReason::empty, std::nullopt});
        return std::nullopt;
    }
    if (auto error = platform::readAccessError(path)) {
        walk_.skipped.push_back({path, SkipReason::unreadable, std::move(error)});
        return std::nullopt;
    }
    return snapshot;
}

void Walker::keep(const std::string& root, const std::string& path, PhotoFormat format,
                  const FileSnapshot& snapshot) {
    auto [it, inserted] = foundByIdentity_.try_emplace(snapshot.identity, walk_.found.size());
    if (!inserted) {
        walk_.otherNames[snapshot.identity].push_back(path);
        walk_.hardLinksFolded += 1;
        return;
    }
    walk_.found.push_back({path, root, snapshot, format});
}

bool Walker::isVideoType(const std::string& extension) {
    auto [it, inserted] = videoTypeByExtension_.try_emplace(extension, false);
    if (inserted) {
        it->second = platform::isVideoExtension(extension);
    }
    return it->second;
}

bool Walker::isImageType(const std::string& extension) {
    auto [it, inserted] = imageTypeByExtension_.try_emplace(extension, false);
    if (inserted) {
        it->second = platform::isImageExtension(extension);
    }
    return it->second;
}

// The libvips loader for the formats libvips reads; RAW goes to LibRaw.
std::optional<platform::ImageLoader> imageLoader(PhotoFormat format) {
    switch (format) {
    case PhotoFormat::jpeg:
        return platform::ImageLoader::jpeg;
    case PhotoFormat::png:
        return platform::ImageLoader::png;
    case PhotoFormat::heic:
        return platform::ImageLoader::heic;
    case PhotoFormat::tiff:
        return platform::ImageLoader::tiff;
    case PhotoFormat::webp:
        return platform::ImageLoader::webp;
    case PhotoFormat::avif:
        return platform::ImageLoader::avif;
    case PhotoFormat::gif:
        return platform::ImageLoader::gif;
    case PhotoFormat::jxl:
        return platform::ImageLoader::jxl;
    case PhotoFormat::raw:
    case PhotoFormat::other:
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

PreparedRoots FolderSource::prepare(const std::vector<std::string>& paths) {
    PreparedRoots prepared;
    std::vector<std::string> accepted;
    for (const auto& chosen : paths) {
        std::string resolved;
        if (auto refused = refusal(chosen, resolved)) {
            prepared.refused.push_back(std::move(*refused));
            continue;
        }
        accepted.push_back(std::move(resolved));
    }
    std::ranges::sort(accepted);
    for (auto& root : accepted) {
        auto container = std::ranges::find_if(prepared.roots, [&](const std::string& kept) {
            return PathRules::isInside(root, kept);
        });
        if (container != prepared.roots.end()) {
            prepared.refused.push_back(
                {root, Kind::overlappingRoot, overlappingSentence(*container)});
            continue;
        }
        prepared.roots.push_back(std::move(root));
    }
    return prepared;
}

FolderSource::Walk FolderSource::walk(const std::vector<std::string>& roots, const OnlyPaths& only,
                                      const CancellationFlag& cancel, const WalkProgress& progress,
                                      bool keepVideos) {
    Walker walker(only, cancel, progress, keepVideos);
    for (const auto& root : roots) {
        if (!walker.walkRoot(root)) {
            break;
        }
    }
    return walker.take();
}

FolderSource::NameSet FolderSource::stems(const NameSet& names) {
    NameSet result;
    result.reserve(names.size());
    for (const auto& name : names) {
        result.emplace(PathRules::deletingExtension(name));
    }
    return result;
}

std::vector<Relationship> FolderSource::relationships(std::string_view path, const NameSet& names,
                                                      const NameSet& stems) {
    std::string name = PathRules::lowercased(PathRules::lastComponent(path));
    std::string stem(PathRules::deletingExtension(name));
    std::string extension(PathRules::extension(name));
    auto has = [&](const std::string& candidate) { return names.contains(candidate); };
    std::vector<Relationship> found;

    bool sidecar = std::ranges::any_of(kSidecarExtensions, [&](std::string_view ext) {
        return has(stem + "." + std::string(ext)) || has(name + "." + std::string(ext));
    });
    if (sidecar) {
        found.push_back(Relationship::sidecar);
    }
    if (has(stem + ".mov")) {
        found.push_back(Relationship::livePhoto);
    }
    bool rawBeside = std::ranges::any_of(kRawExtensions, [&](std::string_view ext) {
        std::string other = stem + "." + std::string(ext);
        return other != name && has(other);
    });
    bool partnerBeside = isRawExtension(extension) &&
                         std::ranges::any_of(kRawPartnerExtensions, [&](std::string_view ext) {
                             return has(stem + "." + std::string(ext));
                         });
    if (rawBeside || partnerBeside) {
        found.push_back(Relationship::rawPair);
    }
    bool edited = name.starts_with("img_e") && stems.contains("img_" + stem.substr(5));
    bool original = name.starts_with("img_") && !name.starts_with("img_e") &&
                    stems.contains("img_e" + stem.substr(4));
    if (edited || original) {
        found.push_back(Relationship::editedOriginal);
    }
    return found;
}

FolderSource::Inspection FolderSource::inspect(const std::string& path, PhotoFormat format) {
    std::optional<platform::PixelSize> size;
    if (format == PhotoFormat::raw) {
        // LibRaw tells what the file is by opening it; one it cannot open
        // is a RAW this computer does not know.
        size = platform::CameraRaw::pixelSize(path);
        if (!size) {
            return Inspection::notDecodableHere();
        }
    } else {
        auto loader = imageLoader(format);
        if (!loader || !platform::ImageHeaders::canDecode(*loader)) {
            return Inspection::notDecodableHere();
        }
        size = platform::ImageHeaders::pixelSize(path, *loader);
    }
    if (!size || size->width < 1 || size->height < 1) {
        return Inspection::damaged();
    }
    return Inspection::readable(size->width, size->height);
}

bool FolderSource::decodesFully(const std::string& path) {
    return platform::CameraRaw::decodesFully(path);
}

bool FolderSource::isManagedLibraryExtension(std::string_view lowercasedExtension) {
    return contains(kManagedLibraryExtensions, lowercasedExtension);
}

bool FolderSource::isPackageExtension(std::string_view lowercasedExtension) {
    return contains(kPackageExtensions, lowercasedExtension);
}

const std::string& FolderSource::notFoundSentence() {
    static const std::string text = "Not found. If it is on a drive, check the drive is connected.";
    return text;
}

const std::string& FolderSource::notAFolderSentence() {
    static const std::string text = "Not a folder.";
    return text;
}

const std::string& FolderSource::insideLibrarySentence() {
    static const std::string text =
        fmt::format("Inside a photo library. Its app manages those files, so {} never opens it.",
                    texts::kApplication);
    return text;
}

const std::string& FolderSource::networkVolumeSentence() {
    static const std::string text =
        fmt::format("On a network volume. {} works on {} disks and drives plugged into it, where "
                    "the Trash can take a file back.",
                    texts::kApplication, texts::kMachinePossessive);
    return text;
}

std::string FolderSource::overlappingSentence(std::string_view containingRoot) {
    return fmt::format("Inside {}, which is already chosen, so it is scanned once as part of that.",
                       containingRoot);
}

const std::string& FolderSource::unreadableFolderSentence() {
    static const std::string text = fmt::format("{} would not open this folder.", texts::kSystem);
    return text;
}

const std::string& FolderSource::managedLibrarySentence() {
    static const std::string text = "A photo library or catalogue. Its app manages these files, "
                                    "so they are never opened here.";
    return text;
}

const std::string& FolderSource::packageSentence() {
    static const std::string text = "A package is one thing, not a folder of photos.";
    return text;
}

const std::string& FolderSource::notPlainFileSentence() {
    static const std::string text = "It disappeared or is not a plain file.";
    return text;
}

std::string_view rawValue(FolderSource::Inspection::Kind kind) {
    using InspectionKind = FolderSource::Inspection::Kind;
    switch (kind) {
    case InspectionKind::readable:
        return "readable";
    case InspectionKind::notDecodableHere:
        return "notDecodableHere";
    case InspectionKind::damaged:
        return "damaged";
    }
    return "damaged";
}

void PrintTo(FolderSource::Inspection::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const FolderSource::Inspection& inspection, std::ostream* os) {
    *os << rawValue(inspection.kind);
    if (inspection.kind == FolderSource::Inspection::Kind::readable) {
        *os << "(" << inspection.width << "x" << inspection.height << ")";
    }
}

} // namespace brevant
