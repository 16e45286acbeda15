#pragma once

#include "engine/scan/FileSnapshot.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace brevant {

// What happened to one planned picture. Only `movedToTrash` carries a path
// (optional: the Trash may not say where the item went); every other case
// carries a sentence for display.
struct ItemOutcome {
    enum class Kind {
        movedToTrash,
        skipped,
        failed,
        unknown,
        restored,
    };

    Kind kind = Kind::skipped;
    // movedToTrash only.
    std::optional<std::string> trashPath;
    // movedToTrash only: the file that went, as found in the Trash after the
    // move, so that Put Back knows it even when the plan cannot be read.
    // Absent in records written before it was kept.
    std::optional<FileIdentity> identity;
    // Every case but movedToTrash. For `restored` it is the path the picture
    // was put back at.
    std::string text;

    [[nodiscard]] static ItemOutcome movedToTrash(std::optional<std::string> trashPath,
                                                  std::optional<FileIdentity> identity = {});
    [[nodiscard]] static ItemOutcome skipped(std::string text);
    [[nodiscard]] static ItemOutcome failed(std::string text);
    [[nodiscard]] static ItemOutcome unknown(std::string text);
    [[nodiscard]] static ItemOutcome restored(std::string text);

    friend bool operator==(const ItemOutcome&, const ItemOutcome&) = default;
};

template <> struct EnumCases<ItemOutcome::Kind> {
    static constexpr std::array kAll{ItemOutcome::Kind::movedToTrash, ItemOutcome::Kind::skipped,
                                     ItemOutcome::Kind::failed, ItemOutcome::Kind::unknown,
                                     ItemOutcome::Kind::restored};
};

[[nodiscard]] std::string_view rawValue(ItemOutcome::Kind kind);
void PrintTo(ItemOutcome::Kind kind, std::ostream* os);
void PrintTo(const ItemOutcome& outcome, std::ostream* os);

// An object with one key, the case name:
// {"movedToTrash":{"trashPath":"…","identity":{"device":…,"inode":…}}}
// (absent members left out) or {"skipped":{"_0":"…"}}
// and the same for failed, unknown and restored.
void to_json(nlohmann::ordered_json& j, const ItemOutcome& value);
void from_json(const nlohmann::ordered_json& j, ItemOutcome& value);

} // namespace brevant
