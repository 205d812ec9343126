// What the report shows: a fleet of servers, each with its limits, its explanation and its counts
// over time. Plain values, filled from recordings and written as a page or as a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One value of a count, at a moment of the recording.
struct ReportPoint {
    std::int64_t seconds = 0;  // since the recording's start
    std::int64_t value = 0;    // in the count's own unit
};

// One count over time.
struct ReportSeries {
    std::string name;             // as in the host profile: "numproc"
    std::string label;            // for a person: "processes"
    std::string unit;             // "KiB", "pages of 4 KiB"; empty for things that are just counted
    std::int64_t unit_bytes = 0;  // what one unit is in bytes; 0 for things
    std::vector<ReportPoint> points;  // thinned, in the order of time; the peak is among them
    ReportPoint peak;
    int peak_pass = 0;                    // 0 where nothing was measured
    std::optional<std::int64_t> floor;    // what every container gets at least
    std::optional<std::int64_t> barrier;  // of the resulting line; none where it wrapped
    std::vector<std::string> remarks;
};

// One line of the configuration, explained.
struct ReportLine {
    std::string name;     // "NUMPROC"
    std::string barrier;  // as written; a line with one value has no limit
    std::string limit;
    std::string meaning;                  // barrier or value in human terms: "16.4 GiB"
    std::string seen;                     // at most, in human terms; empty for what is not measured
    std::optional<std::int64_t> seen_at;  // seconds since the start
    int seen_in_pass = 0;
    std::string basis;   // "measurement", "floor", "fixed", ...
    std::string factor;  // "1.2"; empty where nothing is multiplied
    std::string margin;  // "10 %"; empty without
    std::vector<std::string> remarks;
};

// A stretch of time in which no pass was taken, in seconds since the start.
struct ReportGap {
    std::int64_t from = 0;
    std::int64_t to = 0;
};

enum class ServerState { done, partly, failed };

struct ReportServer {
    std::string name;  // what the host calls itself: any bytes
    ServerState state = ServerState::failed;
    std::string reason;  // why it is not done
    std::string machine;
    std::string kernel;
    std::int64_t page_size = 0;  // bytes
    std::string start_utc;       // "2026-03-12T14:05:00Z"; empty where unknown
    std::int64_t period = 0;     // seconds between passes
    std::int64_t planned_passes = 0;
    std::int64_t passes = 0;  // taken, the failed ones not counted
    std::int64_t failed_passes = 0;
    int coverage = 0;              // 1 (hardly) to 5 (complete); 0 where there is nothing to grade
    std::string coverage_grade;    // the grade's name
    std::int64_t longest_gap = 0;  // seconds
    std::vector<ReportGap> gaps;
    std::optional<std::uint64_t> memory_limit;  // bytes, SLMMEMORYLIMIT
    std::optional<std::uint64_t> disk;          // KiB, DISKSPACE
    std::optional<std::uint64_t> processes;     // NUMPROC
    std::optional<std::uint64_t> descriptors;   // NUMFILE
    std::vector<std::string> warnings;
    std::vector<ReportLine> lines;
    std::vector<ReportSeries> series;
    std::vector<std::string> notes;  // paths that the copy of the server leaves out
};

struct ReportFleet {
    std::string title;
    std::string generated_utc;
    std::string version;  // of the program
    std::vector<ReportServer> servers;
};

const char* name_of(ServerState state);
