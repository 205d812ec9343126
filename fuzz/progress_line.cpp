// The text of the progress line. Spans and passes are what a scan can have; its clock may jump.
#include "calc/progress_line.h"

#include "fuzz/support.h"

namespace {

// The seconds of "1:01:30".
std::int64_t seconds_of(const std::string& clock) {
    std::int64_t seconds = 0;
    for (const char* part = clock.c_str(); *part != '\0'; part += *part == ':') {
        char* end = nullptr;
        seconds = seconds * 60 + std::strtoll(part, &end, 10);
        part = end;
    }
    return seconds;
}

void check_bar(const std::string& line, std::int64_t elapsed, std::int64_t total) {
    const auto width = static_cast<std::int64_t>(line.find(']')) - 1;
    const auto filled = static_cast<std::int64_t>(line.find_first_not_of('#', 1)) - 1;
    fuzz::require(width >= 5 && width <= 30, "a bar is worth its place and no longer than needed");
    fuzz::require(line.find_first_not_of('.', static_cast<std::size_t>(filled) + 1) ==
                      static_cast<std::size_t>(width) + 1,
                  "what is left follows what is done");
    fuzz::require(total == 0
                      ? filled == width
                      : filled * total <= elapsed * width && (filled + 1) * total > elapsed * width,
                  "the bar grows with the time");

    const std::string times = line.substr(line.find(']') + 2);
    const std::size_t slash = times.find('/');
    fuzz::require(seconds_of(times.substr(0, slash)) == elapsed, "the clock tells the time");
    fuzz::require(seconds_of(times.substr(slash + 1, times.find(' ') - slash - 1)) == total,
                  "and how long it takes");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    ScanProgress progress;
    const auto columns = bytes.next<std::uint16_t>();
    progress.elapsed_seconds = bytes.next<std::int64_t>();
    progress.total_seconds = bytes.next<std::int32_t>();
    progress.next_pass_seconds = bytes.next<std::int32_t>();
    progress.passes_done = bytes.next<std::int32_t>();

    const std::string line = format_progress(progress, columns);
    fuzz::require(line.size() < columns || line.empty(), "the line leaves a column free");
    fuzz::require(
        std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }),
        "nothing that moves the cursor");
    fuzz::require(columns < 80 || line[0] == '[', "a usual terminal shows the bar");
    if (line[0] == '[') {
        const std::int64_t total = std::max<std::int64_t>(progress.total_seconds, 0);
        check_bar(line, std::clamp<std::int64_t>(progress.elapsed_seconds, 0, total), total);
    }
    return 0;
}
