// What recordings of one host say about each line of the configuration, and how far they can be
// trusted. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calc/container_config.h"
#include "plan/explain/count_summary.h"
#include "plan/explain/coverage.h"
#include "plan/explain/usage_summary.h"
#include "plan/explain/verdict.h"
#include "plan/recording/combined_scan.h"

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

struct LineExplanation {
    std::string name;
    Basis basis = Basis::fixed;
    std::string count;                // the count that gives it its size, empty without one
    std::optional<Observation> peak;  // of that count
    std::string seen;                 // the peak in human terms, or what was seen instead of one
    std::optional<std::int32_t> floor;
    std::optional<float> factor;   // what the basis is multiplied with
    std::optional<double> margin;  // what is kept in reserve, as a factor
    std::string value;             // as the configuration has it; empty where it has no such line
    std::optional<std::uint64_t> barrier;  // of a pair
    std::optional<std::uint64_t> limit;    // of a pair, or the only number
    std::string meaning;                   // in human terms: "16.4 GiB", "288 processes"
    std::vector<std::string> made_from;    // of a derived line: the lines behind it
    std::string derivation;                // and how: the term that decided, and those it beat
    std::vector<std::string> remarks;      // what deserves a look
    std::vector<std::string> notes;        // what is good to know
};

struct Explanation {
    std::string host;                    // what it calls itself
    std::vector<LineExplanation> lines;  // in the order of the configuration, the missing ones last
    std::vector<CountSummary> counts;    // in the order of sampled_counts
    Coverage coverage;
    UsageSummaries usage;
    Verdict verdict;
    std::vector<std::string> remarks;  // on the whole, beside the reasons of the verdict
};

// What every container gets of a count at least.
std::optional<std::int32_t> floor_of(const Count& count);

// `scan` is what combine() made of the recordings.
Explanation explain(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                    ConfigScales scales);
