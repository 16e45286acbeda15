#include "Skins.hpp"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStyleFactory>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

// The resources are compiled into a static library, whose initialiser the
// linker would otherwise leave out; they are registered once.
static void initResources() {
    static const bool registered = [] {
        Q_INIT_RESOURCE(brevant);
        return true;
    }();
    (void)registered;
}

namespace brevant::gui {

namespace {

constexpr const char* kPortalService = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kPortalInterface = "org.freedesktop.portal.Settings";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kColorScheme = "color-scheme";
// The portal answers at once or not at all; start-up must not wait longer.
constexpr int kPortalTimeoutMs = 300;

struct RoleName {
    const char* name;
    QPalette::ColorRole role;
};

constexpr std::array kRoles{
    RoleName{"window", QPalette::Window},
    RoleName{"windowText", QPalette::WindowText},
    RoleName{"base", QPalette::Base},
    RoleName{"alternateBase", QPalette::AlternateBase},
    RoleName{"text", QPalette::Text},
    RoleName{"button", QPalette::Button},
    RoleName{"buttonText", QPalette::ButtonText},
    RoleName{"brightText", QPalette::BrightText},
    RoleName{"highlight", QPalette::Highlight},
    RoleName{"highlightedText", QPalette::HighlightedText},
    RoleName{"toolTipBase", QPalette::ToolTipBase},
    RoleName{"toolTipText", QPalette::ToolTipText},
    RoleName{"placeholderText", QPalette::PlaceholderText},
    RoleName{"link", QPalette::Link},
    RoleName{"linkVisited", QPalette::LinkVisited},
    RoleName{"light", QPalette::Light},
    RoleName{"midlight", QPalette::Midlight},
    RoleName{"mid", QPalette::Mid},
    RoleName{"dark", QPalette::Dark},
    RoleName{"shadow", QPalette::Shadow},
};

// Text roles that take the dimmed colour when their widget is disabled.
constexpr std::array kTextRoles{QPalette::WindowText, QPalette::Text, QPalette::ButtonText};

QString readResource(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll());
}

QString resourceName(const QString& name, ColorScheme scheme) {
    if (name != Skins::kDefault) {
        return name;
    }
    return scheme == ColorScheme::dark ? QStringLiteral("classic-dark")
                                       : QStringLiteral("classic-light");
}

QPalette paletteFrom(const QJsonObject& colors) {
    QPalette palette;
    for (const auto& [name, role] : kRoles) {
        QColor color(colors.value(QLatin1String(name)).toString());
        if (color.isValid()) {
            palette.setColor(QPalette::All, role, color);
        }
    }
    QColor disabled(colors.value(QStringLiteral("disabledText")).toString());
    if (disabled.isValid()) {
        for (auto role : kTextRoles) {
            palette.setColor(QPalette::Disabled, role, disabled);
        }
    }
    return palette;
}

// Fills each @{name} of the style sheet with the skin's colour of that name.
QString filled(QString sheet, const std::map<QString, QColor>& colors) {
    for (const auto& [name, color] : colors) {
        sheet.replace(QStringLiteral("@{%1}").arg(name), color.name());
    }
    return sheet;
}

double channel(double value) {
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    QColor rgb = color.toRgb();
    return 0.2126 * channel(rgb.redF()) + 0.7152 * channel(rgb.greenF()) +
           0.0722 * channel(rgb.blueF());
}

// The portal's answer: 1 prefers dark, 2 prefers light, 0 has no preference.
std::optional<ColorScheme> schemeFromPortal(QVariant value) {
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = qvariant_cast<QDBusVariant>(value).variant();
    }
    bool ok = false;
    uint preference = value.toUInt(&ok);
    if (!ok) {
        return std::nullopt;
    }
    if (preference == 1) {
        return ColorScheme::dark;
    }
    if (preference == 2) {
        return ColorScheme::light;
    }
    return std::nullopt;
}

std::optional<ColorScheme> askPortal() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return std::nullopt;
    }
    QDBusMessage call =
        QDBusMessage::createMethodCall(QLatin1String(kPortalService), QLatin1String(kPortalPath),
                                       QLatin1String(kPortalInterface), QStringLiteral("Read"));
    call << QLatin1String(kAppearance) << QLatin1String(kColorScheme);
    QDBusMessage reply = bus.call(call, QDBus::Block, kPortalTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return std::nullopt;
    }
    return schemeFromPortal(reply.arguments().front());
}

// The platform palette as it was before any skin replaced it.
ColorScheme platformScheme() {
    static const ColorScheme scheme =
        QApplication::palette().color(QPalette::Window).lightness() < 128 ? ColorScheme::dark
                                                                          : ColorScheme::light;
    return scheme;
}

} // namespace

Skins::Skins(QObject* parent)
    : QObject(parent) {
    initResources();
    (void)platformScheme();
    // One style under every skin, so a palette looks the same everywhere.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QDBusConnection::sessionBus().connect(
        QLatin1String(kPortalService), QLatin1String(kPortalPath), QLatin1String(kPortalInterface),
        QStringLiteral("SettingChanged"), this,
        SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
}

