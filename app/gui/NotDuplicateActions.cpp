#include "NotDuplicateActions.hpp"

#include "app/gui/QtText.hpp"
#include "engine/pipeline/DeclaredDifferences.hpp"

#include <QAction>

#include <utility>

namespace brevant::gui {

NotDuplicateActions::NotDuplicateActions(Declare declare, QObject* parent)
    : QObject(parent)
    , declare_(std::move(declare))
    , wholeGroup_(new QAction(tr("Not Duplicates: Every Copy Is a Different Photo"), this))
    , chosenCopy_(new QAction(tr("Not a Duplicate of the Others: This Copy"), this)) {
    connect(wholeGroup_, &QAction::triggered, this, [this] { declare_(wholeGroupDecisions()); });
    connect(chosenCopy_, &QAction::triggered, this, [this] { declare_(chosenCopyDecisions()); });
    setGroup(nullptr, -1);
}

void NotDuplicateActions::setGroup(const DuplicateGroup* group, int current) {
    paths_.clear();
    if (group != nullptr) {
        for (const auto& member : group->members) {
            paths_.push_back(member.path);
        }
    }
    current_ = current;
    bool identical = group != nullptr && group->kind == MatchKind::identical;
    offered_ = group != nullptr && group->kind != MatchKind::liveMovie;
    bool enabled = offered_ && !identical && paths_.size() >= 2;
    bool hasCopy = current_ >= 0 && current_ < static_cast<int>(paths_.size());
    wholeGroup_->setEnabled(enabled);
    chosenCopy_->setEnabled(enabled && hasCopy);
    QString why = identical ? qtText(DeclaredDifferences::kIdenticalNotDifferent)
                            : tr("Brevant will not put these pictures in one group again, in this "
                                 "scan or later ones.");
    wholeGroup_->setToolTip(why);
    chosenCopy_->setToolTip(why);
}

QList<QAction*> NotDuplicateActions::listed() const {
    if (!offered_) {
        return {};
    }
    if (paths_.size() <= 2) {
        return {wholeGroup_};
    }
    return {wholeGroup_, chosenCopy_};
}

NotDuplicateActions::Decisions NotDuplicateActions::wholeGroupDecisions() const {
    return {paths_};
}

NotDuplicateActions::Decisions NotDuplicateActions::chosenCopyDecisions() const {
    if (current_ < 0 || current_ >= static_cast<int>(paths_.size())) {
        return {};
    }
    // The others may still be copies of one another: one pair each.
    const std::string& chosen = paths_[static_cast<std::size_t>(current_)];
    Decisions decisions;
    for (const auto& path : paths_) {
        if (path != chosen) {
            decisions.push_back({chosen, path});
        }
    }
    return decisions;
}

} // namespace brevant::gui
