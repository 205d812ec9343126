// What a container of today needs, worked out from the usage that was recorded: the one table of
// limits. Pure; knows no engine. For the writers of the engines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/recording/combined_scan.h"

enum class LimitKind {
    memory,       // MiB
    swap,         // MiB
    tasks,        // tasks
    cpu,          // tenths of a core, where a limit was asked for
    cpu_share,    // hundredths of a core that are guaranteed
    descriptors,  // of one process
    locked,       // MiB of one process
    shm,          // MiB on /dev/shm
};
constexpr std::size_t limit_kind_count = 8;

constexpr std::int64_t most_mib = (std::int64_t{1} << 43) - 1;  // below 2^63 bytes

struct LimitOptions {
    ConfigScales scales;  // of memory and counts; and of the calculator's own lines
    double cpu_scale = 1.2;
    int cpu_percentile = 95;  // 1 to 100
    bool cpu_limit = false;
};

struct Limit {
    std::int64_t value = 0;  // in the unit of its kind
    std::string source;      // "peak of 1,503 tasks, 2026-03-12 14:05 UTC, pass 13, times 1.2"
};

// A line of the calculator's own configuration.
struct OwnLimit {
    std::uint64_t barrier = 0;
    std::uint64_t limit = 0;
    std::string
        text;  // "inodes: 300,000, at most 330,000; DISKINODES, times 1.5, a tenth in reserve"
};

// Everything that the writers say. Texts of the host are as it gave them: any bytes.
struct LimitSheet {
    PhysParams host;                   // what was found of it
    std::vector<std::string> heading;  // whose they are, and how far to be trusted: printable
    std::vector<std::string> notes;    // what is not in the limits: printable
    std::array<std::optional<Limit>, limit_kind_count> limits;
    std::optional<OwnLimit> disk_kib;
    std::optional<OwnLimit> inodes;
    std::vector<std::string> addresses;
    bool excludes_known = false;
    std::vector<std::string> mounts;      // not copied: network, removable, loop and bind mounts
    std::vector<std::string> complaints;  // what is missing, and why: a line for each

    const std::optional<Limit>& operator[](LimitKind kind) const {
        return limits[static_cast<std::size_t>(kind)];
    }
};

// What a writer of limits makes.
// Text in the engine's own format that says where each line of it comes from and what is not in it.
// The complaints are those of the sheet, and what of the host's texts the format cannot carry; the
// text has them, too.
struct LimitsText {
    std::string text;
    std::vector<std::string> complaints;
};

// `scan` is what combine() made of the recordings.
LimitSheet work_out_limits(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                           const LimitOptions& options);
