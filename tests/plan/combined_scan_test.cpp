// What recordings come to: the largest values, the average, the newest findings, what is missing.
#include "plan/combined_scan.h"

#include <gtest/gtest.h>

#include "calc/env_config.h"
#include "plan/coverage.h"
#include "tests/plan/recordings.h"

namespace {

std::string reason_of(const std::vector<NamedRecording>& recordings) {
    const Kiln::Result<CombinedScan> result = combine(recordings);
    const auto* reason = std::get_if<Kiln::Reason>(&result);
    return reason == nullptr ? "" : reason->text;
}

std::vector<std::string> missing_names(const CombinedScan& scan) {
    std::vector<std::string> names;
    for (const MissingLine& line : compute_known_lines(scan, {}).missing) {
        names.push_back(line.name);
    }
    return names;
}

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
    RecordedPass& half = named.recording.passes[1];
    half.failure = "half";
    half.taken = 1;
    RecordedPass& none = named.recording.passes[2];
    none.failure = "none";
    none.taken = 0;
    const CombinedScan scan = combined({named});
    EXPECT_EQ(scan.profile.numproc, 200);
    EXPECT_FLOAT_EQ(scan.profile.avnumproc, 150.0F) << "two passes counted processes";
    const std::vector<std::string> flaws = find_flaws({named}, scan, {});
    EXPECT_NE(std::find(flaws.begin(), flaws.end(),
                        "a.rec: passes that failed: 2 of 3, the first is pass 2: half"),
              flaws.end());
}

TEST(CombinedScan, RecordingsOfTwoHostsAreRefused) {
    const NamedRecording box = recording_of({1});
    NamedRecording other = {"b.rec", box.recording};
    EXPECT_EQ(reason_of({box, other}), "");
    other.recording.header.host = "other";
    EXPECT_EQ(reason_of({box, other}), "a.rec and b.rec are of two hosts: box and other");
    other = {"b.rec", box.recording};
    other.recording.header.machine = "aarch64";
    EXPECT_NE(reason_of({box, other}).find("two machines"), std::string::npos);
    other = {"b.rec", box.recording};
    other.recording.header.page_size = 65536;
    EXPECT_NE(reason_of({box, other}).find("page size"), std::string::npos);
    NamedRecording empty = recording_of({});
    EXPECT_EQ(reason_of({empty}), "there is no pass that counted anything");
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
    const std::vector<std::string> of_steps = {"QUOTAUGIDLIMIT", "DISTRIBUTION", "#IP_ADDRESS",
                                               "SEARCHDOMAIN",   "NAMESERVER",   "FEATURES"};
    EXPECT_EQ(missing_names(combined({named})), of_steps);
    EXPECT_EQ(combined({named}).profile.hostname, "box");

    named.recording.summary = summary_of(1);
    EXPECT_TRUE(missing_names(combined({named})).empty());
    EXPECT_TRUE(find_flaws({named}, combined({named}), {}).empty());

    // A step that failed, and counts that no pass came to.
    named.recording.summary->findings.failures = {{OneShotStep::resolver, "late"}};
    named.recording.passes[0].taken = 0xFF;
    named.recording.passes[0].failure = "Error";
    const std::vector<std::string> expected = {"NUMIPTENT", "DISKSPACE", "DISKINODES",
                                               "SEARCHDOMAIN", "NAMESERVER"};
    EXPECT_EQ(missing_names(combined({named})), expected);
}

struct CoverageCase {
    ScanSpans spans;
    std::vector<std::int64_t> at_seconds;
    std::int64_t planned;
    std::int64_t longest_gap_seconds;
    int grade;
};

TEST(Coverage, InFiveGrades) {
    std::vector<std::int64_t> all;
    for (std::int64_t at = 0; at <= 1000; at += 10) {
        all.push_back(at);
    }
    const auto without = [&](std::size_t from, std::size_t count) {
        std::vector<std::int64_t> some = all;
        const auto begin = some.begin() + static_cast<std::ptrdiff_t>(from);
        some.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
        return some;
    };
    const CoverageCase cases[] = {
        {{0, 0}, {0}, 1, 0, 5},
        {{300, 120}, {0, 120, 240, 300}, 4, 120, 5},
        {{1000, 10}, all, 101, 10, 5},
        {{1000, 10}, without(50, 1), 101, 20, 5},
        {{1000, 10}, without(50, 4), 101, 50, 4},
        {{1000, 10}, without(50, 6), 101, 70, 3},
        {{1000, 10}, without(81, 20), 101, 200, 3},
        {{1000, 10}, without(80, 21), 101, 210, 2},
        {{1000, 10}, without(50, 51), 101, 510, 1},
        {{1000, 10}, {0}, 101, 1000, 1},
    };
    for (const CoverageCase& test : cases) {
        NamedRecording named = recording_of({}, test.spans);
        for (const std::int64_t at : test.at_seconds) {
            named.recording.passes.push_back(pass_of(1, at, 1));
        }
        const Coverage coverage = measure_coverage({named});
        EXPECT_EQ(coverage.planned, test.planned);
        EXPECT_EQ(coverage.longest_gap_ms, test.longest_gap_seconds * 1000);
        EXPECT_EQ(coverage.grade, test.grade) << test.at_seconds.size() << " passes";
    }
}

TEST(Coverage, AFailedPassLeavesAGap) {
    NamedRecording named = recording_of({1, 1, 1, 1, 1}, {40, 10});
    named.recording.passes[2].failure = "Error";
    const Coverage coverage = measure_coverage({named});
    EXPECT_EQ(coverage.taken, 4);
    EXPECT_EQ(coverage.failed, 1);
    ASSERT_EQ(coverage.gaps.size(), 1U);
    EXPECT_EQ(coverage.gaps[0].from_ms, 10000);
    EXPECT_EQ(coverage.gaps[0].to_ms, 30000);
}

}  // namespace
