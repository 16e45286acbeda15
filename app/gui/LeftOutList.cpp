#include "LeftOutList.hpp"

#include "app/gui/QtText.hpp"
#include "app/gui/ScreenParts.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace brevant::gui {

namespace {

// Lines shown before the list scrolls.
constexpr int kVisibleLines = 8;

void fitHeight(QListWidget* list) {
    int rows = std::min(list->count(), kVisibleLines);
    int row = list->count() > 0 ? list->sizeHintForRow(0) : 0;
    list->setFixedHeight(rows * row + 2 * list->frameWidth() + 8);
}

} // namespace

LeftOutList::LeftOutList(QWidget* parent)
    : QWidget(parent)
    , layout_(new QVBoxLayout(this)) {
    layout_->setContentsMargins(0, 0, 0, 0);
    layout_->setSpacing(6);
}

void LeftOutList::setReasons(std::vector<Reason> reasons) {
    for (auto& section : sections_) {
        delete section.box;
    }
    sections_.clear();
    sections_.reserve(reasons.size());
    for (auto& reason : reasons) {
        Section section;
        section.box = new QWidget(this);
        auto* box = new QVBoxLayout(section.box);
        box->setContentsMargins(0, 0, 0, 0);
        box->setSpacing(2);

        section.header = new QToolButton(section.box);
        section.header->setText(
            QStringLiteral("%1 (%2)").arg(reason.title, countText(reason.count, "item", "items")));
        section.header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        section.header->setArrowType(Qt::RightArrow);
        section.header->setCheckable(true);
        section.header->setAutoRaise(true);
        section.header->setProperty("role", "disclosure");
        section.explanation = parts::label(reason.explanation, "muted", section.box);
        section.explanation->setWordWrap(true);
        section.explanation->setContentsMargins(24, 0, 0, 0);
        section.lines = new QListWidget(section.box);
        section.lines->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        section.lines->hide();
        box->addWidget(section.header);
        box->addWidget(section.explanation);
        auto* indented = new QHBoxLayout;
        indented->setContentsMargins(24, 2, 0, 4);
        indented->addWidget(section.lines);
        box->addLayout(indented);
        layout_->addWidget(section.box);

        int index = static_cast<int>(sections_.size());
        connect(section.header, &QToolButton::toggled, this,
                [this, index](bool open) { setOpen(index, open); });
        section.reason = std::move(reason);
        sections_.push_back(std::move(section));
    }
}

QString LeftOutList::title(int index) const {
    return sections_.at(index).reason.title;
}

QString LeftOutList::explanation(int index) const {
    return sections_.at(index).reason.explanation;
}

void LeftOutList::setOpen(int index, bool open) {
    Section& section = sections_.at(index);
    if (open && !section.filled) {
        section.filled = true;
        if (section.reason.lines) {
            section.lines->addItems(section.reason.lines());
        }
        fitHeight(section.lines);
    }
    if (section.header->isChecked() != open) {
        section.header->setChecked(open);
    }
    section.header->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
    section.lines->setVisible(open);
}

bool LeftOutList::isOpen(int index) const {
    return !sections_.at(index).lines->isHidden();
}

QStringList LeftOutList::shownLines(int index) const {
    QStringList lines;
    const Section& section = sections_.at(index);
    if (section.lines->isHidden()) {
        return lines;
    }
    for (int row = 0; row < section.lines->count(); ++row) {
        lines.push_back(section.lines->item(row)->text());
    }
    return lines;
}

} // namespace brevant::gui
