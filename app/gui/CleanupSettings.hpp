#pragma once

#include "engine/review/KeeperPolicy.hpp"
#include "engine/review/ScanMode.hpp"
#include "engine/similarity/SimilarityPreset.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

class QSettings;

namespace brevant::gui {

// What the window remembers between runs, under the "photoCleanup.*" keys.
// Paths are held as the file system's bytes and stored in their PathText
// form, so folder names that are not UTF-8 come back byte for byte.
struct CleanupSettings {
    // Where a scan looks. A Photos library does not exist on Linux, so a
    // stored "photosLibrary" reads back as folders.
    enum class Scope {
        folders,
        lightroom,
        captureOne,
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
    std::string lightroomCatalog;
    std::string captureOneCatalog;
    std::vector<std::string> lightroomFolders;
    std::vector<std::string> captureOneFolders;
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
inline constexpr std::string_view kLightroomCatalog = "photoCleanup.lightroomCatalog";
inline constexpr std::string_view kCaptureOneCatalog = "photoCleanup.captureOneCatalog";
inline constexpr std::string_view kLightroomFolders = "photoCleanup.lightroomFolders";
inline constexpr std::string_view kCaptureOneFolders = "photoCleanup.captureOneFolders";
inline constexpr std::string_view kSkin = "photoCleanup.skin";
inline constexpr std::string_view kWindowGeometry = "photoCleanup.windowGeometry";
} // namespace settings_keys

[[nodiscard]] std::string_view rawValue(CleanupSettings::Scope scope);
void PrintTo(CleanupSettings::Scope scope, std::ostream* os);

} // namespace brevant::gui

namespace brevant {

template <> struct EnumCases<gui::CleanupSettings::Scope> {
    using Scope = gui::CleanupSettings::Scope;
    static constexpr std::array kAll{Scope::folders, Scope::lightroom, Scope::captureOne};
};

} // namespace brevant
