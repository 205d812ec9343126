// What the memory scan costs beside a bare loop that opens, reads and closes the same status files,
// over many real processes, and how it grows with their number.
//
//     memory_scan_bench [--quick]      as root
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "bench/idle_processes.h"
#include "calc/memory_scan.h"

namespace {

constexpr double ratio_limit = 1.2;
constexpr double growth_limit = 5.5;  // from 1,000 to 5,000 processes

// The floor for files that are known beforehand: nothing is kept, no end of file is looked for.
void bare_read(const char* path) {
    char text[4096];
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0 || read(fd, text, sizeof text) <= 0)
        Bench::give_up(path);
    close(fd);
}

// The floor: finds the processes in /proc, as anybody must, and reads the file of each.
void bare_scan() {
    DIR* proc = opendir("/proc");
    while (const dirent* entry = readdir(proc)) {
        if (entry->d_name[0] < '0' || entry->d_name[0] > '9')
            continue;
        char path[300];
        std::snprintf(path, sizeof path, "/proc/%s/status", entry->d_name);
        bare_read(path);
    }
    closedir(proc);
}

void scan() {
    const auto found = scan_memory(Host());
    if (!found || found->privvmpages == 0)
        Bench::give_up("memory scan");
}

int measure(const Bench::Options& options) {
    Bench::Table table;
    Bench::IdleProcesses processes;
    const auto cost_of = [&](std::size_t count, int rounds) {
        processes.grow_to(count);
        const Bench::Medians medians =
            Bench::by_turns(rounds, Bench::Timing::cold_cpu, scan, bare_scan);
        table.compare("memory scan, " + std::to_string(count) + " processes", medians, ratio_limit);
        return medians;
    };
    const Bench::Medians of_100 = cost_of(100, options.rounds(200, 40));
    const Bench::Medians of_1000 = cost_of(1000, options.rounds(100, 20));
    const Bench::Medians of_5000 = cost_of(5000, options.rounds(40, 10));
    const auto read_known = [&] {
        for (const std::string& path : processes.status_paths())
            bare_read(path.c_str());
    };
    table.compare(
        "  beside reading 5000 files known beforehand",
        Bench::by_turns(options.rounds(40, 10), Bench::Timing::cold_cpu, scan, read_known),
        Bench::no_limit);
    table.growth("  growth, 100 to 1000 processes", of_100, of_1000, Bench::no_limit);
    table.growth("  growth, 1000 to 5000 processes", of_1000, of_5000, growth_limit);
    return table.exit_status();
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    if (geteuid() != 0) {
        Bench::Table().skip("memory scan", "skipped: needs root");
        return 0;
    }
    return Bench::in_private([&] { return measure(options); });
}
