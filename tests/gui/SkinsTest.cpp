#include "app/gui/Skins.hpp"

#include "tests/gui/GuiTest.hpp"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

namespace brevant::gui::testing {

namespace {

// WCAG 2 level AA for ordinary text.
constexpr double kMinimumContrast = 4.5;

// Sets the desktop's preference for the length of a test.
class SchemeOverride {
public:
    explicit SchemeOverride(const char* scheme) { qputenv("BREVANT_COLOR_SCHEME", scheme); }

    SchemeOverride(const SchemeOverride&) = delete;
    SchemeOverride& operator=(const SchemeOverride&) = delete;
    SchemeOverride(SchemeOverride&&) = delete;
    SchemeOverride& operator=(SchemeOverride&&) = delete;

    ~SchemeOverride() { qunsetenv("BREVANT_COLOR_SCHEME"); }
};

} // namespace

class SkinsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void measuresContrastAsWcagDoes();
    void offersTheFiveSkins();
    void everySkinKeepsTextReadable();
    void classicFollowsTheDesktopScheme();
    void appliesASkinToTheApplication();
};

void SkinsTest::measuresContrastAsWcagDoes() {
    QCOMPARE(Skins::contrastRatio(Qt::black, Qt::white), 21.0);
    QCOMPARE(Skins::contrastRatio(Qt::white, Qt::black), 21.0);
    QCOMPARE(Skins::contrastRatio(QColor("#336699"), QColor("#336699")), 1.0);
    // The grey that famously just misses AA on white, and the one that passes.
    QVERIFY(Skins::contrastRatio(QColor("#777777"), Qt::white) < kMinimumContrast);
    QVERIFY(Skins::contrastRatio(QColor("#767676"), Qt::white) >= kMinimumContrast);
    QVERIFY(qAbs(Skins::contrastRatio(QColor("#1a5fb4"), Qt::white) - 6.29) < 0.01);
}

void SkinsTest::offersTheFiveSkins() {
    QCOMPARE(Skins::names(), (QStringList{QStringLiteral("classic"), QStringLiteral("nightfall"),
                                          QStringLiteral("hibernia"), QStringLiteral("sunset"),
                                          QStringLiteral("dusk")}));
    QCOMPARE(Skins::title(QStringLiteral("hibernia")), QStringLiteral("Hibernia"));
    QVERIFY(!Skins::load(QStringLiteral("solarized"), ColorScheme::light));
}

void SkinsTest::everySkinKeepsTextReadable() {
    QStringList failures;
    for (const QString& name : Skins::names()) {
        for (ColorScheme scheme : {ColorScheme::light, ColorScheme::dark}) {
            auto skin = Skins::load(name, scheme);
            QVERIFY2(skin.has_value(), qPrintable(name));
            QVERIFY(!skin->title.isEmpty());
            QVERIFY2(!skin->styleSheet.contains(QStringLiteral("@{")), qPrintable(name));
            auto pairs = Skins::textPairs(*skin);
            QCOMPARE(pairs.size(), std::size_t{20});
            for (const ColorPair& pair : pairs) {
                QVERIFY2(pair.foreground.isValid() && pair.background.isValid(),
                         qPrintable(name + QStringLiteral(": ") + pair.what));
                double ratio = Skins::contrastRatio(pair.foreground, pair.background);
                if (ratio < kMinimumContrast) {
                    failures.push_back(
                        QStringLiteral("%1 %2: %3 on %4 is %5")
                            .arg(name, pair.what, pair.foreground.name(), pair.background.name())
                            .arg(ratio, 0, 'f', 2));
                }
            }
        }
    }
    QCOMPARE(failures, QStringList());
}

void SkinsTest::classicFollowsTheDesktopScheme() {
    auto light = Skins::load(QStringLiteral("classic"), ColorScheme::light);
    auto dark = Skins::load(QStringLiteral("classic"), ColorScheme::dark);
    QVERIFY(light && dark);
    QVERIFY(!light->dark);
    QVERIFY(dark->dark);
    QVERIFY(light->palette.color(QPalette::Window).lightness() > 200);
    QVERIFY(dark->palette.color(QPalette::Window).lightness() < 60);
    // The other skins have one look whatever the desktop prefers.
    QCOMPARE(Skins::load(QStringLiteral("dusk"), ColorScheme::light)->palette,
             Skins::load(QStringLiteral("dusk"), ColorScheme::dark)->palette);

    Skins skins;
    {
        SchemeOverride prefer("dark");
        QCOMPARE(Skins::desktopScheme(), ColorScheme::dark);
        skins.apply(QStringLiteral("classic"));
        QCOMPARE(QApplication::palette().color(QPalette::Window),
                 dark->palette.color(QPalette::Window));
    }
    SchemeOverride prefer("light");
    skins.apply(QStringLiteral("classic"));
    QCOMPARE(QApplication::palette().color(QPalette::Window),
             light->palette.color(QPalette::Window));
    QCOMPARE(skins.scheme(), ColorScheme::light);
}

void SkinsTest::appliesASkinToTheApplication() {
    SchemeOverride prefer("light");
    Skins skins;
    QSignalSpy applied(&skins, &Skins::applied);
    skins.apply(QStringLiteral("sunset"));
    auto sunset = Skins::load(QStringLiteral("sunset"), ColorScheme::light);
    QCOMPARE(skins.current(), QStringLiteral("sunset"));
    QCOMPARE(qApp->styleSheet(), sunset->styleSheet);
    QCOMPARE(QApplication::palette().color(QPalette::Highlight),
             sunset->palette.color(QPalette::Highlight));
    QCOMPARE(applied.count(), 1);
    QCOMPARE(applied.front().front().toString(), QStringLiteral("sunset"));
    // The accent colour reached the style sheet.
    QVERIFY(qApp->styleSheet().contains(sunset->colors.at(QStringLiteral("accent")).name()));

    // An unknown name falls back to classic.
    skins.apply(QStringLiteral("neon"));
    QCOMPARE(skins.current(), QStringLiteral("classic"));
    qApp->setStyleSheet({});
}

BREVANT_GUI_TEST(SkinsTest);

} // namespace brevant::gui::testing

#include "SkinsTest.moc"
