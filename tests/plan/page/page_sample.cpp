// Writes the page of a made-up fleet to standard output: page_sample SERVERS PASSES.
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "plan/report_page.h"
#include "plan/thinning.h"

namespace {

struct Count {
    const char* name;
    const char* label;
    const char* unit;
    std::int64_t unit_bytes;
    std::int64_t usual;
    std::int64_t floor;
};

const Count counts[] = {
    {"numproc", "Processes", "", 0, 400, 240},
    {"numtcpsock", "TCP sockets", "", 0, 120, 360},
    {"numothersock", "Other sockets", "", 0, 500, 360},
    {"numfile", "Open files", "", 0, 4000, 9312},
    {"privvmpages", "Private memory", "pages of 4 KiB", 4096, 900000, 65536},
    {"lockedpages", "Locked memory", "pages of 4 KiB", 4096, 100, 256},
    {"shmpages", "Shared memory", "pages", 4096, 9000, 21504},
    {"numflock", "File locks", "", 0, 40, 188},
    {"numiptent", "Packet filter rules and routes", "", 0, 30, 128},
    {"diskspace", "Disk space", "KiB", 1024, 50000000, -1},
    {"diskinodes", "Inodes", "", 0, 900000, -1},
};

std::uint32_t state = 1;
double noise() {
    state = state * 1664525U + 1013904223U;
    return (state >> 8) / 16777216.0;
}

ReportSeries make_series(const Count& count, int passes, double size) {
    std::vector<ReportPoint> points;
    ReportSeries series{count.name, count.label, count.unit, count.unit_bytes, {}, {}, 0, {}, {}};
    double drift = 1;
    for (int pass = 0; pass < passes; ++pass) {
        const double day = 1 + 0.4 * std::sin(pass / 288.0 * 6.2832) * noise();
        drift = count.floor < 0 ? drift + 0.0001 : day + (noise() > 0.998 ? 1.5 : 0);
        const auto value = static_cast<std::int64_t>(count.usual * size * drift);
        points.push_back({pass * 300, value});
        if (value > series.peak.value) {
            series.peak = points.back();
            series.peak_pass = pass + 1;
        }
    }
    series.points = thinned(points, 200);
    const double factor = count.floor < 0 ? 1.5 : 1.2;
    const auto floored = std::max(count.floor, series.peak.value);
    series.barrier = static_cast<std::int64_t>(static_cast<double>(floored) * factor);
    if (count.floor >= 0) {
        series.floor = count.floor;
    }
    return series;
}

ReportServer make_server(int number, int passes) {
    ReportServer s;
    s.name = "node" + std::to_string(number) + ".example.org";
    if (number == 3) {
        s.name = "\"><script>alert(1)</script>";
    }
    s.machine = "x86_64";
    s.kernel = "5.10.0-28-amd64";
    s.page_size = 4096;
    s.start_utc = "2026-03-02T06:00:00Z";
    s.period = 300;
    s.planned_passes = 2016;
    if (number % 9 == 5) {
        s.reason =
            "Error running 'df -k -l':\ndf: /mnt/backup: Transport endpoint is not connected";
        return s;
    }
    s.state = number % 7 == 4 ? ServerState::partly : ServerState::done;
    s.passes = s.state == ServerState::done ? passes : passes / 2;
    if (s.state == ServerState::partly) {
        s.reason = "stopped after half of its time";
        s.gaps = {{30000, 60000}};
        s.longest_gap = 30000;
        s.failed_passes = 2;
        s.warnings = {"The peak of numproc was in the last tenth of the scan: watch longer."};
    }
    s.coverage = s.state == ServerState::done ? 5 : 2;
    s.coverage_grade = s.state == ServerState::done ? "complete" : "poor";
    const double size = 0.3 + 2 * noise();
    for (const Count& count : counts) {
        s.series.push_back(make_series(count, s.passes, size));
        const ReportSeries& made = s.series.back();
        ReportLine line;
        line.name = count.name;
        for (char& c : line.name) {
            c = static_cast<char>(std::toupper(c));
        }
        line.barrier = line.limit = std::to_string(*made.barrier);
        line.meaning = count.unit_bytes ? "3.4 GiB" : "";
        line.seen = made.peak.value;
        line.seen_at = made.peak.seconds;
        line.seen_in_pass = made.peak_pass;
        line.basis = made.peak.value < count.floor ? "floor" : "measurement";
        line.factor = count.floor < 0 ? "1.5" : "1.2";
        line.margin = count.floor < 0 ? "10 %" : "";
        if (number % 7 == 4 && line.name == "NUMPROC") {
            line.remarks = {"still rising at the end: watch longer"};
        }
        s.lines.push_back(line);
    }
    s.lines.push_back(
        {"PHYSPAGES", "0", "9223372036854775807", "no limit", {}, {}, 0, "fixed", "", "", {}});
    s.lines.push_back({"CPUUNITS", "1000", "", "", {}, {}, 0, "fixed", "", "", {}});
    s.memory_limit = static_cast<std::uint64_t>(size * 24e9);
    s.disk = static_cast<std::uint64_t>(*s.series[9].barrier);
    s.processes = static_cast<std::uint64_t>(*s.series[0].barrier);
    s.descriptors = static_cast<std::uint64_t>(*s.series[3].barrier);
    s.notes = {"/dev/*", "/proc/*", "/sys/*"};
    return s;
}

}  // namespace

int main(int argc, char** argv) {
    const int servers = argc > 1 ? std::atoi(argv[1]) : 8;
    const int passes = argc > 2 ? std::atoi(argv[2]) : 2016;
    ReportFleet fleet{"Servers of example.org", "2026-03-09T08:00:00Z", "1.0", {}};
    for (int i = 1; i <= servers; ++i) {
        fleet.servers.push_back(make_server(i, passes));
    }
    return write_page(fleet, [](std::string_view text) { return bool(std::cout << text); }) ? 0 : 1;
}
