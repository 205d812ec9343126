// One sample of the host: what one pass over the counting commands and the memory scan finds. The
// sampling loop keeps the largest of many; a recording keeps them all.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "calc/counts.h"
#include "calc/host_profile.h"
#include "calc/process_observer.h"
#include "calc/sample_parsers.h"
#include "inspect/host.h"

// The counts of one pass, by their place in sampled_counts or by the profile's field; 0 where a
// step was not taken.
class SampleCounts {
public:
    std::int32_t& operator[](std::size_t place) { return values_.at(place); }
    std::int32_t operator[](std::size_t place) const { return values_.at(place); }
    std::int32_t& operator[](CountField field) { return values_.at(place_of(field)); }
    std::int32_t operator[](CountField field) const { return values_.at(place_of(field)); }

private:
    std::array<std::int32_t, sampled_count_number> values_ = {};
};

// Which counts a pass has, by their place in sampled_counts.
using TakenCounts = std::bitset<sampled_count_number>;

// One step of a pass: a command whose output is counted, or the memory scan. A row has every cell.
struct SampleStep {
    using Parser = std::int32_t (*)(const std::string& out);

    constexpr SampleStep(const char* its_label, const char* its_command, Parser its_parser,
                         CountField its_count, CountField its_other_count, bool is_forgiven)
        : label(its_label),
          command(its_command),
          parse(its_parser),
          count(its_count),
          other_count(its_other_count),
          forgiven(is_forgiven) {}

    // The counts that the step gives, or a part of them.
    TakenCounts counts() const;

    const char* label;       // for a person
    const char* command;     // null for the memory scan
    Parser parse;            // null as above
    CountField count;        // a command's number is added to this one
    CountField other_count;  // only the memory scan has one
    bool forgiven;           // a failure adds nothing and ends nothing
};

// All of them, in the order in which a pass takes them. The header lines that the sources print are
// counted too; that is the rule. A host without a packet filter or without the routing tool still
// gets a rule count: those two are forgiven.
inline constexpr SampleStep sample_steps[] = {
    {"processes", "ps ax | wc -l", parse_count, &PhysParams::numproc, nullptr, false},
    {"TCP sockets", "wc -l < /proc/net/tcp", parse_count, &PhysParams::numtcpsock, nullptr, false},
    {"other sockets", "cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l", parse_count,
     &PhysParams::numothersock, nullptr, false},
    {"open files", "ls /proc/*/fd/* | wc -l", parse_count, &PhysParams::numfile, nullptr, false},
    {"memory", nullptr, nullptr, &PhysParams::privvmpages, &PhysParams::lockedpages, false},
    {"shared memory", "/usr/bin/ipcs -m -u", parse_shm_pages, &PhysParams::shmpages, nullptr,
     false},
    {"file locks", "wc -l < /proc/locks", parse_count, &PhysParams::numflock, nullptr, false},
    {"filter rules", "iptables -n -L -t filter | wc -l", parse_count, &PhysParams::numiptent,
     nullptr, true},
    {"routes", "ip route list | wc -l", parse_count, &PhysParams::numiptent, nullptr, true},
    {"disk space", "df -k -l", sum_used_column, &PhysParams::diskspace, nullptr, false},
    {"inodes", "df -i -l", sum_used_column, &PhysParams::diskinodes, nullptr, false},
};

constexpr std::size_t sample_step_number = std::size(sample_steps);

// Why a step failed, and with it a pass that ended early.
struct SampleFailure {
    enum class Source { command, processes };
    Source source = Source::command;
    std::string text;  // whole, as the calculator's last error has it
};

// Takes one step, a forgiven one too, and adds what it finds to its count. Returns the failure, if
// any, with the counts unchanged. The observer, if there is one, sees the processes of the memory
// scan.
std::optional<SampleFailure> take_step(const Host& host, const SampleStep& step,
                                       SampleCounts& counts, ProcessObserver* observer = nullptr);

struct Sample {
    SampleCounts counts;
    TakenCounts taken;  // those of the steps before the failure; all of them without one
    std::optional<SampleFailure> failure;
};

// Takes one pass: every step in its order, the first failing one that is not forgiven ends it.
Sample take_sample(const Host& host);

// Raises the profile's counts to those that the pass has taken, and carries the running average on
// where it has counted the processes. `pass_no` is 1 for the first.
void keep_largest(PhysParams& profile, const Sample& sample, std::int32_t pass_no);
