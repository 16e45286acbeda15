#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CompareView.hpp"
#include "app/gui/Inspector.hpp"
#include "app/gui/MemberTile.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/scan/DuplicateGroup.hpp"

#include <QLabel>
#include <QTest>

#include <algorithm>
#include <string>

namespace brevant::gui::testing {

namespace {

using brevant::testing::TempTree;

// Whether some label of the widget says exactly `words` among its parts.
bool saysOnAnyLabel(const QWidget& widget, const QString& words) {
    const auto labels = widget.findChildren<QLabel*>();
    return std::ranges::any_of(labels, [&](const QLabel* label) {
        return label->text().split(QStringLiteral(" · ")).contains(words);
    });
}

} // namespace

// A copy turned or mirrored against the group's first member says so on its
// tile, in the flip's caption and in the inspector; an upright one does not.
class OrientationWordsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tileCaptionAndInspectorSayIt();
};

void OrientationWordsTest::tileCaptionAndInspectorSayIt() {
    TempTree tree;
    std::string original = brevant::testing::writeScene(tree.path("a/IMG_1.JPG"), 300, 200, 7);
    std::string mirrored = tree.path("b/IMG_1.JPG");
    brevant::testing::saveImage(brevant::testing::openImage(original).fliphor(), mirrored);
    PhotoAsset first;
    first.path = original;
    PhotoAsset second;
    second.path = mirrored;
    auto group = DuplicateGroup::make("", 0, {first, second}, MatchKind::similar, 0.0F);
    group.orientations[mirrored] = MemberOrientation{.mirrored = true, .degrees = 90};
    QString said = QString::fromStdString(group.orientationOf(mirrored).words());
    QCOMPARE(said, QStringLiteral("mirrored, turned 90°"));

    ThumbnailLoader thumbnails;
    CompareView view(thumbnails);
    view.resize(900, 620);
    view.show();
    view.showGroup(group);
    view.setFacts({{}, {.orientation = said}});
    QVERIFY(!saysOnAnyLabel(*view.tile(0), said));
    QVERIFY(saysOnAnyLabel(*view.tile(1), said));

    view.setCurrent(1);
    view.flip();
    QVERIFY(view.flipCaption().contains(QStringLiteral(" · ") + said + QStringLiteral(" — ")));
    view.flip();
    QVERIFY(!view.flipCaption().contains(said));

    Inspector inspector;
    inspector.showAsset(&second, {.orientation = said});
    QCOMPARE(inspector.field(QStringLiteral("Orientation")), said);
    inspector.showAsset(&first, {});
    QCOMPARE(inspector.field(QStringLiteral("Orientation")), QString());
}

BREVANT_GUI_TEST(OrientationWordsTest);

} // namespace brevant::gui::testing

#include "OrientationWordsTest.moc"
