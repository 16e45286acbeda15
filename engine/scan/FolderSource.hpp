#pragma once

#include "engine/scan/CancellationFlag.hpp"
#include "engine/scan/ExcludedItem.hpp"
#include "engine/scan/FileSnapshot.hpp"
#include "engine/scan/PhotoFormat.hpp"
#include "engine/scan/Relationship.hpp"
#include "engine/scan/SkipReason.hpp"

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace brevant {

struct PreparedRoots {
    std::vector<std::string> roots;
    std::vector<ExcludedItem> refused;
};

// Turns chosen folders into roots and walks them. Never follows a symbolic
// link, never enters a package or a library another application manages,
// never opens a file for writing.
struct FolderSource {
    struct Found {
        std::string path;
        std::string root;
        FileSnapshot snapshot;
        PhotoFormat format = PhotoFormat::other;

        friend bool operator==(const Found&, const Found&) = default;
    };

    struct Walk {
        std::vector<Found> found;
        // Video files, when asked for (the format is `other`); hard links are
        // not folded among them.
        std::vector<Found> videos;
        std::vector<SkippedFile> skipped;
        std::vector<ExcludedItem> excluded;
        int discovered = 0;
        int otherFiles = 0;
        int hardLinksFolded = 0;
        std::unordered_map<FileIdentity, std::vector<std::string>> otherNames;
        std::unordered_map<std::string, std::unordered_set<std::string>> namesByFolder;
        bool cancelled = false;
    };

    // What a picture's header says.
    struct Inspection {
        enum class Kind {
            readable,
            notDecodableHere,
            damaged,
        };

        Kind kind = Kind::damaged;
        // Set only when readable, both at least 1.
        int width = 0;
        int height = 0;

        [[nodiscard]] static Inspection readable(int width, int height) {
            return {Kind::readable, width, height};
        }

        [[nodiscard]] static Inspection notDecodableHere() { return {Kind::notDecodableHere}; }

        [[nodiscard]] static Inspection damaged() { return {Kind::damaged}; }

        friend bool operator==(const Inspection&, const Inspection&) = default;
    };

    using NameSet = std::unordered_set<std::string>;
    using OnlyPaths = std::optional<std::unordered_set<std::string>>;

    // Called with the count of entries so far, every 500 entries.
    using WalkProgress = std::function<void(int)>;

    static constexpr int kProgressInterval = 500;

    [[nodiscard]] static PreparedRoots prepare(const std::vector<std::string>& paths);

    // With `keepVideos` the files the system types as video are kept too,
    // in `videos`.
    [[nodiscard]] static Walk walk(const std::vector<std::string>& roots, const OnlyPaths& only,
                                   const CancellationFlag& cancel, const WalkProgress& progress,
                                   bool keepVideos = false);

    // `names` are the lowercased names in the file's folder, `stems` the same
    // without extensions.
    [[nodiscard]] static std::vector<Relationship>
    relationships(std::string_view path, const NameSet& names, const NameSet& stems);

    [[nodiscard]] static NameSet stems(const NameSet& names);

    // Reads only the picture's header: whether this computer has a decoder
    // for it, and its pixel size.
    [[nodiscard]] static Inspection inspect(const std::string& path, PhotoFormat format);

    // Decodes and renders the whole camera RAW picture; false when this
    // computer cannot.
    [[nodiscard]] static bool decodesFully(const std::string& path);

    [[nodiscard]] static bool isManagedLibraryExtension(std::string_view lowercasedExtension);
    [[nodiscard]] static bool isPackageExtension(std::string_view lowercasedExtension);

    // The sentences shown for refusals and exclusions.
    [[nodiscard]] static const std::string& notFoundSentence();
    [[nodiscard]] static const std::string& notAFolderSentence();
    [[nodiscard]] static const std::string& insideLibrarySentence();
    [[nodiscard]] static const std::string& networkVolumeSentence();
    [[nodiscard]] static std::string overlappingSentence(std::string_view containingRoot);
    [[nodiscard]] static const std::string& unreadableFolderSentence();
    [[nodiscard]] static const std::string& managedLibrarySentence();
    [[nodiscard]] static const std::string& packageSentence();
    [[nodiscard]] static const std::string& notPlainFileSentence();
};

template <> struct EnumCases<FolderSource::Inspection::Kind> {
    using Kind = FolderSource::Inspection::Kind;
    static constexpr std::array kAll{Kind::readable, Kind::notDecodableHere, Kind::damaged};
};

[[nodiscard]] std::string_view rawValue(FolderSource::Inspection::Kind kind);
void PrintTo(FolderSource::Inspection::Kind kind, std::ostream* os);
void PrintTo(const FolderSource::Inspection& inspection, std::ostream* os);

} // namespace brevant
