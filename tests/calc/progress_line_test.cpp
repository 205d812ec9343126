// The progress line: its text at several widths, and what a terminal gets to see of it.
#include "calc/progress_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <csignal>
#include <cstdlib>

#include "tests/support/in_child.h"

namespace {

ScanProgress halfway() {
    ScanProgress progress;
    progress.elapsed_seconds = 1800;
    progress.total_seconds = 3690;
    progress.next_pass_seconds = 65;
    progress.passes_done = 7;
    return progress;
}

TEST(ProgressLine, FitsTheTerminal) {
    // 1800 of 3690 seconds fill 14 of 30 places.
    EXPECT_EQ(format_progress(halfway(), 80),
              "[##############................] 30:00/1:01:30 passes 7 next 1:05");
    // 22 numbers' characters leave 14 of the 39 columns for the bar: 1800*14/3690 = 6.
    EXPECT_EQ(format_progress(halfway(), 40), "[######........] 30:00/1:01:30 #7 +1:05");
    EXPECT_EQ(format_progress(halfway(), 25), "30:00/1:01:30 #7 +1:05");
    EXPECT_EQ(format_progress(halfway(), 10), "30:00/1:0");
    EXPECT_EQ(format_progress(halfway(), 0), "");
    ScanProgress late = halfway();
    late.elapsed_seconds = 999999;
    late.next_pass_seconds = 0;
    EXPECT_EQ(format_progress(late, 80),
              "[##############################] 1:01:30/1:01:30 passes 7 measuring");
}

class Terminal : public testing::Test {
protected:
    Terminal() : screen_(posix_openpt(O_RDWR | O_NOCTTY)) {
        EXPECT_EQ(grantpt(screen_), 0);
        EXPECT_EQ(unlockpt(screen_), 0);
        terminal = open(ptsname(screen_), O_RDWR | O_NOCTTY);
        EXPECT_GE(terminal, 0);
    }
    ~Terminal() override {
        close(terminal);
        close(screen_);
    }
    void resize(unsigned short columns) const {
        const winsize size = {24, columns, 0, 0};
        EXPECT_EQ(ioctl(terminal, TIOCSWINSZ, &size), 0);
    }
    // What has been written so far. A mark of ours ends it, since a terminal hands on in pieces.
    std::string seen() const {
        EXPECT_EQ(write(terminal, "$", 1), 1);
        std::string text;
        char piece[512];
        while (text.empty() || text.back() != '$') {
            const ssize_t size = read(screen_, piece, sizeof piece);
            if (size <= 0) {
                break;
            }
            text.append(piece, static_cast<std::size_t>(size));
        }
        return text.substr(0, text.size() - 1);
    }

    int terminal = -1;

private:
    int screen_;
};

// On one that becomes narrower, as on one that stays, a line takes one row at most.
TEST_F(Terminal, ShowsOneRowThatIsWiped) {
    ProgressLine line(terminal);
    resize(80);
    line.progress(halfway());
    resize(40);
    line.progress(halfway());
    resize(30);
    line.finished();
    EXPECT_EQ(seen(), "\r" + format_progress(halfway(), 80) + "\r" +
                          format_progress(halfway(), 40) + "\r" + std::string(29, ' ') + "\r");
}

// One that is held would hold the scan as well.
TEST_F(Terminal, IsLeftAloneWhileItIsHeld) {
    const auto draw_held = [&] {
        ProgressLine line(terminal);
        resize(80);
        line.progress(halfway());
        tcflow(terminal, TCOOFF);
        line.progress(halfway());
        line.finished();
        return tcflow(terminal, TCOON);
    };
    EXPECT_EQ(in_child(draw_held), 0) << "waited for the terminal";
    EXPECT_EQ(seen(), "\r" + format_progress(halfway(), 80));
}

// A job in the background must not draw over the shell's prompt.
TEST_F(Terminal, IsLeftAloneFromTheBackground) {
    const auto draw_behind = [&] {
        setsid();
        if (ioctl(terminal, TIOCSCTTY, 0) != 0) {
            return 1;
        }
        resize(80);
        ProgressLine line(terminal);
        line.progress(halfway());
        signal(SIGTTOU, SIG_IGN);
        const pid_t other = fork();
        if (other == 0) {
            pause();
        }
        setpgid(other, other);
        const int handed_over = tcsetpgrp(terminal, other);
        line.progress(halfway());
        line.finished();
        kill(other, SIGKILL);
        return handed_over;
    };
    EXPECT_EQ(in_child(draw_behind), 0);
    EXPECT_EQ(seen(), "\r" + format_progress(halfway(), 80));
}

}  // namespace
