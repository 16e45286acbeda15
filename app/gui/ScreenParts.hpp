#pragma once

#include <QString>

class QBoxLayout;
class QFrame;
class QLabel;
class QPushButton;
class QWidget;

namespace brevant::gui {

// The building blocks every screen is laid out with. Their look comes from
// the skin's style sheet through the "role" property.
namespace parts {

// A label styled by role: "title", "section", "figure", "stage", "muted" or
// none; wrapped when it is a sentence.
QLabel* label(const QString& text, const char* role, QWidget* parent);

// A framed panel with its own padded vertical layout.
QFrame* card(QWidget* parent);

// A coloured panel holding one sentence.
QFrame* notice(const QString& text, QWidget* parent);

// The thin rule some skins draw under a screen's title.
QFrame* titleRule(QWidget* parent);

// The one button of a screen that moves the user on.
QPushButton* accentButton(const QString& text, QWidget* parent);

// The label inside a notice made by `notice`.
QLabel* noticeLabel(QFrame* notice);

} // namespace parts

} // namespace brevant::gui
