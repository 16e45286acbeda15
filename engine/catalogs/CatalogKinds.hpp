#pragma once

#include "engine/catalogs/CatalogKind.hpp"
#include "engine/cleanup/ChangeLock.hpp"
#include "engine/platform/DataFolder.hpp"

#include <expected>
#include <memory>
#include <optional>
#include <vector>

namespace brevant {

// Every kind of catalog Brevant marks in, over the record folders of one
// data folder. Marking and undo hold the data folder's change lock while
// they work, so that no cleanup, Put Back or other marking runs beside them.
class CatalogKinds {
public:
    using IsOpen = CatalogKind::IsOpen;

    // `waiting` is asked while another run holds the change lock (none:
    // refused at once); `isOpen`, when given, stands in for every
    // application's own check.
    explicit CatalogKinds(platform::DataFolder data, ChangeLock::Waiting waiting = {},
                          const IsOpen& isOpen = {});

    [[nodiscard]] const CatalogKind& of(CatalogSource::Application application) const;

    [[nodiscard]] std::expected<CatalogMarkOutcome, CatalogRefusal>
    mark(CatalogSource::Application application, const CleanupPlan& plan,
         const CleanupApproval& approval, const std::string& catalog, Date now) const;

    // Every kind's markings, newest first.
    [[nodiscard]] std::vector<CatalogMarkingEntry> history() const;

    struct Undone {
        CatalogMarkingEntry marking;
        // It was undone before; nothing was changed now.
        bool already = false;
    };

    // Undoes the marking with this id, looked up with the lock held so that
    // no other run undoes it meanwhile; nothing when no marking has it.
    [[nodiscard]] std::expected<std::optional<Undone>, CatalogRefusal> undo(const Uuid& id) const;

private:
    [[nodiscard]] std::expected<ChangeLock, CatalogRefusal>
    changeLock(CatalogSource::Application application) const;

    platform::DataFolder data_;
    ChangeLock::Waiting waiting_;
    std::vector<std::unique_ptr<CatalogKind>> kinds_;
};

} // namespace brevant
