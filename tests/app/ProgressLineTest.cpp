#include "app/cli/ProgressLine.hpp"

#include "tests/app/ProgramRun.hpp"

#include <gtest/gtest.h>

namespace brevant::cli {
namespace {

using State = ProgressLine::State;

TEST(ProgressLine, RendersTheStageCountsAndABarThatFitTheWidth) {
    State half{"Moving to the Trash", "5 of 10", 0.5};
    // 28 columns of text, " [", a bar of 23, "] " and the percentage: 59.
    EXPECT_EQ(ProgressLine::render(half, 60),
              "Moving to the Trash: 5 of 10 [###########------------]  50%");
    // The bar is never longer than 40, however wide the terminal.
    EXPECT_EQ(ProgressLine::render(half, 200), "Moving to the Trash: 5 of 10 [" +
                                                   std::string(20, '#') + std::string(20, '-') +
                                                   "]  50%");
    EXPECT_EQ(ProgressLine::render({"Moving", "10 of 10", 1.0}, 30), "Moving: 10 of 10");
    // Without room for a bar of ten (above), or without a known total, no bar.
    EXPECT_EQ(ProgressLine::render(half, 40), "Moving to the Trash: 5 of 10");
    EXPECT_EQ(ProgressLine::render({"Finding pictures", "1200 found"}, 80),
              "Finding pictures: 1200 found");
    EXPECT_EQ(ProgressLine::render({"Finishing", ""}, 80), "Finishing");
    // Counts past the total fill the bar and no more.
    EXPECT_EQ(ProgressLine::render({"M", "12 of 10", 1.2}, 30), "M: 12 of 10 [##########] 100%");
}

TEST(ProgressLine, NeverWrapsAndCutsBetweenCharacters) {
    EXPECT_EQ(ProgressLine::render({"Finding pictures", "1200 found"}, 11), "Finding pi");
    // "Überprüfung" is 11 characters but 13 bytes; cut after 6 characters.
    EXPECT_EQ(ProgressLine::render({"\xC3\x9C"
                                    "berpr\xC3\xBC"
                                    "fung",
                                    ""},
                                   7),
              "\xC3\x9C"
              "berpr");
    EXPECT_EQ(ProgressLine::render({"Finishing", ""}, 0), "");
}

TEST(ProgressLine, SaysWhenTheWorkIsStopping) {
    State stopping{"Moving to the Trash", "5 of 10", 0.5, true};
    EXPECT_EQ(ProgressLine::render(stopping, 120),
              "Moving to the Trash: 5 of 10 - stopping; Ctrl-C again stops at once");
}

TEST(ProgressLine, DrawsOnlyWhenEnabledAndClearsWhatItDrew) {
    MemoryStream pipe;
    {
        ProgressLine line(pipe.get(), false);
        line.show("Moving", 1, 2);
        line.show("Finding", "3 found");
        line.clear();
    }
    EXPECT_EQ(pipe.text(), "");

    MemoryStream terminal;
    CancellationFlag cancel;
    {
        ProgressLine line(terminal.get(), true, &cancel);
        line.show("Moving", 1, 4);
        // Within a tenth of a second of the last drawing and on the same
        // stage: skipped; the last item, a new stage or a Ctrl-C: drawn.
        line.show("Moving", 2, 4);
        line.show("Moving", 4, 4);
        line.show("Checking", "1 left");
        cancel.cancel();
        line.show("Checking", "0 left");
    }
    // The width of a stream that is no terminal is taken as 80.
    EXPECT_EQ(terminal.text(),
              "\r\033[KMoving: 1 of 4 [##########------------------------------]  25%"
              "\r\033[KMoving: 4 of 4 [########################################] 100%"
              "\r\033[KChecking: 1 left"
              "\r\033[KChecking: 0 left - stopping; Ctrl-C again stops at once"
              "\r\033[K");
}

TEST(ProgressLine, ShowsAScanWithItsCounts) {
    MemoryStream terminal;
    ProgressLine line(terminal.get(), true);
    ScanProgress progress;
    progress.stage = ScanProgress::Stage::reading;
    progress.discovered = 12;
    progress.examined = 7;
    progress.skipped = 1;
    progress.matched = 2;
    line.show(progress);
    line.show(ScanProgress::Stage::measuring, 3, 6);
    EXPECT_EQ(terminal.text(),
              "\r\033[KReading pictures: 12 found, 7 examined, 1 skipped, 2 matched"
              "\r\033[KMeasuring pictures for similarity: 3 of 6 [" +
                  std::string(15, '#') + std::string(15, '-') + "]  50%");
}

} // namespace
} // namespace brevant::cli
