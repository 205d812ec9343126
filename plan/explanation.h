// What recordings of one host say about each line of the configuration, and how far they can be
// trusted. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calc/container_config.h"
#include "plan/combined_scan.h"
#include "plan/coverage.h"

// The largest value of a count, where it was seen first.
struct Peak {
    std::int32_t value = 0;
    std::int64_t time_ms = 0;    // since the epoch
    std::int64_t at_ms = 0;      // since the start of its recording
    std::int32_t pass = 0;       // its number there
    std::size_t recording = 0;   // which one of those that were given
};

// One count over all passes.
struct CountStory {
    const char* name = "";        // as the profile has it: "numproc"
    const char* label = "";       // for a person: "processes"
    std::int64_t unit_bytes = 0;  // what one of it is in bytes; 0 for things
    const char* line = "";        // the line of the configuration that it gives its size
    std::optional<std::int32_t> floor;  // what every container gets at least
    std::optional<Peak> peak;           // none when no pass has it
    std::int32_t least = 0;
    std::int32_t median = 0;
    std::vector<std::string> remarks;  // steady or jumping, a late peak, still rising
};

// What decided the value of a line.
enum class Basis {
    measurement,  // what was seen, multiplied
    floor,        // less was seen than every container gets
    derived,      // other lines
    finding,      // a step that was taken once
    fixed,        // nothing
    missing,      // the line cannot be computed
};
const char* name_of(Basis basis);

struct LineStory {
    ConfigLine line;            // of a missing line only the name counts
    Basis basis = Basis::fixed;
    std::string count;          // the count that gives it its size, empty without one
    std::optional<Peak> peak;   // of that count
    std::optional<std::int32_t> floor;
    std::optional<float> factor;   // what the count is multiplied with
    std::optional<double> margin;  // the limit over the barrier
    std::string value;             // as the configuration has it
    std::string meaning;           // the barrier in human terms: "16.4 GiB", "288 processes"
    std::vector<std::string> remarks;
};

struct Explanation {
    std::vector<LineStory> lines;    // in the order of the configuration, the missing ones in place
    std::vector<CountStory> counts;  // in the order of sample_fields
    Coverage coverage;
    std::vector<std::string> remarks;  // on the whole: failed passes, failed steps
};

// `scan` is what combine() made of the recordings.
Explanation explain(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                    ConfigScales scales);

// "16.4 GiB"; below a KiB "512 bytes".
std::string bytes_text(std::uint64_t bytes);
