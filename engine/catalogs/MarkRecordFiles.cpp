#include "MarkRecordFiles.hpp"

#include "engine/platform/FolderListing.hpp"
#include "engine/support/AtomicFile.hpp"

#include <filesystem>
#include <fmt/format.h>

namespace brevant {

std::string MarkRecordFiles::pathFor(const std::string& directory, const Uuid& id) {
    return fmt::format("{}/{}{}", directory, id.text(), kExtension);
}

std::expected<void, std::string> MarkRecordFiles::save(const std::string& directory, const Uuid& id,
                                                       const json::Json& document) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error) {
        return std::unexpected(
            fmt::format("the record folder could not be created ({})", error.message()));
    }
    std::string text = sortedText(document) + "\n";
    std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    if (!AtomicFile::write(pathFor(directory, id), bytes)) {
        return std::unexpected(std::string("the record could not be written"));
    }
    return {};
}

std::string MarkRecordFiles::sortedText(const json::Json& document) {
    // The plain json type keeps its keys in a sorted map.
    return nlohmann::json(document).dump(2);
}

std::vector<std::string> MarkRecordFiles::documents(const std::string& directory) {
    std::vector<std::string> texts;
    for (const auto& name :
         platform::folderEntries(directory).value_or(std::vector<std::string>{})) {
        if (!name.ends_with(kExtension)) {
            continue;
        }
        if (auto bytes = AtomicFile::read(fmt::format("{}/{}", directory, name))) {
            texts.emplace_back(bytes->begin(), bytes->end());
        }
    }
    return texts;
}

} // namespace brevant
