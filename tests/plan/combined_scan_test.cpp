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

TEST(CombinedScan, APassThatFailedCountsAsFarAsItCame) {
    NamedRecording named = recording_of({100, 200, 300});
    named.recording.passes[1].failure = "half";
    named.recording.passes[1].taken = 1;
    named.recording.passes[2].failure = "none";
    named.recording.passes[2].taken = 0;
    const CombinedScan scan = combined({named});
    EXPECT_EQ(scan.profile.numproc, 200);
    EXPECT_FLOAT_EQ(scan.profile.avnumproc, 150.0F) << "two passes counted processes";
    EXPECT_EQ(explained({named}).remarks.back(),
              "a.rec: passes that failed: 2 of 3, the first is pass 2: half");
}

TEST(CombinedScan, RecordingsOfTwoHostsAreRefused) {
    const NamedRecording box = recording_of({1});
    NamedRecording other = {"b.rec", box.recording};
    EXPECT_EQ(combine({box, other}).reason(), "");
    other.recording.header.host = "other";
    EXPECT_EQ(combine({box, other}).reason(), "a.rec and b.rec are of two hosts: box and other");
    other = {"b.rec", box.recording};
    other.recording.header.machine = "aarch64";
    EXPECT_NE(combine({box, other}).reason().find("two machines"), std::string::npos);
    other = {"b.rec", box.recording};
    other.recording.header.page_size = 65536;
    EXPECT_NE(combine({box, other}).reason().find("page size"), std::string::npos);
    EXPECT_EQ(combine({recording_of({})}).reason(), "there is no pass that counted anything");
}

TEST(CombinedScan, TheNewestFindingsCount) {
    NamedRecording first = recording_of({1});
    first.recording.summary = summary_of(70);
    first.recording.summary->findings.distribution = "new";
    first.recording.summary->findings.reiserfs_found = true;
    NamedRecording second = recording_of({1});
    second.recording.header.start += 10;
    second.recording.summary = summary_of(50);
    second.recording.summary->findings.distribution = "old";
    for (const auto& recordings : {std::vector<NamedRecording>{first, second}, {second, first}}) {
        const CombinedScan scan = combined(recordings);
        EXPECT_EQ(scan.profile.distribution, "new");
        EXPECT_EQ(scan.profile.diskinodes, 1000000);
    }
}

TEST(CombinedScan, WithoutItsLastLineTheLinesThatItCan) {
    NamedRecording named = recording_of({100});
    EXPECT_EQ(combined({named}).profile.hostname, "box");
    EXPECT_EQ(explained({named}).lines.back().basis, Basis::missing);
    EXPECT_EQ(
        explained({named}).remarks,
        (Remarks{"left out: QUOTAUGIDLIMIT, DISTRIBUTION, #IP_ADDRESS, SEARCHDOMAIN, NAMESERVER, "
                 "FEATURES (there is no recording with its last line)",
                 "warnings and paths to exclude are not known (there is no recording with "
                 "its last line)"}));

    named.recording.summary = summary_of(1);
    EXPECT_EQ(explained({named}).remarks, Remarks{});

    // A step that failed, and counts that no pass came to.
    named.recording.summary->findings.failures = {{OneShotStep::resolver, "late"}};
    named.recording.passes[0].taken = 0xFF;
    named.recording.passes[0].failure = "Error";
    named.recording.summary_is_last = true;
    EXPECT_EQ(explained({named}).verdict.reasons,
              (Remarks{"coverage: 1 of 5, scant: 0 of 11 passes, longest gap 0:01:40, failed 1",
                       "left out: NUMIPTENT (no pass counted numiptent)",
                       "left out: DISKSPACE (no pass counted diskspace)",
                       "left out: DISKINODES (no pass counted diskinodes)",
                       "left out: SEARCHDOMAIN, NAMESERVER (late)"}));
    EXPECT_EQ(explained({named}).remarks,
              Remarks{"a.rec: passes that failed: 1 of 1, the first is pass 1: Error"});
}

// Of 101 planned passes, those `from` there on fail.
TEST(Coverage, InFiveGrades) {
    struct Case {
        std::size_t from, failed;
        std::int64_t longest_gap_seconds;
        int grade;
    };
    const Case cases[] = {{0, 0, 10, 5},    {50, 1, 20, 5},   {50, 4, 50, 4},   {50, 6, 70, 3},
                          {81, 20, 200, 3}, {50, 20, 210, 2}, {50, 51, 510, 1}, {1, 100, 1000, 1}};
    for (const Case& test : cases) {
        NamedRecording named = recording_of(std::vector<std::int32_t>(101, 1), {1000, 10});
        for (std::size_t i = 0; i < test.failed; ++i) {
            named.recording.passes[test.from + i].failure = "Error";
        }
        const Coverage coverage = measure_coverage({named});
        EXPECT_EQ(coverage.planned, 101);
        EXPECT_EQ(coverage.taken, static_cast<std::int64_t>(101 - test.failed));
        EXPECT_EQ(coverage.failed, static_cast<std::int64_t>(test.failed));
        EXPECT_EQ(coverage.longest_gap_ms, test.longest_gap_seconds * 1000);
        EXPECT_EQ(coverage.grade, test.grade) << test.failed << " from " << test.from;
        ASSERT_EQ(coverage.gaps.size(), test.failed > 0 ? 1U : 0U);
        if (test.failed > 0) {
            EXPECT_EQ(coverage.gaps[0].from_ms, static_cast<std::int64_t>(test.from - 1) * 10000);
            EXPECT_EQ(coverage.gaps[0].to_ms - coverage.gaps[0].from_ms, coverage.longest_gap_ms);
        }
    }
}

