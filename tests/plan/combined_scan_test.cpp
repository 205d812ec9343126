// What recordings come to: the largest values, the average, the newest findings, what is missing.
#include "plan/recording/combined_scan.h"

#include <gtest/gtest.h>

#include "plan/explain/coverage.h"
#include "tests/plan/recordings.h"

namespace {

// 1: 100. 2: 100 + (300 - 100) / 2 = 200. 3: 200 + (300 - 200) / 3 = 233.3. In the order of time,
// the numbers running on over all recordings.
TEST(CombinedScan, TheAverageIsThatOfOneLongScan) {
    NamedRecording later = recording_of({300, 200});
    later.recording.header.start += 50;
    const NamedRecording first = recording_of({100});
    const CombinedScan scan = combined({later, first});
    EXPECT_EQ(scan.profile.numproc, 300);
    EXPECT_FLOAT_EQ(scan.profile.avnumproc, 200.0F + 100.0F / 3.0F);
}

TEST(CombinedScan, RecordingsOfTwoHostsAreRefused) {
    const std::string text = header_line(header_of("box")) + pass_line(pass_of(1, 0, 1));
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"", "", ""},
        {"\"box\"", "\"other\"", "a and b are of two hosts: box and other"},
        {"x86_64", "aarch64", "a and b are of two machines: x86_64 and aarch64"},
        {"4096", "65536", "a and b differ in the page size: 4096 and 65536"},
    };
    for (const auto& [old, now, reason] : cases) {
        const NamedRecording other = {"b", parsed(changed(text, old, now))};
        EXPECT_EQ(combine({{"a", parsed(text)}, other}).reason(), reason);
    }
    EXPECT_EQ(combine({recording_of({})}).reason(), "there is no pass that counted anything");
}

TEST(CombinedScan, TheNewestFindingsCount) {
    NamedRecording newer = recording_of({1});
    NamedRecording older = newer;
    newer.recording.summary = summary_of(70);
    newer.recording.summary->findings.distribution = "new";
    newer.recording.summary->findings.reiserfs_found = true;
    older.recording.header.start += 10;
    older.recording.summary = summary_of(50);
    for (const auto& recordings : {std::vector<NamedRecording>{newer, older}, {older, newer}}) {
        EXPECT_EQ(combined(recordings).profile.distribution, "new");
        EXPECT_EQ(combined(recordings).profile.diskinodes, 1000000);
    }
}

// Of 101 planned passes, one a 10 s, some fail: each so many behind the one before.
TEST(Coverage, InFiveGrades) {
    struct Case {
        std::size_t from, step, failed;
        std::int64_t longest_gap_seconds;
        int grade;
    };
    const Case cases[] = {
        {50, 1, 1, 20, 5},   {50, 1, 4, 50, 4}, {81, 1, 20, 200, 3}, {50, 1, 20, 210, 2},
        {50, 1, 51, 510, 1}, {1, 2, 5, 20, 4},  {1, 2, 20, 20, 3},   {1, 2, 50, 20, 2},
    };
    for (const auto& [from, step, failed, longest_gap_seconds, grade] : cases) {
        NamedRecording named = recording_of(std::vector<std::int32_t>(101, 1), {1000, 10});
        for (std::size_t i = 0; i < failed; ++i) {
            named.recording.passes[from + i * step].failure = "Error";
        }
        const Coverage coverage = measure_coverage({named});
        EXPECT_EQ(coverage.planned, 101);
        EXPECT_EQ(coverage.taken, static_cast<std::int64_t>(101 - failed));
        EXPECT_EQ(coverage.longest_gap_ms, longest_gap_seconds * 1000);
        EXPECT_EQ(coverage.grade, grade) << failed << " from " << from << " by " << step;
        EXPECT_EQ(coverage.gaps.size(), step == 1 ? 1 : failed);
    }
}

// A recorder went on at 100 s: 10 passes of 10 s before, then one in 100 s until 400 s.
TEST(Coverage, OtherSpansCountFromWhereTheyBegin) {
    NamedRecording named = recording_of(std::vector<std::int32_t>(10, 1), {100, 10});
    named.recording.continuations.resize(1);
    named.recording.continuations[0].at_ms = 100000;
    named.recording.continuations[0].spans = {400, 100};
    for (std::int32_t i = 0; i < 4; ++i) {
        named.recording.passes.push_back(pass_of(11 + i, 100 + 100 * i, 1));
    }
    EXPECT_EQ(measure_coverage({named}).planned, 14);
    EXPECT_EQ(measure_coverage({named}).grade, 5);
}

TEST(Coverage, InWords) {
    EXPECT_EQ(coverage_in_words({14, 12, 1, 36610000, {}, 3}),
              "coverage: 3 of 5, fair: 12 of 14 passes, longest gap 10:10:10, failed 1");
}

}  // namespace
