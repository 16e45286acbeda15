#include "FileSnapshot.hpp"

#include "engine/platform/FileStatus.hpp"
#include "engine/support/Json.hpp"

namespace brevant {

FileSnapshot FileSnapshot::from(const platform::FileStatus& status) {
    FileSnapshot snapshot;
    snapshot.identity = {status.device, status.inode};
    snapshot.size = status.size;
    snapshot.modifiedSeconds = status.modifiedSeconds;
    snapshot.modifiedNanoseconds = status.modifiedNanoseconds;
    snapshot.linkCount = status.linkCount;
    snapshot.isRegularFile = status.isRegularFile;
    snapshot.isSymbolicLink = status.isSymbolicLink;
    return snapshot;
}

std::optional<FileSnapshot> FileSnapshot::read(const std::string& path) {
    auto status = platform::statusOfPath(path);
    if (!status) {
        return std::nullopt;
    }
    return from(*status);
}

bool FileSnapshot::isUnchanged(const FileSnapshot& other) const {
    return identity == other.identity && size == other.size &&
           modifiedSeconds == other.modifiedSeconds &&
           modifiedNanoseconds == other.modifiedNanoseconds &&
           isRegularFile == other.isRegularFile && isSymbolicLink == other.isSymbolicLink;
}

void to_json(nlohmann::ordered_json& j, const FileIdentity& value) {
    j = {{"device", value.device}, {"inode", value.inode}};
}

void from_json(const nlohmann::ordered_json& j, FileIdentity& value) {
    value.device = json::get<std::uint64_t>(j, "device");
    value.inode = json::get<std::uint64_t>(j, "inode");
}

void to_json(nlohmann::ordered_json& j, const FileSnapshot& value) {
    j = {{"identity", value.identity},
         {"size", value.size},
         {"modifiedSeconds", value.modifiedSeconds},
         {"modifiedNanoseconds", value.modifiedNanoseconds},
         {"linkCount", value.linkCount},
         {"isRegularFile", value.isRegularFile},
         {"isSymbolicLink", value.isSymbolicLink},
         {"flags", value.flags}};
}

void from_json(const nlohmann::ordered_json& j, FileSnapshot& value) {
    value.identity = json::get<FileIdentity>(j, "identity");
    value.size = json::get<std::int64_t>(j, "size");
    value.modifiedSeconds = json::get<std::int64_t>(j, "modifiedSeconds");
    value.modifiedNanoseconds = json::get<std::int64_t>(j, "modifiedNanoseconds");
    value.linkCount = json::get<std::uint32_t>(j, "linkCount");
    value.isRegularFile = json::get<bool>(j, "isRegularFile");
    value.isSymbolicLink = json::get<bool>(j, "isSymbolicLink");
    value.flags = json::get<std::uint32_t>(j, "flags");
}

} // namespace brevant
