// What the report shows: a fleet of servers, each with its explanation, what the table needs of it,
// and its counts over time. Plain values, filled from recordings and written as a page or a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/explain/explanation.h"
#include "plan/recording/recording.h"
#include "plan/report/usage_points.h"

struct ReportServer {
    std::string name;  // its file's without the ending: any bytes
    std::string host;  // what it calls itself; empty where there is no recording
    State state = State::failed;
    std::string reason;                         // why it is not done
    std::optional<RecordingHeader> header;      // none where there is no recording
    std::int64_t period = 0;                    // seconds between passes
    std::optional<Explanation> explanation;     // none where nothing was counted
    std::optional<std::uint64_t> memory_limit;  // bytes, SLMMEMORYLIMIT
    std::optional<std::uint64_t> disk;          // KiB, DISKSPACE
    std::optional<std::uint64_t> processes;     // NUMPROC
    std::optional<std::uint64_t> descriptors;   // NUMFILE
    std::vector<std::string> warnings;
    std::vector<std::vector<ReportPoint>> points;  // of every count of the explanation, thinned
    ServerUsage usage;
    std::vector<std::string> notes;  // paths that the copy of the server leaves out
};

struct ReportFleet {
    std::string title;
    std::string generated_utc;
    std::string version;  // of the program
    std::vector<ReportServer> servers;
};
