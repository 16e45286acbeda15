#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QListWidget;
class QToolButton;
class QVBoxLayout;

namespace brevant::gui {

// Reasons why files or folders were left out of a scan, each with its title,
// count and explanation, opening to the paths. Paths are listed only when a
// reason is opened: a scan may skip thousands.
class LeftOutList : public QWidget {
    Q_OBJECT

public:
    struct Reason {
        QString title;
        QString explanation;
        int count = 0;
        // One line per file or folder, made when the reason is opened.
        std::function<QStringList()> lines;
    };

    explicit LeftOutList(QWidget* parent = nullptr);

    void setReasons(std::vector<Reason> reasons);

    [[nodiscard]] int count() const { return static_cast<int>(sections_.size()); }

    [[nodiscard]] QString title(int index) const;
    [[nodiscard]] QString explanation(int index) const;
    void setOpen(int index, bool open);
    [[nodiscard]] bool isOpen(int index) const;
    // The lines shown under an open reason.
    [[nodiscard]] QStringList shownLines(int index) const;

private:
    struct Section {
        Reason reason;
        QWidget* box = nullptr;
        QToolButton* header = nullptr;
        QLabel* explanation = nullptr;
        QListWidget* lines = nullptr;
        bool filled = false;
    };

    QVBoxLayout* layout_;
    std::vector<Section> sections_;
};

} // namespace brevant::gui
