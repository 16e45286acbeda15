#include "Inspector.hpp"

#include "app/gui/QtText.hpp"
#include "app/gui/ReviewTexts.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/catalogs/CatalogKindTexts.hpp"
#include "engine/platform/LocaleDate.hpp"
#include "engine/scan/PhotoFormat.hpp"
#include "engine/scan/Relationship.hpp"
#include "engine/similarity/FaceCheck.hpp"
#include "engine/similarity/QualityScore.hpp"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace brevant::gui {

namespace {

// In the order they are listed.
const char* const kFields[] = {
    "Name",         "Path",     "Volume",  "Size",          "Pixels",      "Orientation",
    "Taken",        "Modified", "Format",  "Relationships", "Always kept", "Keeper",
    "Catalog work", "Hints",    "Quality", "Faces",         "Other names",
};

QString volumeText(const PhotoAsset& asset) {
    QString name = qtText(asset.volumeName.get().value_or(std::string()));
    QStringList notes;
    if (asset.isExternalVolume) {
        notes << QObject::tr("external");
    }
    if (asset.isReadOnlyVolume) {
        notes << QObject::tr("read-only");
    }
    if (notes.isEmpty()) {
        return name;
    }
    QString joined = notes.join(QStringLiteral(", "));
    return name.isEmpty() ? joined : QStringLiteral("%1 (%2)").arg(name, joined);
}

QString relationshipText(const PhotoAsset& asset) {
    QStringList words;
    for (Relationship relationship : asset.relationships) {
        words << qtText(rawValue(relationship));
    }
    return words.join(QStringLiteral(", "));
}

QString workText(const PhotoAsset& asset) {
    QStringList lines;
    if (asset.catalog) {
        if (std::string work = asset.catalog->workSummary(); !work.empty()) {
            const auto& texts = CatalogKindTexts::of(asset.catalog->application());
            lines << QObject::tr("%1: %2").arg(qtText(texts.name), qtText(work));
        }
    }
    return lines.join(QLatin1Char('\n'));
}

QString otherNamesText(const PhotoAsset& asset) {
    QStringList names;
    for (const auto& name : asset.otherNames) {
        names << qtText(name);
    }
    if (names.isEmpty() && asset.snapshot.linkCount > 1) {
        return QObject::tr("%1 other names on disk").arg(asset.snapshot.linkCount - 1);
    }
    return names.join(QLatin1Char('\n'));
}

} // namespace

Inspector::Inspector(QWidget* parent)
    : QWidget(parent)
    , form_(new QFormLayout)
    , openFolder_(new QPushButton(QLatin1String(texts::kOpenFolder), this)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 0, 0, 0);
    column->addWidget(parts::label(tr("Inspector"), "section", this));
    form_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form_->setRowWrapPolicy(QFormLayout::WrapLongRows);
    for (const char* name : kFields) {
        auto* caption = parts::label(tr(name), "muted", this);
        auto* value = parts::label({}, nullptr, this);
        value->setWordWrap(true);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form_->addRow(caption, value);
        fields_[QString::fromLatin1(name)] = {caption, value};
    }
    column->addLayout(form_);
    column->addWidget(openFolder_, 0, Qt::AlignLeft);
    column->addStretch(1);
    connect(openFolder_, &QPushButton::clicked, this,
            [this] { Q_EMIT openFolderRequested(folder_); });
    showAsset(nullptr, {});
}

void Inspector::set(const QString& name, const QString& value) {
    auto [caption, shown] = fields_.at(name);
    shown->setText(value);
    caption->setVisible(!value.isEmpty());
    shown->setVisible(!value.isEmpty());
}

void Inspector::showAsset(const PhotoAsset* asset, const Facts& facts) {
    openFolder_->setVisible(asset != nullptr && !asset->library);
    if (asset == nullptr) {
        for (const char* name : kFields) {
            set(QString::fromLatin1(name), {});
        }
        folder_.clear();
        return;
    }
    folder_ = qtText(asset->folder());
    set(QStringLiteral("Name"), qtText(asset->name()));
    set(QStringLiteral("Path"), qtText(asset->path));
    set(QStringLiteral("Volume"), volumeText(*asset));
    set(QStringLiteral("Size"), byteText(asset->size()));
    set(QStringLiteral("Pixels"),
        asset->pixelWidth && asset->pixelHeight
            ? QStringLiteral("%1 × %2").arg(*asset->pixelWidth).arg(*asset->pixelHeight)
            : QString());
    set(QStringLiteral("Orientation"), facts.orientation);
    set(QStringLiteral("Taken"), facts.captureDate);
    set(QStringLiteral("Modified"),
        qtText(platform::shortDateTime(asset->snapshot.modifiedSeconds)));
    set(QStringLiteral("Format"), qtText(displayName(asset->format)));
    set(QStringLiteral("Relationships"), relationshipText(*asset));
    set(QStringLiteral("Always kept"), qtText(asset->fixedKeepReason().value_or(std::string())));
    QString keeper;
    if (!facts.keeperReason.isEmpty()) {
        keeper = facts.isKeeper
                     ? tr("Suggested to keep: %1.").arg(facts.keeperReason)
                     : tr("%1 is suggested to keep: %2.").arg(facts.keeperName, facts.keeperReason);
    }
    set(QStringLiteral("Keeper"), keeper);
    set(QStringLiteral("Catalog work"), workText(*asset));
    set(QStringLiteral("Hints"), facts.hint);
    set(QStringLiteral("Quality"), facts.qualityScore
                                       ? QStringLiteral("%1\n%2")
                                             .arg(*facts.qualityScore)
                                             .arg(qtText(QualityScore::explanation()))
                                       : QString());
    set(QStringLiteral("Faces"),
        facts.faceNote.isEmpty()
            ? QString()
            : QStringLiteral("%1\n%2").arg(facts.faceNote, qtText(FaceCheck::explanation())));
    set(QStringLiteral("Other names"), otherNamesText(*asset));
}

QString Inspector::field(const QString& name) const {
    auto found = fields_.find(name);
    if (found == fields_.end() || found->second.second->isHidden()) {
        return {};
    }
    return found->second.second->text();
}

} // namespace brevant::gui
