#include "CatalogKinds.hpp"

#include "engine/catalogs/CaptureOneMarker.hpp"
#include "engine/catalogs/LightroomRejecter.hpp"
#include "engine/catalogs/ShotwellMarker.hpp"

#include <algorithm>

namespace brevant {

namespace {

template <class Marker>
std::unique_ptr<CatalogKind> kind(const platform::DataFolder& data,
                                  const CatalogKind::IsOpen& isOpen) {
    return std::make_unique<CatalogKindOf<Marker>>(
        data.markings() + "/" + std::string(Marker::Marking::kRecordFolder), isOpen);
}

} // namespace

CatalogKinds::CatalogKinds(platform::DataFolder data, ChangeLock::Waiting waiting,
                           const IsOpen& isOpen)
    : data_(std::move(data))
    , waiting_(std::move(waiting)) {
    // The registration: one line a kind, in the order of the Application
    // enumeration.
    kinds_.push_back(kind<LightroomRejecter>(data_, isOpen));
    kinds_.push_back(kind<CaptureOneMarker>(data_, isOpen));
    kinds_.push_back(kind<ShotwellMarker>(data_, isOpen));
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
    auto held = changeLock(CatalogSource::Application::lightroom);
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
