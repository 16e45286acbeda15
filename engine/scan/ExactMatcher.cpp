#include "ExactMatcher.hpp"

#include "engine/platform/Mounts.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/Texts.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <limits>
#include <span>
#include <unordered_set>

namespace brevant {

namespace {

using Stage = ScanProgress::Stage;
using Inspection = FolderSource::Inspection;
using Failure = ContentReader::Failure;
using Indices = std::vector<std::size_t>;

// Pictures inspected between two progress reports. Small enough for the
// counts to move smoothly, large enough that starting the workers is lost
// in the reading.
constexpr std::size_t kInspectionBatch = 128;

struct Candidate {
    std::string digest;
    // Indices into the walk's pictures, in path order.
    Indices members;
};

// The buckets of two or more items, each with the indices of `items` it
// holds, in the order of their first item.
void addSharedBuckets(const ExactMatcher::Buckets& buckets, const Indices& items,
                      std::vector<Candidate>& shared) {
    std::size_t first = shared.size();
    for (const auto& [digest, positions] : buckets) {
        if (positions.size() < 2) {
            continue;
        }
        Indices members;
        members.reserve(positions.size());
        for (std::size_t position : positions) {
            members.push_back(items[position]);
        }
        shared.push_back({digest, std::move(members)});
    }
    std::sort(shared.begin() + static_cast<std::ptrdiff_t>(first), shared.end(),
              [](const Candidate& a, const Candidate& b) {
                  return a.members.front() < b.members.front();
              });
}

// The next batch: from `start`, sets until they hold at least
// ExactMatcher::kBatchSize items (counted by `items`) or the sets run out.
template <class Set, class Count>
std::size_t batchEnd(const std::vector<Set>& sets, std::size_t start, Count items) {
    std::size_t end = start;
    std::size_t count = 0;
    while (end < sets.size() && count < ExactMatcher::kBatchSize) {
        count += items(sets[end]);
        ++end;
    }
    return end;
}

// The bytes removing all copies but one would free, without overflowing.
std::int64_t bytesFreed(const DuplicateGroup& group) {
    std::int64_t freed = 0;
    auto extra = static_cast<std::int64_t>(group.members.size()) - 1;
    if (__builtin_mul_overflow(group.size, extra, &freed)) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return freed;
}

// One scan from start to finish.
class Scanner {
public:
    Scanner(bool keepPictures, const CancellationFlag& cancel,
            const ExactMatcher::Progress& progress, const ExactMatcher::Hooks& hooks)
        : keepPictures_(keepPictures)
        , cancel_(cancel)
        , progress_(progress)
        , hooks_(hooks) {}

    ScanResult run(const std::vector<std::string>& paths, const FolderSource::OnlyPaths& only);

private:
    const FolderSource::Found& picture(std::size_t index) const { return walk_.found[index]; }

    void report(Stage stage);
    void walk(const std::vector<std::string>& roots, const FolderSource::OnlyPaths& only);
    bool read();
    void noteInspection(std::size_t index, const Inspection& inspection);
    std::vector<Indices> sameSizeGroups() const;
    bool compare(const std::vector<Indices>& sizeGroups);
    bool settle(std::vector<Candidate>& partial);
    bool settleRound(const std::vector<Indices>& buckets, std::vector<Indices>& next);

    struct Settled {
        Indices members;
        std::optional<std::string> digest;
    };

    bool confirmSettled(std::vector<Settled>& settled);
    bool hashGroups(std::span<const Indices> groups, std::optional<std::int64_t> limit,
                    std::vector<Candidate>& shared);
    bool verify(const std::vector<Candidate>& candidates);
    bool verifyBatch(std::span<const Candidate> batch);
    bool noteFailure(std::size_t index, const Failure& failure);
    void skip(std::size_t index, SkipReason reason, std::optional<std::string> detail);
    void makeGroups();
    void checkRawGroups();
    ScanResult finish(bool cancelled);

    PhotoAsset asset(std::size_t index);
    const FolderSource::NameSet& stemsOf(const std::string& folder);
    const ExactMatcher::VolumeInfo& volumeOf(const FolderSource::Found& found);

    bool keepPictures_;
    const CancellationFlag& cancel_;
    const ExactMatcher::Progress& progress_;
    const ExactMatcher::Hooks& hooks_;

