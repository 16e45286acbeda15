#include "CompressionText.hpp"

#include "app/cli/CleanupText.hpp"
#include "app/cli/Terminal.hpp"
#include "engine/compression/CompressionTexts.hpp"
#include "engine/support/IsoDate.hpp"
#include "engine/support/PathNames.hpp"
#include "engine/support/PathText.hpp"

#include <fmt/format.h>

namespace brevant::cli::compression_text {

namespace {

using Json = nlohmann::ordered_json;
namespace texts = compression_texts;

std::string files(std::int64_t count) {
    return fmt::format("{} {}", count, count == 1 ? "file" : "files");
}

std::string title(const CompressionReport& report) {
    return std::string(report.reconciled ? texts::kInterruptedTitle : texts::kFinishedTitle);
}

} // namespace

std::string plan(const CompressionCandidates& found, std::string_view home) {
    std::string text;
    for (const auto& refused : found.refused) {
        text += fmt::format("Refused: {}: {}\n", shownPath(refused.path, home), refused.detail);
    }
    for (const auto& item : found.plan.items) {
        text += fmt::format("  {}  {} {}\u00d7{}, {}, saves about {}\n", shownPath(item.path, home),
                            item.format, item.width, item.height, humanBytes(item.snapshot.size),
                            humanBytes(item.estimatedSaving));
    }
    for (const auto& passed : found.passedOver) {
        text += fmt::format("  passed over  {}: {}\n", shownPath(passed.path, home), passed.reason);
    }
    text += fmt::format("{} ({}) to compress; expected saving about {}.\n",
                        files(static_cast<std::int64_t>(found.plan.items.size())),
                        humanBytes(found.plan.plannedBytes()),
                        humanBytes(found.plan.estimatedSaving()));
    return text;
}

Json planJson(const CompressionCandidates& found) {
    Json items = Json::array();
    for (const auto& item : found.plan.items) {
        items.push_back(item);
    }
    Json passed = Json::array();
    for (const auto& file : found.passedOver) {
        passed.push_back({{"path", path_text::encode(file.path)}, {"reason", file.reason}});
    }
    Json refused = Json::array();
    for (const auto& folder : found.refused) {
        refused.push_back({{"path", path_text::encode(folder.path)}, {"reason", folder.detail}});
    }
    return {
        {"id", found.plan.id.text()},         {"items", std::move(items)},
        {"passedOver", std::move(passed)},    {"refused", std::move(refused)},
        {"bytes", found.plan.plannedBytes()}, {"estimatedSaving", found.plan.estimatedSaving()}};
}

std::string question(const CompressionPlan& plan) {
    return fmt::format("Write smaller copies of {} and move the originals ({}) to the Trash? [y/N]",
                       files(static_cast<std::int64_t>(plan.items.size())),
                       humanBytes(plan.plannedBytes()));
}

std::string counts(const CompressionReport& report) {
    std::string text =
        fmt::format("{} compressed, {} refused or passed over, {} unknown", report.compressed(),
                    report.refused(), report.count(ItemOutcome::Kind::unknown));
    if (report.restored() > 0) {
        text += fmt::format(", {} put back", report.restored());
    }
    return text;
}

std::string report(const CompressionReport& report, std::string_view home) {
    std::string text = title(report) + "\n";
    if (report.reconciled) {
        text += texts::interruptedExplanation() + "\n";
    }
    for (const auto& item : report.items) {
        std::string shown = shownPath(item.item.path, home);
        const auto& outcome = item.outcome;
        switch (outcome.kind) {
        case ItemOutcome::Kind::movedToTrash:
            text += fmt::format("  compressed  {} \u2192 {} ({} \u2192 {})\n", shown,
                                PathNames::lastComponent(item.copyPath.value_or("")),
                                humanBytes(item.item.snapshot.size), humanBytes(item.copyBytes));
            break;
        case ItemOutcome::Kind::restored:
            text += fmt::format("  put back    {}: at {}\n", shown, shownPath(outcome.text, home));
            break;
        case ItemOutcome::Kind::failed:
            text += fmt::format("  refused     {}: {}\n", shown, outcome.text);
            break;
        case ItemOutcome::Kind::skipped:
            text += fmt::format("  passed over {}: {}\n", shown, outcome.text);
            break;
        case ItemOutcome::Kind::unknown:
            text += fmt::format("  unknown     {}: {}\n", shown, outcome.text);
            break;
        }
        for (const auto& note : item.notes) {
            text += fmt::format("              {}\n", note);
        }
    }
    text += fmt::format("{}; {} freed when the Trash is emptied.\n", counts(report),
                        humanBytes(report.freedBytes()));
    text += fmt::format("Journal: {}\n", shownPath(report.journalPath, home));
    return text;
}

Json reportJson(const CompressionReport& report) {
    Json j = report;
    return j;
}

std::string historyLine(const CompressionReport& report) {
    std::string line = fmt::format("{}  {}  compression of {}: {}; {} freed",
                                   cleanup_text::localDate(report.started), report.planID.text(),
                                   files(static_cast<std::int64_t>(report.items.size())),
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

Json historyJson(const CompressionReport& report) {
    Json entry{
        {"id", report.planID.text()},        {"started", iso_date::text(report.started)},
        {"files", report.items.size()},      {"compressed", report.compressed()},
        {"refused", report.refused()},       {"restored", report.restored()},
        {"freedBytes", report.freedBytes()}, {"journal", path_text::encode(report.journalPath)}};
    entry["finished"] = report.finished ? Json(iso_date::text(*report.finished)) : Json(nullptr);
    entry["running"] = report.running;
    return entry;
}

} // namespace brevant::cli::compression_text
