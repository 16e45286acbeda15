#pragma once

#include "engine/scan/CaptureOneRef.hpp"
#include "engine/scan/CatalogApplication.hpp"
#include "engine/scan/DarktableRef.hpp"
#include "engine/scan/DigikamRef.hpp"
#include "engine/scan/LightroomRef.hpp"
#include "engine/scan/ShotwellRef.hpp"
#include "engine/support/Hashing.hpp"

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <variant>

namespace brevant {

// A photo's entry in a catalog that is not ours to change: which catalog
// lists it and its id there. It is all marking needs of a planned removal.
struct CatalogItem {
    CatalogApplication application = CatalogApplication::lightroom;
    std::int64_t imageID = 0;

    friend bool operator==(const CatalogItem&, const CatalogItem&) = default;
};

// What the catalog listing a photo knows of it. Each kind brings its own
// record, which answers the questions below in its own terms; nothing
// outside the kind needs to know which record it is.
struct CatalogReference {
    // In the order of CatalogApplication.
    using Record = std::variant<LightroomRef, CaptureOneRef, DigikamRef, DarktableRef, ShotwellRef>;

    Record record;

    [[nodiscard]] CatalogApplication application() const;
    [[nodiscard]] std::int64_t imageID() const;

    [[nodiscard]] CatalogItem item() const { return {application(), imageID()}; }

    // Something the user did to the photo in the catalog.
    [[nodiscard]] bool workedOn() const;
    // That work in a few words; empty when there is none.
    [[nodiscard]] std::string workSummary() const;
    // The same at more length, where the kind has more to say.
    [[nodiscard]] std::string workDetails() const;
    // Why the catalog holds this very file in a way that keeps it.
    [[nodiscard]] std::optional<std::string> keepReason() const;
    // The catalog keeps a RAW and its partner together itself.
    [[nodiscard]] bool keepsRawPairTogether() const;

    template <class Ref> [[nodiscard]] const Ref* as() const { return std::get_if<Ref>(&record); }

    friend bool operator==(const CatalogReference&, const CatalogReference&) = default;
};

// Stored under the key of its kind ("lightroom": {...}), beside the other
// fields of the photo, and its item likewise ("lightroomImageID": 5).
void putReference(nlohmann::ordered_json& j, const std::optional<CatalogReference>& reference);
[[nodiscard]] std::optional<CatalogReference> getReference(const nlohmann::ordered_json& j);
void putItem(nlohmann::ordered_json& j, const std::optional<CatalogItem>& item);
[[nodiscard]] std::optional<CatalogItem> getItem(const nlohmann::ordered_json& j);

} // namespace brevant

template <> struct std::hash<brevant::CatalogItem> {
    std::size_t operator()(const brevant::CatalogItem& v) const noexcept {
        return brevant::hashing::all(v.application, v.imageID);
    }
};

template <> struct std::hash<brevant::CatalogReference> {
    std::size_t operator()(const brevant::CatalogReference& v) const noexcept {
        return std::hash<brevant::CatalogReference::Record>()(v.record);
    }
};
