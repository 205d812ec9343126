// A scan: when its passes are due, what its observer is told, how it ends, and what is kept of a
// pass. Scenarios show the counts.
#include "calc/scan.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "calc/memory_scan.h"
#include "calc/process_memory.h"
#include "tests/support/made_up_host.h"

namespace {

using namespace std::chrono_literals;
using Seconds = std::vector<std::int64_t>;

// A clock that only sleeping and passes move, of a host whose every pass takes its time.
struct FakeTime {
    explicit FakeTime(std::int64_t seconds_per_pass = 0, std::int64_t stopped = 0) {
        clock.now = [this] { return 1000000 + passed; };
        clock.sleep = [this, stopped](std::int32_t seconds) { passed += seconds + stopped; };
        clock.steady = [this] { return std::chrono::steady_clock::time_point{passed * 1s}; };
        made_up.host.physical_pages = [this, seconds_per_pass] {  // asked once in every pass
            begun.push_back(passed);
            passed += seconds_per_pass;
            return -1;
        };
    }
    bool fails(std::int32_t time, std::int32_t period, ScanObserver* observer = nullptr) {
        return run_scan(made_up.host, clock, {time, period}, observer, profile).has_value();
    }

    MadeUpHost made_up;
    Clock clock;
    PhysParams profile;
    std::int64_t passed = 0;
    Seconds begun;  // the passes, since the start
};

TEST(Scan, PassesAreDueByTheClock) {
    const std::tuple<std::int32_t, std::int32_t, std::int64_t, Seconds> cases[] = {
        {0, 0, 0, {0, 0}},
        {0, 60, -60, {0, -60}},  // one, also when the clock is set back during it
        {300, 120, 0, {0, 120, 240, 300, 300}},
        {300, 600, 0, {0, 300, 300}},  // the shorter of the two
        {300, 300, 300, {0, 300}},     // over with the first pass
        {300, 100, 30, {0, 130, 260, 300, 330}},
        {10, 4, 5, {0, 9, 14}},  // a pass that crosses the end is the last
    };
    for (const auto& [time, period, pass_takes, begun_and_over] : cases) {
        FakeTime fake(pass_takes);
        EXPECT_FALSE(fake.fails(time, period));
        fake.begun.push_back(fake.passed);
        EXPECT_EQ(fake.begun, begun_and_over) << time << " by " << period;
    }
    ScanSchedule schedule = make_schedule(0, 10, 8);
    EXPECT_EQ(next_sleep(schedule, 8), 2);
    EXPECT_EQ(next_sleep(schedule, 1), 2) << "shrunk for good, even when the clock is set back";
    EXPECT_EQ(next_sleep(schedule = make_schedule(0, 10, -3), 1), 0) << "no time is no end";
}

struct Listener : ScanObserver {
    void progress(const ScanProgress& p) override {
        told.push_back({p.passes_done, p.elapsed_seconds, p.next_pass_seconds});
    }
    void finished() override { ++ends; }

    std::vector<Seconds> told;
    int ends = 0;
};

TEST(Scan, TellsEverySecondAndTheEndOnce) {
    FakeTime fake;
    Listener listener;
    EXPECT_FALSE(fake.fails(5, 3, &listener));
    const std::vector<Seconds> expected = {{0, 0, 0}, {1, 0, 3}, {1, 1, 2}, {1, 2, 1},
                                           {1, 3, 0}, {2, 3, 2}, {2, 4, 1}, {2, 5, 0}};
    EXPECT_EQ(listener.told, expected);

    fake.profile.avnumproc = 1e30F;
    fake.made_up.answers["ps ax | wc -l"].out = "40";
    fake.profile.numflock = fake.profile.diskspace = -5;                   // they wrapped
    fake.made_up.answers["iptables -n -L -t filter | wc -l"].status = -1;  // forgiven
    fake.made_up.answers["ip route list | wc -l"].out = "7";
    fake.made_up.answers["df -k -l"].status = 1;
    EXPECT_TRUE(fake.fails(5, 3, &listener));
    EXPECT_EQ(listener.ends, 2);
    EXPECT_EQ(fake.begun.size(), 4U) << "three, and the one that failed";
    EXPECT_EQ(fake.profile.avnumproc, 40.0F) << "begun anew";
    EXPECT_EQ(std::pair(fake.profile.numflock, fake.profile.numiptent), std::pair(0, 7));
    EXPECT_EQ(fake.profile.diskspace, -5) << "a step that was not taken raises nothing";

    // Stopped for a minute in its first second of sleep: it does not make up for that.
    FakeTime stopped(0, 60);
    EXPECT_FALSE(stopped.fails(5, 3, &listener));
    EXPECT_EQ(stopped.passed, 61);
}

TEST(Profile, KeepsTheLargestAndAveragesTheMaximum) {
    PhysParams profile;
    Sample sample;
    sample.taken.set();
    const auto average_after = [&](std::int32_t numproc, int pass_no) {
        sample.counts[&PhysParams::numproc] = numproc;
        keep_largest(profile, sample, pass_no);
        return profile.avnumproc;
    };
    EXPECT_EQ(average_after(300, 1), 300.0F);
    EXPECT_EQ(average_after(600, 2), 450.0F);
    EXPECT_EQ(average_after(100, 3), 500.0F) << "(600 - 450) / 3 above it: 600 is the maximum";
    sample.taken.reset(place_of(&PhysParams::numproc));
    EXPECT_EQ(average_after(900, 4), 500.0F) << "nothing was counted";
}

TEST(ProcessStatus, HasTheNameToo) {
    proc_info_t info;
    parse_process_status("Name:\tmy daemon\nNames:\tx\nName\n", info);
    EXPECT_EQ(info.name, "my daemon");
}

TEST(SumMemory, TakesTheFirstOfChildrenOfOneSize) {
    ProcessTables tables;
    add_process(tables, 101, "PPid:\t5\nVmSize:\t40000\nVmLck:\t8\n");
    add_process(tables, 102, "PPid:\t5\nVmSize:\t40001\nVmLck:\t9\n");
    const MemoryTotals totals = sum_memory(tables);
    EXPECT_EQ(std::pair(totals.vm_kib, totals.lck_kib), std::pair(40000, 8));
}

TEST(MemoryScan, StopsAtTheMachinesPages) {
    MadeUpHost made_up;
    made_up.put("19/status", "PPid:\t0\nVmSize:\t4095 kB\nVmLck:\t40007 kB\n");
    EXPECT_EQ(scan_memory(made_up.host)->privvmpages, 1023);
    made_up.host.physical_pages = [] { return 1000; };
    EXPECT_EQ(scan_memory(made_up.host)->privvmpages, 1000);
    EXPECT_EQ(scan_memory(made_up.host)->lockedpages, 10001);
}

}  // namespace
