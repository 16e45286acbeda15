#include "CatalogKinds.hpp"

#include "engine/catalogs/CatalogRegistry.hpp"

#include <algorithm>

namespace brevant {

CatalogKinds::CatalogKinds(platform::DataFolder data, ChangeLock::Waiting waiting,
                           const IsOpen& isOpen)
    : data_(std::move(data))
    , waiting_(std::move(waiting)) {
    for (const auto& kind : catalogRegistrations()) {
        kinds_.push_back(
            kind.make(data_.markings() + "/" + std::string(kind.recordFolder), isOpen));
    }
}

const CatalogKind& CatalogKinds::of(CatalogSource::Application application) const {
    auto found = std::ranges::find_if(
        kinds_, [application](const auto& one) { return one->application() == application; });
    return **found;
}

std::expected<ChangeLock, CatalogRefusal>
CatalogKinds::changeLock(CatalogSource::Application application) const {
    auto held = ChangeLock::take(data_, waiting_);
    if (!held) {
        return std::unexpected(CatalogRefusal::changesBusy(application, held.error().message()));
    }
    return std::move(*held);
}

std::expected<CatalogMarkOutcome, CatalogRefusal>
CatalogKinds::mark(CatalogSource::Application application, const CleanupPlan& plan,
                   const CleanupApproval& approval, const std::string& catalog, Date now) const {
    auto held = changeLock(application);
    if (!held) {
        return std::unexpected(held.error());
    }
    return of(application).mark(plan, approval, catalog, now);
}

std::vector<CatalogMarkingEntry> CatalogKinds::history() const {
    std::vector<CatalogMarkingEntry> markings;
    for (const auto& kind : kinds_) {
        auto some = kind->history();
        markings.insert(markings.end(), some.begin(), some.end());
    }
    std::ranges::stable_sort(markings, std::ranges::greater(), &CatalogMarkingEntry::date);
    return markings;
}

std::expected<std::optional<CatalogKinds::Undone>, CatalogRefusal>
CatalogKinds::undo(const Uuid& id) const {
    // A refusal for the lock speaks for the marking's kind, as far as it can
    // be told before the lock is held.
    auto before = history();
    auto named = std::ranges::find(before, id, &CatalogMarkingEntry::id);
    auto held = changeLock(named != before.end() ? named->application
                                                 : catalogRegistrations().front().application);
    if (!held) {
        return std::unexpected(held.error());
    }
    auto markings = history();
    auto found = std::ranges::find(markings, id, &CatalogMarkingEntry::id);
    if (found == markings.end()) {
        return std::nullopt;
    }
    if (found->restored) {
        return Undone{.marking = *found, .already = true};
    }
    auto restored = of(found->application).restore(*found);
    if (!restored) {
        return std::unexpected(restored.error());
    }
    return Undone{.marking = std::move(*restored)};
}

} // namespace brevant
