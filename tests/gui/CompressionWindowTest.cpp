#include "tests/fixtures/ImageFixtures.hpp"
#include "tests/fixtures/ScopedEnvironment.hpp"
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/CompressionController.hpp"
#include "app/gui/CompressionScreen.hpp"
#include "app/gui/HistoryScreen.hpp"
#include "app/gui/HomeScreen.hpp"
#include "app/gui/MainWindow.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/Skins.hpp"
#include "engine/compression/CompressionTexts.hpp"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSemaphore>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <atomic>
#include <filesystem>

namespace brevant::gui::testing {
namespace {

using brevant::testing::ScopedEnvironment;
using Phase = PhotoCleanupModel::Phase;

constexpr int kRunTimeoutMs = 120'000;

// Holds the first move to the Trash until the test lets it go, so that Stop
// After This One is pressed while a file is in hand.
class GatedTrasher final : public Trasher {
public:
    [[nodiscard]] std::expected<std::string, TrashError>
    reserve(const std::string& path) const override {
        return FileManagerTrasher().reserve(path);
    }

    [[nodiscard]] std::expected<void, TrashError>
    moveInto(const std::string& path, const std::string& trashPath) const override {
        if (calls_++ == 0) {
            entered_ = true;
            gate_.acquire();
        }
        return FileManagerTrasher().moveInto(path, trashPath);
    }

    [[nodiscard]] std::expected<void, TrashError>
    putBack(const std::string& trashPath, const std::string& destination) const override {
        return FileManagerTrasher().putBack(trashPath, destination);
    }

    [[nodiscard]] bool entered() const { return entered_; }

    void open() const { gate_.release(); }

private:
    mutable std::atomic<int> calls_ = 0;
    mutable std::atomic<bool> entered_ = false;
    mutable QSemaphore gate_;
};

// A window over a folder of big JPEGs, with its own Trash.
class Rig {
public:
    explicit Rig(int photos)
        : trash_("XDG_DATA_HOME", tree_.folder("xdg")) {
        std::string folder = tree_.folder("photos");
        for (int i = 1; i <= photos; ++i) {
            (void)brevant::testing::writeScene(
                tree_.path("photos/IMG_000" + std::to_string(i) + ".JPG"), 1200, 800,
                static_cast<unsigned>(i),
                {.quality = 95, .orientation = 6, .exifDate = "2024:05:01 10:20:30"});
        }
        fixture_.model().setSources({folder});
        window_ = std::make_unique<MainWindow>(fixture_.model(), skins_, fixture_.store());
    }

    MainWindow& window() { return *window_; }

    PhotoCleanupModel& model() { return fixture_.model(); }

    CompressionScreen& screen() { return *window_->compressionScreen(); }

    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(tree_.path("photos/" + name));
    }

    [[nodiscard]] std::string bytes(const std::string& name) const {
        return brevant::testing::readFile(tree_.path("photos/" + name));
    }

    // Opens the compression from the home screen, sets the smallest size
    // to 0 (the photos are smaller than the 1 MB first offered) and waits
    // for the list.
    bool openList() {
        window_->home()->compressButton()->click();
        bool first = QTest::qWaitFor(
            [this] { return window_->compressions()->candidates().has_value(); }, kRunTimeoutMs);
        if (!first || screen().candidates()->topLevelItemCount() != 0) {
            return false;
        }
        screen().smallestSize()->setValue(0);
        return QTest::qWaitFor([this] { return screen().candidates()->topLevelItemCount() > 0; },
                               kRunTimeoutMs);
    }

    // Presses Compress… and answers the card with its Compress button.
    void compressThroughTheCard() {
        QTimer::singleShot(0, [] { answerCard(); });
        screen().compressButton()->click();
    }

private:
    // Clicks the card's Compress button once the card is up.
    static void answerCard() {
        const auto windows = QApplication::topLevelWidgets();
        for (QWidget* widget : windows) {
            auto* card = qobject_cast<QMessageBox*>(widget);
            if (card == nullptr || !card->isVisible()) {
                continue;
            }
            for (QAbstractButton* button : card->buttons()) {
                if (button->text() == QStringLiteral("Compress")) {
                    button->click();
                    return;
                }
            }
        }
        QTimer::singleShot(20, [] { answerCard(); });
    }

private:
    TempTree tree_;
    ScopedEnvironment trash_;
    ModelFixture fixture_;
    Skins skins_;
    std::unique_ptr<MainWindow> window_;
};

class CompressionWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void homeOffersCompressionListsTheFilesAndRunsThroughTheCard();
    void stopAfterThisOneFinishesTheFileInHand();
};

