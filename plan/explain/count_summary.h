// What all passes say about one count. Pure; a part of the explanation.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/recording/combined_scan.h"

// A value of a count, and where it was seen.
struct Observation : Moment {
    std::int32_t value = 0;
};

struct CountSummary {
    const Count* count = nullptr;
    std::int64_t unit_bytes = 0;      // what one of it is in bytes; 0 for things
    std::optional<Observation> peak;  // the first of the largest; none when no pass has it
    std::int32_t least = 0;
    std::int32_t median = 0;
    double mean = 0;
    std::vector<std::string> flaws;    // the numbers themselves are wrong
    std::vector<std::string> remarks;  // more may be to come: watch longer
    std::vector<std::string> notes;    // whether it is steady or jumps
    bool impossible_zero = false;      // every pass counted 0 of what each host has
};

// "12,480 processes", or for memory and disks "1.2 GiB (317,000)".
std::string amount_text(const CountSummary& summary, std::int32_t value);

// In the order of sampled_counts.
std::vector<CountSummary> summarize_counts(const std::vector<NamedRecording>& recordings,
                                           std::int32_t page_size);
