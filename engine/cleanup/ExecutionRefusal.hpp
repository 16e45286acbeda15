#pragma once

#include "engine/scan/CatalogApplication.hpp"
#include "engine/support/RawValue.hpp"

#include <iosfwd>
#include <string>
#include <string_view>

namespace brevant {

// Why a whole plan is refused before anything moves. Nothing is written for
// a refused plan.
struct ExecutionRefusal {
    enum class Kind {
        journalUnavailable,
        approvalDoesNotMatch,
        alreadyRun,
        libraryPhotos,
        // Photos a catalog lists; `detail` is the catalog's sentence.
        catalogPhotos,
        // Another run holds the data folder's change lock.
        busy,
        // The lock store cannot be read, so the locks are not known.
        locksUnreadable,
    };

    Kind kind = Kind::approvalDoesNotMatch;
    // journalUnavailable: why the record could not be written or read;
    // catalogPhotos, busy and locksUnreadable: the whole sentence.
    std::string detail;

    [[nodiscard]] static ExecutionRefusal journalUnavailable(std::string detail);
    [[nodiscard]] static ExecutionRefusal approvalDoesNotMatch();
    [[nodiscard]] static ExecutionRefusal alreadyRun();
    [[nodiscard]] static ExecutionRefusal libraryPhotos();
    [[nodiscard]] static ExecutionRefusal catalogPhotos(CatalogApplication application);
    [[nodiscard]] static ExecutionRefusal busy(std::string sentence);
    [[nodiscard]] static ExecutionRefusal locksUnreadable(std::string sentence);

    // The complete sentence shown to the user.
    [[nodiscard]] std::string message() const;

    friend bool operator==(const ExecutionRefusal&, const ExecutionRefusal&) = default;
};

template <> struct EnumCases<ExecutionRefusal::Kind> {
    using Kind = ExecutionRefusal::Kind;
    static constexpr std::array kAll{Kind::journalUnavailable, Kind::approvalDoesNotMatch,
                                     Kind::alreadyRun,         Kind::libraryPhotos,
                                     Kind::catalogPhotos,      Kind::busy,
                                     Kind::locksUnreadable};
};

[[nodiscard]] std::string_view rawValue(ExecutionRefusal::Kind kind);
void PrintTo(ExecutionRefusal::Kind kind, std::ostream* os);
void PrintTo(const ExecutionRefusal& refusal, std::ostream* os);

} // namespace brevant
