// A control group of version 2 as its files say it: reading them, and the values in them. For
// `tarnhwplan verify`.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kiln/result.h"

// Where control groups are on the host; tests hand in another place.
constexpr const char* control_groups_root = "/sys/fs/cgroup";

// What is known of a group beside its files.
struct GroupFacts {
    std::string path;
    std::vector<std::string> unreadable;  // "memory.max: Permission denied"
    // Forks that were refused in the groups below, each counted where it was tried.
    std::int64_t forks_refused_below = 0;
    std::string limited_below;  // the path of the only group below, if it has limits of its own
};

// The texts of those files of a group that are there, by their names ("memory.max").
struct GroupFiles : GroupFacts {
    std::map<std::string, std::string> texts;
};

// Reads a group. `group` is a path below `root`, with or without "/" before it, or one that begins
// with `root`, or that of a folder elsewhere. The reason says that there is none, that it is one of
// version 1, or that it vanished meanwhile.
Kiln::Result<GroupFiles> read_control_group(const std::string& group,
                                            const std::string& root = control_groups_root);

// How long a part of the group waited.
struct Pressure {
    double average_percent = 0.0;  // of the last 300 seconds
    std::int64_t total_us = 0;
};

struct GroupValues : GroupFacts {
    // A limit that is "max" is not limited: `unlimited`.
    struct Amount {
        bool there = false;  // the file is, and says a number or "max"
        bool unlimited = false;
        std::int64_t value = 0;
    };

    // A limit, and how near it was come to.
    struct Resource {
        Amount max, current, peak;
        std::optional<std::int64_t> met;  // how often; nothing where its file or line is not there
    };

    Resource memory, memory_high, swap;  // bytes; memory_high: what slows tasks down
    Resource tasks;
    Amount cpu_quota_us;  // in each cpu_period_us
    std::int64_t cpu_period_us = 0;
    std::optional<std::int64_t> cpu_weight;
    std::optional<std::int64_t> cpu_usage_us;
    std::optional<std::int64_t> memory_oom, memory_oom_kill, swap_failed;  // how often
    std::optional<std::int64_t> cpu_periods, cpu_throttled, cpu_throttled_us;
    std::optional<Pressure> cpu_pressure, memory_pressure, io_pressure;  // some task waited
};

// Pure. What is torn or no number is not there.
GroupValues parse_control_group(const GroupFiles& files);
