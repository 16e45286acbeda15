#pragma once

#include "app/gui/MemberTile.hpp"
#include "engine/scan/DuplicateGroup.hpp"

#include <QWidget>

#include <optional>
#include <vector>

class QDialog;
class QGridLayout;
class QLabel;
class QPushButton;
class QScrollArea;
class QStackedWidget;

namespace brevant::gui {

class DetailLoader;
class ElidedLabel;
class PictureView;
class SceneZoom;
class ThumbnailLoader;

// The copies of one group side by side as upright thumbnails, zoomed and
// panned in step by scene fraction. The flip shows two copies in one place,
// one after the other, so small differences show; a double click opens a
// larger view of one copy on the same zoom.
class CompareView : public QWidget {
    Q_OBJECT

public:
    explicit CompareView(ThumbnailLoader& thumbnails, QWidget* parent = nullptr);

    // Nothing shows the hint to choose a group. Zoom and flip start over.
    void showGroup(const std::optional<DuplicateGroup>& group);
    // One entry per member, in member order.
    void setFacts(const std::vector<MemberFacts>& facts);

    // The group shown, or null.
    [[nodiscard]] const DuplicateGroup* group() const { return hasGroup_ ? &group_ : nullptr; }

    [[nodiscard]] int count() const { return static_cast<int>(tiles_.size()); }

    [[nodiscard]] int current() const { return current_; }

    // The current copy, or null.
    [[nodiscard]] const PhotoAsset* currentAsset() const;
    [[nodiscard]] MemberTile* tile(int member) const;

    [[nodiscard]] SceneZoom* zoom() const { return zoom_; }

    // Zooms so that the shown copy's pixels are the screen's, one to one;
    // the visible part is decoded from the file at full resolution.
    void actualPixels();
    // The shown copy's zoom, "100 %".
    [[nodiscard]] QString zoomText() const;
    // The view of the copy shown now: the flip's, or the current tile's.
    [[nodiscard]] PictureView* shownView() const;

    [[nodiscard]] DetailLoader* details() const { return details_; }

    void setCurrent(int member);
    void nextMember();
    void previousMember();

    // A refused mark's sentence beside the copy; cleared by clearRefusals.
    void setRefusal(int member, const QString& text);
    void clearRefusals();

    // Flipping starts on the current copy and the one to compare it with
    // (the keeper, or the next copy when it is the keeper); each flip then
    // shows the other of the two in the same place.
    void flip();
    void sideBySide();

    [[nodiscard]] bool isFlipping() const;
    // The copy the flip shows now, or -1.
    [[nodiscard]] int flipShown() const;

    [[nodiscard]] PictureView* flipView() const { return flipView_; }

    // What the flip's caption says of the copy it shows, whole.
    [[nodiscard]] QString flipCaption() const;

    // The larger view of a copy; null until one was opened.
    void enlarge(int member);

    [[nodiscard]] QDialog* largeView() const { return large_; }

Q_SIGNALS:
    void currentChanged(int member);
    void markClicked(int member);
    void lockClicked(int member);
    void menuRequested(int member, const QPoint& global);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void clearTiles();
    void showFlip();
    void imageArrived(const QString& path);
    void updateImage(int member);
    void updateZoomText();
    // As many tiles to a row as give the pictures the most room.
    void arrangeTiles();
    [[nodiscard]] int keeper() const;

    ThumbnailLoader& thumbnails_;
    SceneZoom* zoom_;
    DetailLoader* details_;
    QLabel* zoomText_;
    // Empty (no members) when no group is shown.
    DuplicateGroup group_;
    bool hasGroup_ = false;
    std::vector<MemberFacts> facts_;
    std::vector<MemberTile*> tiles_;
    int current_ = -1;
    QLabel* heading_;
    QStackedWidget* pages_;
    QLabel* empty_;
    QScrollArea* scroll_;
    QWidget* row_;
    QGridLayout* rowLayout_;
    // Tiles to a row as last arranged; 0 before.
    int columns_ = 0;
    QWidget* flipPage_;
    ElidedLabel* flipCaption_;
    PictureView* flipView_;
    QPushButton* flipButton_;
    QPushButton* sideBySideButton_;
    // The two copies of a flip and which one shows.
    int flipA_ = -1;
    int flipB_ = -1;
    bool showingB_ = false;
    QDialog* large_ = nullptr;
    PictureView* largePicture_ = nullptr;
    QLabel* largeCaption_ = nullptr;
    int largeMember_ = -1;
};

} // namespace brevant::gui
