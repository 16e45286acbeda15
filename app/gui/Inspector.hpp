#pragma once

#include "engine/scan/PhotoAsset.hpp"

#include <QWidget>

#include <map>
#include <optional>

class QFormLayout;
class QLabel;
class QPushButton;

namespace brevant::gui {

// Everything known about the copy chosen in the compare view: where it is
// (with a way to open its folder in the file manager), on which volume,
// its size, pixels, dates and format, why it must stay or why it is the
// suggested keeper, the hints and scores with what they mean, and the other
// names it has on disk.
class Inspector : public QWidget {
    Q_OBJECT

public:
    // What the review adds to the file's own facts.
    struct Facts {
        bool isKeeper = false;
        // The keeper's name and the reason of the rule that chose it.
        QString keeperName;
        QString keeperReason;
        QString hint;
        std::optional<int> qualityScore;
        QString faceNote;
        // Against the group's first member; empty when upright.
        QString orientation;
        // From the picture's EXIF data, once decoded.
        QString captureDate;
    };

    explicit Inspector(QWidget* parent = nullptr);

    // Null empties it.
    void showAsset(const PhotoAsset* asset, const Facts& facts);

    // The value shown beside a field's name ("Path", "Volume"...), or ""
    // when the field is hidden.
    [[nodiscard]] QString field(const QString& name) const;

    [[nodiscard]] QPushButton* openFolderButton() const { return openFolder_; }

Q_SIGNALS:
    // The folder to open in the file manager.
    void openFolderRequested(const QString& folder);

private:
    void set(const QString& name, const QString& value);

    QFormLayout* form_;
    std::map<QString, std::pair<QLabel*, QLabel*>> fields_;
    QPushButton* openFolder_;
    QString folder_;
};

} // namespace brevant::gui
