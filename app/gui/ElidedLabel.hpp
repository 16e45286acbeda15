#pragma once

#include <QLabel>
#include <QString>

namespace brevant::gui {

// One line that loses its middle rather than its end when it does not fit,
// where paths differ least; the whole text is kept for a tooltip and tests.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text = {}, QWidget* parent = nullptr);

    void setFullText(const QString& text);

    [[nodiscard]] const QString& fullText() const { return full_; }

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void elide();

    QString full_;
};

} // namespace brevant::gui
