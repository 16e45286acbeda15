#pragma once

#include "engine/cleanup/CleanupPlan.hpp"
#include "engine/cleanup/PlanError.hpp"
#include "engine/review/LockStore.hpp"
#include "engine/review/ReviewSession.hpp"
#include "engine/scan/DuplicateGroup.hpp"
#include "engine/support/Date.hpp"

#include <expected>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Turns the user's marks into a plan: a fixed, self-contained list of the
// files to move, each with its snapshot at the scan and the copies its group
// keeps. The plan is only made, never written anywhere.
struct CleanupPlanner {
    // The reference a Photos library item is planned under.
    static constexpr std::string_view kLibraryPrefix = "photos-library:";

    // The plan of the session's marks, or the first reason it cannot be
    // made. In order: no marks (or none in these groups) is nothingMarked; a
    // group whose members are all marked is groupWithoutKeeper; a marked
    // copy that is locked, must be kept for a fixed reason or lies in a
    // protected folder is markedButNotAllowed, checked in that order, group
    // by group and member by member.
    //
    // The plan gets a new id and `created` = `now` to the whole second (the
    // form the journal keeps). Its `roots` are the chosen folders that the
    // members of the planned groups were found under, without repeats,
    // sorted. Removals come in group order, then member order; a copy
    // marked in two groups is planned once, from the first. Each carries
    // the kept (unmarked) members of its group in member order and its
    // group's kind; `sha256` is the group's id for an identical group (its
    // content digest) and empty for the other kinds, whose copies are
    // different files with no shared digest.
    [[nodiscard]] static std::expected<CleanupPlan, PlanError> plan(const ReviewSession& session,
                                                                    Date now = Date::now());

    // The same from the parts of a session. Marks given here have not been
    // through a session's refusals (carried over or read back from
    // elsewhere), which is why every rule is checked again.
    [[nodiscard]] static std::expected<CleanupPlan, PlanError>
    plan(const std::vector<DuplicateGroup>& groups, const std::set<std::string>& marks,
         const LockStore& locks, const std::set<std::string>& protectedRoots,
         Date now = Date::now());

    // The path a copy is planned and kept under: its own, or for a Photos
    // library item kLibraryPrefix + its library id.
    [[nodiscard]] static std::string plannedPath(const PhotoAsset& asset);
};

} // namespace brevant
