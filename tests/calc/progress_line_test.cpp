// The progress line: its text at several widths, and what a terminal gets to see of it.
#include "calc/progress_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cstdlib>
#include <tuple>

#include "tests/support/in_child.h"

namespace {

const ScanProgress halfway = {1800, 3690, 65, 7};

TEST(ProgressLine, FitsTheTerminal) {
    const std::tuple<ScanProgress, int, const char*> cases[] = {
        // 1800 of 3690 seconds fill 14 of 30 places.
        {halfway, 80, "[##############................] 30:00/1:01:30 passes 7 next 1:05"},
        // 22 numbers' characters leave 14 of the 39 columns for the bar: 1800*14/3690 = 6.
        {halfway, 40, "[######........] 30:00/1:01:30 #7 +1:05"},
        {halfway, 30, "30:00/1:01:30 #7 +1:05"},
        {halfway, 10, "30:00/1:0"},
        {{999999, 3690, 0, 7},
         80,
         "[##############################] 1:01:30/1:01:30 passes 7 measuring"},
    };
    for (const auto& [progress, columns, line] : cases) {
        EXPECT_EQ(format_progress(progress, columns), line);
    }
}

// On one that becomes narrower, as on one that stays, a line takes one row at most. One that is
// held would hold the scan as well; a job in the background must not draw over the shell's prompt.
TEST(ProgressLine, IsOneRowThatIsWipedOfATerminalThatIsNeitherHeldNorAnothers) {
    const int screen = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(screen) + unlockpt(screen), 0);
    const int terminal = open(ptsname(screen), O_RDWR | O_NOCTTY);
    const auto resize = [terminal](unsigned short columns) {
        const winsize size = {24, columns, 0, 0};
        return ioctl(terminal, TIOCSWINSZ, &size);
    };
    const auto again = [](ProgressLine line) {
        line.progress(halfway);
        line.finished();
        return 0;
    };
    const auto draw = [&] {
        const bool own = setsid() != -1 && ioctl(terminal, TIOCSCTTY, 0) == 0;
        ProgressLine line(terminal);
        resize(0);  // says nothing of its width
        line.progress(halfway);
        resize(40);
        line.progress(halfway);
        tcflow(terminal, TCOOFF);
        again(line);
        tcflow(terminal, TCOON);
        resize(30);
        const int failed = own ? in_child([&] { return setpgid(0, 0) + again(line); }) : 1;
        line.finished();
        return failed;
    };
    EXPECT_EQ(in_child(draw), 0) << "waited for the terminal";
    EXPECT_EQ(write(terminal, "$", 1), 1);  // ends it, since a terminal hands on in pieces
    std::string seen;
    for (char c = 0; read(screen, &c, 1) == 1 && c != '$';) {
        seen += c;
    }
    EXPECT_EQ(seen, "\r" + format_progress(halfway, 80) + "\r" + format_progress(halfway, 40) +
                        "\r" + std::string(29, ' ') + "\r");
    EXPECT_EQ(close(terminal) + close(screen), 0);
}

}  // namespace
