#include "ScreenParts.hpp"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace brevant::gui::parts {

QLabel* label(const QString& text, const char* role, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    if (role != nullptr) {
        label->setProperty("role", role);
    }
    label->setWordWrap(text.size() > 40);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QFrame* card(QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setProperty("role", "card");
    frame->setFrameShape(QFrame::StyledPanel);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setSpacing(8);
    return frame;
}

QFrame* notice(const QString& text, QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setProperty("role", "notice");
    auto* layout = new QHBoxLayout(frame);
    layout->setContentsMargins(12, 8, 12, 8);
    auto* sentence = new QLabel(text, frame);
    sentence->setObjectName(QStringLiteral("noticeText"));
    sentence->setWordWrap(true);
    sentence->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(sentence, 1);
    return frame;
}

QLabel* noticeLabel(QFrame* notice) {
    return notice->findChild<QLabel*>(QStringLiteral("noticeText"));
}

QFrame* titleRule(QWidget* parent) {
    auto* rule = new QFrame(parent);
    rule->setProperty("role", "titleRule");
    rule->setFixedHeight(0);
    rule->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return rule;
}

QPushButton* accentButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setProperty("accent", true);
    button->setDefault(true);
    return button;
}

} // namespace brevant::gui::parts
