// A scan: when its passes are due, what its observer is told, and how it ends.
#include "calc/scan.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/calc/made_up_host.h"

namespace {

// A clock that only sleeping and passes move, of a host whose every pass takes its time.
class FakeTime {
public:
    explicit FakeTime(std::int64_t seconds_per_pass = 0) {
        clock.now = [this] { return 1000000 + passed_; };
        clock.sleep = [this](std::int32_t seconds) {
            slept.push_back(seconds);
            passed_ += seconds;
        };
        clock.steady = [this] {
            return std::chrono::steady_clock::time_point(std::chrono::seconds(passed_));
        };
        made_up.host.physical_pages = [this, seconds_per_pass] {  // asked once in every pass
            begun.push_back(passed_);
            passed_ += seconds_per_pass;
            return -1;
        };
    }

    std::optional<SampleFailure> scan(std::int32_t time, std::int32_t period,
                                      ScanObserver* observer = nullptr) {
        return run_scan(made_up.host, clock, {time, period}, observer, profile);
    }
    void pass_time(std::int64_t seconds) { passed_ += seconds; }

    using Seconds = std::vector<std::int64_t>;

    MadeUpHost made_up;
    Clock clock;
    PhysParams profile;
    Seconds slept;
    Seconds begun;  // the passes, since the start

private:
    std::int64_t passed_ = 0;
};

TEST(Scan, PassesAreDueByTheClock) {
    const struct {
        std::int32_t time, period;
        std::int64_t pass_takes;
        FakeTime::Seconds begun, slept;
    } cases[] = {
        {0, 0, 0, {0}, {}},
        {300, 120, 0, {0, 120, 240, 300}, {120, 120, 60}},
        {300, 600, 0, {0, 300}, {300}},  // the shorter of the two
        {300, 300, 301, {0}, {}},        // over before the first pass is
        {300, 300, 300, {0}, {}},        // or with it
        {300, 100, 30, {0, 130, 260, 300}, {100, 100, 10}},
        {10, 4, 5, {0, 9}, {4}},  // a pass that crosses the end is the last
        {10, 6, 1, {0, 7, 10}, {6, 2}},
    };
    for (const auto& c : cases) {
        FakeTime fake(c.pass_takes);
        EXPECT_FALSE(fake.scan(c.time, c.period));
        EXPECT_EQ(fake.begun, c.begun) << c.time << " by " << c.period;
        EXPECT_EQ(fake.slept, c.slept) << c.time << " by " << c.period;
    }
    // The interval stays shrunk when the clock is set back meanwhile.
    ScanSchedule schedule = make_schedule(0, 10, 8);
    EXPECT_EQ(next_sleep(schedule, 8), 2);
    EXPECT_EQ(next_sleep(schedule, 1), 2);
    EXPECT_EQ(next_sleep(schedule, 10), -1);
    schedule = make_schedule(2147483647, 2147483647, 2147483647);
    EXPECT_EQ(next_sleep(schedule, 2147483648), 2147483646);
    schedule = make_schedule(0, 10, -3);
    EXPECT_EQ(next_sleep(schedule, 1), 0) << "no time is no end";
}

TEST(Scan, StartsItsAverageAndItsTerminalsAnew) {
    FakeTime fake;
    fake.profile.avnumproc = 7000.0F;
    fake.made_up.answers["ps ax | wc -l"].out = "40";
    EXPECT_FALSE(fake.scan(2, 2));
    EXPECT_EQ(fake.profile.avnumproc, 40.0F);
    EXPECT_EQ(fake.profile.numpty, 255);

    fake.made_up.answers["df -k -l"] = {1, "", "df: stale\n"};
    fake.made_up.answers["ps ax | wc -l"].out = "50";
    const std::optional<SampleFailure> failure = fake.scan(60, 1);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->text, "Error running 'df -k -l':\ndf: stale\n");
    EXPECT_EQ(fake.profile.numproc, 50) << "counted before the failure";
}

struct Listener : ScanObserver {
    void progress(const ScanProgress& progress) override {
        told.push_back(
            {progress.passes_done, progress.elapsed_seconds, progress.next_pass_seconds});
        EXPECT_EQ(progress.total_seconds, 5);
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

    std::vector<std::array<std::int64_t, 3>> told;
    std::size_t throws_at = 0;
    bool throws_at_end = false;
    int ends = 0;
};

std::string thrown_by(FakeTime& fake, Listener& listener) {
    try {
        fake.scan(5, 3, &listener);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

TEST(Scan, TellsEverySecondAndTheEndOnce) {
    FakeTime fake;
    Listener listener;
    EXPECT_EQ(thrown_by(fake, listener), "nothing");
    const decltype(listener.told) expected = {{0, 0, 0}, {1, 0, 3}, {1, 1, 2}, {1, 2, 1},
                                              {1, 3, 0}, {2, 3, 2}, {2, 4, 1}, {2, 5, 0}};
    EXPECT_EQ(listener.told, expected);
    EXPECT_EQ(listener.ends, 1);

    // Stopped for a minute in its first second of sleep: it does not make up for that.
    FakeTime stopped;
    Listener patient;
    stopped.clock.sleep = [&](std::int32_t seconds) { stopped.pass_time(seconds + 60); };
    EXPECT_EQ(thrown_by(stopped, patient), "nothing");
    EXPECT_EQ(patient.told.size(), 3U);

    fake.made_up.answers["df -k -l"].status = 1;
    EXPECT_EQ(thrown_by(fake, listener), "nothing");
    EXPECT_EQ(listener.ends, 2) << "a scan that fails has an end too";
}

TEST(Scan, AnObserverThatThrowsEndsItOnce) {
    for (const std::size_t throws_at : {0U, 1U, 3U}) {
        for (const bool throws_at_end : {false, true}) {
            FakeTime fake;
            Listener listener;
            listener.throws_at = throws_at;
            listener.throws_at_end = throws_at_end;
            EXPECT_EQ(thrown_by(fake, listener), throws_at > 0   ? "while it runs"
                                                 : throws_at_end ? "at its end"
                                                                 : "nothing");
            EXPECT_EQ(listener.ends, 1);
        }
    }
}

}  // namespace
