#include "Compressor.hpp"

#include "engine/cleanup/ExecutorTexts.hpp"
#include "engine/cleanup/TrashLocation.hpp"
#include "engine/cleanup/TrashMove.hpp"
#include "engine/compression/CompressionJournal.hpp"
#include "engine/compression/CompressionTexts.hpp"
#include "engine/compression/CopyCheck.hpp"
#include "engine/compression/CopyNames.hpp"
#include "engine/platform/ExclusiveRename.hpp"
#include "engine/platform/FileStatus.hpp"
#include "engine/platform/MotionPhoto.hpp"
#include "engine/platform/NewFile.hpp"
#include "engine/scan/PathRules.hpp"
#include "engine/support/PathNames.hpp"

#include <algorithm>
#include <cerrno>

namespace brevant {

namespace {

using Entry = CompressionJournal::Entry;
namespace texts = compression_texts;
namespace sentences = executor_texts;

constexpr std::string_view kNotReadBack = "the record could not be read back";
constexpr std::string_view kRecordUnwritten = "its record could not be written";

bool inside(const std::string& path, const std::string& root) {
    return !root.empty() && path.starts_with('/') && PathNames::isInside(path, root);
}

// Outcome entries that cannot be written are left to reconciliation.
void record(CompressionJournal& journal, const std::string& item, ItemOutcome outcome,
            const std::optional<std::string>& note = {}) {
    (void)journal.write(Entry::ofOutcome(item, std::move(outcome), Date::now()));
    if (note) {
        (void)journal.write(Entry::ofNote(item, *note, Date::now()));
    }
}

// Removes our own unfinished or refused copy; a sentence when it stays.
std::optional<std::string> removeCopy(const std::string& temporary) {
    auto found = FileSnapshot::read(temporary);
    if (!found) {
        return std::nullopt;
    }
    auto removed =
        platform::NewFile::removeOwn(temporary, found->identity.device, found->identity.inode);
    if (!removed) {
        return texts::leftoverNotRemoved(temporary, platform::errorText(removed.error()));
    }
    return std::nullopt;
}

// One file's run, from its copy's writing to its original's move.
class ItemRun {
public:
    ItemRun(CompressionJournal& journal, const Trasher& trasher, const Compressor::Options& options,
            const PlannedCompression& item, const Compressor::Progress& progress,
            CompressionProgress& where)
        : journal_(journal)
        , trasher_(trasher)
        , options_(options)
        , item_(item)
        , progress_(progress)
        , where_(where) {}

    void run() {
        std::string temporary = CopyNames::temporaryFor(item_.path);
        if (!journal_.write(Entry::ofWriting(item_.path, temporary, Date::now()))) {
            record(journal_, item_.path, ItemOutcome::failed(texts::notWritten(kRecordUnwritten)));
            return;
        }
        if (auto written = write(temporary); !written) {
            refuse(temporary, ItemOutcome::failed(texts::notWritten(written.error())));
            return;
        }
        if (options_.afterWriting) {
            options_.afterWriting(item_, temporary);
        }
        if (auto reason = CopyCheck::check(item_, temporary, options_.video)) {
            refuse(temporary,
                   ItemOutcome::failed(*reason + " " + std::string(texts::kCopyRemoved)));
            return;
        }
        auto now = FileSnapshot::read(item_.path);
        if (!now || now->isSymbolicLink || !TrashMove::sameFile(*now, item_.snapshot)) {
            refuse(temporary, ItemOutcome::skipped(std::string(texts::kChangedWhileWriting)));
            return;
        }
        auto named = name(temporary);
        if (!named) {
            refuse(temporary, ItemOutcome::failed(named.error()));
            return;
        }
        platform::syncFolder(PathNames::parentFolder(item_.path));
        moveOriginal(*named);
    }

private:
    std::expected<void, std::string> write(const std::string& temporary) {
        auto permissions = platform::permissionBitsOf(item_.path).value_or(0644);
        if (item_.kind == MediaKind::motionPhoto) {
            return platform::MotionPhoto::writeStill(item_.path, temporary, permissions);
        }
        if (item_.kind == MediaKind::photo) {
            auto written =
                platform::HeifWriter::write(item_.path, temporary, permissions, options_.photo);
            if (!written) {
                return std::unexpected(written.error());
            }
            return {};
        }
        auto frames = [&](std::int64_t done, std::int64_t total) {
            where_.frames = done;
            where_.totalFrames = total;
            if (progress_) {
                progress_(where_);
            }
        };
        auto written = platform::VideoTranscoder::transcode(item_.path, temporary, permissions,
                                                            options_.video, frames);
        if (!written) {
            return std::unexpected(written.error());
        }
        return {};
    }

    void refuse(const std::string& temporary, ItemOutcome outcome) {
        record(journal_, item_.path, std::move(outcome), removeCopy(temporary));
    }

