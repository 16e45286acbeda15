#include "ElidedLabel.hpp"

#include <QResizeEvent>

namespace brevant::gui {

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(parent) {
    setWordWrap(false);
    // It takes the width it is given instead of asking for its text's.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
    full_ = text;
    elide();
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::elide() {
    int room = contentsRect().width();
    setText(room > 0 ? fontMetrics().elidedText(full_, Qt::ElideMiddle, room) : full_);
}

} // namespace brevant::gui
