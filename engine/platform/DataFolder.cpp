#include "DataFolder.hpp"

#include "engine/platform/ProcessInfo.hpp"

#include <cstdlib>

namespace brevant::platform {

namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return std::string(value);
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::string joined(const std::string& folder, std::string_view name) {
    std::string path = folder;
    if (!path.ends_with('/')) {
        path += '/';
    }
    path += name;
    return path;
}

} // namespace

DataFolder DataFolder::current() {
    return locate(processEnvironment());
}

DataFolder::Environment DataFolder::processEnvironment() {
    Environment environment;
    environment.dataDir = variable("BREVANT_DATA_DIR");
    environment.xdgDataHome = variable("XDG_DATA_HOME");
    environment.home = homeFolder();
    environment.currentDirectory = currentDirectory();
    return environment;
}

DataFolder DataFolder::locate(const Environment& environment) {
    if (environment.dataDir && !environment.dataDir->empty()) {
        const std::string& chosen = *environment.dataDir;
        if (chosen.starts_with('/')) {
            return {withoutTrailingSlashes(chosen)};
        }
        return {withoutTrailingSlashes(joined(environment.currentDirectory, chosen))};
    }
    if (environment.xdgDataHome && environment.xdgDataHome->starts_with('/')) {
        return {joined(withoutTrailingSlashes(*environment.xdgDataHome), kFolderName)};
    }
    std::string share = joined(withoutTrailingSlashes(environment.home), ".local/share");
    return {joined(share, kFolderName)};
}

std::string DataFolder::featureCache() const {
    return joined(path, kFeatureCacheName);
}

std::string DataFolder::lockStore() const {
    return joined(path, kLockStoreName);
}

std::string DataFolder::cleanups() const {
    return joined(path, kCleanupsName);
}

std::string DataFolder::markings() const {
    return joined(path, kMarkingsName);
}

} // namespace brevant::platform
