#include "DataFolder.hpp"

#include "engine/platform/ProcessInfo.hpp"

#include <cstdlib>
#include <filesystem>

namespace brevant::platform {

namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    if (value == nullptr || *value == '\0') {
        return std::nullopt;
    }
    return std::string(value);
}

// Only "." and ".." parts and trailing slashes go; nothing is looked up on
// disk, so links in the path stay as they are.
std::string normalized(const std::string& path) {
    std::string folder = std::filesystem::path(path).lexically_normal().string();
    while (folder.size() > 1 && folder.ends_with('/')) {
        folder.pop_back();
    }
    return folder;
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
        return {normalized(chosen.starts_with('/') ? chosen
                                                   : joined(environment.currentDirectory, chosen))};
    }
    return {joined(dataHome(environment), kFolderName)};
}

std::string DataFolder::dataHome() {
    return dataHome(processEnvironment());
}

std::string DataFolder::dataHome(const Environment& environment) {
    if (environment.xdgDataHome && environment.xdgDataHome->starts_with('/')) {
        return normalized(*environment.xdgDataHome);
    }
    return normalized(joined(environment.home, ".local/share"));
}

std::string DataFolder::featureCache() const {
    return joined(path, kFeatureCacheName);
}

std::string DataFolder::lockStore() const {
    return joined(path, kLockStoreName);
}

std::string DataFolder::notDuplicates() const {
    return joined(path, kNotDuplicatesName);
}

std::string DataFolder::reviews() const {
    return joined(path, kReviewsName);
}

std::string DataFolder::cleanups() const {
    return joined(path, kCleanupsName);
}

std::string DataFolder::compressions() const {
    return joined(path, kCompressionsName);
}

std::string DataFolder::markings() const {
    return joined(path, kMarkingsName);
}

std::string DataFolder::changeLock() const {
    return joined(path, kChangeLockName);
}

} // namespace brevant::platform
