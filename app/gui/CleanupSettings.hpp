#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/review/ScanMode.hpp"
#include "engine/scan/CatalogApplication.hpp"
#include "engine/similarity/SimilarityPreset.hpp"
#include "engine/support/RawValue.hpp"

#include <array>
#include <compare>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QSettings;

namespace brevant::gui {

// What the window remembers between runs, under the "photoCleanup.*" keys.
// Paths are held as the file system's bytes and stored in their PathText
// form, so folder names that are not UTF-8 come back byte for byte.
struct CleanupSettings {
    // Where a scan looks: folders, or the catalog of one kind. A Photos
    // library does not exist on Linux, so a stored "photosLibrary" reads
    // back as folders.
    struct Scope {
        std::optional<CatalogApplication> catalog;

        static const Scope folders;

        [[nodiscard]] static constexpr Scope of(CatalogApplication application) {
            return Scope{application};
        }

        // The id of its button: 0 for folders, then the kinds in order.
        [[nodiscard]] int id() const { return catalog ? static_cast<int>(*catalog) + 1 : 0; }

        [[nodiscard]] static Scope fromID(int id) {
            return id <= 0 ? Scope{} : Scope{static_cast<CatalogApplication>(id - 1)};
        }

        friend auto operator<=>(const Scope&, const Scope&) = default;
    };

    // What a scan looks for.
    using Mode = ScanMode::Kind;

    std::vector<std::string> sources;
    std::vector<std::string> protectedFolders;
    std::vector<std::string> inboxFolders;
    // The keeper priorities in the user's order. An order saved under an
    // older revision is upgraded as it is read; the standard order when
    // none was saved.
    std::vector<KeeperPolicy::Priority> priorities = KeeperPolicy::standardPriorities();
    SimilarityPreset preset = SimilarityPreset::balanced;
    Scope scope = Scope::folders;
    Mode mode = Mode::identical;
    // The chosen catalog of each kind, and the folders it was looked for
    // in, the latest first; a kind without one is absent.
    std::map<CatalogApplication, std::string> catalogs;
    std::map<CatalogApplication, std::vector<std::string>> catalogFolders;
    std::string skin = "classic";

    // Absent or unreadable values take their defaults: no folders, the
    // user's download folder as the one inbox, the standard priorities, the
    // balanced preset. Priorities are always saved with the current
    // revision.
    [[nodiscard]] static CleanupSettings load(const QSettings& store,
                                              const std::string& downloadFolder);
    void save(QSettings& store) const;

    friend bool operator==(const CleanupSettings&, const CleanupSettings&) = default;
};

namespace settings_keys {
inline constexpr std::string_view kSources = "photoCleanup.sources";
inline constexpr std::string_view kProtected = "photoCleanup.protected";
inline constexpr std::string_view kInboxFolders = "photoCleanup.inboxFolders";
inline constexpr std::string_view kPriorities = "photoCleanup.priorities";
inline constexpr std::string_view kPrioritiesRevision = "photoCleanup.prioritiesRevision";
inline constexpr std::string_view kPreset = "photoCleanup.preset";
inline constexpr std::string_view kScope = "photoCleanup.scope";
inline constexpr std::string_view kMode = "photoCleanup.mode";
inline constexpr std::string_view kSkin = "photoCleanup.skin";
inline constexpr std::string_view kWindowGeometry = "photoCleanup.windowGeometry";
// A kind's catalog and folders: "photoCleanup.lightroomCatalog",
// "photoCleanup.lightroomFolders".
[[nodiscard]] std::string catalogKey(CatalogApplication application);
[[nodiscard]] std::string catalogFoldersKey(CatalogApplication application);
} // namespace settings_keys

[[nodiscard]] std::string_view rawValue(CleanupSettings::Scope scope);
void PrintTo(CleanupSettings::Scope scope, std::ostream* os);

} // namespace brevant::gui

namespace brevant {

inline constexpr gui::CleanupSettings::Scope gui::CleanupSettings::Scope::folders{};

template <> struct EnumCases<gui::CleanupSettings::Scope> {
    using Scope = gui::CleanupSettings::Scope;
    static constexpr auto kAll = [] {
        constexpr auto kKinds = EnumCases<CatalogApplication>::kAll;
        std::array<Scope, kKinds.size() + 1> all{};
        for (std::size_t i = 0; i < kKinds.size(); ++i) {
            all.at(i + 1) = Scope::of(kKinds.at(i));
        }
        return all;
    }();
};

} // namespace brevant
