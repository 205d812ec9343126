#include "plan/verify/verdict.h"

#include <algorithm>

#include "plan/text/printable.h"

namespace {

using Amount = GroupValues::Amount;
using Unit = LimitVerdict::Unit;

constexpr double waiting_percent = 1.0;  // of the last five minutes: tasks do wait for memory

bool happened(const std::optional<std::int64_t>& times) {
    return times.value_or(0) > 0;
}

std::string times_text(std::int64_t times) {
    return times == 1 ? "once" : grouped(times) + " times";
}

class Judge {
public:
    explicit Judge(const GroupValues& values) : values_(values) { verdict_.values = values; }

    GroupVerdict run() {
        judge_memory();
        judge_high_memory();
        judge_swap();
        judge_tasks();
        judge_cpu();
        note_old_kernel();
        const auto has = [this](LimitState state) {
            return std::any_of(verdict_.limits.begin(), verdict_.limits.end(),
                               [&](const LimitVerdict& limit) { return limit.state == state; });
        };
        if (!values_.limited_below.empty()) {
            remark("the group in it has limits of its own: verify " + values_.limited_below +
                   " too");
        } else if (!has(LimitState::fits) && !has(LimitState::given_back) &&
                   !has(LimitState::met)) {
            remark("no limit is set here: is it the right group?");
        } else {
            verdict_.all_fit = verdict_.raise.empty() && values_.unreadable.empty();
        }
        return std::move(verdict_);
    }

private:
    void remark(const std::string& text) { verdict_.remarks.push_back(text); }

    // The row, with the state that its limit and its count give it; a caller may know better.
    LimitVerdict& add(const char* name, Unit unit, const GroupValues::Resource& resource) {
        const auto& [limit, now, peak, times] = resource;
        LimitVerdict row = {name, unit, limit, now, peak, times, LimitState::unknown};
        if (limit.unlimited) {
            row.state = LimitState::unlimited;
        } else if (limit.there && times) {
            row.state = *times == 0 ? LimitState::fits : LimitState::met;
        }
        verdict_.limits.push_back(row);
        return verdict_.limits.back();
    }

    void raise(LimitVerdict& limit, const std::string& engines, const std::string& why) {
        limit.state = LimitState::met;
        verdict_.raise.push_back("raise " + limit.name + " (" + engines + "): " + why);
    }

    void judge_unlimited_memory() {
        if (happened(values_.memory_oom_kill)) {
            verdict_.raise.push_back("processes were killed for memory, " +
                                     times_text(*values_.memory_oom_kill) +
                                     ", while memory.max is not set here: look at the groups above "
                                     "and below, and at the "
                                     "memory of the host");
        }
    }

    // The group's memory has page cache in it, which fills it up to the limit sooner or later and
    // is given back then: that alone is no reason to raise anything.
    void judge_memory() {
        const char* const engines = "MemoryMax, lxc.cgroup2.memory.max, --memory, limits.memory";
        LimitVerdict& row = add("memory.max", Unit::bytes, values_.memory);
        if (row.state == LimitState::unlimited) {
            judge_unlimited_memory();
        } else if (happened(values_.memory_oom_kill)) {
            raise(row, engines,
                  "processes were killed for it, " + times_text(*values_.memory_oom_kill));
        } else if (happened(values_.memory_oom)) {
            raise(row, engines, "memory was refused, " + times_text(*values_.memory_oom));
        } else if (row.state == LimitState::met) {
            const std::string met = "it was met " + times_text(*values_.memory.met);
            if (values_.memory_pressure &&
                values_.memory_pressure->average_percent >= waiting_percent) {
                raise(row, engines, met + ", and tasks wait for memory");
            } else {
                row.state = LimitState::given_back;
                remark("memory.max: " + met +
                       ", and enough was given back each time (page cache); nothing was killed");
            }
        }
    }

    void judge_high_memory() {
        if (values_.memory_high.max.there && !values_.memory_high.max.unlimited) {
            LimitVerdict& row = add("memory.high", Unit::bytes, values_.memory_high);
            if (row.state == LimitState::met) {
                raise(row, "MemoryHigh, lxc.cgroup2.memory.high",
                      "tasks were slowed down, " + times_text(*values_.memory_high.met));
            }
        }
    }

    void judge_swap() {
        LimitVerdict& row = add("memory.swap.max", Unit::bytes, values_.swap);
        if (row.state == LimitState::met) {
            raise(row, "MemorySwapMax, lxc.cgroup2.memory.swap.max, --memory-swap",
                  "it was met " + times_text(*values_.swap.met) +
                      "; or raise the limit of memory by as much");
        }
        if (values_.swap_failed.value_or(0) > values_.swap.met.value_or(0)) {
            remark("memory.swap.max: swap was refused " + times_text(*values_.swap_failed) +
                   ", not by this limit alone: the host may have too little of it");
        }
    }

    void judge_tasks() {
        LimitVerdict& row = add("pids.max", Unit::tasks, values_.tasks);
        const char* const engines = "TasksMax, lxc.cgroup2.pids.max, --pids-limit";
        if (row.state == LimitState::met) {
            raise(row, engines, "tasks were refused, " + times_text(*values_.tasks.met));
        } else if (row.state == LimitState::fits && row.peak.there &&
                   row.peak.value >= row.limit.value) {
            raise(row, engines, "as many tasks ran at once as it allows");
        } else if (row.state == LimitState::fits && !row.peak.there &&
                   values_.forks_refused_below > 0) {
            raise(row, engines,
                  "tasks were refused in the groups below, " +
                      times_text(values_.forks_refused_below) +
                      ", by it or by limits of their own");
        }
    }

    void judge_cpu() {
        LimitVerdict& row =
            add("cpu.max", Unit::cpu_us, {values_.cpu_quota_us, {}, {}, values_.cpu_throttled});
        if (row.state == LimitState::met) {
            raise(row, "CPUQuota, lxc.cgroup2.cpu.max, --cpus, limits.cpu",
                  "tasks were stopped in " + grouped(*values_.cpu_throttled) + " of " +
                      grouped(values_.cpu_periods.value_or(0)) + " periods, for " +
                      grouped(values_.cpu_throttled_us.value_or(0) / 1000) + " ms in all");
        }
    }

    void note_old_kernel() {
        const std::pair<const GroupValues::Resource&, const char*> peaks[] = {
            {values_.memory, "memory.peak: not there before Linux 5.19"},
            {values_.swap, "memory.swap.peak: not there before Linux 6.5"},
            {values_.tasks, "pids.peak: not there before Linux 6.1"}};
        for (const auto& [resource, text] : peaks) {
            if (resource.max.there && !resource.peak.there) {
                remark(std::string(text) + ", so that the peak is not known");
            }
        }
        for (const LimitVerdict& limit : verdict_.limits) {
            if (limit.state == LimitState::unknown) {
                remark(limit.name + ": " +
                       (limit.limit.there ? "how often it was met is not known"
                                          : "not there: its controller is not switched on for this "
                                            "group, so nothing is limited or counted"));
            }
        }
        for (const std::string& file : values_.unreadable) {
            remark(file);
        }
    }

    const GroupValues& values_;
    GroupVerdict verdict_;
};

}  // namespace

const char* name_of(LimitState state) {
    constexpr const char* names[] = {"fits", "given back", "met", "no limit", "unknown"};
    return names[static_cast<std::size_t>(state)];
}

GroupVerdict judge(const GroupValues& values) {
    return Judge(values).run();
}