    ScanResult result_;
    FolderSource::Walk walk_;
    int walkCount_ = 0;
    std::vector<std::optional<Inspection>> inspections_;
    std::vector<Candidate> confirmed_;
    int confirmedMembers_ = 0;
    std::unordered_set<std::size_t> failed_;

    std::unordered_map<std::string, FolderSource::NameSet> stems_;
    std::optional<platform::MountTable> mounts_;
    std::unordered_map<std::uint64_t, ExactMatcher::VolumeInfo> volumes_;
};

ScanResult Scanner::run(const std::vector<std::string>& paths,
                        const FolderSource::OnlyPaths& only) {
    Date started = Date::now();
    PreparedRoots prepared = FolderSource::prepare(paths);
    result_ = ScanResult::make(prepared.roots, {});
    result_.started = started;
    result_.excluded = std::move(prepared.refused);
    report(Stage::preparing);

    if (cancel_.isCancelled()) {
        return finish(true);
    }
    walk(result_.roots, only);
    if (walk_.cancelled || !read()) {
        return finish(true);
    }
    return finish(!compare(sameSizeGroups()));
}

void Scanner::report(Stage stage) {
    if (!progress_) {
        return;
    }
    ScanProgress progress;
    progress.stage = stage;
    progress.discovered = walkCount_;
    progress.examined = result_.examined;
    progress.skipped = static_cast<int>(result_.skipped.size());
    progress.matched = confirmedMembers_;
    progress_(progress);
}

void Scanner::walk(const std::vector<std::string>& roots, const FolderSource::OnlyPaths& only) {
    report(Stage::discovering);
    walk_ = FolderSource::walk(roots, only, cancel_, [this](int count) {
        walkCount_ = count;
        report(Stage::discovering);
    });
    walkCount_ = walk_.discovered;
    result_.discovered = walk_.discovered;
    result_.otherFiles = walk_.otherFiles;
    result_.hardLinksFolded = walk_.hardLinksFolded;
    result_.skipped.insert(result_.skipped.end(), walk_.skipped.begin(), walk_.skipped.end());
    result_.excluded.insert(result_.excluded.end(), walk_.excluded.begin(), walk_.excluded.end());
    inspections_.resize(walk_.found.size());
}

bool Scanner::read() {
    report(Stage::reading);
    std::size_t count = walk_.found.size();
    Indices batch;
    for (std::size_t start = 0; start < count; start += kInspectionBatch) {
        if (cancel_.isCancelled()) {
            return false;
        }
        batch.clear();
        for (std::size_t index = start; index < std::min(count, start + kInspectionBatch);
             ++index) {
            batch.push_back(index);
        }
        auto inspections = ExactMatcher::parallelMap(batch, cancel_, [this](std::size_t index) {
            return FolderSource::inspect(picture(index).path, picture(index).format);
        });
        bool complete = true;
        for (std::size_t position = 0; position < batch.size(); ++position) {
            if (const auto& inspection = inspections[position]) {
                noteInspection(batch[position], *inspection);
            } else {
                complete = false;
            }
        }
        report(Stage::reading);
        if (!complete) {
            return false;
        }
    }
    return true;
}

void Scanner::noteInspection(std::size_t index, const Inspection& inspection) {
    inspections_[index] = inspection;
    switch (inspection.kind) {
    case Inspection::Kind::readable:
        result_.examined += 1;
        break;
    case Inspection::Kind::notDecodableHere:
        skip(index, SkipReason::unsupportedFormat,
             ExactMatcher::cannotDecodeSentence(picture(index).format));
        break;
    case Inspection::Kind::damaged:
        skip(index, SkipReason::corrupt, std::nullopt);
        break;
    }
}

// Readable pictures that share their size with another, each group in path
// order; the biggest sizes first, so a scan stopped early has found the
// copies that free the most.
std::vector<Indices> Scanner::sameSizeGroups() const {
    std::unordered_map<std::int64_t, Indices> bySize;
    for (std::size_t index = 0; index < walk_.found.size(); ++index) {
        const auto& inspection = inspections_[index];
        if (inspection && inspection->kind == Inspection::Kind::readable) {
            bySize[picture(index).snapshot.size].push_back(index);
        }
    }
    std::vector<std::pair<std::int64_t, Indices>> shared;
    for (auto& [size, members] : bySize) {
        if (members.size() >= 2) {
            std::ranges::sort(members, {}, [this](std::size_t i) -> const std::string& {
                return picture(i).path;
            });
            shared.emplace_back(size, std::move(members));
        }
    }
    std::ranges::sort(shared, std::ranges::greater{}, &std::pair<std::int64_t, Indices>::first);
    std::vector<Indices> groups;
    groups.reserve(shared.size());
    for (auto& entry : shared) {
        groups.push_back(std::move(entry.second));
    }
    return groups;
}

// Size groups are settled a batch at a time: hashed, then compared byte by
// byte, so that a scan stopped part way keeps every group already proven.
// One parallel pass over the members of several groups keeps every worker
// busy although most groups hold two pictures. The flag is read before each
// batch and each file.
bool Scanner::compare(const std::vector<Indices>& sizeGroups) {
    for (std::size_t start = 0; start < sizeGroups.size();) {
        if (cancel_.isCancelled()) {
            return false;
        }
        std::size_t end =
            batchEnd(sizeGroups, start, [](const Indices& group) { return group.size(); });
        report(Stage::comparing);
        std::vector<Candidate> partial;
        if (!hashGroups({sizeGroups.begin() + static_cast<std::ptrdiff_t>(start),
                         sizeGroups.begin() + static_cast<std::ptrdiff_t>(end)},
                        ExactMatcher::kPartialHashBytes, partial)) {
            return false;
        }
        report(Stage::comparing);
        if (hooks_.beforeVerifying) {
            hooks_.beforeVerifying();
        }
        if (!settle(partial)) {
            return false;
        }
        start = end;
    }
    return true;
}

// Files that share their size and first 64 KiB are almost always copies.
// Each such bucket's first member is compared byte by byte with every
// other; the equal ones are its copies, and only the first is hashed in
// full, for the group's id: the copies hold the same bytes, so the same
// digest. Members that differ from it are settled the same way among
// themselves once more; what is still mixed after that is hashed in full
// and compared within equal digests, so that no bucket costs more than a
// few reads of each member. False when the scan was cancelled.
bool Scanner::settle(std::vector<Candidate>& partial) {
    constexpr int kRounds = 2;
    std::vector<Indices> open;
    open.reserve(partial.size());
    for (auto& bucket : partial) {
        open.push_back(std::move(bucket.members));
    }
    for (int round = 0; round < kRounds && !open.empty(); ++round) {
        std::vector<Indices> next;
        if (!settleRound(open, next)) {
            return false;
        }
        open = std::move(next);
    }
    if (open.empty()) {
        return true;
    }
    report(Stage::comparing);
    std::vector<Candidate> candidates;
    if (!hashGroups(open, std::nullopt, candidates)) {
        return false;
    }
    return verify(candidates);
}

// One pass over the buckets: each first member compared with every other
// member, and hashed on the way through its first comparison. Members that
// differed go to `next` when two or more of a bucket are left. False when
// the scan was cancelled.
bool Scanner::settleRound(const std::vector<Indices>& buckets, std::vector<Indices>& next) {
    struct Check {
        std::size_t reference;
        std::size_t other;
        bool hashing; // the reference's digest is taken on the way
    };

    std::vector<Check> checks;
    for (const Indices& bucket : buckets) {
        for (auto other = bucket.begin() + 1; other != bucket.end(); ++other) {
            checks.push_back({bucket.front(), *other, other == bucket.begin() + 1});
        }
    }
    report(Stage::verifying);
    auto answers = ExactMatcher::parallelMap(checks, cancel_, [this](const Check& check) {
        const auto& a = picture(check.reference);
        const auto& b = picture(check.other);
        if (check.hashing) {
            return ContentReader::compareHashingFirst(a.path, a.snapshot, b.path, b.snapshot,
                                                      cancel_);
        }
        auto same = ContentReader::sameBytes(a.path, a.snapshot, b.path, b.snapshot, cancel_);
        using Answer = std::expected<ContentReader::Comparison, Failure>;
        return same ? Answer{ContentReader::Comparison{.same = *same}}
                    : Answer{std::unexpect, std::move(same.error())};
    });

    std::vector<Settled> settled;
    bool going = true;
    std::size_t position = 0;
    for (const Indices& bucket : buckets) {
        std::size_t reference = bucket.front();
        Settled copies{{reference}, std::nullopt};
        Indices different;
        bool finished = true;
        for (std::size_t i = 1; i < bucket.size(); ++i, ++position) {
            const auto& answer = answers[position];
            if (!answer) {
                finished = false;
            } else if (!*answer) {
                // Either file may be the one that failed.
                std::size_t culprit =
                    answer->error().path == picture(reference).path ? reference : bucket[i];
                finished = noteFailure(culprit, answer->error()) && finished;
            } else if ((*answer)->same) {
                copies.members.push_back(bucket[i]);
                copies.digest = copies.digest ? copies.digest : (*answer)->digestOfA;
            } else {
                different.push_back(bucket[i]);
            }
        }
        going = going && finished;
        if (!finished) {
            continue;
        }
        if (failed_.contains(reference)) {
            // Comparisons with a reference that failed prove nothing: the
            // others start again.
            Indices rest;
            std::ranges::copy_if(bucket, std::back_inserter(rest),
                                 [this](std::size_t member) { return !failed_.contains(member); });
            if (rest.size() >= 2) {
                next.push_back(std::move(rest));
            }
            continue;
        }
        if (copies.members.size() >= 2) {
            settled.push_back(std::move(copies));
        }
        if (different.size() >= 2) {
            next.push_back(std::move(different));
        }
    }
    return confirmSettled(settled) && going;
}

// Confirms each set of copies under its first member's digest, hashing the
// first members whose first comparison did not read them to the end.
bool Scanner::confirmSettled(std::vector<Settled>& settled) {
    Indices unhashed;
    for (const auto& copies : settled) {
        if (!copies.digest) {
            unhashed.push_back(copies.members.front());
        }
    }
    auto digests = ExactMatcher::parallelMap(unhashed, cancel_, [this](std::size_t index) {
        return ContentReader::sha256(picture(index).path, picture(index).snapshot, std::nullopt,
                                     &cancel_);
    });
    bool going = true;
    std::size_t position = 0;
    for (auto& copies : settled) {
        if (!copies.digest) {
            const auto& digest = digests[position++];
            if (!digest) {
                going = false;
                continue;
            }
            if (!*digest) {
                going = noteFailure(copies.members.front(), digest->error()) && going;
                continue;
            }
            copies.digest = **digest;
        }
        confirmedMembers_ += static_cast<int>(copies.members.size());
        confirmed_.push_back({std::move(*copies.digest), std::move(copies.members)});
    }
    report(Stage::verifying);
    return going;
}

// Hashes the members of all the groups in one parallel pass, then splits
// each group by digest and adds its parts of two or more to `shared`.
// False when the scan was cancelled.
bool Scanner::hashGroups(std::span<const Indices> groups, std::optional<std::int64_t> limit,
                         std::vector<Candidate>& shared) {
    Indices all;
    for (const Indices& group : groups) {
        all.insert(all.end(), group.begin(), group.end());
    }
    auto hashes = ExactMatcher::parallelMap(all, cancel_, [&](std::size_t index) {
        return ContentReader::sha256(picture(index).path, picture(index).snapshot, limit, &cancel_);
    });
    bool going = true;
    auto next = hashes.begin();
    for (const Indices& group : groups) {
        std::vector<std::optional<ExactMatcher::HashResult>> results(
            std::make_move_iterator(next),
            std::make_move_iterator(next + static_cast<std::ptrdiff_t>(group.size())));
        next += static_cast<std::ptrdiff_t>(group.size());
        ExactMatcher::Failures failures;
        auto buckets = ExactMatcher::buckets(results, failures);
        for (const auto& [position, failure] : failures) {
            going = noteFailure(group[position], failure) && going;
        }
        addSharedBuckets(buckets, group, shared);
    }
    return going;
}

// Each set of equal full digests is confirmed against its first member,
// several sets in one parallel pass, for the same reason as the hashing.
bool Scanner::verify(const std::vector<Candidate>& candidates) {
    if (candidates.empty()) {
        return true;
    }
    report(Stage::verifying);
    for (std::size_t start = 0; start < candidates.size();) {
        if (cancel_.isCancelled()) {
            return false;
        }
        std::size_t end = batchEnd(candidates, start, [](const Candidate& candidate) {
            return candidate.members.size() - 1;
        });
        if (!verifyBatch({candidates.begin() + static_cast<std::ptrdiff_t>(start),
                          candidates.begin() + static_cast<std::ptrdiff_t>(end)})) {
            return false;
        }
        start = end;
    }
    return true;
}

// Compares every member with its set's first member, in one parallel pass.
// Members found equal join the first; a set becomes a group when it is
// finished (every comparison answered) and keeps two or more members that
// did not fail. False when the scan was cancelled.
bool Scanner::verifyBatch(std::span<const Candidate> batch) {
    struct Comparison {
        std::size_t reference;
        std::size_t other;
    };

    std::vector<Comparison> comparisons;
    for (const Candidate& candidate : batch) {
        for (auto other = candidate.members.begin() + 1; other != candidate.members.end();
             ++other) {
            comparisons.push_back({candidate.members.front(), *other});
        }
    }
    auto answers =
        ExactMatcher::parallelMap(comparisons, cancel_, [this](const Comparison& comparison) {
            const auto& a = picture(comparison.reference);
            const auto& b = picture(comparison.other);
            return ContentReader::sameBytes(a.path, a.snapshot, b.path, b.snapshot, cancel_);
        });
    bool going = true;
    std::size_t position = 0;
    for (const Candidate& candidate : batch) {
        std::size_t reference = candidate.members.front();
        Indices members = {reference};
        bool finished = true;
        for (std::size_t i = 1; i < candidate.members.size(); ++i, ++position) {
            const auto& answer = answers[position];
            if (!answer) {
                finished = false;
            } else if (!*answer) {
                // Either file may be the one that failed.
                std::size_t culprit = answer->error().path == picture(reference).path
                                          ? reference
                                          : candidate.members[i];
                bool cancelled = !noteFailure(culprit, answer->error());
                finished = finished && !cancelled;
            } else if (**answer) {
                members.push_back(candidate.members[i]);
            }
        }
        going = going && finished;
        if (finished && !failed_.contains(reference) && members.size() >= 2) {
            confirmedMembers_ += static_cast<int>(members.size());
            confirmed_.push_back({candidate.digest, std::move(members)});
        }
    }
    report(Stage::verifying);
    return going;
}

// Turns a failed read into a skipped picture. False when it was a
// cancellation, which ends the scan.
bool Scanner::noteFailure(std::size_t index, const Failure& failure) {
    switch (failure.kind) {
    case Failure::Kind::cancelled:
        return false;
    case Failure::Kind::unreadable:
        skip(index, SkipReason::unreadable, failure.detail);
        return true;
    case Failure::Kind::changed:
        skip(index, SkipReason::changedDuringScan, std::nullopt);
        return true;
    }
    return false;
}

// A picture that failed is never a member, and is listed once however many
// comparisons it failed.
void Scanner::skip(std::size_t index, SkipReason reason, std::optional<std::string> detail) {
    if (failed_.insert(index).second) {
        result_.skipped.push_back({picture(index).path, reason, std::move(detail)});
    }
}

void Scanner::makeGroups() {
    for (const Candidate& candidate : confirmed_) {
        std::vector<PhotoAsset> members;
        members.reserve(candidate.members.size());
        for (std::size_t index : candidate.members) {
            members.push_back(asset(index));
        }
        std::int64_t size = picture(candidate.members.front()).snapshot.size;
        result_.groups.push_back(
            DuplicateGroup::make(candidate.digest, size, std::move(members), MatchKind::identical));
    }
}

// A RAW picture whose header reads may still be one this computer cannot
// render. The members hold the same bytes, so one decode answers for all.
void Scanner::checkRawGroups() {
    std::vector<DuplicateGroup> kept;
    kept.reserve(result_.groups.size());
    for (auto& group : result_.groups) {
        auto raw = std::ranges::find(group.members, PhotoFormat::raw, &PhotoAsset::format);
        if (raw == group.members.end()) {
            kept.push_back(std::move(group));
            continue;
        }
        // A group not yet checked is not finished: a cancelled scan drops it.
        if (cancel_.isCancelled()) {
            continue;
        }
        if (!FolderSource::decodesFully(raw->path)) {
            std::erase_if(group.members, [this](const PhotoAsset& member) {
                if (member.format != PhotoFormat::raw) {
                    return false;
                }
                result_.skipped.push_back({member.path, SkipReason::unsupportedFormat,
                                           ExactMatcher::cannotRenderRawSentence()});
                return true;
            });
        }
        if (group.members.size() >= 2) {
            kept.push_back(std::move(group));
        }
    }
    result_.groups = std::move(kept);
}

ScanResult Scanner::finish(bool cancelled) {
    makeGroups();
    checkRawGroups();
    std::ranges::sort(result_.groups, [](const DuplicateGroup& a, const DuplicateGroup& b) {
        std::int64_t freedA = bytesFreed(a);
        std::int64_t freedB = bytesFreed(b);
        if (freedA != freedB) {
            return freedA > freedB;
        }
        return a.members.front().path < b.members.front().path;
    });
    confirmedMembers_ = result_.matched();
    report(Stage::finishing);
    if (keepPictures_) {
        // Every picture whose header was read, also one skipped while its
        // contents were compared: it may still be another version of a
        // photo. Measuring decodes it again and leaves it out if that fails;
        // a cleanup checks every file against its snapshot before moving it.
        for (std::size_t index = 0; index < walk_.found.size(); ++index) {
            const auto& inspection = inspections_[index];
            if (inspection && inspection->kind == Inspection::Kind::readable) {
                result_.pictures.push_back(asset(index));
            }
        }
    }
    result_.cancelled = cancelled || cancel_.isCancelled();
    result_.finished = Date::now();
    return std::move(result_);
}

PhotoAsset Scanner::asset(std::size_t index) {
    const FolderSource::Found& found = picture(index);
    PhotoAsset asset;
    asset.path = found.path;
    asset.root = found.root;
    asset.snapshot = found.snapshot;
    asset.format = found.format;
    if (const auto& inspection = inspections_[index]) {
        asset.pixelWidth = inspection->width;
        asset.pixelHeight = inspection->height;
    }
    if (auto names = walk_.otherNames.find(found.snapshot.identity);
        names != walk_.otherNames.end()) {
        asset.otherNames = names->second;
    }
    std::string folder = PathRules::parentFolder(found.path);
    static const FolderSource::NameSet kNoNames;
    auto names = walk_.namesByFolder.find(folder);
    asset.relationships = FolderSource::relationships(
        found.path, names == walk_.namesByFolder.end() ? kNoNames : names->second, stemsOf(folder));
    asset.isCloudSynced = ExactMatcher::isCloudSynced(found.path);
    const auto& volume = volumeOf(found);
    asset.isReadOnlyVolume = volume.isReadOnly;
    asset.volumeName = volume.name;
    asset.isExternalVolume = volume.isExternal;
    return asset;
}

const FolderSource::NameSet& Scanner::stemsOf(const std::string& folder) {
    auto [it, inserted] = stems_.try_emplace(folder);
    if (inserted) {
        if (auto names = walk_.namesByFolder.find(folder); names != walk_.namesByFolder.end()) {
            it->second = FolderSource::stems(names->second);
        }
    }
    return it->second;
}

const ExactMatcher::VolumeInfo& Scanner::volumeOf(const FolderSource::Found& found) {
    auto [it, inserted] = volumes_.try_emplace(found.snapshot.identity.device);
    if (inserted) {
        if (!mounts_) {
            mounts_ = platform::MountTable::load();
        }
        it->second = platform::volumeInfo(found.path, *mounts_);
    }
    return it->second;
}

} // namespace

ScanResult ExactMatcher::scan(const std::vector<std::string>& paths, bool keepPictures,
                              const FolderSource::OnlyPaths& only, const CancellationFlag& cancel,
                              const Progress& progress, const Hooks& hooks) {
    Scanner scanner(keepPictures, cancel, progress, hooks);
    return scanner.run(paths, only);
}

bool ExactMatcher::isCloudSynced(std::string_view path) {
    return path.find("/Library/Mobile Documents/") != std::string_view::npos ||
           path.find("/Library/CloudStorage/") != std::string_view::npos;
}

ExactMatcher::Buckets ExactMatcher::buckets(const std::vector<std::optional<HashResult>>& results,
                                            Failures& failures) {
    Buckets buckets;
    for (std::size_t index = 0; index < results.size(); ++index) {
        const auto& result = results[index];
        if (!result) {
            failures.emplace(index, Failure{Failure::Kind::cancelled, {}, {}});
        } else if (!*result) {
            failures.emplace(index, result->error());
        } else {
            buckets[**result].push_back(index);
        }
    }
    return buckets;
}

std::string ExactMatcher::cannotDecodeSentence(PhotoFormat format) {
    return fmt::format("{} cannot decode {}", texts::kMachineCapitalized, displayName(format));
}

const std::string& ExactMatcher::cannotRenderRawSentence() {
    static const std::string text =
        fmt::format("{} cannot render this camera's RAW", texts::kMachineCapitalized);
    return text;
}

} // namespace brevant
