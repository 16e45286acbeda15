#pragma once

#include "engine/scan/PhotoAsset.hpp"

#include <QFrame>
#include <QImage>

#include <optional>

class QLabel;
class QPushButton;

namespace brevant::gui {

class ElidedLabel;
class PictureView;
class SceneZoom;

// What the review knows of one copy beyond its file.
struct MemberFacts {
    bool isKeeper = false;
    QString keeperReason;
    bool isMarked = false;
    bool isLocked = false;
    QString hint;
    std::optional<int> qualityScore;
    QString faceNote;
    // Against the group's first member: "turned 90°", "mirrored"; empty
    // when upright.
    QString orientation;
};

// One copy in the compare view: its picture on the shared zoom, the keeper
// badge with its reason, its name, folder, size, pixels and date, the
// hints, its mark or lock, and the sentence of a refused mark beside it.
class MemberTile : public QFrame {
    Q_OBJECT

public:
    MemberTile(const PhotoAsset& asset, SceneZoom* zoom, QWidget* parent = nullptr);

    [[nodiscard]] const PhotoAsset& asset() const { return asset_; }

    [[nodiscard]] PictureView* view() const { return view_; }

    [[nodiscard]] QPushButton* markButton() const { return mark_; }

    [[nodiscard]] QPushButton* lockButton() const { return lock_; }

    void setFacts(const MemberFacts& facts);
    void setImage(const QImage& image, bool failed);
    void setSelected(bool selected);
    // Empty hides it.
    void setRefusal(const QString& text);
    [[nodiscard]] QString refusal() const;
    [[nodiscard]] QString badge() const;
    // The folder line, whole, and its tooltip (the copy's path).
    [[nodiscard]] QString folderText() const;
    [[nodiscard]] QString folderToolTip() const;

Q_SIGNALS:
    void chosen();
    void markClicked();
    void lockClicked();
    void enlarge();
    void menuRequested(const QPoint& global);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    PhotoAsset asset_;
    PictureView* view_;
    QLabel* badge_;
    QLabel* reason_;
    QFrame* refusal_;
    ElidedLabel* name_;
    ElidedLabel* folder_;
    QLabel* facts_;
    QLabel* quality_;
    QPushButton* mark_;
    QPushButton* lock_;
};

} // namespace brevant::gui
