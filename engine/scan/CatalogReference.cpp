#include "CatalogReference.hpp"

#include "engine/support/Json.hpp"

#include <cstddef>
#include <utility>

namespace brevant {

namespace {

// Each kind's record under its key; the first key present wins.
template <std::size_t... I>
std::optional<CatalogReference> decoded(const json::Json& j, std::index_sequence<I...> /*kinds*/) {
    std::optional<CatalogReference> found;
    (
        [&] {
            using Ref = std::variant_alternative_t<I, CatalogReference::Record>;
            if (!found && json::has(j, Ref::kKey)) {
                found = CatalogReference{json::get<Ref>(j, Ref::kKey)};
            }
        }(),
        ...);
    return found;
}

template <std::size_t... I>
std::optional<CatalogItem> decodedItem(const json::Json& j, std::index_sequence<I...> /*kinds*/) {
    std::optional<CatalogItem> found;
    (
        [&] {
            using Ref = std::variant_alternative_t<I, CatalogReference::Record>;
            if (!found && json::has(j, Ref::kItemKey)) {
                found = CatalogItem{static_cast<CatalogApplication>(I),
                                    json::get<std::int64_t>(j, Ref::kItemKey)};
            }
        }(),
        ...);
    return found;
}

template <std::size_t... I>
std::string_view itemKey(CatalogApplication application, std::index_sequence<I...> /*kinds*/) {
    std::string_view key;
    ((key = static_cast<std::size_t>(application) == I
                ? std::variant_alternative_t<I, CatalogReference::Record>::kItemKey
                : key),
     ...);
    return key;
}

using Kinds = std::make_index_sequence<std::variant_size_v<CatalogReference::Record>>;

} // namespace

CatalogApplication CatalogReference::application() const {
    return static_cast<CatalogApplication>(record.index());
}

std::int64_t CatalogReference::imageID() const {
    return std::visit([](const auto& ref) { return ref.imageID; }, record);
}

bool CatalogReference::workedOn() const {
    return std::visit([](const auto& ref) { return ref.workedOn(); }, record);
}

std::string CatalogReference::workSummary() const {
    return std::visit([](const auto& ref) { return ref.workSummary(); }, record);
}

std::string CatalogReference::workDetails() const {
    return std::visit([](const auto& ref) { return ref.workDetails(); }, record);
}

std::optional<std::string> CatalogReference::keepReason() const {
    return std::visit([](const auto& ref) { return ref.keepReason(); }, record);
}

bool CatalogReference::keepsRawPairTogether() const {
    return std::visit([](const auto& ref) { return ref.keepsRawPairTogether(); }, record);
}

void putReference(json::Json& j, const std::optional<CatalogReference>& reference) {
    if (!reference) {
        return;
    }
    std::visit([&j](const auto& ref) { j[std::string(ref.kKey)] = ref; }, reference->record);
}

std::optional<CatalogReference> getReference(const json::Json& j) {
    return decoded(j, Kinds());
}

void putItem(json::Json& j, const std::optional<CatalogItem>& item) {
    if (!item) {
        return;
    }
    j[std::string(itemKey(item->application, Kinds()))] = item->imageID;
}

std::optional<CatalogItem> getItem(const json::Json& j) {
    return decodedItem(j, Kinds());
}

} // namespace brevant