// So many of 101 passes fail, no two of them in turn.
TEST(Coverage, WithoutALongGapTheShareDecides) {
    const std::pair<std::size_t, int> cases[] = {{0, 5}, {1, 5},  {2, 4},  {5, 4},
                                                 {6, 3}, {20, 3}, {21, 2}, {50, 2}};
    for (const auto& [failed, grade] : cases) {
        NamedRecording named = recording_of(std::vector<std::int32_t>(101, 1), {1000, 10});
        for (std::size_t i = 0; i < failed; ++i) {
            named.recording.passes[2 * i + 1].failure = "Error";
        }
        EXPECT_EQ(measure_coverage({named}).grade, grade) << failed;
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
    named.recording.continuations[0].spans = {110, 100};  // 42 passes can never be of 11
    EXPECT_EQ(measure_coverage({named}).planned, 14);
    for (RecordedPass& pass : named.recording.passes) {
        pass.took_ms = std::int64_t{1} << 41;
    }
    EXPECT_EQ(measure_coverage({named}).planned, 14);
}

// A good recording, and one thing wrong with it at a time.
TEST(Verdict, DoneMeansUsable) {
    NamedRecording good = recording_of(std::vector<std::int32_t>(11, 300));
    good.recording.summary = summary_of(100);
    good.recording.summary_is_last = true;
    good.recording.header.root = true;
    good.recording.checks = {{0, {{"others may write a folder", "chmod", {}}}}};
    EXPECT_EQ(explained({good}).verdict.state, State::done);
    EXPECT_EQ(explained({good}).remarks, Remarks{"the check found: others may write a folder"});
    using Spoil = void (*)(Recording&);
    const std::pair<Spoil, const char*> cases[] = {
        {[](Recording& r) { r.summary_is_last = false; }, "it has no last line"},
        {[](Recording& r) { r.summary->interrupted = true; }, "ended before its time"},
        {[](Recording& r) { r.passes.resize(8); }, "coverage: 2 of 5, poor: 8 of 11 passes"},
        {[](Recording& r) { r.header.root = false; }, "not root"},
        {[](Recording& r) {
             r.continuations = {{0, "", "", {100, 10}, false, {}, {}, {}}};
         },
         "not root"},
        {[](Recording& r) {
             r.checks = {{0, {{"no ps", "install it", {"NUMPROC", "KMEMSIZE"}}}}};
         },
         "the check found: no ps (wrong: NUMPROC, KMEMSIZE)"},
        {[](Recording& r) {
             r.summary->findings.failures = {{OneShotStep::resolver, "late"}};
         },
         "left out: SEARCHDOMAIN, NAMESERVER (late)"},
        {[](Recording& r) { r.summary->findings.distribution = "a\nb"; },
         "left out: DISTRIBUTION (its text has a control character: a\\nb)"},
        {[](Recording& r) {
             for (RecordedPass& pass : r.passes) {
                 pass.counts[&PhysParams::numproc] = 0;
             }
         },
         "processes: no pass saw any"},
    };
    for (const auto& [spoil, reason] : cases) {
        NamedRecording spoilt = good;
        spoil(spoilt.recording);
        const Verdict verdict = explained({spoilt}).verdict;
        EXPECT_EQ(verdict.state, State::partly) << reason;
        ASSERT_EQ(verdict.reasons.size(), 1U) << reason;
        EXPECT_NE(verdict.reasons[0].find(reason), std::string::npos) << verdict.reasons[0];
    }
    good.recording.summary->findings.distribution = "a$b";
    EXPECT_EQ(explained({good}).remarks.front(), "DISTRIBUTION has what a shell acts on: a$b");
    EXPECT_EQ(explained({good}).verdict.state, State::done);
    good.recording.checks = {{0, {{"no ps: NUMPROC is low", "", {"NUMPROC"}}}}};
    EXPECT_EQ(explained({good}).verdict.reasons, Remarks{"the check found: no ps: NUMPROC is low"})
        << "the lines are named once";
}

TEST(Coverage, OfPassesThatWereNeverPlannedToBeMore) {
    const Coverage one = measure_coverage({recording_of({1}, {0, 0})});
    EXPECT_EQ(one.planned, 1);
    EXPECT_EQ(one.grade, 5);
    NamedRecording uneven = recording_of({1, 1, 1, 1}, {300, 120});
    uneven.recording.passes[3].at_ms = 300000;
    EXPECT_EQ(measure_coverage({uneven}).planned, 4);
    // Each shorter than there are passes: 100,000,000 / 11,999 = 8,334, and one at the start.
    NamedRecording many = recording_of(std::vector<std::int32_t>(2000, 1), {100000, 10});
    for (RecordedPass& pass : many.recording.passes) {
        pass.took_ms = 1999;
    }
    EXPECT_EQ(measure_coverage({many}).planned, 8335);
}

}  // namespace
