#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/HomeScreen.hpp"
#include "app/gui/PhotoCleanupModel.hpp"
#include "app/gui/ResumeOffer.hpp"
#include "engine/review/ReviewStore.hpp"

#include <QFileInfo>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <cstdlib>
#include <memory>
#include <set>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;

// Scans under sanitizers take a while; a result must come in the end.
constexpr int kScanTimeoutMs = 240'000;

// A window's model over the data folder and settings of one user.
std::unique_ptr<PhotoCleanupModel> windowModel(QSettings& settings, const TempTree& home) {
    return std::make_unique<PhotoCleanupModel>(settings, home.path("data"),
                                               home.folder("Downloads"));
}

// Set BREVANT_SCREENSHOTS to a folder to look at the offer.
void keepPicture(QWidget& widget, const char* name) {
    if (const char* folder = std::getenv("BREVANT_SCREENSHOTS")) {
        widget.grab().save(QString::fromUtf8(folder) + QLatin1Char('/') +
                           QString::fromLatin1(name));
    }
}

} // namespace

class ResumeReviewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { library_ = std::make_unique<SampleLibrary>(); }

    void savesTheReviewAsTheUserWorksAndResumesItFromHome();

private:
    std::unique_ptr<SampleLibrary> library_;
};

void ResumeReviewTest::savesTheReviewAsTheUserWorksAndResumesItFromHome() {
    TempTree home;
    QSettings settings(QString::fromStdString(home.path("settings.ini")), QSettings::IniFormat);
    std::string marked;
    std::string looked;
    {
        auto first = windowModel(settings, home);
        HomeScreen screen(*first);
        // Nothing saved yet: no offer.
        QTRY_VERIFY(!first->lastReview().has_value());
        QVERIFY(!screen.resumeOffer()->isVisibleTo(&screen));

        first->setSources({library_->root()});
        first->setMode(Mode::identical);
        QVERIFY(first->startScan());
        QTRY_COMPARE_WITH_TIMEOUT(first->phase(), Phase::reviewing, kScanTimeoutMs);
        QCOMPARE(first->resumedText(), QString());
        const auto& groups = first->session()->groups();
        QVERIFY(groups.size() >= 2);
        marked = groups[0].members[1].path;
        looked = groups[1].id;
        QVERIFY(first->session()->mark(marked).has_value());
        first->noteMarksChanged();
        first->noteReviewed(looked);

        // Written as the user works, off the interface thread.
        auto saved = [&] {
            auto latest = ReviewStore(first->reviewsPath()).latest();
            return latest && latest->marks.size() == 1 && latest->reviewed.size() == 1;
        };
        QTRY_VERIFY(saved());
        first->returnHome();
        QVERIFY(screen.resumeOffer()->isVisibleTo(&screen));
    }

    // The window opened again, with other folders chosen since.
    settings.setValue(QStringLiteral("photoCleanup.sources"), QStringList{});
    auto second = windowModel(settings, home);
    HomeScreen screen(*second);
    screen.resize(1100, 760);
    QTRY_VERIFY(second->lastReview().has_value());
    ResumeOffer* offer = screen.resumeOffer();
    QVERIFY(offer->isVisibleTo(&screen));
    QString folder = QFileInfo(QString::fromStdString(library_->root())).fileName();
    QVERIFY2(offer->detailText().startsWith(folder + QStringLiteral(": identical copies, saved ")),
             qPrintable(offer->detailText()));
    keepPicture(screen, "home-resume-offer.png");

    QTest::mouseClick(offer->resumeButton(), Qt::LeftButton);
    QCOMPARE(second->phase(), Phase::scanning);
    QTRY_COMPARE_WITH_TIMEOUT(second->phase(), Phase::reviewing, kScanTimeoutMs);
    QCOMPARE(second->settings().sources, std::vector<std::string>{library_->root()});
    QCOMPARE(second->session()->marks(), std::set<std::string>{marked});
    QVERIFY(second->reviewedGroups().contains(looked));
    QCOMPARE(second->resumedText(),
             QStringLiteral("Resumed your last review of these folders: 1 mark restored, 0 "
                            "dropped because their files changed; 1 group already reviewed."));
}

BREVANT_GUI_TEST(ResumeReviewTest);

} // namespace brevant::gui::testing

#include "ResumeReviewTest.moc"
