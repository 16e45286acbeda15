#pragma once

#include <QColor>
#include <QObject>
#include <QPalette>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

class QDBusVariant;

namespace brevant::gui {

// Light or dark, as the desktop prefers.
enum class ColorScheme {
    light,
    dark,
};

// One look of the window: a palette and a style sheet, both read from the
// program's resources.
struct Skin {
    QString name;
    QString title;
    bool dark = false;
    QPalette palette;
    // The named colours the style sheet uses besides the palette's.
    std::map<QString, QColor> colors;
    QString styleSheet;
};

// A colour drawn on another, as a pair whose contrast must stay readable.
struct ColorPair {
    QString what;
    QColor foreground;
    QColor background;
};

// The five looks, switchable at run time. "classic" follows the desktop's
// light or dark preference, also when the desktop changes it.
class Skins : public QObject {
    Q_OBJECT

public:
    static constexpr const char* kDefault = "classic";

    explicit Skins(QObject* parent = nullptr);

    // "classic", "nightfall", "hibernia", "sunset", "dusk".
    [[nodiscard]] static const QStringList& names();
    [[nodiscard]] static QString title(const QString& name);

    // The skin from the resources; classic in the given scheme. Nothing for
    // an unknown name.
    [[nodiscard]] static std::optional<Skin> load(const QString& name, ColorScheme scheme);

    // Every text colour with the background it is drawn on.
    [[nodiscard]] static std::vector<ColorPair> textPairs(const Skin& skin);

    // WCAG 2 contrast ratio of two colours, from 1 to 21.
    [[nodiscard]] static double contrastRatio(const QColor& a, const QColor& b);

    // The desktop's preference: the freedesktop settings portal when it
    // answers, else the lightness of the platform's own palette.
    [[nodiscard]] static ColorScheme desktopScheme();

    // Applies the skin to the application; an unknown name gives classic.
    void apply(const QString& name);

    [[nodiscard]] const QString& current() const { return current_; }

    [[nodiscard]] ColorScheme scheme() const { return scheme_; }

Q_SIGNALS:
    void applied(const QString& name);

private Q_SLOTS:
    void portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    QString current_;
    ColorScheme scheme_ = ColorScheme::light;
};

} // namespace brevant::gui