void CompressionWindowTest::homeOffersCompressionListsTheFilesAndRunsThroughTheCard() {
    Rig rig(1);
    const std::string original = rig.bytes("IMG_0001.JPG");
    QVERIFY(rig.window().home()->compressButton()->isEnabled());
    QVERIFY(rig.openList());
    QCOMPARE(rig.model().phase(), Phase::compressing);
    QCOMPARE(rig.window().currentScreen(), &rig.screen());
    QVERIFY(rig.screen().candidates()->topLevelItem(0)->text(1).startsWith(
        QStringLiteral("JPEG 800\u00d71200")));
    QVERIFY(rig.screen().summaryText().startsWith(QStringLiteral("1 files")));

    rig.compressThroughTheCard();

    QTRY_VERIFY_WITH_TIMEOUT(rig.screen().showsReport(), kRunTimeoutMs);
    QVERIFY2(rig.screen().reportText().startsWith(
                 QStringLiteral("Compressed  IMG_0001.JPG \u2192 IMG_0001.HEIC")),
             qPrintable(rig.screen().reportText()));
    QVERIFY(rig.exists("IMG_0001.HEIC"));
    QVERIFY(!rig.exists("IMG_0001.JPG"));
    rig.screen().doneButton()->click();
    QCOMPARE(rig.model().phase(), Phase::idle);
    QCOMPARE(rig.window().currentScreen(), rig.window().home());

    rig.window().showHistory();
    HistoryScreen* history = rig.window().historyScreen();
    QTRY_COMPARE_WITH_TIMEOUT(history->compressionList()->topLevelItemCount(), 1, kRunTimeoutMs);
    history->openCompression(0);
    QVERIFY(history->compressionReportText().contains(QStringLiteral("compressed into")));

    // Put Back from the window: the original returns byte for byte and its
    // copy goes to the Trash.
    QVERIFY(history->compressionPutBackButton()->isEnabled());
    history->compressionPutBackButton()->click();
    QTRY_VERIFY_WITH_TIMEOUT(
        history->compressionReportText().startsWith(QStringLiteral("IMG_0001.JPG is back, at ")),
        kRunTimeoutMs);
    QVERIFY2(history->compressionReportText().contains(QStringLiteral("IMG_0001.JPG: put back\n")),
             qPrintable(history->compressionReportText()));
    QCOMPARE(rig.bytes("IMG_0001.JPG"), original);
    QVERIFY(!rig.exists("IMG_0001.HEIC"));
    QVERIFY(!history->compressionPutBackButton()->isEnabled());
}

void CompressionWindowTest::stopAfterThisOneFinishesTheFileInHand() {
    Rig rig(2);
    auto gate = std::make_shared<GatedTrasher>();
    rig.window().compressions()->setTrasher(gate);
    QVERIFY(rig.openList());
    QCOMPARE(rig.screen().candidates()->topLevelItemCount(), 2);

    rig.compressThroughTheCard();
    QTRY_VERIFY_WITH_TIMEOUT(gate->entered(), kRunTimeoutMs);
    rig.screen().stopButton()->click();
    QCOMPARE(rig.screen().stopButton()->text(), QStringLiteral("Stopping After This One…"));
    gate->open();

    QTRY_VERIFY_WITH_TIMEOUT(rig.screen().showsReport(), kRunTimeoutMs);
    QVERIFY(rig.screen().reportText().contains(QString::fromUtf8(compression_texts::kCancelled)));
    QVERIFY(rig.exists("IMG_0001.HEIC"));
    QVERIFY(rig.exists("IMG_0002.JPG"));
    QVERIFY(!rig.exists("IMG_0002.HEIC"));
}

} // namespace

BREVANT_GUI_TEST(CompressionWindowTest);

} // namespace brevant::gui::testing

#include "CompressionWindowTest.moc"
