#include "plan/record/usage_parsers.h"

#include <charconv>
#include <system_error>
#include <vector>

#include "kiln/strings.h"

namespace {

using Kiln::take_word;
using Kiln::words_of;
using Words = std::vector<std::string_view>;

constexpr std::size_t npos = std::string_view::npos;

// A text that is digits and nothing else.
Figure number(std::string_view text) {
    std::int64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    const bool is_whole = error == std::errc() && rest == end;
    return is_whole && text.front() != '-' ? Figure(value) : Figure();
}

// Takes the first line off the text. False when there is none with an end: the kernel ends every
// line, so one without was cut.
bool take_line(std::string_view& text, std::string_view& line) {
    const std::size_t end = text.find('\n');
    if (end == npos) {
        return false;
    }
    line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return true;
}

Figure number_at(const Words& words, std::size_t place) {
    return place < words.size() ? number(words[place]) : Figure();
}

// The words of the first line that begins with the word; none without such a line.
Words line_of(std::string_view text, std::string_view first_word) {
    std::string_view line;
    while (take_line(text, line)) {
        std::string_view rest = line;
        if (take_word(rest) == first_word) {
            return words_of(line);
        }
    }
    return {};
}

bool is_torn(std::string_view table) {
    return !table.empty() && table.back() != '\n';
}

bool is_hex(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

// "7" or "0-3"
Figure count_range(std::string_view range) {
    const std::size_t dash = range.find('-');
    const Figure first = number(range.substr(0, dash));
    const Figure last = dash == npos ? first : number(range.substr(dash + 1));
    return plus(minus(last, first), 1);
}

}  // namespace

// MemTotal:       24684096 kB
// MemFree:        24242828 kB
// MemAvailable:   24278144 kB
// Buffers:            7492 kB
// Cached:           202756 kB
// SwapTotal:             0 kB
// SwapFree:              0 kB
// Shmem:              8788 kB
//
// Kernels before 3.14 do not say what is available. Shared memory stands in Cached there, and is
// not given back.
MemoryInfo parse_memory_info(std::string_view text) {
    const auto value = [text](std::string_view key) { return number_at(line_of(text, key), 1); };
    MemoryInfo info;
    info.total_kib = value("MemTotal:");
    info.used_kib = minus(info.total_kib, value("MemAvailable:"));
    if (line_of(text, "MemAvailable:").empty()) {
        const Figure unused = plus(plus(value("MemFree:"), value("Buffers:")), value("Cached:"));
        info.used_kib = minus(plus(info.total_kib, value("Shmem:")), unused);
    }
    info.swap_total_kib = value("SwapTotal:");
    info.swap_used_kib = minus(info.swap_total_kib, value("SwapFree:"));
    return info;
}

// cpu  23134 25 6221 100001 802 0 194 1264 0 0
//
// user, nice, system, idle, waiting for a disk, irq, softirq, stolen, and twice what the first two
// have of guests
Figure parse_cpu_ms(std::string_view text, std::int64_t ticks_per_second) {
    const Words words = line_of(text, "cpu");
    Figure ticks = 0;
    for (const std::size_t place : {1U, 2U, 3U, 6U, 7U}) {
        ticks = plus(ticks, number_at(words, place));
    }
    const Figure ms = times(ticks, 1000);
    return ms ? Figure(*ms / ticks_per_second) : Figure();
}

// procs_running 3
Figure parse_runnable(std::string_view text) {
    return number_at(line_of(text, "procs_running"), 1);
}

// some avg10=0.82 avg60=0.27 avg300=0.45 total=6642353
// full avg10=0.81 avg60=0.25 avg300=0.42 total=6202895
Figure parse_pressure_us(std::string_view text) {
    constexpr std::string_view key = "total=";
    for (const std::string_view word : line_of(text, "some")) {
        if (word.substr(0, key.size()) == key) {
            return number(word.substr(key.size()));
        }
    }
    return {};
}

// 254       0 vda 57634 8827 3183250 24064 39571 17091 4708896 16515 0 14064 41860 8790 66 338832
// 971 5292 310
//
// major and minor number, name; reads, those merged, sectors, milliseconds; the same of writes.
// A sector is 512 bytes here, whatever the disk says.
DiskTotals parse_disk_totals(std::string_view text, const IsPhysical& is_physical) {
    constexpr std::int64_t sector_bytes = 512;
    if (is_torn(text)) {
        return {};
    }
    DiskTotals totals = {0, 0, 0};
    std::string_view line;
    while (take_line(text, line)) {
        const Words words = words_of(line);
        if (words.size() < 3 || !is_physical(words[2])) {
            continue;
        }
        totals.read_bytes = plus(totals.read_bytes, times(number_at(words, 5), sector_bytes));
        totals.written_bytes = plus(totals.written_bytes, times(number_at(words, 9), sector_bytes));
        totals.operations = plus(totals.operations, plus(number_at(words, 3), number_at(words, 7)));
    }
    return totals;
}

// Inter-|   Receive                                                |  Transmit
//  face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo
//   eth0: 370178667    6577    0    0    0     0          0         0   249026    3142    0    0
//
// with four more columns behind; older kernels have no blank behind the colon.
NetTotals parse_net_totals(std::string_view text, const IsPhysical& is_physical) {
    if (is_torn(text)) {
        return {};
    }
    NetTotals totals = {0, 0};
    std::string_view line;
    while (take_line(text, line)) {
        const std::size_t colon = line.find(':');
        std::string_view rest = line.substr(0, colon);
        const std::string_view name = take_word(rest);
        if (colon == npos || !is_physical(name)) {
            continue;
        }
        const Words words = words_of(line.substr(colon + 1));
        totals.received_bytes = plus(totals.received_bytes, number_at(words, 0));
        totals.sent_bytes = plus(totals.sent_bytes, number_at(words, 8));
    }
    return totals;
}

// 657.77 1000.01
//
// seconds up, and seconds idle summed over the processors
Figure parse_uptime_ms(std::string_view text) {
    constexpr std::size_t decimals = 2;
    std::string_view line;
    take_line(text, line);
    const std::string_view seconds = take_word(line);
    const std::size_t point = seconds.find('.');
    if (point == npos || seconds.size() != point + 1 + decimals) {
        return {};
    }
    const Figure hundredths = number(seconds.substr(point + 1));
    return plus(times(number(seconds.substr(0, point)), 1000), times(hundredths, 10));
}

// 9b0b7d13-c910-4f72-848b-fb91ccdfaad1
std::string parse_boot_id(std::string_view text) {
    constexpr std::string_view shape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    std::string_view line;
    take_line(text, line);
    if (line.size() != shape.size()) {
        return {};
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == 'x' ? !is_hex(line[i]) : line[i] != shape[i]) {
            return {};
        }
    }
    return std::string(line);
}

// 0-3,8
Figure count_cpu_list(std::string_view text) {
    std::string_view list;
    Figure count = take_line(text, list) ? Figure(0) : Figure();
    while (count) {
        const std::size_t comma = list.find(',');
        count = plus(count, count_range(list.substr(0, comma)));
        if (comma == npos) {
            break;
        }
        list.remove_prefix(comma + 1);
    }
    return count;
}

// Name:	sshd
// VmSize:	   15436 kB
// VmLck:	       0 kB
// Threads:	1
ProcessStatus parse_process_usage(std::string_view status_text) {
    constexpr std::string_view name_key = "Name:\t";
    ProcessStatus status;
    std::string_view line;
    while (!status.threads && take_line(status_text, line)) {
        std::string_view rest = line;
        const std::string_view key = take_word(rest);
        if (line.substr(0, name_key.size()) == name_key) {
            status.name = line.substr(name_key.size());
        } else if (key == "VmSize:") {
            status.has_memory = true;
        } else if (key == "VmLck:") {
            status.locked_kib = number(take_word(rest));
        } else if (key == "Threads:") {
            status.threads = number(take_word(rest));
        }
    }
    return status;
}
