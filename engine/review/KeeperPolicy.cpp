#include "KeeperPolicy.hpp"

#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/review/FolderPaths.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/QualityHints.hpp"
#include "engine/similarity/QualityScore.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <functional>
#include <memory>
#include <numeric>
#include <ostream>
#include <utility>

namespace brevant {

namespace {

using Priority = KeeperPolicy::Priority;
using Rule = KeeperPolicy::Rule;
using Context = KeeperPolicy::Context;

// -1 when only a has the quality, 1 when only b has it.
int preferTrue(bool a, bool b) {
    if (a == b) {
        return 0;
    }
    return a ? -1 : 1;
}

template <class T> int preferLarger(const T& a, const T& b) {
    if (a > b) {
        return -1;
    }
    if (b > a) {
        return 1;
    }
    return 0;
}

std::int64_t pixels(const PhotoAsset& asset) {
    return static_cast<std::int64_t>(asset.pixelWidth.value_or(0)) * asset.pixelHeight.value_or(0);
}

// Seconds and nanoseconds compared as they are; a date made of them as one
// floating-point number would lose the nanoseconds.
int compareDates(const PhotoAsset& a, const PhotoAsset& b, bool earlierFirst) {
    auto dateOf = [](const PhotoAsset& asset) {
        return std::pair(asset.snapshot.modifiedSeconds, asset.snapshot.modifiedNanoseconds);
    };
    int laterFirst = preferLarger(dateOf(a), dateOf(b));
    return earlierFirst ? -laterFirst : laterFirst;
}

int componentCount(std::string_view path) {
    int count = 0;
    bool inComponent = false;
    for (char c : path) {
        if (c != '/' && !inComponent) {
            ++count;
        }
        inComponent = c != '/';
    }
    return count;
}

// Depth below the copy's root folder when it lies below it.
std::optional<int> depthBelowRoot(const PhotoAsset& asset) {
    std::string root = folder_paths::normalized(asset.root);
    if (root.empty() || asset.path == root || !folder_paths::contains(root, asset.path)) {
        return std::nullopt;
    }
    return componentCount(std::string_view(asset.path).substr(root == "/" ? 0 : root.size()));
}

// Depth is counted below each copy's root folder, so where a volume happens
// to be mounted does not count; when either copy lies outside its root (a
// catalog or library item), both are counted over their whole paths.
int compareDepth(const PhotoAsset& a, const PhotoAsset& b) {
    auto belowA = depthBelowRoot(a);
    auto belowB = depthBelowRoot(b);
    if (belowA && belowB) {
        return -preferLarger(*belowA, *belowB);
    }
    return -preferLarger(componentCount(a.path), componentCount(b.path));
}

template <class Measure>
auto measured(const Measure& measure, const PhotoAsset& asset) -> decltype(measure(asset)) {
    if (!measure) {
        return std::nullopt;
    }
    return measure(asset);
}

// Clearly sharper only: by the same margin as the sharpest hint.
int compareSharpness(const Context& context, const PhotoAsset& a, const PhotoAsset& b) {
    auto x = measured(context.sharpness, a);
    auto y = measured(context.sharpness, b);
    if (!x || !y || !(*x > 0) || !(*y > 0)) {
        return 0;
    }
    if (*x >= QualityHints::kSharpnessMargin * *y) {
        return -1;
    }
    if (*y >= QualityHints::kSharpnessMargin * *x) {
        return 1;
    }
    return 0;
}

int compareQuality(const Context& context, const PhotoAsset& a, const PhotoAsset& b) {
    auto x = measured(context.quality, a);
    auto y = measured(context.quality, b);
    if (!x || !y) {
        return 0;
    }
    if (*x >= *y + QualityScore::kMargin) {
        return -1;
    }
    if (*y >= *x + QualityScore::kMargin) {
        return 1;
    }
    return 0;
}

int comparePriority(Priority priority, const Context& context, const PhotoAsset& a,
                    const PhotoAsset& b) {
    switch (priority) {
    case Priority::mostPixels:
        return preferLarger(pixels(a), pixels(b));
    case Priority::largestFile:
        return preferLarger(a.size(), b.size());
    case Priority::filedNotInbox:
        return preferTrue(!context.isInInbox(a), !context.isInInbox(b));
    case Priority::oldest:
        return compareDates(a, b, true);
    case Priority::newest:
        return compareDates(a, b, false);
    case Priority::shallowest:
        return compareDepth(a, b);
    case Priority::sharpest:
        return compareSharpness(context, a, b);
    case Priority::bestQuality:
        return compareQuality(context, a, b);
    case Priority::eyesOpen:
        return FaceCheck::compareEyes(measured(context.faces, a), measured(context.faces, b));
    case Priority::mostSmiles:
        return FaceCheck::compareSmiles(measured(context.faces, a), measured(context.faces, b));
    }
    return 0;
}

bool isLocked(const Context& context, const PhotoAsset& asset) {
    return context.isLocked && context.isLocked(asset);
}

bool catalogWork(const PhotoAsset& asset, CatalogApplication application) {
    return asset.catalog && asset.catalog->application() == application &&
           asset.catalog->workedOn();
}

using SharedContext = std::shared_ptr<const Context>;

std::vector<Rule> fixedRules(const SharedContext& context) {
    std::vector<Rule> rules;
    rules.push_back({"You locked this copy",
                     [context](const PhotoAsset& a, const PhotoAsset& b) {
                         return preferTrue(isLocked(*context, a), isLocked(*context, b));
                     },
                     {}});
    rules.push_back({"It is in a folder you protect",
                     [context](const PhotoAsset& a, const PhotoAsset& b) {
                         return preferTrue(context->isInProtectedRoot(a),
                                           context->isInProtectedRoot(b));
                     },
                     {}});
    rules.push_back({"It cannot be moved on its own",
                     [](const PhotoAsset& a, const PhotoAsset& b) {
                         return preferTrue(a.fixedKeepReason().has_value(),
                                           b.fixedKeepReason().has_value());
                     },
                     {}});
    // One rule a kind of catalog, in the order of their registration.
    for (auto application : EnumCases<CatalogApplication>::kAll) {
        const auto& texts = CatalogKindTexts::of(application);
        Rule rule{fmt::format("You worked on this copy in {}", texts.name),
                  [application](const PhotoAsset& a, const PhotoAsset& b) {
                      return preferTrue(catalogWork(a, application), catalogWork(b, application));
                  },
                  {}};
        if (texts.explainsWork) {
            rule.detail = [application](const PhotoAsset& keeper) {
                bool listed = keeper.catalog && keeper.catalog->application() == application;
                return listed ? keeper.catalog->workSummary() : std::string();
            };
        }
        rules.push_back(std::move(rule));
    }
    return rules;
}

using Copies = std::vector<const PhotoAsset*>;

// The members best first, and the rule that set the first apart from every
// other member (none when only the names did).
struct Ranking {
    Copies order;
    std::optional<std::size_t> keeperRule;
};

// How many of the others each copy beats under the rule. The rules answer
// symmetrically, so each pair is asked once.
std::vector<int> winsUnder(const Rule& rule, const Copies& copies) {
    std::vector<int> wins(copies.size(), 0);
    for (std::size_t i = 0; i < copies.size(); ++i) {
        for (std::size_t j = i + 1; j < copies.size(); ++j) {
            int answer = rule.compare(*copies[i], *copies[j]);
            if (answer < 0) {
                ++wins[i];
            } else if (answer > 0) {
                ++wins[j];
            }
        }
    }
    return wins;
}

// The copies in groups of equal wins, most wins first.
std::vector<Copies> tiersByWins(const Copies& copies, const std::vector<int>& wins) {
    std::vector<std::size_t> indices(copies.size());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    // Most wins first, and within equal wins the order the copies came in.
    std::ranges::sort(indices, [&wins](std::size_t a, std::size_t b) {
        return wins[a] != wins[b] ? wins[a] > wins[b] : a < b;
    });
    std::vector<Copies> tiers;
    for (std::size_t k = 0; k < indices.size(); ++k) {
        if (k == 0 || wins[indices[k]] != wins[indices[k - 1]]) {
            tiers.emplace_back();
        }
        tiers.back().push_back(copies[indices[k]]);
    }
    return tiers;
}

// The abstaining rules are not transitive (150 beats 100, 120 beats
// neither), so no pairwise sort gives one answer for every member order.
// Instead the first rule, from `first` on, that tells any two copies apart
// puts those that beat the most others first; each such tier is ranked
// again the same way, and the names decide when no rule tells anyone apart.
// Where the rules are transitive this is the ordinary sort by the first
// rule that tells two copies apart. A rule under which every copy beats
// equally many others (no one told apart, or a circle) gives way to the next.
Ranking rankFrom(const std::vector<Rule>& rules, std::size_t first, Copies copies) {
    if (copies.size() <= 1) {
        return {std::move(copies), std::nullopt};
    }
    for (std::size_t index = first; index < rules.size(); ++index) {
        std::vector<Copies> tiers = tiersByWins(copies, winsUnder(rules[index], copies));
        if (tiers.size() == 1) {
            continue;
        }
        Ranking ranking;
        ranking.order.reserve(copies.size());
        for (auto& tier : tiers) {
            bool keeperTier = ranking.order.empty();
            bool alone = tier.size() == 1;
            Ranking inner = rankFrom(rules, index, std::move(tier));
            if (keeperTier) {
                ranking.keeperRule = alone ? std::optional(index) : inner.keeperRule;
            }
            ranking.order.insert(ranking.order.end(), inner.order.begin(), inner.order.end());
        }
        return ranking;
    }
    std::ranges::sort(copies, std::less{}, [](const PhotoAsset* copy) { return copy->path; });
    return {std::move(copies), std::nullopt};
}

Ranking rankingOf(const std::vector<Rule>& rules, const DuplicateGroup& group) {
    Copies copies;
    copies.reserve(group.members.size());
    for (const auto& member : group.members) {
        copies.push_back(&member);
    }
    return rankFrom(rules, 0, std::move(copies));
}

std::string reasonFor(const Rule& rule, const PhotoAsset& keeper) {
    std::string detail = rule.detail ? rule.detail(keeper) : std::string();
    return detail.empty() ? rule.reason : rule.reason + " (" + detail + ")";
}

} // namespace

std::string_view rawValue(KeeperPolicy::Priority priority) {
    switch (priority) {
    case Priority::mostPixels:
        return "mostPixels";
    case Priority::largestFile:
        return "largestFile";
    case Priority::filedNotInbox:
        return "filedNotInbox";
    case Priority::oldest:
        return "oldest";
    case Priority::newest:
        return "newest";
    case Priority::shallowest:
        return "shallowest";
    case Priority::sharpest:
        return "sharpest";
    case Priority::bestQuality:
        return "bestQuality";
    case Priority::eyesOpen:
        return "eyesOpen";
    case Priority::mostSmiles:
        return "mostSmiles";
    }
    return "mostPixels";
}

std::string_view label(KeeperPolicy::Priority priority) {
    switch (priority) {
    case Priority::mostPixels:
        return "Most pixels";
    case Priority::largestFile:
        return "Largest file";
    case Priority::filedNotInbox:
        return "Filed, not in Downloads";
    case Priority::oldest:
        return "Oldest copy";
    case Priority::newest:
        return "Newest copy";
    case Priority::shallowest:
        return "Nearest the top of its folders";
    case Priority::sharpest:
        return "Clearly sharpest (abstains when unclear)";
    case Priority::bestQuality:
        return "Clearly highest quality score (abstains when close)";
    case Priority::eyesOpen:
        return "Fewest closed eyes (same people in each photo)";
    case Priority::mostSmiles:
        return "Most smiles (same people in each photo)";
    }
    return "";
}

std::string_view reason(KeeperPolicy::Priority priority) {
    switch (priority) {
    case Priority::mostPixels:
        return "It has the most pixels";
    case Priority::largestFile:
        return "It is the largest file";
    case Priority::filedNotInbox:
        return "It is filed, not in Downloads";
    case Priority::oldest:
        return "It is the oldest copy, most likely the original";
    case Priority::newest:
        return "It is the newest copy";
    case Priority::shallowest:
        return "It is nearest the top of its folders";
    case Priority::sharpest:
        return "It is clearly the sharpest";
    case Priority::bestQuality:
        return "It has a clearly higher quality score";
    case Priority::eyesOpen:
        return "Fewer eyes look closed in it";
    case Priority::mostSmiles:
        return "More people are smiling in it";
    }
    return "";
}

void PrintTo(KeeperPolicy::Priority priority, std::ostream* os) {
    *os << rawValue(priority);
}

const std::vector<Priority>& KeeperPolicy::standardPriorities() {
    static const std::vector<Priority> standard{
        Priority::eyesOpen,      Priority::bestQuality, Priority::mostSmiles, Priority::mostPixels,
        Priority::filedNotInbox, Priority::oldest,      Priority::shallowest};
    return standard;
}

std::vector<Priority> KeeperPolicy::upgradedPriorities(const std::vector<std::string>& saved,
                                                       int revision) {
    std::vector<Priority> order;
    for (const auto& name : saved) {
        auto priority = fromRawValue<Priority>(name);
        if (priority && std::ranges::find(order, *priority) == order.end()) {
            order.push_back(*priority);
        }
    }
    if (order.empty()) {
        return standardPriorities();
    }
    if (revision >= kPrioritiesRevision) {
        return order;
    }
    const auto& standard = standardPriorities();
    for (auto entry = standard.begin(); entry != standard.end(); ++entry) {
        if (std::ranges::find(order, *entry) != order.end()) {
            continue;
        }
        // After the nearest standard entry before it that the order holds.
        auto place = order.begin();
        for (auto before = entry; before != standard.begin();) {
            --before;
            if (auto found = std::ranges::find(order, *before); found != order.end()) {
                place = found + 1;
                break;
            }
        }
        order.insert(place, *entry);
    }
    return order;
}

std::optional<std::string> KeeperPolicy::Context::protectedRoot(const PhotoAsset& asset) const {
    return folder_paths::innermost(protectedRoots, asset.path);
}

bool KeeperPolicy::Context::isInProtectedRoot(const PhotoAsset& asset) const {
    return protectedRoot(asset).has_value();
}

bool KeeperPolicy::Context::isInInbox(const PhotoAsset& asset) const {
    return std::ranges::any_of(inboxFolders, [&asset](const std::string& inbox) {
        return folder_paths::contains(folder_paths::normalized(inbox), asset.path);
    });
}

std::vector<Rule> KeeperPolicy::rules(const Context& context) {
    // One copy shared by every rule, so the rules may outlive the caller's.
    auto shared = std::make_shared<const Context>(context);
    std::vector<Rule> rules = fixedRules(shared);
    for (Priority priority : context.priorities) {
        rules.push_back({std::string(reason(priority)),
                         [priority, shared](const PhotoAsset& a, const PhotoAsset& b) {
                             return comparePriority(priority, *shared, a, b);
                         },
                         {}});
    }
    return rules;
}

std::vector<PhotoAsset> KeeperPolicy::ranked(const DuplicateGroup& group, const Context& context) {
    Ranking ranking = rankingOf(rules(context), group);
    std::vector<PhotoAsset> order;
    order.reserve(ranking.order.size());
    for (const PhotoAsset* copy : ranking.order) {
        order.push_back(*copy);
    }
    return order;
}

std::optional<KeeperPolicy::Suggestion> KeeperPolicy::suggestion(const DuplicateGroup& group,
                                                                 const Context& context) {
    return suggestion(group, rules(context));
}

std::optional<KeeperPolicy::Suggestion> KeeperPolicy::suggestion(const DuplicateGroup& group,
                                                                 const std::vector<Rule>& rules) {
    Ranking ranking = rankingOf(rules, group);
    if (ranking.order.empty()) {
        return std::nullopt;
    }
    const PhotoAsset& keeper = *ranking.order.front();
    if (!ranking.keeperRule) {
        return Suggestion{keeper.path, std::string(kEqualCopiesReason)};
    }
    return Suggestion{keeper.path, reasonFor(rules[*ranking.keeperRule], keeper)};
}

} // namespace brevant
