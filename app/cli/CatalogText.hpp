#pragma once

#include "app/cli/Command.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the catalog commands share in how they speak: the copies of a group
// with what the user did to each in the catalog, and their one way of
// failing.
namespace brevant::cli::catalog_text {

[[nodiscard]] const char* plural(std::size_t count, const char* one, const char* many);
// "1 photo", "3 photos".
[[nodiscard]] std::string counted(std::size_t count);

// The path made absolute and normal, as the markers record it; as it is
// when that fails.
[[nodiscard]] std::string absolute(const std::string& path);

// How the catalog argument is described in the help, naming every kind.
[[nodiscard]] std::string catalogArgument();

// The catalog the command names (see CatalogSource::locate), with the
// choice's notice on standard error; nothing, after saying why there, when
// none was found.
[[nodiscard]] std::optional<std::string> located(const Environment& environment,
                                                 const std::string& given);

// "brevant: MESSAGE" on standard error; the failure status.
int failed(const Environment& environment, std::string_view message);

// What the user did to a copy in its catalog, in words ("edited, 3 stars");
// empty when nothing, or when it is no catalog photo.
[[nodiscard]] std::string work(const PhotoAsset& asset);

// "  PATH   [WORK]" and a line feed.
[[nodiscard]] std::string memberLine(const PhotoAsset& member, std::string_view home);

// Each group's kind and size, then its members.
[[nodiscard]] std::string groups(const std::vector<DuplicateGroup>& groups, std::string_view home);

} // namespace brevant::cli::catalog_text