    // The copy, dated as its original, takes the first free name of its
    // choices; the copy line goes first, so that a crash leaves it known.
    std::expected<std::string, std::string> name(const std::string& temporary) {
        if (auto dated = platform::NewFile::setModified(temporary, item_.snapshot.modifiedSeconds,
                                                        item_.snapshot.modifiedNanoseconds);
            !dated) {
            return std::unexpected(texts::notWritten(platform::errorText(dated.error())));
        }
        auto copy = FileSnapshot::read(temporary);
        if (!copy) {
            return std::unexpected(texts::notWritten(platform::errorText(ENOENT)));
        }
        for (int n = 1; n <= CopyNames::kChoices; ++n) {
            std::string destination = CopyNames::choice(item_.path, item_.kind, n);
            if (FileSnapshot::read(destination)) {
                continue;
            }
            if (!journal_.write(
                    Entry::ofCopy(item_.path, temporary, destination, *copy, Date::now()))) {
                return std::unexpected(texts::notWritten(kRecordUnwritten));
            }
            auto renamed = platform::renameNoReplace(temporary, destination);
            if (renamed) {
                return destination;
            }
            if (renamed.error() != EEXIST) {
                return std::unexpected(texts::notWritten(platform::errorText(renamed.error())));
            }
        }
        return std::unexpected(std::string(texts::kNoFreeName));
    }

    void moveOriginal(const std::string& copy) {
        auto moved = TrashMove::run(
            trasher_, item_.path, item_.snapshot, [&](const std::optional<std::string>& trashPath) {
                return journal_.write(Entry::ofIntent(item_.path, Date::now(), trashPath))
                    .has_value();
            });
        if (!moved.outcome) {
            // No intent on disk, so nothing moved: reconciliation finds
            // the copy kept beside its original.
            return;
        }
        std::optional<std::string> note = moved.note;
        if (moved.outcome->kind != ItemOutcome::Kind::movedToTrash) {
            note = texts::copyKeptBeside(copy);
        }
        record(journal_, item_.path, std::move(*moved.outcome), note);
    }

    CompressionJournal& journal_;
    const Trasher& trasher_;
    const Compressor::Options& options_;
    const PlannedCompression& item_;
    const Compressor::Progress& progress_;
    CompressionProgress& where_;
};

} // namespace

Compressor::Compressor(platform::DataFolder data, std::shared_ptr<const Trasher> trasher)
    : data_(std::move(data))
    , trasher_(trasher ? std::move(trasher) : std::make_shared<FileManagerTrasher>()) {}

std::expected<std::vector<CompressionReport>, std::string> Compressor::recover() const {
    auto held = ChangeLock::take(data_, waiting_);
    if (!held) {
        return std::unexpected(held.error().message());
    }
    return CompressionJournal::recoverInterrupted(journalDirectory());
}

std::optional<std::string> Compressor::check(const PlannedCompression& item,
                                             const CompressionPlan& plan) {
    bool inRoots = inside(item.path, item.root) &&
                   std::ranges::any_of(plan.roots, [&](const std::string& root) {
                       return inside(item.path, root);
                   });
    if (!inRoots) {
        return std::string(sentences::kOutsideRoots);
    }
    if (!PathRules::parentHasNoLinks(item.path)) {
        return std::string(sentences::kFolderReplaced);
    }
    auto now = FileSnapshot::read(item.path);
    if (!now) {
        return std::string(sentences::kGone);
    }
    if (now->isSymbolicLink) {
        return std::string(sentences::kReplacedWithLink);
    }
    if (!now->isRegularFile || !TrashMove::sameFile(*now, item.snapshot)) {
        return std::string(texts::kChangedSinceFound);
    }
    if (now->linkCount >= 2) {
        return std::string(texts::kHardLinked);
    }
    return std::nullopt;
}

std::expected<CompressionReport, std::string> Compressor::run(const CompressionPlan& plan,
                                                              const CancellationFlag& cancel,
                                                              const Progress& progress) const {
    auto held = ChangeLock::take(data_, waiting_);
    if (!held) {
        return std::unexpected(held.error().message());
    }
    // Copies a crash left half-written go first, so none is ever mistaken
    // for a file of the user's.
    (void)CompressionJournal::recoverInterrupted(journalDirectory());
    if (FileSnapshot::read(CompressionJournal::pathFor(plan.id, journalDirectory()))) {
        return std::unexpected(std::string(texts::kAlreadyRun));
    }
    auto created = CompressionJournal::create(plan, journalDirectory());
    if (!created) {
        return std::unexpected(texts::journalUnavailable(created.error().description));
    }
    std::optional<CompressionJournal> journal(std::move(*created));
    CompressionProgress where{.total = plan.items.size()};
    for (std::size_t i = 0; i < plan.items.size(); ++i) {
        const auto& item = plan.items[i];
        where = {.index = i, .total = plan.items.size()};
        if (progress) {
            progress(where);
        }
        if (cancel.isCancelled()) {
            record(*journal, item.path, ItemOutcome::skipped(std::string(texts::kCancelled)));
        } else if (auto reason = check(item, plan)) {
            record(*journal, item.path, ItemOutcome::skipped(std::move(*reason)));
        } else {
            ItemRun(*journal, *trasher_, options_, item, progress, where).run();
        }
        where.done = true;
        if (progress) {
            progress(where);
        }
    }
    (void)journal->write(Entry::ofFinished(Date::now()));
    std::string path = journal->path();
    journal.reset();
    auto report = CompressionJournal::report(path);
    if (!report) {
        return std::unexpected(texts::journalUnavailable(kNotReadBack));
    }
    return std::move(*report);
}

} // namespace brevant
