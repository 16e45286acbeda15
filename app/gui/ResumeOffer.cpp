#include "ResumeOffer.hpp"

#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"
#include "engine/platform/LocaleDate.hpp"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QVBoxLayout>

#include <cmath>
#include <cstdint>

namespace brevant::gui {

namespace {

QString modeWords(const ScanMode& mode) {
    switch (mode.kind) {
    case ScanMode::Kind::identical:
        return QStringLiteral("identical copies");
    case ScanMode::Kind::similar:
        return QStringLiteral("similar versions (%1)").arg(qtText(displayName(mode.preset)));
    case ScanMode::Kind::series:
        return QStringLiteral("series");
    case ScanMode::Kind::livePhotos:
        return QStringLiteral("Live Photo movies");
    }
    return {};
}

QString folderNames(const std::vector<std::string>& folders) {
    QStringList names;
    for (const auto& folder : folders) {
        QString name = QFileInfo(qtText(folder)).fileName();
        names << (name.isEmpty() ? qtText(folder) : name);
    }
    return names.join(QStringLiteral(", "));
}

} // namespace

ResumeOffer::ResumeOffer(PhotoCleanupModel& model, QWidget* parent)
    : QFrame(parent)
    , model_(model) {
    setObjectName(QStringLiteral("resumeOffer"));
    // One line across the screen, above the choices: the first thing seen,
    // without pushing the choices off the first window size.
    QFrame* card = parts::card(this);
    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    row->addWidget(parts::label(tr("Resume your last review"), "section", card));
    detail_ = parts::label({}, "muted", card);
    detail_->setWordWrap(true);
    row->addWidget(detail_, 1);
    resume_ = new QPushButton(tr("Resume Review"), card);
    resume_->setObjectName(QStringLiteral("resumeButton"));
    resume_->setToolTip(tr("Scan these folders again and take back your marks on the copies "
                           "that have not changed since"));
    row->addWidget(resume_);
    static_cast<QVBoxLayout*>(card->layout())->addLayout(row);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(card);

    connect(resume_, &QPushButton::clicked, this,
            [this] { static_cast<void>(model_.resumeLastReview()); });
    connect(&model_, &PhotoCleanupModel::lastReviewChanged, this, &ResumeOffer::showReview);
    showReview();
}

QString ResumeOffer::detailText() const {
    return detail_->text();
}

void ResumeOffer::showReview() {
    const auto& review = model_.lastReview();
    setVisible(review.has_value());
    if (!review) {
        detail_->clear();
        return;
    }
    // Dated as every other date in the window.
    auto when = static_cast<std::int64_t>(std::floor(review->saved.unixSeconds()));
    detail_->setText(tr("%1: %2, saved %3")
                         .arg(folderNames(review->folders), modeWords(review->mode),
                              qtText(platform::shortDateTime(when))));
    QStringList paths;
    for (const auto& folder : review->folders) {
        paths << qtText(folder);
    }
    detail_->setToolTip(paths.join(QLatin1Char('\n')));
}

} // namespace brevant::gui
