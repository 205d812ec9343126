// How much of what was planned a recording has: passes and gaps, in five grades. Pure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plan/recording/combined_scan.h"

// A stretch of time without a pass that did not fail, in milliseconds since its recording's start.
struct Gap {
    std::size_t recording = 0;  // which one of those that were given
    std::int64_t from_ms = 0;
    std::int64_t to_ms = 0;
};

struct Coverage {
    std::int64_t planned = 0;  // passes
    std::int64_t taken = 0;    // passes that did not fail
    std::int64_t failed = 0;
    std::int64_t longest_gap_ms = 0;  // between two passes, or to the planned end
    std::vector<Gap> gaps;            // those longer than a pass and a half should be away
    int grade = 1;                    // 5 complete, 4 good, 3 fair, 2 poor, 1 scant
};

Coverage measure_coverage(const std::vector<NamedRecording>& recordings);

// Of a grade from 1 to 5.
const char* grade_name(int grade);

// What is below says too little of the time that was to be watched.
constexpr int least_usable_grade = 3;

// For a person: "coverage: 4 of 5, good: 97 of 100 passes, longest gap 0:35:00, failed 1"
std::string coverage_in_words(const Coverage& coverage);
