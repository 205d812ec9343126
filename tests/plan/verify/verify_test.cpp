// Whether a control group met its limits: made-up groups, read and judged.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>

#include "plan/verify/verdict.h"
#include "tests/plan/recordings.h"

namespace {

using Texts = std::map<std::string, std::string>;

// A container that has all of today's files and met nothing.
Texts calm_group() {
    return {
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
        {"cpu.stat",
         "usage_usec 7654321\nuser_usec 7000000\nsystem_usec 654321\nnr_periods 3000\n"
         "nr_throttled 0\nthrottled_usec 0\n"},
        {"cpu.pressure",
         "some avg10=0.00 avg60=0.12 avg300=0.05 total=1234567\n"
         "full avg10=0.00 avg60=0.00 avg300=0.00 total=7\n"},
        {"memory.pressure",
         "some avg10=0.00 avg60=0.00 avg300=0.99 total=0\n"
         "full avg10=9.00 avg60=9.00 avg300=9.00 total=9\n"},
        {"io.pressure",
         "some avg10=0.00 avg60=0.00 avg300=2.50 total=60000000\n"
         "full avg10=0.00 avg60=0.00 avg300=0.00 total=0\n"},
    };
}

GroupVerdict judged(const Texts& changes, const Texts& group = calm_group()) {
    GroupFiles files;
    files.path = "/g";
    files.texts = changes;
    files.texts.insert(group.begin(), group.end());
    return judge(parse_control_group(files));
}

LimitState state_of(const GroupVerdict& verdict, const std::string& name) {
    for (const LimitVerdict& limit : verdict.limits) {
        if (limit.name == name) {
            return limit.state;
        }
    }
    ADD_FAILURE() << name;
    return LimitState::unknown;
}

TEST(Verify, AGroupThatMetNothing) {
    const GroupVerdict verdict = judged({});
    EXPECT_TRUE(verdict.all_fit);
    EXPECT_EQ(verdict_text(verdict),
              "control group: /g\n"
              "\n"
              "limit            is               now              peak             times met     "
              "   state\n"
              "memory.max       1.4 GiB          812 MiB          1.2 GiB          0             "
              "   fits\n"
              "memory.swap.max  0 bytes          0 bytes          0 bytes          0             "
              "   fits\n"
              "pids.max         1,804 tasks      1,203 tasks      1,503 tasks      0             "
              "   fits\n"
              "cpu.max          2.40 cores       -                -                0             "
              "   fits\n"
              "\n"
              "cpu.weight       240\n"
              "cpu.pressure     some task waited 1.2 s in all, 0.05 % of the last 5 minutes\n"
              "memory.pressure  some task waited 0.0 s in all, 0.99 % of the last 5 minutes\n"
              "io.pressure      some task waited 60.0 s in all, 2.50 % of the last 5 minutes\n"
              "\n"
              "no limit was met\n");
}

TEST(Verify, EachLimitThatWasMetIsNamed) {
    const std::string memory =
        "raise memory.max (MemoryMax, lxc.cgroup2.memory.max, --memory, limits.memory): ";
    const std::string tasks = "raise pids.max (TasksMax, lxc.cgroup2.pids.max, --pids-limit): ";
    const std::pair<Texts, std::pair<const char*, std::string>> cases[] = {
        {{{"memory.events", "max 90\noom 3\noom_kill 2\n"}},
         {"memory.max", memory + "processes were killed for it, 2 times"}},
        {{{"memory.events", "max 90\noom 1\noom_kill 0\n"}},
         {"memory.max", memory + "memory was refused, once"}},
        {{{"memory.events", "max 1234\noom 0\noom_kill 0\n"},
          {"memory.pressure", "some avg10=0.00 avg60=0.00 avg300=1.00 total=5\n"}},
         {"memory.max", memory + "it was met 1,234 times, and tasks wait for memory"}},
        {{{"memory.high", "4096\n"}, {"memory.events", "high 7\nmax 0\noom 0\noom_kill 0\n"}},
         {"memory.high",
          "raise memory.high (MemoryHigh, lxc.cgroup2.memory.high): tasks were slowed down, 7 "
          "times"}},
        {{{"memory.swap.events", "high 0\nmax 5\nfail 5\n"}},
         {"memory.swap.max",
          "raise memory.swap.max (MemorySwapMax, lxc.cgroup2.memory.swap.max, --memory-swap): it "
          "was met 5 times; or raise the limit of memory by as much"}},
        {{{"pids.events", "max 4\n"}}, {"pids.max", tasks + "tasks were refused, 4 times"}},
        {{{"pids.peak", "1804\n"}}, {"pids.max", tasks + "as many tasks ran at once as it allows"}},
        {{{"cpu.stat", "nr_periods 3000\nnr_throttled 17\nthrottled_usec 1234567\n"}},
         {"cpu.max",
          "raise cpu.max (CPUQuota, lxc.cgroup2.cpu.max, --cpus, limits.cpu): tasks were stopped "
          "in 17 of 3,000 periods, for 1,234 ms in all"}},
    };
    for (const auto& [changes, expected] : cases) {
        const GroupVerdict verdict = judged(changes);
        EXPECT_EQ(verdict.raise, Remarks{expected.second});
        EXPECT_EQ(state_of(verdict, expected.first), LimitState::met);
        EXPECT_FALSE(verdict.all_fit);
        EXPECT_EQ(verdict_text(verdict).find("no limit was met"), std::string::npos);
    }
}

TEST(Verify, PageCacheThatWasGivenBackIsNoFault) {
    const GroupVerdict verdict = judged({{"memory.events", "max 1234\noom 0\noom_kill 0\n"}});
    EXPECT_TRUE(verdict.all_fit);
    EXPECT_EQ(state_of(verdict, "memory.max"), LimitState::given_back);
    EXPECT_EQ(verdict.remarks,
              Remarks{"memory.max: it was met 1,234 times, and enough was given back each time "
                      "(page cache); nothing was killed"});
}

TEST(Verify, WhatAKernelOrAGroupLacksIsSaid) {
    Texts old = calm_group();
    for (const char* const file : {"memory.peak", "memory.swap.peak", "pids.peak"}) {
        old.erase(file);
    }
    const GroupVerdict without_peaks = judged({}, old);
    EXPECT_TRUE(without_peaks.all_fit);
    EXPECT_EQ(without_peaks.remarks,
              (Remarks{"memory.peak: not there before Linux 5.19, so that the peak is not known",
                       "memory.swap.peak: not there before Linux 6.5, so that the peak is not "
                       "known",
                       "pids.peak: not there before Linux 6.1, so that the peak is not known"}));

    const GroupVerdict nothing = judged({}, {});
    EXPECT_FALSE(nothing.all_fit);
    ASSERT_EQ(nothing.remarks.size(), 5U);
    EXPECT_EQ(nothing.remarks[0],
              "memory.max: not there: its controller is not switched on for this group, so nothing "
              "is limited or counted");
    EXPECT_EQ(nothing.remarks[4], "no limit is set here: is it the right group?");

    Texts uncounted = calm_group();
    uncounted.erase("pids.events");
    EXPECT_EQ(judged({}, uncounted).remarks,
              Remarks{"pids.max: how often it was met is not known"});

    const GroupVerdict unlimited = judged({{"memory.max", "max\n"},
                                           {"memory.swap.max", "max\n"},
                                           {"pids.max", "max\n"},
                                           {"cpu.max", "max 100000\n"},
                                           {"memory.events", "max 0\noom 0\noom_kill 3\n"}});
    EXPECT_FALSE(unlimited.all_fit);
    EXPECT_EQ(unlimited.raise,
              Remarks{"processes were killed for memory, 3 times, while memory.max is not set "
                      "here: look at the groups above and below, and at the memory of the host"});
    GroupVerdict one = judged({{"memory.max", "max\n"}, {"pids.max", "1\n"}});
    one.values.path = "/g\x1b[2J";
    const std::string text = verdict_text(one);
    EXPECT_EQ(text.rfind("control group: /g\\x1b[2J\n", 0), 0U);
    EXPECT_NE(text.find("\nmemory.max       none             812 MiB "), std::string::npos);
    EXPECT_NE(text.find("\npids.max         1 task           1,203 tasks "), std::string::npos);
    EXPECT_EQ(judged({{"memory.swap.events", "max 0\nfail 2\n"}}).remarks,
              Remarks{"memory.swap.max: swap was refused 2 times, not by this limit alone: the "
                      "host may have too little of it"});
}

TEST(Verify, WhatIsNoNumberIsNotThere) {
    for (const char* const text : {"", "\n", "-1\n", "12x\n", "1 2\n", "99999999999999999999\n"}) {
        const GroupVerdict verdict = judged({{"memory.max", text}, {"pids.max", text}});
        EXPECT_EQ(state_of(verdict, "memory.max"), LimitState::unknown) << text;
        EXPECT_EQ(state_of(verdict, "pids.max"), LimitState::unknown) << text;
    }
    for (const char* const text : {"", "max", "100000 0\n", "100000\n", "1 2 3\n", "x 100000\n"}) {
        EXPECT_EQ(state_of(judged({{"cpu.max", text}}), "cpu.max"), LimitState::unknown) << text;
    }
    for (const char* const text :
         {"", "some\n", "some a b avg300=nan total=1\n", "some a b avg300=1.00 total=\n",
          "full a b avg300=1 total=1\n"}) {
        EXPECT_NE(
            verdict_text(judged({{"io.pressure", text}})).find("io.pressure      not known\n"),
            std::string::npos)
            << text;
    }
}

TEST(Verify, AsJson) {
    const nlohmann::json json = nlohmann::json::parse(
        verdict_json(judged({{"pids.events", "max 4\n"},
                             {"cpu.max", "max 100000\n"},
                             {"memory.events", "high 5\nmax 6\noom 7\noom_kill 8\n"},
                             {"memory.swap.max", "900\n"},
                             {"memory.swap.current", "30\n"},
                             {"memory.swap.peak", "80\n"}})));
    const nlohmann::json tasks = {{"name", "pids.max"}, {"unit", "tasks"}, {"limit", 1804},
                                  {"now", 1203},        {"peak", 1503},    {"times_met", 4},
                                  {"state", "met"}};
    const nlohmann::json cpu = {{"name", "cpu.max"},  {"unit", "us of each period"},
                                {"limit", nullptr},   {"now", nullptr},
                                {"peak", nullptr},    {"times_met", 0},
                                {"state", "no limit"}};
    EXPECT_EQ(json.at("control_group"), "/g");
    EXPECT_EQ(json.at("all_fit"), false);
    EXPECT_EQ(json.at("limits").at(1), (nlohmann::json{{"name", "memory.swap.max"},
                                                       {"unit", "bytes"},
                                                       {"limit", 900},
                                                       {"now", 30},
                                                       {"peak", 80},
                                                       {"times_met", 0},
                                                       {"state", "fits"}}));
    EXPECT_EQ(json.at("limits").at(2), tasks);
    EXPECT_EQ(json.at("limits").at(3), cpu);
    EXPECT_EQ(json.at("cpu"), (nlohmann::json{{"weight", 240},
                                              {"usage_us", 7654321},
                                              {"period_us", 100000},
                                              {"periods", 3000},
                                              {"throttled_us", 0}}));
    const auto pressure = [](std::int64_t total_us, double percent) {
        return nlohmann::json{{"total_us", total_us}, {"average_percent", percent}};
    };
    EXPECT_EQ(json.at("pressure"), (nlohmann::json{{"cpu", pressure(1234567, 0.05)},
                                                   {"memory", pressure(0, 0.99)},
                                                   {"io", pressure(60000000, 2.5)}}));
    EXPECT_EQ(json.at("memory"), (nlohmann::json{{"high", 5}, {"oom", 7}, {"oom_kill", 8}}));
    EXPECT_EQ(json.at("raise").size(), 2U);
    EXPECT_EQ(json.at("remarks").size(), 0U);
}

void put_group(const MadeUpHost& host, const std::string& group, const Texts& texts) {
    for (const auto& [name, text] : texts) {
        host.put(group + "/" + name, text);
    }
}

TEST(Verify, TheGroupThatIsMeant) {
    const MadeUpHost host;
    Texts texts = calm_group();
    texts["cgroup.controllers"] = "cpu memory pids\n";
    put_group(host, "a.slice", texts);
    put_group(host, "a.slice/b", {{"pids.events", "max 2\n"}});
    put_group(host, "old", {{"tasks", ""}});
    put_group(host, "none", {{"memory.max", "1"}});
    for (const std::string& group :
         {std::string("a.slice"), std::string("/a.slice"), host.root + "/a.slice"}) {
        const Kiln::Result<GroupFiles> read = read_control_group(group, host.root);
        ASSERT_EQ(read.reason(), "");
        GroupFiles files = *read;
        EXPECT_EQ(files.texts.size(), calm_group().size()) << "every file";
        EXPECT_TRUE(judge(parse_control_group(files)).all_fit);
        files.texts.erase("pids.peak");  // as on an older kernel, which counts below as well
        EXPECT_EQ(judge(parse_control_group(files)).raise,
                  Remarks{"raise pids.max (TasksMax, lxc.cgroup2.pids.max, --pids-limit): tasks "
                          "were refused in the groups below, 2 times, by it or by limits of their "
                          "own"});
    }
    // The limits of a container may be in a group inside of the one that its engine names.
    for (const char* const limit : {"memory.max", "memory.swap.max", "pids.max", "cpu.max"}) {
        put_group(host, "a.slice/b", {{limit, "700\n"}});
        const GroupVerdict outer =
            judge(parse_control_group(*read_control_group("a.slice", host.root)));
        EXPECT_FALSE(outer.all_fit) << limit;
        EXPECT_EQ(outer.remarks, Remarks{"the group in it has limits of its own: verify " +
                                         host.root + "/a.slice/b too"});
        put_group(host, "a.slice/b", {{limit, "max 100000\n"}});
    }
    EXPECT_TRUE(judge(parse_control_group(*read_control_group("a.slice", host.root))).all_fit);
    put_group(host, "a.slice/b", {{"pids.max", "700\n"}});
    put_group(host, "a.slice/c", {{"pids.max", "max\n"}});
    EXPECT_TRUE(judge(parse_control_group(*read_control_group("a.slice", host.root))).all_fit);
    // What cannot be read is said, and nothing is well then.
    host.put("odd/cgroup.controllers", "");
    host.put("odd/memory.max/x", "");
    host.put("odd/pids.max", "5\n");
    ASSERT_EQ(mkfifo(host.path("odd/cpu.stat").c_str(), 0600), 0);
    host.put("odd/pids.events", "max 0\n");
    const GroupVerdict odd = judge(parse_control_group(*read_control_group("odd", host.root)));
    EXPECT_FALSE(odd.all_fit);
    EXPECT_EQ(Remarks(odd.remarks.end() - 2, odd.remarks.end()),
              (Remarks{"memory.max: it is a folder", "cpu.stat: it is a FIFO"}));
    // A whole path to a group elsewhere.
    EXPECT_EQ(read_control_group(host.root + "/a.slice", "/nowhere").reason(), "");
    const std::string folder = host.root + "/";
    EXPECT_EQ(read_control_group("old", host.root).reason(),
              folder + "old is a control group of version 1; only version 2 is read");
    EXPECT_EQ(read_control_group("none", host.root).reason(),
              folder + "none is no control group: it has no cgroup.controllers");
    EXPECT_EQ(read_control_group("gone", host.root).reason(),
              folder + "gone: No such file or directory");
    put_group(host, "memory", {{"tasks", ""}});
    EXPECT_EQ(
        read_control_group("gone", host.root).reason(),
        folder + "gone is no control group of version 2; this host has version 1 at " + host.root);
}

}  // namespace
