// Whether the limits of a control group were met, and what to raise. Pure; for `tarnhwplan verify`.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/verify/control_group.h"

enum class LimitState {
    fits,        // it was never met
    given_back,  // it was reached by what the kernel could give back, page cache above all
    met,
    unlimited,
    unknown,  // its files are not there
};
const char* name_of(LimitState state);

struct LimitVerdict {
    enum class Unit { bytes, tasks, cpu_us };  // cpu_us: in each period of the group

    std::string name;  // of its file: "memory.max"
    Unit unit = Unit::bytes;
    GroupValues::Amount limit, now, peak;
    std::optional<std::int64_t> times_met;
    LimitState state = LimitState::unknown;
};

struct GroupVerdict {
    GroupValues values;
    std::vector<LimitVerdict> limits;
    std::vector<std::string> raise;    // what to raise and why, a line for each limit that was met
    std::vector<std::string> remarks;  // what is not known, and what else deserves a look

    // Some limit is set, none was met, and none is in a group below that was not looked at.
    bool all_fit = false;
};

GroupVerdict judge(const GroupValues& values);

std::string verdict_text(const GroupVerdict& verdict);
std::string verdict_json(const GroupVerdict& verdict);
