#pragma once

#include "engine/pipeline/DeclaredDifferences.hpp"
#include "engine/scan/DuplicateGroup.hpp"

#include <QList>
#include <QObject>

#include <functional>
#include <string>
#include <vector>

class QAction;

namespace brevant::gui {

// The review's "not duplicates" commands for the group shown: every copy of
// it is a different photo, or the chosen copy is a different photo from
// each of the others. Only similar groups and series have them; for
// identical copies they are there but disabled, saying why.
class NotDuplicateActions : public QObject {
    Q_OBJECT

public:
    using Decisions = DeclaredDifferences::Decisions;
    using Declare = std::function<void(Decisions)>;

    NotDuplicateActions(Declare declare, QObject* parent);

    // The group shown (null for none) and the chosen copy in it.
    void setGroup(const DuplicateGroup* group, int current);

    [[nodiscard]] QAction* wholeGroup() const { return wholeGroup_; }

    [[nodiscard]] QAction* chosenCopy() const { return chosenCopy_; }

    // What a menu of the group lists: nothing for a Live Photo, and the
    // chosen copy's command only when there are more than two copies.
    [[nodiscard]] QList<QAction*> listed() const;

    // The decisions each command records for the group set last.
    [[nodiscard]] Decisions wholeGroupDecisions() const;
    [[nodiscard]] Decisions chosenCopyDecisions() const;

private:
    Declare declare_;
    QAction* wholeGroup_;
    QAction* chosenCopy_;
    std::vector<std::string> paths_;
    int current_ = -1;
    bool offered_ = false;
};

} // namespace brevant::gui
