#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

// Whether a path lies in a folder the user named (a protected folder, an
// inbox such as Downloads), compared as text, component by component.
namespace brevant::folder_paths {

// Without trailing slashes, except "/" itself; "" stays "".
[[nodiscard]] std::string normalized(std::string_view folder);

// The path is the folder itself or lies anywhere below it: "/" holds every
// path, "/a/b" holds "/a/b" and "/a/b/c" but not "/a/bc". An empty folder
// holds nothing. `folder` is expected normalized.
[[nodiscard]] bool contains(std::string_view folder, std::string_view path);

// The innermost of the folders that holds the path, normalized; nothing when
// none does.
[[nodiscard]] std::optional<std::string> innermost(const std::set<std::string>& folders,
                                                   std::string_view path);

// The last component, such as "Keep" for "/home/anna/Keep/"; "/" for the
// root folder itself.
[[nodiscard]] std::string lastComponent(std::string_view folder);

} // namespace brevant::folder_paths
