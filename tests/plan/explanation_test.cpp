// Where each line comes from, and what deserves a look.
#include "plan/explain/explanation.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/plan/recordings.h"

namespace {

LineExplanation line_of(const NamedRecording& named, const std::string& name) {
    const Explanation explanation = explain({named}, combined({named}), {});
    for (const LineExplanation& line : explanation.lines) {
        if (line.name == name) {
            return line;
        }
    }
    ADD_FAILURE() << "no line " << name;
    return {};
}

class OnePass : public testing::Test {
protected:
    NamedRecording named_ = recording_of({1});
    SampleCounts& counts_ = named_.recording.passes[0].counts;
};

TEST_F(OnePass, AFloorBehindTheFactorHasNone) {
    counts_[&PhysParams::privvmpages] = 50000;  // 60000 with the factor
    const LineExplanation line = line_of(named_, "PRIVVMPAGES");
    EXPECT_EQ(line.basis, Basis::floor);
    EXPECT_FALSE(line.factor);
    EXPECT_EQ(line.meaning, "256 MiB, 282 MiB for a moment");
    counts_[&PhysParams::privvmpages] = 60000;
    EXPECT_EQ(line_of(named_, "PRIVVMPAGES").basis, Basis::measurement);
}

// Memory is counted in pages of 4 KiB, shared memory and all lines in the system's.
TEST_F(OnePass, PagesOfTwoKinds) {
    named_.recording.header.page_size = 65536;
    counts_[&PhysParams::lockedpages] = 512;  // 614 with the factor
    counts_[&PhysParams::privvmpages] = 524288;
    counts_[&PhysParams::shmpages] = 22000;  // 26400
    EXPECT_EQ(line_of(named_, "LOCKEDPAGES").seen, "2.0 MiB (512)");
    EXPECT_EQ(line_of(named_, "LOCKEDPAGES").meaning, "38.4 MiB");
    EXPECT_EQ(line_of(named_, "PRIVVMPAGES").seen, "2.0 GiB (524,288)");
    EXPECT_EQ(line_of(named_, "SHMPAGES").seen, "1.3 GiB (22,000)");
    EXPECT_EQ(line_of(named_, "SHMPAGES").meaning, "1.6 GiB");
}

TEST_F(OnePass, OpenFilesForProcessesAreDerived) {
    counts_[&PhysParams::numproc] = 1000;  // 1200 with the factor
    counts_[&PhysParams::numfile] = 12480;
    EXPECT_EQ(line_of(named_, "NUMFILE").derivation,
              "32 for each of 1,200 processes (AVNUMPROC); 12,480 x 1.2 and NUMTCPSOCK + "
              "NUMOTHERSOCK + NUMPTY = 1,119 were less");
}

TEST_F(OnePass, WhatNoPassCounts) {
    named_.recording.summary = summary_of(0);
    Findings& findings = named_.recording.summary->findings;
    findings.reiserfs_found = true;  // it has no inodes
    EXPECT_EQ(line_of(named_, "DISKINODES").basis, Basis::finding);
    EXPECT_EQ(line_of(named_, "DISKINODES").remarks,
              Remarks{"reiserfs counts no inodes: the number is a guess"});
    EXPECT_EQ(line_of(named_, "DISKINODES").value, "1500000:1650000");
    findings.distribution = "";
    findings.notes.warnings = {{0, "no script"}, {1, "another"}};
    EXPECT_EQ(line_of(named_, "DISTRIBUTION").remarks,
              (Remarks{"the host did not name it", "no script"}));
    findings.hostname = "a$b";
    EXPECT_EQ(line_of(named_, "HOSTNAME").remarks,
              Remarks{"a shell that reads the configuration acts on this text"});
}

TEST_F(OnePass, NumbersThatDidNotFit) {
    // 72000 buffers of 64 KiB are over 2^32: a small positive number.
    counts_[&PhysParams::numtcpsock] = 60000;
    counts_[&PhysParams::diskinodes] = 1400000000;
    EXPECT_EQ(line_of(named_, "DISKINODES").remarks,
              Remarks{"the number was clamped to the largest of 32 bits"})
        << "its limit";
    EXPECT_EQ(line_of(named_, "SLMMEMORYLIMIT").remarks,
              Remarks{"it is made from TCPRCVBUF: there the number did not fit into 32 bits and "
                      "wrapped around"});
    EXPECT_EQ(line_of(named_, "OTHERSOCKBUF").remarks, Remarks{});
    EXPECT_EQ(line_of(named_, "VMGUARPAGES").remarks, Remarks{});
}

TEST(Explanation, ThePeaksOfThePasses) {
    const Remarks late = {"the peak came in the last tenth of the time: watch longer"};
    const Remarks rising = {"it was still rising at the end: watch longer"};
    const Remarks steady = {"it varies little"};
    const Remarks jumps = {"it jumps: half of the time at most 300 processes"};
    const std::tuple<std::vector<std::int32_t>, Remarks, Remarks> cases[] = {
        {{300, 300, 300, 300, 300, 300, 300, 300, 300, 314}, {}, steady},
        {{300, 300, 300, 300, 300, 300, 300, 300, 300, 315}, late, steady},
        {{300, 300, 300, 600, 300, 300, 300, 300, 300, 300}, {}, jumps},
        {{300, 310, 320, 330, 340, 350, 360, 370, 380, 390}, rising, {}},
        {{300, 300, 310, 340, 340, 340, 380, 380, 380, 380}, {}, {}},  // steps, long made
        {{300, 380, 320, 310, 390, 330, 400, 315, 395, 300}, {}, {}},  // noise
        {{300, 300, 300, 300, 900}, {}, {}},                           // too few passes to tell
    };
    for (const auto& [numprocs, remarks, notes] : cases) {
        const LineExplanation line = line_of(recording_of(numprocs), "NUMPROC");
        EXPECT_EQ(line.remarks, remarks) << testing::PrintToString(numprocs);
        EXPECT_EQ(line.notes, notes) << testing::PrintToString(numprocs);
    }
}

TEST_F(OnePass, CountsLessThanNone) {
    counts_[&PhysParams::diskspace] = -5;
    EXPECT_EQ(line_of(named_, "DISKSPACE").remarks.front(),
              "a pass counted less than 0: more than fits into 32 bits");
}

}  // namespace
