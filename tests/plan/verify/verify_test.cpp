// Whether a control group met its limits: made-up groups, read and judged.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <nlohmann/json.hpp>

#include "plan/verify/verdict.h"
#include "tests/plan/recordings.h"

namespace {

using Texts = std::map<std::string, std::string>;

// A container that has all of today's files and met nothing.
const Texts calm_group = {
    {"memory.max", "1517289472\n"},
    {"memory.high", "max\n"},
    {"memory.current", "851443712\n"},
    {"memory.peak", "1288490189\n"},
    {"memory.events", "low 0\nhigh 0\nmax 0\noom 0\noom_kill 0\noom_group_kill 0\n"},
    {"memory.swap.max", "0\n"},
    {"memory.swap.current", "0\n"},
    {"memory.swap.peak", "0\n"},
    {"memory.swap.events", "high 0\nmax 0\nfail 0\n"},
    {"pids.max", "1804\n"},
    {"pids.current", "1203\n"},
    {"pids.peak", "1503\n"},
    {"pids.events", "max 0\n"},
    {"cpu.max", "240000 100000\n"},
    {"cpu.weight", "240\n"},
    {"cpu.stat", "usage_usec 7654321\nnr_periods 3000\nnr_throttled 0\nthrottled_usec 0\n"},
    {"cpu.pressure", "some a b avg300=0.05 total=1234567\nfull a b avg300=0 total=7\n"},
    {"memory.pressure", "some a b avg300=0.99 total=0\nfull a b avg300=9 total=9\n"},
    {"io.pressure", "some a b avg300=2.50 total=60000000\nfull a b avg300=0 total=0\n"},
};

// The group with other texts in some of its files; an empty one is a file that is not there.
GroupVerdict judged(const Texts& changes) {
    GroupFiles files;
    files.path = "/g";
    files.texts = changes;
    files.texts.insert(calm_group.begin(), calm_group.end());
    return judge(parse_control_group(files));
}

bool says(const GroupVerdict& verdict, const std::string& text) {
    return verdict_text(verdict).find(text) != std::string::npos;
}

TEST(Verify, AGroupThatMetNothing) {
    EXPECT_TRUE(judged({}).all_fit);
    EXPECT_EQ("\n" + verdict_text(judged({})), R"(
control group: /g

limit            is               now              peak             times met        state
memory.max       1.4 GiB          812 MiB          1.2 GiB          0                fits
memory.swap.max  0 bytes          0 bytes          0 bytes          0                fits
pids.max         1,804 tasks      1,203 tasks      1,503 tasks      0                fits
cpu.max          2.40 cores       -                -                0                fits

cpu.weight       240
cpu.pressure     some task waited 1.2 s in all, 0.05 % of the last 5 minutes
memory.pressure  some task waited 0.0 s in all, 0.99 % of the last 5 minutes
io.pressure      some task waited 60.0 s in all, 2.50 % of the last 5 minutes

no limit was met
)");
}

TEST(Verify, EachLimitThatWasMetIsNamed) {
    const Texts all = {
        {"memory.high", "4096\n"},
        {"memory.events", "high 7\nmax 90\noom 3\noom_kill 2\n"},
        {"memory.swap.events", "high 0\nmax 5\nfail 5\n"},
        {"pids.events", "max 4\n"},
        {"cpu.stat", "nr_periods 3000\nnr_throttled 17\nthrottled_usec 1234567\n"},
    };
    for (const LimitVerdict& limit : judged(all).limits) {
        EXPECT_EQ(limit.state, LimitState::met) << limit.name;
    }
    const std::string text = verdict_text(judged(all));
    EXPECT_EQ("\n" + text.substr(text.find("! ")), R"(
! raise memory.max (MemoryMax, lxc.cgroup2.memory.max, --memory, limits.memory): processes were killed for it, 2 times
! raise memory.high (MemoryHigh, lxc.cgroup2.memory.high): tasks were slowed down, 7 times
! raise memory.swap.max (MemorySwapMax, lxc.cgroup2.memory.swap.max, --memory-swap): it was met 5 times; or raise the limit of memory by as much
! raise pids.max (TasksMax, lxc.cgroup2.pids.max, --pids-limit): tasks were refused, 4 times
! raise cpu.max (CPUQuota, lxc.cgroup2.cpu.max, --cpus, limits.cpu): tasks were stopped in 17 of 3,000 periods, for 1,234 ms in all
)");
    const std::pair<Texts, const char*> others[] = {
        {{{"memory.events", "max 90\noom 1\n"}}, "limits.memory): memory was refused, once"},
        {{{"memory.events", "max 1234\n"}, {"memory.pressure", "some a b avg300=1.00 total=5\n"}},
         "limits.memory): it was met 1,234 times, and tasks wait for memory"},
        {{{"pids.peak", "1804\n"}}, "--pids-limit): as many tasks ran at once as it allows"},
        {{{"memory.max", "max\n"}, {"memory.events", "max 0\noom_kill 3\n"}},
         "processes were killed for memory, 3 times, while memory.max is not set here: look at the "
         "groups above and below, and at the memory of the host"},
    };
    for (const auto& [changes, raise] : others) {
        EXPECT_TRUE(says(judged(changes), raise + std::string("\n"))) << raise;
        EXPECT_FALSE(judged(changes).all_fit) << raise;
    }
    EXPECT_TRUE(says(judged(others[2].first), "0                met\n")) << "as many as it allows";
}

TEST(Verify, WhatIsNoFaultIsSaid) {
    const std::pair<Texts, Remarks> cases[] = {
        {{{"memory.events", "max 1234\noom 0\noom_kill 0\n"}},
         {"memory.max: it was met 1,234 times, and enough was given back each time (page cache); "
          "nothing was killed"}},
        {{{"memory.peak", ""}, {"memory.swap.peak", ""}, {"pids.peak", ""}},
         {"memory.peak: not there before Linux 5.19, so that the peak is not known",
          "memory.swap.peak: not there before Linux 6.5, so that the peak is not known",
          "pids.peak: not there before Linux 6.1, so that the peak is not known"}},
        {{{"pids.events", ""}}, {"pids.max: how often it was met is not known"}},
        {{{"pids.max", ""}},
         {"pids.max: not there: its controller is not switched on for this group, so nothing is "
          "limited or counted"}},
        {{{"memory.swap.events", "max 0\nfail 2\n"}},
         {"memory.swap.max: swap was refused 2 times, not by this limit alone: the host may have "
          "too little of it"}},
    };
    for (const auto& [changes, remarks] : cases) {
        const GroupVerdict verdict = judged(changes);
        EXPECT_EQ(verdict.remarks, remarks);
        EXPECT_TRUE(verdict.all_fit) << remarks[0];
    }
    EXPECT_TRUE(says(judged(cases[0].first), "1,234            given back\n"));
    const GroupVerdict unlimited = judged({{"memory.max", "max\n"},
                                           {"memory.swap.max", "max\n"},
                                           {"pids.max", "max\n"},
                                           {"cpu.max", "max 100000\n"}});
    EXPECT_FALSE(unlimited.all_fit);
    EXPECT_EQ(unlimited.remarks, Remarks{"no limit is set here: is it the right group?"});
    GroupVerdict one = judged({{"memory.max", "max\n"}, {"pids.max", "1\n"}, {"io.pressure", ""}});
    one.values.path = "/g\x1b[2J";
    EXPECT_EQ(verdict_text(one).rfind("control group: /g\\x1b[2J\n", 0), 0U);
    EXPECT_TRUE(says(one, "\nmemory.max       none             812 MiB "));
    EXPECT_TRUE(says(one, "\npids.max         1 task           1,203 tasks "));
    EXPECT_TRUE(says(one, "\nio.pressure      not known\n"));
}

TEST(Verify, AsJson) {
    const GroupVerdict verdict = judged({{"pids.events", "max 4\n"},
                                         {"cpu.max", "max 100000\n"},
                                         {"memory.events", "high 5\nmax 6\noom 7\noom_kill 8\n"},
                                         {"memory.swap.max", ""},
                                         {"memory.pressure", "some\n"}});
    nlohmann::json json = nlohmann::json::parse(verdict_json(verdict));
    EXPECT_EQ(json["remarks"], nlohmann::json(verdict.remarks));
    json.erase("raise");
    json.erase("remarks");
    EXPECT_EQ(json, nlohmann::json::parse(R"({"control_group": "/g", "all_fit": false, "limits": [
        {"name": "memory.max", "unit": "bytes", "limit": 1517289472, "now": 851443712,
         "peak": 1288490189, "times_met": 6, "state": "met"},
        {"name": "memory.swap.max", "unit": "bytes", "limit": null, "now": 0,
         "peak": 0, "times_met": 0, "state": "unknown"},
        {"name": "pids.max", "unit": "tasks", "limit": 1804, "now": 1203,
         "peak": 1503, "times_met": 4, "state": "met"},
        {"name": "cpu.max", "unit": "us of each period", "limit": null, "now": null,
         "peak": null, "times_met": 0, "state": "no limit"}],
        "cpu": {"weight": 240, "usage_us": 7654321, "period_us": 100000, "periods": 3000,
                "throttled_us": 0},
        "memory": {"high": 5, "oom": 7, "oom_kill": 8},
        "pressure": {"cpu": {"total_us": 1234567, "average_percent": 0.05}, "memory": null,
                     "io": {"total_us": 60000000, "average_percent": 2.5}}})"));
}

