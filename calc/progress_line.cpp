#include "calc/progress_line.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "kiln/files.h"

namespace {

constexpr int default_columns = 80;
constexpr int bar_frame = 3;  // brackets and a blank
constexpr int min_bar_width = 5;
constexpr int max_bar_width = 30;

int columns_of(int fd) {
    winsize size{};
    if (ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return default_columns;
}

// A job in the background must not draw over the shell's prompt, and a terminal may stop it for
// trying.
bool in_foreground(int fd) {
    const pid_t foreground = tcgetpgrp(fd);
    return foreground == -1 || foreground == getpgrp();
}

// A terminal that is held (Ctrl-S, a stalled connection) would hold the scan as well.
bool takes_text(int fd) {
    pollfd terminal = {fd, POLLOUT, 0};
    return poll(&terminal, 1, 0) == 1 && (terminal.revents & POLLOUT) != 0;
}

// 90 is "1:30", 3690 is "1:01:30".
std::string clock_text(std::int64_t seconds) {
    char text[48];
    const std::int64_t hours = seconds / 3600;
    const auto minutes = static_cast<int>(seconds / 60 % 60);
    const auto rest = static_cast<int>(seconds % 60);
    if (hours > 0) {
        std::snprintf(text, sizeof(text), "%" PRId64 ":%02d:%02d", hours, minutes, rest);
    } else {
        std::snprintf(text, sizeof(text), "%d:%02d", minutes, rest);
    }
    return text;
}

std::string bar(std::int64_t part, std::int64_t whole, int width) {
    const auto filled = static_cast<std::size_t>(whole > 0 ? part * width / whole : width);
    const auto total = static_cast<std::size_t>(width);
    return "[" + std::string(filled, '#') + std::string(total - filled, '.') + "] ";
}

// What stands before the numbers, for wide and for narrow terminals.
struct Labels {
    const char* passes;
    const char* next;
    const char* measuring;
};

constexpr Labels long_labels = {" passes ", " next ", " measuring"};
constexpr Labels short_labels = {" #", " +", " ..."};

std::string numbers_text(const ScanProgress& progress, const std::string& times,
                         const Labels& labels) {
    std::string text = times + labels.passes + std::to_string(progress.passes_done);
    if (progress.next_pass_seconds > 0) {
        return text + labels.next + clock_text(progress.next_pass_seconds);
    }
    return text + labels.measuring;
}

}  // namespace

std::string format_progress(const ScanProgress& progress, int columns) {
    const std::int64_t total = std::max<std::int64_t>(progress.total_seconds, 0);
    const std::int64_t elapsed =
        std::min(std::max<std::int64_t>(progress.elapsed_seconds, 0), total);
    const int room = std::max(columns - 1, 0);  // a full line would wrap on some terminals

    const std::string times = clock_text(elapsed) + "/" + clock_text(total);
    std::string text;
    for (const Labels& labels : {long_labels, short_labels}) {
        text = numbers_text(progress, times, labels);
        const int left = room - static_cast<int>(text.size()) - bar_frame;
        if (left >= min_bar_width) {
            return bar(elapsed, total, std::min(left, max_bar_width)) + text;
        }
    }
    return text.substr(0, static_cast<std::size_t>(room));
}

void ProgressLine::progress(const ScanProgress& progress) {
    if (!in_foreground(fd_) || !takes_text(fd_)) {
        return;
    }
    const int columns = columns_of(fd_);
    const std::string line = format_progress(progress, columns);
    const std::size_t left_over = shown_within(columns);
    std::string text = "\r" + line;
    if (line.size() < left_over) {
        text.append(left_over - line.size(), ' ').append("\r" + line);
    }
    shown_ = line.size();
    write(text);
}

void ProgressLine::finished() {
    if (shown_ > 0 && in_foreground(fd_) && takes_text(fd_)) {
        write("\r" + std::string(shown_within(columns_of(fd_)), ' ') + "\r");
    }
    shown_ = 0;
}

// A terminal made narrower meanwhile must not wrap the blanks into another line.
std::size_t ProgressLine::shown_within(int columns) const {
    return std::min(shown_, static_cast<std::size_t>(columns - 1));
}

// A terminal that cannot be written to must not disturb the scan.
void ProgressLine::write(const std::string& text) const {
    static_cast<void>(Kiln::write_all(fd_, text.data(), text.size()));
}
