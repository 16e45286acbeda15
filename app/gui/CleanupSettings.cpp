#include "CleanupSettings.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/support/PathText.hpp"

#include <QSettings>
#include <QStringList>

#include <fmt/format.h>
#include <ostream>

namespace brevant::gui {

namespace {

QString key(std::string_view name) {
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QString text(std::string_view value) {
    return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

std::vector<std::string> readPaths(const QSettings& store, std::string_view name) {
    std::vector<std::string> paths;
    for (const QString& stored : store.value(key(name)).toStringList()) {
        if (!stored.isEmpty()) {
            paths.push_back(path_text::decode(stored.toStdString()));
        }
    }
    return paths;
}

void writePaths(QSettings& store, std::string_view name, const std::vector<std::string>& paths) {
    QStringList stored;
    for (const auto& path : paths) {
        stored.push_back(text(path_text::encode(path)));
    }
    store.setValue(key(name), stored);
}

std::string readPath(const QSettings& store, std::string_view name) {
    return path_text::decode(store.value(key(name)).toString().toStdString());
}

template <class E> E readCase(const QSettings& store, std::string_view name, E fallback) {
    std::string raw = store.value(key(name)).toString().toStdString();
    return fromRawValue<E>(raw).value_or(fallback);
}

} // namespace

CleanupSettings CleanupSettings::load(const QSettings& store, const std::string& downloadFolder) {
    namespace keys = settings_keys;
    CleanupSettings settings;
    settings.sources = readPaths(store, keys::kSources);
    settings.protectedFolders = readPaths(store, keys::kProtected);
    // An emptied list stays empty; only a list never saved takes the default.
    if (store.contains(key(keys::kInboxFolders))) {
        settings.inboxFolders = readPaths(store, keys::kInboxFolders);
    } else if (!downloadFolder.empty()) {
        settings.inboxFolders = {downloadFolder};
    }
    std::vector<std::string> saved;
    for (const QString& raw : store.value(key(keys::kPriorities)).toStringList()) {
        if (!raw.isEmpty()) {
            saved.push_back(raw.toStdString());
        }
    }
    // An order saved before revisions were kept counts as revision 0.
    int revision = store.value(key(keys::kPrioritiesRevision), 0).toInt();
    settings.priorities = KeeperPolicy::upgradedPriorities(saved, revision);
    settings.preset = readCase(store, keys::kPreset, settings.preset);
    settings.scope = readCase(store, keys::kScope, settings.scope);
    settings.mode = readCase(store, keys::kMode, settings.mode);
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        if (auto catalog = readPath(store, keys::catalogKey(application)); !catalog.empty()) {
            settings.catalogs[application] = catalog;
        }
        if (auto folders = readPaths(store, keys::catalogFoldersKey(application));
            !folders.empty()) {
            settings.catalogFolders[application] = folders;
        }
    }
    std::string skin = store.value(key(keys::kSkin)).toString().toStdString();
    if (!skin.empty()) {
        settings.skin = skin;
    }
    return settings;
}

void CleanupSettings::save(QSettings& store) const {
    namespace keys = settings_keys;
    writePaths(store, keys::kSources, sources);
    writePaths(store, keys::kProtected, protectedFolders);
    writePaths(store, keys::kInboxFolders, inboxFolders);
    QStringList rawPriorities;
    for (auto priority : priorities) {
        rawPriorities.push_back(text(rawValue(priority)));
    }
    store.setValue(key(keys::kPriorities), rawPriorities);
    store.setValue(key(keys::kPrioritiesRevision), KeeperPolicy::kPrioritiesRevision);
    store.setValue(key(keys::kPreset), text(rawValue(preset)));
    store.setValue(key(keys::kScope), text(rawValue(scope)));
    store.setValue(key(keys::kMode), text(rawValue(mode)));
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        auto catalog = catalogs.find(application);
        auto folders = catalogFolders.find(application);
        store.setValue(
            key(keys::catalogKey(application)),
            text(path_text::encode(catalog == catalogs.end() ? std::string() : catalog->second)));
        writePaths(store, keys::catalogFoldersKey(application),
                   folders == catalogFolders.end() ? std::vector<std::string>() : folders->second);
    }
    store.setValue(key(keys::kSkin), text(skin));
    store.sync();
}

namespace settings_keys {

std::string catalogKey(CatalogApplication application) {
    return fmt::format("photoCleanup.{}Catalog", CatalogKindTexts::of(application).settingsKey);
}

std::string catalogFoldersKey(CatalogApplication application) {
    return fmt::format("photoCleanup.{}Folders", CatalogKindTexts::of(application).settingsKey);
}

} // namespace settings_keys

std::string_view rawValue(CleanupSettings::Scope scope) {
    if (!scope.catalog) {
        return "folders";
    }
    return CatalogKindTexts::of(*scope.catalog).settingsKey;
}

void PrintTo(CleanupSettings::Scope scope, std::ostream* os) {
    *os << rawValue(scope);
}

} // namespace brevant::gui
