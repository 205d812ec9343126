// What recordings of one host come to, as if one long scan had taken all their passes. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "calc/container_config.h"
#include "calc/host_profile.h"
#include "kiln/result.h"
#include "plan/recording/recording.h"

// A recording and what it is called in messages.
struct NamedRecording {
    std::string name;
    Recording recording;
};

// When a pass of one of several recordings was taken.
struct Moment {
    std::int64_t time_ms = 0;   // since the epoch
    std::int64_t at_ms = 0;     // since the start of its recording
    std::int32_t pass = 0;      // its number there
    std::size_t recording = 0;  // which one of those that were given
};

struct TimedPass {
    Moment moment;
    const RecordedPass* pass;  // the recording's
};

// Of passes of one moment, those of the recording that was named first come first.
std::vector<TimedPass> passes_by_time(const std::vector<NamedRecording>& recordings);

struct CombinedScan {
    PhysParams profile;
    std::int32_t page_size = 0;         // bytes
    TakenCounts seen;                   // the counts that at least one pass has
    bool has_findings = false;          // of the one-shot steps
    bool reiserfs_found = false;        // the profile's inodes are not what the passes counted
    std::vector<StepFailure> failures;  // of the newest one-shot steps
    std::string messages;               // what they said on standard error
};

// The largest of every count; the average over all passes in the order of time; the newest
// findings. The reason says which recordings are not of one host, or that there is no pass.
Kiln::Result<CombinedScan> combine(const std::vector<NamedRecording>& recordings);

// A line that cannot be computed, and why.
struct MissingLine {
    std::string name;
    std::string reason;
    bool of_last_line = false;  // only a recording's last line has it, and there is none
};

struct ComputedConfig {
    std::vector<ConfigLine> lines;     // those that can be computed, in their order
    std::vector<MissingLine> missing;  // the others; lines that the host has no use for are neither
};

ComputedConfig compute_known_lines(const CombinedScan& scan, ConfigScales scales);

// The line of that name; null without one.
const ConfigLine* find_line(const std::vector<ConfigLine>& lines, const std::string& name);

// Lines of a configuration that share a reason.
struct LinesOfReason {
    std::vector<std::string> lines;
    std::string reason;
};

// Adds the line to those of its reason; the groups stay in the order of their first lines.
void add_by_reason(const std::string& line, const std::string& reason,
                   std::vector<LinesOfReason>& groups);

// The missing lines by their reasons: "left out: A, B (reason)".
std::vector<std::string> missing_by_reason(const std::vector<MissingLine>& missing);

// Whether a shell that reads the configuration would act on the text of the line.
bool is_odd_for_a_shell(const ConfigLine& line);

// What is wrong with what was computed, a line for each: lines that are missing, texts that a shell
// acts on, passes that failed.
std::vector<std::string> find_flaws(const std::vector<NamedRecording>& recordings,
                                    const CombinedScan& scan, const ComputedConfig& computed);
