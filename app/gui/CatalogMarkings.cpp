#include "CatalogMarkings.hpp"

#include "app/gui/QtText.hpp"
#include "engine/platform/DataFolder.hpp"

#include <QDateTime>
#include <QLocale>

#include <cmath>

namespace brevant::gui {

namespace {

using Scope = CleanupSettings::Scope;

const CatalogKindTexts& textsOf(Scope scope) {
    return CatalogKindTexts::of(
        applicationOf(scope).value_or(CatalogSource::Application::lightroom));
}

} // namespace

std::optional<CatalogSource::Application> applicationOf(Scope scope) {
    return scope.catalog;
}

Scope scopeOf(CatalogSource::Application application) {
    return Scope::of(application);
}

Scope CatalogMarking::scope() const {
    return scopeOf(entry.application);
}

Uuid CatalogMarking::id() const {
    return entry.id;
}

Date CatalogMarking::date() const {
    return entry.date;
}

std::size_t CatalogMarking::count() const {
    return entry.count;
}

bool CatalogMarking::restored() const {
    return entry.restored;
}

std::string CatalogMarking::catalogPath() const {
    return entry.catalogPath;
}

std::string CatalogMarking::backupPath() const {
    return entry.backupPath;
}

CatalogMarkings::CatalogMarkings(const std::string& dataFolder)
    : dataFolder_(dataFolder) {}

std::expected<CatalogMarkOutcome, std::string>
CatalogMarkings::mark(Scope scope, const CleanupPlan& plan, const CleanupApproval& approval,
                      const std::string& catalog, Date now) const {
    auto application = applicationOf(scope).value_or(CatalogSource::Application::lightroom);
    auto marked = CatalogKinds(platform::DataFolder{dataFolder_})
                      .mark(application, plan, approval, catalog, now);
    if (!marked) {
        return std::unexpected(marked.error().text());
    }
    return std::move(*marked);
}

std::vector<CatalogMarking> CatalogMarkings::history() const {
    std::vector<CatalogMarking> markings;
    for (auto& entry : CatalogKinds(platform::DataFolder{dataFolder_}).history()) {
        markings.push_back({std::move(entry)});
    }
    return markings;
}

std::optional<std::string> CatalogMarkings::undo(const CatalogMarking& marking) const {
    auto undone = CatalogKinds(platform::DataFolder{dataFolder_}).undo(marking.id());
    if (!undone) {
        return undone.error().text();
    }
    return std::nullopt;
}

namespace catalog_texts {

QString application(Scope scope) {
    return qtText(textsOf(scope).name);
}

QString command(Scope scope) {
    return qtText(textsOf(scope).command);
}

QString verb(Scope scope) {
    return qtText(textsOf(scope).verb);
}

QString planned(Scope scope) {
    return qtText(textsOf(scope).planned);
}

QString marked(Scope scope, std::size_t count) {
    QString photos = countText(static_cast<std::int64_t>(count), "photo", "photos");
    return qtText(textsOf(scope).markedText(photos.toStdString()));
}

QString done(Scope scope, std::size_t count) {
    QString photos = countText(static_cast<std::int64_t>(count), "photo", "photos");
    return qtText(textsOf(scope).doneText(photos.toStdString()));
}

QString undoNote(Scope scope) {
    return qtText(textsOf(scope).undoNote);
}

QString undone(Scope scope) {
    return qtText(textsOf(scope).undone);
}

QString finishNote(Scope scope) {
    return qtText(textsOf(scope).finishNote);
}

QString untestedNotice(const CatalogSource::Facts& facts) {
    if (!facts.untested) {
        return {};
    }
    // Said before any photo is marked, so that marking's refusal is no
    // surprise.
    return qtText(
        CatalogKindTexts::of(facts.application).untestedText(facts.untestedVersion.value_or("")));
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
