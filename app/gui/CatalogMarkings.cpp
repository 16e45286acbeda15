#include "CatalogMarkings.hpp"

#include "app/gui/QtText.hpp"
#include "engine/platform/DataFolder.hpp"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace brevant::gui {

namespace {

using Scope = CleanupSettings::Scope;

// The markers name their own folder inside the markings folder; the same
// names are kept for any data folder.
std::string recordFolder(const std::string& dataFolder, const std::string& defaultFolder) {
    return platform::DataFolder{dataFolder}.markings() + "/" +
           std::filesystem::path(defaultFolder).filename().string();
}

} // namespace

Scope CatalogMarking::scope() const {
    return std::holds_alternative<LightroomMarkRecord>(record) ? Scope::lightroom
                                                               : Scope::captureOne;
}

Uuid CatalogMarking::id() const {
    return std::visit([](const auto& one) { return one.id; }, record);
}

Date CatalogMarking::date() const {
    return std::visit([](const auto& one) { return one.date; }, record);
}

std::size_t CatalogMarking::count() const {
    return std::visit([](const auto& one) { return one.marked.size(); }, record);
}

bool CatalogMarking::restored() const {
    return std::visit([](const auto& one) { return one.restored; }, record);
}

std::string CatalogMarking::catalogPath() const {
    return std::visit([](const auto& one) { return one.catalogPath; }, record);
}

std::string CatalogMarking::backupPath() const {
    return std::visit([](const auto& one) { return one.backupPath; }, record);
}

CatalogMarkings::CatalogMarkings(const std::string& dataFolder)
    : dataFolder_(dataFolder)
    , rejecter_{recordFolder(dataFolder, LightroomRejecter::defaultRecordDirectory())}
    , marker_{recordFolder(dataFolder, CaptureOneMarker::defaultRecordDirectory())} {}

std::vector<CatalogMarking> CatalogMarkings::history() const {
    std::vector<CatalogMarking> markings;
    for (auto& record : rejecter_.history()) {
        markings.push_back({std::move(record)});
    }
    for (auto& record : marker_.history()) {
        markings.push_back({std::move(record)});
    }
    std::ranges::stable_sort(markings, std::ranges::greater(), [](const CatalogMarking& one) {
        return one.date().secondsSinceReferenceDate;
    });
    return markings;
}

std::expected<ChangeLock, std::string> CatalogMarkings::changeLock() const {
    auto held = ChangeLock::tryTake(platform::DataFolder{dataFolder_});
    if (!held) {
        return std::unexpected(held.error().message());
    }
    return std::move(*held);
}

std::optional<std::string> CatalogMarkings::undo(const CatalogMarking& marking) const {
    auto held = changeLock();
    if (!held) {
        return held.error();
    }
    if (const auto* lightroom = std::get_if<LightroomMarkRecord>(&marking.record)) {
        auto restored = rejecter_.restore(*lightroom);
        return restored ? std::nullopt : std::optional(restored.error().text());
    }
    auto restored = marker_.restore(std::get<CaptureOneMarkRecord>(marking.record));
    return restored ? std::nullopt : std::optional(restored.error().text());
}

namespace catalog_texts {

QString application(Scope scope) {
    return scope == Scope::captureOne ? QStringLiteral("Capture One")
                                      : QStringLiteral("Lightroom Classic");
}

QString command(Scope scope) {
    return scope == Scope::captureOne ? QStringLiteral("Tag Red in Capture One…")
                                      : QStringLiteral("Mark Rejected in Lightroom Classic…");
}

QString verb(Scope scope) {
    return scope == Scope::captureOne ? QStringLiteral("Tag Red") : QStringLiteral("Mark Rejected");
}

QString done(Scope scope, std::size_t count) {
    QString photos = countText(static_cast<std::int64_t>(count), "photo", "photos");
    return scope == Scope::captureOne ? QStringLiteral("%1 tagged Red").arg(photos)
                                      : QStringLiteral("%1 marked Rejected").arg(photos);
}

QString undoNote(Scope scope) {
    return qtText(scope == Scope::captureOne ? CaptureOneMarker::kUndoNote
                                             : LightroomRejecter::kUndoNote);
}

QString finishNote(Scope scope) {
    return qtText(scope == Scope::captureOne ? CaptureOneMarker::kFinishNote
                                             : LightroomRejecter::kFreedNothing);
}

QString untestedNotice(const CatalogSource::Facts& facts) {
    if (!facts.untested) {
        return {};
    }
    // Said before any photo is marked, so that marking's refusal is no
    // surprise.
    QString version = qtText(facts.untestedVersion.value_or(""));
    if (facts.application == CatalogSource::Application::captureOne) {
        return QStringLiteral("This Capture One version is new to Brevant (its catalog is version "
                              "%1): you can review its copies here, but Brevant tags nothing Red "
                              "in a catalog version it has not been tested with.")
            .arg(version);
    }
    return QStringLiteral("This Lightroom version is new to Brevant (its catalog is version %1): "
                          "you can review its copies here, but Brevant marks nothing Rejected in "
                          "a catalog version it has not been tested with.")
        .arg(version);
}

QString alreadyMarkedLine(const CatalogSource::Facts& facts) {
    if (facts.alreadyMarked.empty()) {
        return {};
    }
    return QStringLiteral("%1: %2")
        .arg(qtText(CatalogSource::alreadyMarkedHeading(facts.application)))
        .arg(facts.alreadyMarked.size());
}

QString dateText(Date date) {
    auto milliseconds = static_cast<qint64>(std::llround(date.unixSeconds() * 1000.0));
    return QLocale().toString(QDateTime::fromMSecsSinceEpoch(milliseconds).toLocalTime(),
                              QLocale::ShortFormat);
}

} // namespace catalog_texts

} // namespace brevant::gui
