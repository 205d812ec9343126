// What the report shows: a fleet of servers, each with its explanation, what the table needs of it,
// and its counts over time. Plain values, filled from recordings and written as a page or a table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/explain/explanation.h"
#include "plan/recording/recording.h"

// One value of a count, at a moment of the recording.
struct ReportPoint {
    std::int64_t seconds = 0;  // since the recording's start
    std::int64_t value = 0;    // in the count's own unit
};

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
    std::vector<std::string> notes;                // paths that the copy of the server leaves out
};

struct ReportFleet {
    std::string title;
    std::string generated_utc;
    std::string version;  // of the program
    std::vector<ReportServer> servers;
};
