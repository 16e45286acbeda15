#include "app/cli/Terminal.hpp"

#include "tests/app/ProgramRun.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <unistd.h>

namespace brevant::cli {
namespace {

// The reading end of a pipe holding `text`; the writing end stays open
// while `keepOpen`, so that reading past the text would wait.
class Answers {
public:
    explicit Answers(std::string_view text, bool keepOpen = false) {
        int ends[2] = {-1, -1};
        if (::pipe(ends) != 0) {
            return;
        }
        [[maybe_unused]] auto written = ::write(ends[1], text.data(), text.size());
        write_ = ends[1];
        if (!keepOpen) {
            ::close(ends[1]);
            write_ = -1;
        }
        in_ = ::fdopen(ends[0], "r");
    }

    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;
    Answers(Answers&&) = delete;
    Answers& operator=(Answers&&) = delete;

    ~Answers() {
        if (in_ != nullptr) {
            std::fclose(in_);
        }
        if (write_ >= 0) {
            ::close(write_);
        }
    }

    [[nodiscard]] std::FILE* in() const { return in_; }

private:
    std::FILE* in_ = nullptr;
    int write_ = -1;
};

bool answer(std::string_view text) {
    Answers answers(text);
    MemoryStream err;
    CancellationFlag cancel;
    return confirm("Go on? [y/N]", answers.in(), err.get(), cancel);
}

TEST(Terminal, ConfirmsOnlyAYes) {
    for (std::string_view yes : {"y\n", "yes\n", " Y \n", "YES\r\n", "y"}) {
        EXPECT_TRUE(answer(yes)) << yes;
    }
    for (std::string_view no : {"n\n", "\n", "", "yess\n", "no\n", "ja\n", "\ny\n"}) {
        EXPECT_FALSE(answer(no)) << no;
    }
}

TEST(Terminal, AsksOnStandardErrorAndReadsOneLineOnly) {
    Answers answers("y\nn\n");
    MemoryStream err;
    CancellationFlag cancel;
    EXPECT_TRUE(
        confirm("Move 3 pictures (1.2 MB) to the Trash? [y/N]", answers.in(), err.get(), cancel));
    EXPECT_EQ(err.text(), "Move 3 pictures (1.2 MB) to the Trash? [y/N] ");
    // The second line is still there for the next question.
    EXPECT_FALSE(confirm("Again? [y/N]", answers.in(), err.get(), cancel));

    // A stream without a descriptor is read as it is.
    char text[] = "yes\n";
    std::FILE* memory = ::fmemopen(text, sizeof text - 1, "r");
    EXPECT_TRUE(confirm("Go on? [y/N]", memory, err.get(), cancel));
    std::fclose(memory);
}

TEST(Terminal, ACtrlCWhileWaitingIsANo) {
    Answers silent("", true);
    MemoryStream err;
    CancellationFlag cancel;
    cancel.cancel();
    EXPECT_FALSE(confirm("Go on? [y/N]", silent.in(), err.get(), cancel));
    EXPECT_EQ(err.text(), "Go on? [y/N] \n");

    // Set while the question waits, as the first Ctrl-C does.
    CancellationFlag later;
    std::jthread interrupt([&later] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        later.cancel();
    });
    EXPECT_FALSE(confirm("Go on? [y/N]", silent.in(), err.get(), later));
}

TEST(Terminal, TakesEightyColumnsWhenNotATerminal) {
    MemoryStream stream;
    EXPECT_EQ(terminalWidth(stream.get()), 80);
}

} // namespace
} // namespace brevant::cli
