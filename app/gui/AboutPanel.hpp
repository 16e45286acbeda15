#pragma once

#include <QDialog>

namespace brevant::gui {

// Help > About Brevant: the version, the licence, and what Brevant promises
// about the user's data.
class AboutPanel : public QDialog {
    Q_OBJECT

public:
    explicit AboutPanel(QWidget* parent = nullptr);

    // Everything the panel says, one paragraph a line.
    [[nodiscard]] QString text() const;
};

} // namespace brevant::gui
