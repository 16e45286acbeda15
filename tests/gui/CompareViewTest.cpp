#include "app/gui/CompareView.hpp"

#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/TempTree.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/DetailLoader.hpp"
#include "app/gui/MemberTile.hpp"
#include "app/gui/PictureView.hpp"
#include "app/gui/SceneZoom.hpp"
#include "app/gui/ThumbnailLoader.hpp"
#include "engine/scan/DuplicateGroup.hpp"

#include <QTest>

#include <cstring>
#include <string>
#include <vector>
#include <vips/vips8>

namespace brevant::gui::testing {

namespace {

using brevant::testing::TempTree;

PhotoAsset pictureAt(const std::string& path, int width, int height) {
    PhotoAsset asset;
    asset.path = path;
    asset.pixelWidth = width;
    asset.pixelHeight = height;
    return asset;
}

// How many pixels of `shown` (at `at` in it) differ from the file's own
// pixels at `area` of the upright picture.
int differingPixels(const QImage& shown, QPoint at, const std::string& path, QRect area) {
    vips::VImage file = brevant::testing::openImage(path).autorot().extract_area(
        area.x(), area.y(), area.width(), area.height());
    std::size_t bytes = 0;
    void* memory = file.write_to_memory(&bytes);
    const auto* samples = static_cast<const unsigned char*>(memory);
    int bands = file.bands();
    int differing = 0;
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x) {
            QRgb pixel = shown.pixel(at.x() + x, at.y() + y);
            const unsigned char* sample =
                samples + (static_cast<std::size_t>(y) * area.width() + x) * bands;
            if (qRed(pixel) != sample[0] || qGreen(pixel) != sample[1] ||
                qBlue(pixel) != sample[2]) {
                ++differing;
            }
        }
    }
    g_free(memory);
    return differing;
}

} // namespace

class CompareViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void actualPixelsShowTheFilesOwnPixels();
    void captionsSayWhichCopyIsWhich();
};

void CompareViewTest::actualPixelsShowTheFilesOwnPixels() {
    TempTree tree;
    // Larger than the previews, with fine grain that a magnified preview
    // blurs; PNG, so the file's pixels are exactly known.
    std::string big = brevant::testing::writeScene(tree.path("big.png"), 3600, 2400, 11);
    std::string small = brevant::testing::writeScene(tree.path("small.png"), 1800, 1200, 11);
    ThumbnailLoader thumbnails;
    CompareView view(thumbnails);
    view.resize(900, 620);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.showGroup(DuplicateGroup::make(
        "", 0, {pictureAt(big, 3600, 2400), pictureAt(small, 1800, 1200)}, MatchKind::similar));
    QTRY_VERIFY(thumbnails.pending() == 0 && !view.shownView()->image().isNull());
    QTRY_VERIFY(view.tile(1)->view() != nullptr && !view.tile(1)->view()->image().isNull());
    PictureView* shown = view.shownView();
    QVERIFY(!shown->detailPlacement().has_value());
    double fitted = shown->zoomPercent();
    QVERIFY2(fitted > 1 && fitted < 50, qPrintable(view.zoomText()));
    QCOMPARE(view.zoomText(), QStringLiteral("%1 %").arg(std::lround(fitted)));

    view.actualPixels();
    QCOMPARE(view.zoomText(), QStringLiteral("100 %"));
    // Until the part is decoded, the preview is drawn, magnified.
    QImage preview = shown->grab().toImage();
    QTRY_VERIFY_WITH_TIMEOUT(shown->detailPlacement().has_value(), 20000);
    auto placed = *shown->detailPlacement();
    QCOMPARE(placed.target.size(), placed.source.size());
    QVERIFY(placed.target.width() > 200 && placed.target.height() > 200);
    QImage grabbed = shown->grab().toImage();
    QCOMPARE(differingPixels(grabbed, placed.target.topLeft(), big, placed.source), 0);
    QVERIFY(differingPixels(preview, placed.target.topLeft(), big, placed.source) >
            placed.source.width() * placed.source.height() / 2);
    // The smaller copy beside it shows the same part of the scene, so its
    // own pixels are drawn twice as large.
    QCOMPARE(std::lround(view.tile(1)->view()->zoomPercent()), 200L);

    // Back to the whole picture: the preview again.
    view.zoom()->fit();
    QVERIFY(!shown->detailPlacement().has_value());
}

void CompareViewTest::captionsSayWhichCopyIsWhich() {
    TempTree tree;
    std::string root = tree.folder("Sample library");
    tree.folder("Sample library/Holiday");
    tree.folder("Sample library/Backup");
    std::string kept = brevant::testing::writeScene(root + "/Holiday/IMG_1003.JPG", 300, 200, 3);
    std::string marked = brevant::testing::writeScene(root + "/Backup/IMG_1003.JPG", 300, 200, 3);
    PhotoAsset first = pictureAt(kept, 300, 200);
    PhotoAsset second = pictureAt(marked, 300, 200);
    first.root = second.root = root;
    ThumbnailLoader thumbnails;
    CompareView view(thumbnails);
    view.resize(900, 620);
    view.show();
    view.showGroup(DuplicateGroup::make("", 0, {first, second}, MatchKind::identical));
    view.setFacts(
        {{.isKeeper = true, .keeperReason = QStringLiteral("It is older")}, {.isMarked = true}});
    QCOMPARE(view.tile(1)->folderText(), QStringLiteral("Sample library/Backup"));
    QCOMPARE(view.tile(1)->folderToolTip(), QString::fromStdString(marked));
    QCOMPARE(view.tile(0)->badge(), QStringLiteral("Suggested keeper"));
    QCOMPARE(view.tile(1)->badge(), QStringLiteral("Marked for removal"));

    // A refusal beside a copy goes once another copy is chosen.
    view.setRefusal(0, QStringLiteral("You locked this one to keep it. Unlock it first."));
    view.setCurrent(1);
    QCOMPARE(view.tile(0)->refusal(), QString());

    // The flip names the folder and the state of the copy it shows, and
    // that copy becomes the chosen one.
    view.setCurrent(0);
    view.flip();
    QCOMPARE(view.flipCaption(),
             QStringLiteral("A · IMG_1003.JPG · Sample library/Holiday · Suggested keeper — "
                            "press F to flip"));
    view.flip();
    QCOMPARE(view.flipCaption(),
             QStringLiteral("B · IMG_1003.JPG · Sample library/Backup · Marked for removal — "
                            "press F to flip"));
    QCOMPARE(view.current(), 1);
}

BREVANT_GUI_TEST(CompareViewTest);

} // namespace brevant::gui::testing

#include "CompareViewTest.moc"
