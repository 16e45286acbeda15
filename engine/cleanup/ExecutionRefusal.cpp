#include "ExecutionRefusal.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"

#include <ostream>
#include <utility>

namespace brevant {

namespace {

ExecutionRefusal refusalOf(ExecutionRefusal::Kind kind) {
    ExecutionRefusal refusal;
    refusal.kind = kind;
    return refusal;
}

} // namespace

ExecutionRefusal ExecutionRefusal::journalUnavailable(std::string detail) {
    ExecutionRefusal refusal = refusalOf(Kind::journalUnavailable);
    refusal.detail = std::move(detail);
    return refusal;
}

ExecutionRefusal ExecutionRefusal::approvalDoesNotMatch() {
    return refusalOf(Kind::approvalDoesNotMatch);
}

ExecutionRefusal ExecutionRefusal::alreadyRun() {
    return refusalOf(Kind::alreadyRun);
}

ExecutionRefusal ExecutionRefusal::libraryPhotos() {
    return refusalOf(Kind::libraryPhotos);
}

ExecutionRefusal ExecutionRefusal::catalogPhotos(CatalogApplication application) {
    ExecutionRefusal refusal = refusalOf(Kind::catalogPhotos);
    refusal.detail = std::string(CatalogKindTexts::of(application).trashRefused);
    return refusal;
}

ExecutionRefusal ExecutionRefusal::busy(std::string sentence) {
    ExecutionRefusal refusal = refusalOf(Kind::busy);
    refusal.detail = std::move(sentence);
    return refusal;
}

ExecutionRefusal ExecutionRefusal::locksUnreadable(std::string sentence) {
    ExecutionRefusal refusal = refusalOf(Kind::locksUnreadable);
    refusal.detail = std::move(sentence);
    return refusal;
}

std::string ExecutionRefusal::message() const {
    switch (kind) {
    case Kind::journalUnavailable:
        return "The cleanup record could not be written, so nothing was moved: " + detail;
    case Kind::approvalDoesNotMatch:
        return "This approval is for a different set of pictures. Review them again.";
    case Kind::alreadyRun:
        return "These pictures were already handled once. Scan again to review what is left.";
    case Kind::libraryPhotos:
        return "Photos in the Photos library are never moved to the Trash from here. Add them to "
               "the review album instead.";
    case Kind::catalogPhotos:
    case Kind::busy:
    case Kind::locksUnreadable:
        return detail;
    }
    return "This approval is for a different set of pictures. Review them again.";
}

std::string_view rawValue(ExecutionRefusal::Kind kind) {
    using Kind = ExecutionRefusal::Kind;
    switch (kind) {
    case Kind::journalUnavailable:
        return "journalUnavailable";
    case Kind::approvalDoesNotMatch:
        return "approvalDoesNotMatch";
    case Kind::alreadyRun:
        return "alreadyRun";
    case Kind::libraryPhotos:
        return "libraryPhotos";
    case Kind::catalogPhotos:
        return "catalogPhotos";
    case Kind::busy:
        return "busy";
    case Kind::locksUnreadable:
        return "locksUnreadable";
    }
    return "approvalDoesNotMatch";
}

void PrintTo(ExecutionRefusal::Kind kind, std::ostream* os) {
    *os << rawValue(kind);
}

void PrintTo(const ExecutionRefusal& refusal, std::ostream* os) {
    *os << rawValue(refusal.kind);
    if (!refusal.detail.empty()) {
        *os << "(\"" << refusal.detail << "\")";
    }
}

} // namespace brevant
