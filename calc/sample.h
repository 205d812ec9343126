// One sample of the host: what one pass over the counting commands and the memory scan finds. The
// sampling loop keeps the largest of many; a recording keeps them all.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "calc/host_profile.h"
#include "inspect/host.h"

// The counts of one pass, named and measured as those of the profile; 0 where a step was not taken.
struct SampleCounts {
    std::int32_t numproc = 0;
    std::int32_t numtcpsock = 0;
    std::int32_t numothersock = 0;
    std::int32_t numfile = 0;
    std::int32_t privvmpages = 0;  // 4-KiB pages
    std::int32_t lockedpages = 0;  // 4-KiB pages
    std::int32_t shmpages = 0;
    std::int32_t numflock = 0;
    std::int32_t numiptent = 0;
    std::int32_t diskspace = 0;  // KiB
    std::int32_t diskinodes = 0;
};

// A count by its name, and where the profile keeps the largest of it.
struct SampleField {
    const char* name;
    std::int32_t SampleCounts::*count;
    std::int32_t PhysParams::*largest;
};

constexpr std::size_t sample_field_count = 11;

// All of them, in the order of the structure.
extern const std::array<SampleField, sample_field_count> sample_fields;

// One step of a pass: a command whose output is counted, or the memory scan.
struct SampleStep {
    const char* command;  // null for the memory scan
    std::int32_t (*parse)(const std::string& out);
    std::int32_t SampleCounts::*count;  // its number is added to this one; null as above
    bool forgiven;                      // a failure adds nothing and ends nothing
};

constexpr std::size_t sample_step_count = 11;

// All of them, in the order in which a pass takes them.
extern const std::array<SampleStep, sample_step_count> sample_steps;

// Why a step failed, and with it a pass that ended early.
struct SampleFailure {
    enum class Source { command, processes };
    Source source = Source::command;
    std::string text;      // whole, as the calculator's last error has it
    std::size_t step = 0;  // in sample_steps; those before it have been taken
};

// Takes one step, a forgiven one too, and adds what it finds to its count. Returns the failure, if
// any, with the counts unchanged.
std::optional<SampleFailure> take_step(const Host& host, std::size_t step, SampleCounts& counts);

struct Sample {
    SampleCounts counts;
    std::optional<SampleFailure> failure;
};

// Takes one pass: every step in its order, the first failing one that is not forgiven ends it.
Sample take_sample(const Host& host);

// Raises the profile's counts to those of a pass, and carries the running average on. `pass_no` is
// 1 for the first. After a failed pass, the counts of the steps before the failure are kept as
// well.
void keep_largest(PhysParams& profile, const Sample& sample, std::int32_t pass_no);
