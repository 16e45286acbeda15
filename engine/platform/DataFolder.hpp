#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevant::platform {

// The one place that knows where Brevant keeps its own files: the feature
// cache, the lock store, the "not duplicates" decisions, the cleanup journals and the catalog
// markers' records, and the lock that serialises runs changing them. Everything that reads or
// writes one of them asks here, so a test (or a user) that points BREVANT_DATA_DIR elsewhere moves
// all of them at once.
struct DataFolder {
    static constexpr std::string_view kFeatureCacheName = "features.plist";
    static constexpr std::string_view kLockStoreName = "keep-locks.json";
    static constexpr std::string_view kNotDuplicatesName = "not-duplicates.json";
    static constexpr std::string_view kReviewsName = "reviews.json";
    static constexpr std::string_view kCleanupsName = "Cleanups";
    static constexpr std::string_view kCompressionsName = "Compressions";
    static constexpr std::string_view kMarkingsName = "Markings";
    static constexpr std::string_view kChangeLockName = "changes.lock";
    static constexpr std::string_view kFolderName = "Brevant";

    // What the location depends on, so that it can be worked out without
    // touching the process's own environment.
    struct Environment {
        // BREVANT_DATA_DIR; empty counts as unset.
        std::optional<std::string> dataDir;
        // XDG_DATA_HOME; empty or relative counts as unset, as the XDG base
        // directory rules say.
        std::optional<std::string> xdgDataHome;
        std::string home;
        // A relative BREVANT_DATA_DIR is taken from here.
        std::string currentDirectory;

        friend bool operator==(const Environment&, const Environment&) = default;
    };

    // Absolute, without a trailing slash (unless it is "/" itself).
    std::string path;

    // BREVANT_DATA_DIR when set, else $XDG_DATA_HOME/Brevant, else
    // ~/.local/share/Brevant, with the home folder from the password database.
    [[nodiscard]] static DataFolder current();
    [[nodiscard]] static DataFolder locate(const Environment& environment);

    // The user's data home that the folder above (and the home Trash) lies
    // in: $XDG_DATA_HOME when it is absolute, else ~/.local/share; "." and
    // ".." parts and trailing slashes go. BREVANT_DATA_DIR plays no part.
    [[nodiscard]] static std::string dataHome();
    [[nodiscard]] static std::string dataHome(const Environment& environment);
    // The process's environment as it stands now; read each time so that a
    // change of BREVANT_DATA_DIR (as tests make) takes effect.
    [[nodiscard]] static Environment processEnvironment();

    // The files and folders inside. Nothing here creates them: their writers
    // do, when they first write.
    [[nodiscard]] std::string featureCache() const;
    [[nodiscard]] std::string lockStore() const;
    // The pictures the user said are different photos.
    [[nodiscard]] std::string notDuplicates() const;
    // The marks and reviewed groups the user left, by folders and mode.
    [[nodiscard]] std::string reviews() const;
    [[nodiscard]] std::string cleanups() const;
    [[nodiscard]] std::string compressions() const;
    [[nodiscard]] std::string markings() const;
    // The lock file that every run changing pictures or these records holds.
    [[nodiscard]] std::string changeLock() const;

    friend bool operator==(const DataFolder&, const DataFolder&) = default;
};

} // namespace brevant::platform