const QStringList& Skins::names() {
    static const QStringList names{QStringLiteral("classic"), QStringLiteral("nightfall"),
                                   QStringLiteral("hibernia"), QStringLiteral("sunset"),
                                   QStringLiteral("dusk")};
    return names;
}

QString Skins::title(const QString& name) {
    auto skin = load(name, ColorScheme::light);
    return skin ? skin->title : name;
}

std::optional<Skin> Skins::load(const QString& name, ColorScheme scheme) {
    initResources();
    if (!names().contains(name)) {
        return std::nullopt;
    }
    QString file = resourceName(name, scheme);
    QJsonDocument document =
        QJsonDocument::fromJson(readResource(QStringLiteral(":/skins/%1.json").arg(file)).toUtf8());
    if (!document.isObject()) {
        return std::nullopt;
    }
    QJsonObject root = document.object();
    QJsonObject paletteColors = root.value(QStringLiteral("palette")).toObject();
    QJsonObject namedColors = root.value(QStringLiteral("colors")).toObject();

    Skin skin;
    skin.name = name;
    skin.title = root.value(QStringLiteral("title")).toString(name);
    skin.dark = root.value(QStringLiteral("dark")).toBool();
    skin.palette = paletteFrom(paletteColors);
    for (const auto* colors : {&paletteColors, &namedColors}) {
        for (auto entry = colors->begin(); entry != colors->end(); ++entry) {
            skin.colors[entry.key()] = QColor(entry.value().toString());
        }
    }
    skin.styleSheet = filled(readResource(QStringLiteral(":/skins/base.qss")) +
                                 readResource(QStringLiteral(":/skins/%1.qss").arg(name)),
                             skin.colors);
    return skin;
}

std::vector<ColorPair> Skins::textPairs(const Skin& skin) {
    const QPalette& p = skin.palette;
    auto named = [&skin](const char* name) {
        auto found = skin.colors.find(QLatin1String(name));
        return found == skin.colors.end() ? QColor() : found->second;
    };
    std::vector<ColorPair> pairs{
        {"window text", p.color(QPalette::WindowText), p.color(QPalette::Window)},
        {"text", p.color(QPalette::Text), p.color(QPalette::Base)},
        {"text on alternate rows", p.color(QPalette::Text), p.color(QPalette::AlternateBase)},
        {"button text", p.color(QPalette::ButtonText), p.color(QPalette::Button)},
        {"selected text", p.color(QPalette::HighlightedText), p.color(QPalette::Highlight)},
        {"tool tip", p.color(QPalette::ToolTipText), p.color(QPalette::ToolTipBase)},
        {"placeholder", p.color(QPalette::PlaceholderText), p.color(QPalette::Base)},
        {"link", p.color(QPalette::Link), p.color(QPalette::Base)},
        {"link on window", p.color(QPalette::Link), p.color(QPalette::Window)},
        {"visited link", p.color(QPalette::LinkVisited), p.color(QPalette::Base)},
        {"muted text", named("muted"), p.color(QPalette::Window)},
        {"muted text on a card", named("muted"), named("card")},
        {"muted text in a list", named("muted"), p.color(QPalette::Base)},
        {"heading", named("heading"), p.color(QPalette::Window)},
        {"heading on a card", named("heading"), named("card")},
        {"text on a card", p.color(QPalette::WindowText), named("card")},
        {"keeper badge on a card", p.color(QPalette::Link), named("card")},
        {"accent button", named("accentText"), named("accent")},
        {"accent button, hovered", named("accentText"), named("accentHover")},
        {"notice", named("noticeText"), named("notice")},
    };
    return pairs;
}

double Skins::contrastRatio(const QColor& a, const QColor& b) {
    double first = luminance(a);
    double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

ColorScheme Skins::desktopScheme() {
    QByteArray forced = qgetenv("BREVANT_COLOR_SCHEME");
    if (forced == "dark") {
        return ColorScheme::dark;
    }
    if (forced == "light") {
        return ColorScheme::light;
    }
    return askPortal().value_or(platformScheme());
}

void Skins::apply(const QString& name) {
    QString chosen = names().contains(name) ? name : QString::fromLatin1(kDefault);
    scheme_ = desktopScheme();
    auto skin = load(chosen, scheme_);
    if (!skin) {
        return;
    }
    current_ = chosen;
    QApplication::setPalette(skin->palette);
    qApp->setStyleSheet(skin->styleSheet);
    Q_EMIT applied(current_);
}

void Skins::portalSettingChanged(const QString& group, const QString& key,
                                 const QDBusVariant& value) {
    if (group != QLatin1String(kAppearance) || key != QLatin1String(kColorScheme)) {
        return;
    }
    auto scheme = schemeFromPortal(QVariant::fromValue(value));
    if (current_ == QLatin1String(kDefault) && scheme.value_or(platformScheme()) != scheme_) {
        apply(current_);
    }
}

} // namespace brevant::gui