void put_group(const MadeUpHost& host, const std::string& group, const Texts& texts) {
    for (const auto& [name, text] : texts) {
        host.put(group + "/" + name, text);
    }
}

GroupVerdict verdict_of(const std::string& group, const MadeUpHost& host) {
    const Kiln::Result<GroupFiles> read = read_control_group(group, host.root);
    EXPECT_EQ(read.reason(), "");
    return judge(parse_control_group(*read));
}

TEST(Verify, TheGroupThatIsMeant) {
    const MadeUpHost host;
    put_group(host, "a.slice", calm_group);
    host.put("a.slice/cgroup.controllers", "cpu memory pids\n");
    host.put("a.slice/b/pids.events", "max 2\n");
    for (const std::string& group :
         {std::string("a.slice"), std::string("/a.slice"), host.root + "/a.slice"}) {
        EXPECT_EQ(read_control_group(group, host.root)->texts, calm_group) << "every file";
        EXPECT_TRUE(verdict_of(group, host).all_fit);
    }
    // As on an older kernel, which counts below as well.
    std::filesystem::remove(host.path("a.slice/pids.peak"));
    EXPECT_EQ(verdict_of("a.slice", host).raise,
              Remarks{"raise pids.max (TasksMax, lxc.cgroup2.pids.max, --pids-limit): tasks were "
                      "refused in the groups below, 2 times, by it or by limits of their own"});
    put_group(host, "a.slice", calm_group);
    // The limits of a container may be in a group inside of the one that its engine names.
    for (const char* const limit : {"memory.max", "memory.swap.max", "pids.max", "cpu.max"}) {
        const std::string file = std::string("a.slice/b/") + limit;
        host.put(file, "700\n");
        EXPECT_FALSE(verdict_of("a.slice", host).all_fit) << limit;
        EXPECT_EQ(
            verdict_of("a.slice", host).remarks,
            Remarks{"the group in it has limits of its own: verify " + host.path("a.slice/b too")});
        host.put(file, "max 100000\n");
        EXPECT_TRUE(verdict_of("a.slice", host).all_fit) << limit;
    }
    host.put("a.slice/b/pids.max", "700\n");
    host.put("a.slice/c/pids.max", "700\n");
    EXPECT_TRUE(verdict_of("a.slice", host).all_fit) << "there are several";
    // What cannot be read is said, and nothing is well then.
    put_group(host, "odd",
              {{"cgroup.controllers", ""}, {"pids.max", "5\n"}, {"pids.events", "max 0\n"}});
    ASSERT_EQ(mkfifo(host.path("odd/cpu.stat").c_str(), 0600), 0);
    EXPECT_FALSE(verdict_of("odd", host).all_fit);
    EXPECT_EQ(verdict_of("odd", host).remarks.back(), "cpu.stat: it is a FIFO");
}

TEST(Verify, AFolderThatIsNoGroupIsRefused) {
    const MadeUpHost host;
    host.put("old/tasks", "");
    EXPECT_EQ(read_control_group("old", host.root).reason(),
              host.path("old is a control group of version 1; only version 2 is read"));
    EXPECT_EQ(read_control_group("gone", host.root).reason(),
              host.path("gone: No such file or directory"));
    host.put("none/pids.max", "");
    EXPECT_EQ(read_control_group("none", host.root).reason(),
              host.path("none is no control group: it has no cgroup.controllers"));
    host.put("memory/tasks", "");
    EXPECT_EQ(read_control_group("gone", host.root).reason(),
              host.path("gone is no control group of version 2; this host has version 1 at ") +
                  host.root);
}

}  // namespace
