#include "CleanupText.hpp"

#include "app/cli/Terminal.hpp"
#include "engine/cleanup/JournalTexts.hpp"
#include "engine/cleanup/Restorer.hpp"
#include "engine/platform/LocalTime.hpp"
#include "engine/review/FolderPaths.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/PathText.hpp"

#include <cmath>
#include <fmt/format.h>
#include <set>

namespace brevant::cli::cleanup_text {

namespace {

using Json = nlohmann::ordered_json;

const char* plural(std::int64_t count, const char* one, const char* many) {
    return count == 1 ? one : many;
}

std::string pictures(std::int64_t count) {
    return fmt::format("{} {}", count, plural(count, "picture", "pictures"));
}

// Why a copy that is not the suggested keeper stays too.
std::string whyKept(const ReviewSession& session, const std::string& path) {
    auto refusal = session.refusal(path);
    if (!refusal) {
        return "not marked";
    }
    switch (refusal->kind) {
    case MarkRefusal::Kind::locked:
        return "locked";
    case MarkRefusal::Kind::protectedFolder:
        return fmt::format("in {}, a folder you protect",
                           folder_paths::lastComponent(refusal->detail));
    case MarkRefusal::Kind::fixed:
        return refusal->detail;
    case MarkRefusal::Kind::lastCopy:
    case MarkRefusal::Kind::notFound:
        break;
    }
    return "the last copy left";
}

// One group of the plan: its copies in member order, each kept or moved.
struct PlannedGroup {
    const DuplicateGroup* group = nullptr;
    std::optional<KeeperPolicy::Suggestion> suggestion;
    // Member paths moved by this group (a copy in two groups moves with the
    // first).
    std::set<std::string> moved;
};

std::vector<PlannedGroup> plannedGroups(const CleanupPlan& plan, const ReviewSession& session) {
    std::set<std::string> planned;
    for (const auto& removal : plan.removals) {
        planned.insert(removal.path);
    }
    std::vector<PlannedGroup> groups;
    for (const auto& group : session.groups()) {
        PlannedGroup entry{.group = &group, .suggestion = session.suggestion(group)};
        for (const auto& member : group.members) {
            if (planned.erase(member.path) > 0) {
                entry.moved.insert(member.path);
            }
        }
        if (!entry.moved.empty()) {
            groups.push_back(std::move(entry));
        }
    }
    return groups;
}

// Why the copy stays: the suggestion's reason for its keeper, else what
// keeps it from being marked.
std::string whyKept(const PlannedGroup& group, const ReviewSession& session,
                    const PhotoAsset& member) {
    if (group.suggestion && group.suggestion->keeperID == member.path) {
        return group.suggestion->reason;
    }
    return whyKept(session, member.path);
}

bool isKeeper(const PlannedGroup& group, const PhotoAsset& member) {
    return group.suggestion && group.suggestion->keeperID == member.path;
}

} // namespace

std::int64_t plannedBytes(const CleanupPlan& plan) {
    std::int64_t bytes = 0;
    for (const auto& removal : plan.removals) {
        bytes += removal.snapshot.size;
    }
    return bytes;
}

std::string plan(const CleanupPlan& plan, const ReviewSession& session, std::string_view home) {
    std::string text;
    for (const auto& entry : plannedGroups(plan, session)) {
        const DuplicateGroup& group = *entry.group;
        std::int64_t bytes = 0;
        for (const auto& member : group.members) {
            bytes += entry.moved.contains(member.path) ? member.size() : 0;
        }
        text += fmt::format("{}: {} copies, {} to move ({})\n", rawValue(group.kind),
                            group.members.size(), entry.moved.size(), humanBytes(bytes));
        // The suggested keeper first, then the other copies that stay, then
        // those that go.
        std::string kept;
        std::string moved;
        for (const auto& member : group.members) {
            std::string shown = shownPath(member.path, home);
            if (entry.moved.contains(member.path)) {
                moved += fmt::format("  move  {}  {}\n", shown, humanBytes(member.size()));
            } else {
                std::string line =
                    fmt::format("  keep  {}  ({})\n", shown, whyKept(entry, session, member));
                kept.insert(isKeeper(entry, member) ? 0 : kept.size(), line);
            }
        }
        text += kept + moved;
    }
    auto count = static_cast<std::int64_t>(plan.removals.size());
    text += fmt::format("\n{} to move to the Trash, {}\n", pictures(count),
                        humanBytes(plannedBytes(plan)));
    return text;
}

Json planJson(const CleanupPlan& plan, const ReviewSession& session) {
    Json groups = Json::array();
    for (const auto& entry : plannedGroups(plan, session)) {
        Json keep = Json::array();
        Json move = Json::array();
        for (const auto& member : entry.group->members) {
            Json copy{{"path", path_text::encode(member.path)}, {"size", member.size()}};
            if (MemberOrientation turned = entry.group->orientationOf(member.path);
                !turned.isUpright()) {
                copy["orientation"] = turned;
            }
            if (entry.moved.contains(member.path)) {
                move.push_back(std::move(copy));
                continue;
            }
            copy["reason"] = whyKept(entry, session, member);
            keep.push_back(std::move(copy));
        }
        groups.push_back({{"id", entry.group->id},
                          {"kind", rawValue(entry.group->kind)},
                          {"keep", std::move(keep)},
                          {"move", std::move(move)}});
    }
    return Json{{"id", plan.id.text()},
                {"groups", std::move(groups)},
                {"pictures", plan.removals.size()},
                {"bytes", plannedBytes(plan)}};
}

std::string question(const CleanupPlan& plan) {
    auto count = static_cast<std::int64_t>(plan.removals.size());
    return fmt::format("Move {} ({}) to the Trash? [y/N]", pictures(count),
                       humanBytes(plannedBytes(plan)));
}

std::string counts(const CleanupReport& report) {
    std::string text = fmt::format("{} moved, {} skipped, {} failed, {} unknown", report.moved(),
                                   report.skipped(), report.failed(), report.unknown());
    if (report.restored() > 0) {
        text += fmt::format(", {} put back", report.restored());
    }
    return text;
}

std::string report(const CleanupReport& report, std::string_view home) {
    std::string text(journal_texts::title(report));
    text += "\n";
    if (report.reconciled) {
        text += journal_texts::interruptedExplanation() + "\n";
    }
    if (report.running) {
        text += std::string(journal_texts::kRunning) + "\n";
    }
    if (report.damage) {
        text += *report.damage + "\n";
    }
    for (const auto& item : report.items) {
        const ItemOutcome& outcome = item.outcome;
        std::string shown = shownPath(item.removal.path, home);
        if (outcome.kind == ItemOutcome::Kind::movedToTrash) {
            text += fmt::format("  moved     {}\n", shown);
        } else if (outcome.kind == ItemOutcome::Kind::restored) {
            text += fmt::format("  put back  {}: at {}\n", shown, shownPath(outcome.text, home));
        } else {
            text += fmt::format("  {:<9} {}: {}\n", rawValue(outcome.kind), shown, outcome.text);
        }
        for (const auto& note : item.notes) {
            text += fmt::format("            {}\n", note);
        }
    }
    text += fmt::format("{}; {} in the Trash.\n", counts(report), humanBytes(report.freedBytes()));
    // As the window: the note is about pictures in the Trash.
    if (report.moved() > 0) {
        text += Restorer::generalNote() + "\n";
    }
    text += fmt::format("Journal: {}\n", shownPath(report.journalPath, home));
    return text;
}

Json reportJson(const CleanupReport& report) {
    return Json::parse(report.encoded());
}

std::string localDate(Date date) {
    auto local = platform::localTime(static_cast<std::int64_t>(std::floor(date.unixSeconds())));
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", local.year, local.month, local.day,
                       local.hour, local.minute);
}

std::string historyLine(const CleanupReport& report) {
    std::string line =
        fmt::format("{}  {}  {}: {}; {} in the Trash", localDate(report.started),
                    report.planID.text(), pictures(static_cast<std::int64_t>(report.items.size())),
                    counts(report), humanBytes(report.freedBytes()));
    if (report.running) {
        line += " (running now)";
    } else if (!report.finished) {
        line += " (unfinished)";
    }
    if (report.damage) {
        line += "\n    " + *report.damage;
    }
    return line;
}

Json historyJson(const CleanupReport& report) {
    Json entry{
        {"id", report.planID.text()},          {"started", iso_date::text(report.started)},
        {"pictures", report.items.size()},     {"moved", report.moved()},
        {"skipped", report.skipped()},         {"failed", report.failed()},
        {"unknown", report.unknown()},         {"restored", report.restored()},
        {"bytesInTrash", report.freedBytes()}, {"journal", path_text::encode(report.journalPath)}};
    entry["finished"] = report.finished ? Json(iso_date::text(*report.finished)) : Json(nullptr);
    entry["running"] = report.running;
    if (report.damage) {
        entry["damage"] = *report.damage;
    }
    return entry;
}

} // namespace brevant::cli::cleanup_text
