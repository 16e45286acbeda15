#pragma once

#include "engine/scan/DuplicateGroup.hpp"
#include "engine/scan/PhotoAsset.hpp"
#include "engine/similarity/FaceReading.hpp"
#include "engine/support/Hashing.hpp"
#include "engine/support/RawValue.hpp"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace brevant {

// Suggests which copy of a group to keep, and says why in one line. A few
// fixed rules come first (locks, protected folders, copies that cannot move
// on their own, work done in a catalog), then the user's priorities in the
// user's order. A rule may abstain when the difference is too small to
// matter; the next rule then decides.
struct KeeperPolicy {
    enum class Priority {
        mostPixels,
        largestFile,
        filedNotInbox,
        oldest,
        newest,
        shallowest,
        sharpest,
        bestQuality,
        eyesOpen,
        mostSmiles,
    };

    // Bumped whenever the standard order gains an entry, so that an order
    // saved before learns of it (upgradedPriorities).
    static constexpr int kPrioritiesRevision = 2;

    // eyesOpen, bestQuality, mostSmiles, mostPixels, filedNotInbox, oldest,
    // shallowest.
    [[nodiscard]] static const std::vector<Priority>& standardPriorities();

    // Brings an order saved under an older revision up to date. The user's
    // order of the names we know is kept as it is (repeats and names we do
    // not know are dropped). Under an older revision, each standard entry
    // the saved order lacks is inserted at its standard place: right after
    // the nearest entry that comes before it in the standard order (or
    // first, when none does). An order saved under the current revision (or
    // a later one) gains nothing, since its gaps were left by the user. An
    // order with no known name left is the standard order.
    [[nodiscard]] static std::vector<Priority>
    upgradedPriorities(const std::vector<std::string>& saved, int revision);

    // What the rules need to know besides the two copies.
    struct Context {
        std::function<bool(const PhotoAsset&)> isLocked;
        std::set<std::string> protectedRoots;
        std::vector<std::string> inboxFolders;
        std::vector<Priority> priorities;
        std::function<std::optional<double>(const PhotoAsset&)> sharpness;
        std::function<std::optional<int>(const PhotoAsset&)> quality;
        std::function<std::optional<FaceReading>(const PhotoAsset&)> faces;

        // The innermost protected folder holding the copy: "/" holds every
        // path, any other folder the path itself and everything below it.
        [[nodiscard]] std::optional<std::string> protectedRoot(const PhotoAsset& asset) const;
        [[nodiscard]] bool isInProtectedRoot(const PhotoAsset& asset) const;
        // The copy lies in one of the inbox folders or anywhere below one
        // (a subfolder of Downloads is still Downloads).
        [[nodiscard]] bool isInInbox(const PhotoAsset& asset) const;
    };

    struct Rule {
        std::string reason;
        // -1 when the first is the better keeper, 1 when the second is, 0
        // when the rule cannot tell.
        std::function<int(const PhotoAsset&, const PhotoAsset&)> compare;
        // Words added to the reason for this keeper (the work done on it
        // in a catalog); empty for most rules.
        std::function<std::string(const PhotoAsset&)> detail;
    };

    struct Suggestion {
        std::string keeperID;
        std::string reason;

        friend bool operator==(const Suggestion&, const Suggestion&) = default;
    };

    static constexpr std::string_view kEqualCopiesReason =
        "All copies are equal; the first by name is suggested";

    // The fixed rules, then one per priority in the context's order.
    [[nodiscard]] static std::vector<Rule> rules(const Context& context);

    // The members, best keeper first. The first rule that tells any two
    // copies apart puts those that beat the most others under it first, and
    // each tier of equal wins is ranked the same way; the path that sorts
    // first goes first when no rule tells copies apart. Where the rules are
    // transitive this is the sort by the first rule that tells two copies
    // apart; where they abstain inside a margin it still gives one order,
    // whatever the order of the members.
    [[nodiscard]] static std::vector<PhotoAsset> ranked(const DuplicateGroup& group,
                                                        const Context& context);

    // The first of the ranking, with the reason of the rule under which it
    // was left alone at the top; nothing for a group without members.
    [[nodiscard]] static std::optional<Suggestion> suggestion(const DuplicateGroup& group,
                                                              const Context& context);
    // The same with rules made once by `rules` for many groups: making them
    // again for each of a million groups was most of the cost.
    [[nodiscard]] static std::optional<Suggestion> suggestion(const DuplicateGroup& group,
                                                              const std::vector<Rule>& rules);
};

template <> struct EnumCases<KeeperPolicy::Priority> {
    using Priority = KeeperPolicy::Priority;
    static constexpr std::array kAll{
        Priority::mostPixels, Priority::largestFile, Priority::filedNotInbox, Priority::oldest,
        Priority::newest,     Priority::shallowest,  Priority::sharpest,      Priority::bestQuality,
        Priority::eyesOpen,   Priority::mostSmiles};
};

[[nodiscard]] std::string_view rawValue(KeeperPolicy::Priority priority);
// How the priority is listed in the settings, such as "Most pixels".
[[nodiscard]] std::string_view label(KeeperPolicy::Priority priority);
// Why a copy is kept when this priority decides.
[[nodiscard]] std::string_view reason(KeeperPolicy::Priority priority);
void PrintTo(KeeperPolicy::Priority priority, std::ostream* os);

} // namespace brevant

template <> struct std::hash<brevant::KeeperPolicy::Suggestion> {
    std::size_t operator()(const brevant::KeeperPolicy::Suggestion& s) const noexcept {
        return brevant::hashing::all(s.keeperID, s.reason);
    }
};
