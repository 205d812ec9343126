// The progress line: its text at several widths, and that nothing of it stays on the screen.
#include "calc/progress_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

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
    for (int columns = 0; columns < 100; ++columns) {
        EXPECT_LT(static_cast<int>(format_progress(halfway(), columns).size()),
                  std::max(columns, 1));
    }
    ScanProgress late = halfway();
    late.elapsed_seconds = 999999;
    late.next_pass_seconds = 0;
    EXPECT_EQ(format_progress(late, 80),
              "[##############################] 1:01:30/1:01:30 passes 7 measuring");
}

// On a terminal that becomes narrower, as on one that stays, a line takes one row at most.
TEST(ProgressLine, FollowsTheWidthOfTheTerminal) {
    const int screen = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(screen, 0);
    ASSERT_EQ(grantpt(screen), 0);
    ASSERT_EQ(unlockpt(screen), 0);
    const int terminal = open(ptsname(screen), O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    const auto resize = [&](unsigned short columns) {
        const winsize size = {24, columns, 0, 0};
        EXPECT_EQ(ioctl(terminal, TIOCSWINSZ, &size), 0);
    };
    ProgressLine line(terminal);
    resize(80);
    line.progress(halfway());
    resize(40);
    line.progress(halfway());
    resize(30);
    line.finished();
    const std::string expected = "\r" + format_progress(halfway(), 80) + "\r" +
                                 format_progress(halfway(), 40) + "\r" + std::string(29, ' ') +
                                 "\r";
    std::string seen;  // a terminal hands on in pieces
    char piece[512];
    ssize_t size = 1;
    while (seen.size() < expected.size() && (size = read(screen, piece, sizeof(piece))) > 0) {
        seen.append(piece, static_cast<std::size_t>(size));
    }
    EXPECT_EQ(seen, expected);
    close(terminal);
    close(screen);
}

}  // namespace
