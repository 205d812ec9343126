// A scan: when its passes are due, what its observer is told, and how it ends.
#include "calc/scan.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/calc/made_up_host.h"

namespace {

using namespace std::chrono_literals;
using Seconds = std::vector<std::int64_t>;

// A clock that only sleeping and passes move, of a host whose every pass takes its time.
struct FakeTime {
    explicit FakeTime(std::int64_t seconds_per_pass = 0) {
        clock.now = [this] { return 1000000 + passed; };
        clock.sleep = [this](std::int32_t seconds) {
            slept.push_back(seconds);
            passed += seconds + stopped;
        };
        clock.steady = [this] { return std::chrono::steady_clock::time_point{passed * 1s}; };
        made_up.host.physical_pages = [this, seconds_per_pass] {  // asked once in every pass
            begun.push_back(passed);
            passed += seconds_per_pass;
            return -1;
        };
    }
    std::optional<SampleFailure> scan(std::int32_t time, std::int32_t period,
                                      ScanObserver* observer = nullptr) {
        return run_scan(made_up.host, clock, {time, period}, observer, profile);
    }

    MadeUpHost made_up;
    Clock clock;
    PhysParams profile;
    std::int64_t passed = 0;
    std::int64_t stopped = 0;  // longer than asked in every sleep
    Seconds slept;
    Seconds begun;  // the passes, since the start
};

TEST(Scan, PassesAreDueByTheClock) {
    const struct {
        std::int32_t time, period;
        std::int64_t pass_takes;
        Seconds begun, slept;
    } cases[] = {
        {0, 0, 0, {0}, {}},
        {300, 120, 0, {0, 120, 240, 300}, {120, 120, 60}},
        {300, 600, 0, {0, 300}, {300}},  // the shorter of the two
        {300, 300, 300, {0}, {}},        // over with the first pass
        {300, 100, 30, {0, 130, 260, 300}, {100, 100, 10}},
        {10, 4, 5, {0, 9}, {4}},  // a pass that crosses the end is the last
    };
    for (const auto& c : cases) {
        FakeTime fake(c.pass_takes);
        EXPECT_FALSE(fake.scan(c.time, c.period));
        EXPECT_EQ(fake.begun, c.begun) << c.time << " by " << c.period;
        EXPECT_EQ(fake.slept, c.slept) << c.time << " by " << c.period;
    }
    ScanSchedule schedule = make_schedule(0, 10, 8);
    EXPECT_EQ(next_sleep(schedule, 8), 2);
    EXPECT_EQ(next_sleep(schedule, 1), 2) << "shrunk for good, even when the clock is set back";
    schedule = make_schedule(0, 10, -3);
    EXPECT_EQ(next_sleep(schedule, 1), 0) << "no time is no end";
}

TEST(Scan, StartsItsAverageAnewAndKeepsWhatCameBeforeAFailure) {
    FakeTime fake;
    fake.profile.avnumproc = 1e30F;
    fake.made_up.answers["ps ax | wc -l"].out = "40";
    fake.made_up.answers["df -k -l"] = {1, "", "df: stale\n"};
    const std::optional<SampleFailure> failure = fake.scan(60, 1);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->text, "Error running 'df -k -l':\ndf: stale\n");
    EXPECT_EQ(fake.profile.numproc, 40);
    EXPECT_EQ(fake.profile.avnumproc, 40.0F);
    EXPECT_EQ(fake.profile.numpty, 255);
    EXPECT_EQ(fake.begun.size(), 1U);
}

struct Listener : ScanObserver {
    void progress(const ScanProgress& p) override {
        EXPECT_EQ(p.total_seconds, 5);
        told.push_back({p.passes_done, p.elapsed_seconds, p.next_pass_seconds});
        if (throws_at == told.size()) {
            throw std::runtime_error("while it runs");
        }
    }
    void finished() override {
        ++ends;
        if (throws_at_end) {
            throw std::runtime_error("at its end");
        }
    }
    std::string heard_of(FakeTime& fake) {
        try {
            return fake.scan(5, 3, this) ? "failed" : "done";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    std::vector<Seconds> told;
    std::size_t throws_at = 0;
    bool throws_at_end = false;
    int ends = 0;
};

TEST(Scan, TellsEverySecondAndTheEndOnce) {
    FakeTime fake;
    Listener listener;
    EXPECT_EQ(listener.heard_of(fake), "done");
    const std::vector<Seconds> expected = {{0, 0, 0}, {1, 0, 3}, {1, 1, 2}, {1, 2, 1},
                                           {1, 3, 0}, {2, 3, 2}, {2, 4, 1}, {2, 5, 0}};
    EXPECT_EQ(listener.told, expected);
    fake.made_up.answers["df -k -l"].status = 1;
    EXPECT_EQ(listener.heard_of(fake), "failed");
    EXPECT_EQ(listener.ends, 2);

    // Stopped for a minute in its first second of sleep: it does not make up for that.
    FakeTime stopped;
    Listener patient;
    stopped.stopped = 60;
    EXPECT_EQ(patient.heard_of(stopped), "done");
    EXPECT_EQ(patient.told.size(), 3U);
}

TEST(Scan, AnObserverThatThrowsEndsIt) {
    for (const bool throws_at_end : {false, true}) {
        FakeTime fake;
        Listener listener;
        listener.throws_at_end = throws_at_end;
        EXPECT_EQ(listener.heard_of(fake), throws_at_end ? "at its end" : "done");
        listener.throws_at = listener.told.size() + 3;
        EXPECT_EQ(listener.heard_of(fake), "while it runs");
        EXPECT_EQ(listener.ends, 2);
    }
}

}  // namespace
