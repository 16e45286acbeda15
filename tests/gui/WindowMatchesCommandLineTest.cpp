// The window and `brevant clean` review the same folders alike: the same
// groups, members and suggested keepers in every mode and preset.
#include "tests/gui/GuiFixtures.hpp"
#include "tests/gui/GuiTest.hpp"

#include "app/gui/PhotoCleanupModel.hpp"

#include <QTest>

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace brevant::gui::testing {

namespace {

using Mode = CleanupSettings::Mode;
using Phase = PhotoCleanupModel::Phase;
using Lines = std::vector<std::string>;

constexpr int kScanTimeoutMs = 240'000;

// "similar ID: keep K; A B C": one line per group, members sorted, lines
// sorted.
std::string line(std::string_view kind, std::string_view id, std::string_view keeper,
                 std::vector<std::string> members) {
    std::ranges::sort(members);
    return fmt::format("{} {}: keep {}; {}", kind, id, keeper, fmt::join(members, " "));
}

Lines sorted(Lines lines) {
    std::ranges::sort(lines);
    return lines;
}

// What the window shows: its session's groups with their suggested keepers.
Lines shownBy(const PhotoCleanupModel& model) {
    Lines lines;
    auto session = model.session();
    if (session == nullptr) {
        return lines;
    }
    for (const auto& group : session->groups()) {
        auto suggestion = session->suggestion(group);
        std::vector<std::string> members;
        members.reserve(group.members.size());
        for (const auto& member : group.members) {
            members.push_back(member.path);
        }
        lines.push_back(
            line(rawValue(group.kind), group.id, suggestion ? suggestion->keeperID : "", members));
    }
    return sorted(lines);
}

// What `brevant clean --dry-run --json` plans for the same folders: each
// group's copies kept (the suggested keeper alone, when nothing is locked
// or protected) and moved.
Lines plannedBy(const std::string& options, const std::string& folder,
                const std::string& dataFolder) {
    std::string command = fmt::format(
        "BREVANT_DATA_DIR='{0}' XDG_DATA_HOME='{0}/share' '{1}' clean --dry-run --json {2} '{3}' "
        "2>/dev/null",
        dataFolder, BREVANT_BINARY, options, folder);
    std::string out;
    if (std::FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
            out.append(buffer, n);
        }
        ::pclose(pipe);
    }
    Lines lines;
    auto document = nlohmann::json::parse(out, nullptr, false);
    if (document.is_discarded() || !document["plan"].is_object()) {
        lines.push_back("no plan: " + out);
        return lines;
    }
    for (const auto& group : document["plan"]["groups"]) {
        std::vector<std::string> kept;
        std::vector<std::string> members;
        for (const auto& copy : group["keep"]) {
            kept.push_back(copy["path"]);
            members.push_back(copy["path"]);
        }
        for (const auto& copy : group["move"]) {
            members.push_back(copy["path"]);
        }
        lines.push_back(line(group["kind"].get<std::string>(), group["id"].get<std::string>(),
                             fmt::format("{}", fmt::join(kept, " ")), members));
    }
    return sorted(lines);
}

} // namespace

class WindowMatchesCommandLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:

    void initTestCase() { library_ = std::make_unique<SampleLibrary>(); }

    void showsWhatTheCommandLineWouldClean();

private:
    std::unique_ptr<SampleLibrary> library_;
};

void WindowMatchesCommandLineTest::showsWhatTheCommandLineWouldClean() {
    ModelFixture fixture;
    PhotoCleanupModel& model = fixture.model();
    model.setSources({library_->root()});
    auto scan = [&model](Mode mode) {
        model.setMode(mode);
        QVERIFY(model.startScan());
        QTRY_COMPARE_WITH_TIMEOUT(model.phase(), Phase::reviewing, kScanTimeoutMs);
    };
    auto planned = [&](const std::string& options) {
        return plannedBy(options, library_->root(), fixture.dataFolder());
    };

    scan(Mode::identical);
    QCOMPARE(shownBy(model), planned(""));

    scan(Mode::series);
    QCOMPARE(shownBy(model), planned("--series"));

    model.setPreset(SimilarityPreset::balanced);
    scan(Mode::similar);
    QCOMPARE(shownBy(model), planned("--similar balanced"));

    // The other presets come from regrouping the window's scan; the command
    // line scans afresh.
    for (SimilarityPreset preset : {SimilarityPreset::conservative, SimilarityPreset::broad}) {
        model.setPreset(preset);
        QTRY_COMPARE_WITH_TIMEOUT(model.groupedPreset(), preset, kScanTimeoutMs);
        QCOMPARE(shownBy(model), planned(fmt::format("--similar {}", rawValue(preset))));
    }
}

BREVANT_GUI_TEST(WindowMatchesCommandLineTest);

} // namespace brevant::gui::testing

#include "WindowMatchesCommandLineTest.moc"
