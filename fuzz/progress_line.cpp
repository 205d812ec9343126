// The text of the progress line. Spans and passes are what a scan can have; its clock may jump.
#include "calc/progress_line.h"

#include "fuzz/support.h"

namespace {

// The seconds of "1:01:30", and where it ends.
std::int64_t read_clock(const char* text, char** end) {
    std::int64_t seconds = std::strtoll(text, end, 10);
    while (**end == ':') {
        seconds = seconds * 60 + std::strtoll(*end + 1, end, 10);
    }
    return seconds;
}

void check_bar(const std::string& line, std::int64_t elapsed, std::int64_t total) {
    const std::size_t end = line.find(']');
    const auto width = static_cast<std::int64_t>(end) - 1;
    const std::size_t rest_of_bar = line.find_first_not_of('#', 1);
    const auto filled = static_cast<std::int64_t>(rest_of_bar) - 1;
    require(width >= 5 && width <= 30, "a bar is worth its place and no longer than needed");
    require(line.find_first_not_of('.', rest_of_bar) == end, "what is left follows what is done");
    require(total == 0
                ? filled == width
                : filled * total <= elapsed * width && (filled + 1) * total > elapsed * width,
            "the bar grows with the time");

    char* rest = nullptr;
    require(read_clock(line.c_str() + end + 2, &rest) == elapsed, "the clock tells the time");
    require(*rest == '/' && read_clock(rest + 1, &rest) == total, "and how long it takes");
}

}  // namespace

void try_input(fuzz::Input input) {
    ScanProgress progress;
    const auto columns = input.next<std::uint16_t>();
    progress.elapsed_seconds = input.next<std::int64_t>();
    progress.total_seconds = input.next<std::int32_t>();
    progress.next_pass_seconds = input.next<std::int32_t>();
    progress.passes_done = input.next<std::int32_t>();

    const std::string line = format_progress(progress, columns);
    require(line.size() < columns || line.empty(), "the line leaves a column free");
    require(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }),
            "nothing that moves the cursor");
    require(columns < 80 || line[0] == '[', "a usual terminal shows the bar");
    if (line[0] == '[') {
        const std::int64_t total = std::max<std::int64_t>(progress.total_seconds, 0);
        check_bar(line, std::clamp<std::int64_t>(progress.elapsed_seconds, 0, total), total);
    }
}
