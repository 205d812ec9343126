// Where each line comes from, and what deserves a look.
#include "plan/explain/explanation.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/plan/recordings.h"

namespace {

LineExplanation line_of(const NamedRecording& named, const std::string& name) {
    for (const LineExplanation& line : explained({named}).lines) {
        if (line.name == name) {
            return line;
        }
    }
    ADD_FAILURE() << "no line " << name;
    return {};
}

TEST(Explanation, AMeasurementIsAboveTheFloor) {
    EXPECT_EQ(line_of(recording_of({100, 240, 50}), "NUMPROC").basis, Basis::floor);
    const LineExplanation measured = line_of(recording_of({100, 241, 241}), "NUMPROC");
    EXPECT_EQ(measured.basis, Basis::measurement);
    EXPECT_EQ(measured.peak->pass, 2) << "where it was seen first";
}

TEST(Explanation, AFloorBehindTheFactorHasNone) {
    NamedRecording named = recording_of({1});
    std::int32_t& pages = named.recording.passes[0].counts[&PhysParams::privvmpages];
    pages = 50000;  // 60000 with the factor
    const LineExplanation line = line_of(named, "PRIVVMPAGES");
    EXPECT_EQ(line.basis, Basis::floor);
    EXPECT_FALSE(line.factor);
    EXPECT_EQ(*line.margin, 1.1);
    EXPECT_EQ(line.meaning, "256 MiB, 282 MiB for a moment");
    pages = 60000;
    EXPECT_EQ(line_of(named, "PRIVVMPAGES").basis, Basis::measurement);
}

// Memory is counted in pages of 4 KiB, shared memory and all lines in the system's.
TEST(Explanation, PagesOfTwoKinds) {
    NamedRecording named = recording_of({1});
    named.recording.header.page_size = 65536;
    SampleCounts& counts = named.recording.passes[0].counts;
    counts[&PhysParams::privvmpages] = 70000;
    counts[&PhysParams::lockedpages] = 512;  // 614 with the factor
    counts[&PhysParams::shmpages] = 22000;   // 26400
    EXPECT_EQ(line_of(named, "PRIVVMPAGES").seen, "273 MiB (70,000)");
    EXPECT_EQ(line_of(named, "LOCKEDPAGES").seen, "2.0 MiB (512)");
    EXPECT_EQ(line_of(named, "LOCKEDPAGES").meaning, "38.4 MiB");
    EXPECT_EQ(line_of(named, "SHMPAGES").seen, "1.3 GiB (22,000)");
    EXPECT_EQ(line_of(named, "SHMPAGES").meaning, "1.6 GiB");
}

TEST(Explanation, OpenFilesForSocketsAreDerived) {
    NamedRecording named = recording_of({1});
    named.recording.passes[0].counts[&PhysParams::numfile] = 9000;
    EXPECT_EQ(line_of(named, "NUMFILE").basis, Basis::floor);
    named.recording.passes[0].counts[&PhysParams::numtcpsock] = 20000;
    const LineExplanation line = line_of(named, "NUMFILE");
    EXPECT_EQ(line.basis, Basis::derived);
    // 20000 * 1.2 + 432 + 255; 180 processes at least.
    EXPECT_EQ(line.derivation,
              "NUMTCPSOCK + NUMOTHERSOCK + NUMPTY = 24,687; 32 for each of 180 "
              "processes and the floor of 9,312 x 1.2 were less");
    NamedRecording many = recording_of({1000});  // 1200 with the factor
    many.recording.passes[0].counts[&PhysParams::numfile] = 12480;
    EXPECT_EQ(line_of(many, "NUMFILE").derivation,
              "32 for each of 1,200 processes (AVNUMPROC); 12,480 x 1.2 and NUMTCPSOCK + "
              "NUMOTHERSOCK + NUMPTY = 1,119 were less");
}

TEST(Explanation, WhatNoPassCounts) {
    NamedRecording named = recording_of({1});
    named.recording.summary = summary_of(0);
    named.recording.summary->findings.reiserfs_found = true;  // it has no inodes
    EXPECT_EQ(line_of(named, "DISKINODES").basis, Basis::finding);
    EXPECT_EQ(line_of(named, "DISKINODES").value, "1500000:1650000");
    named.recording.summary->findings.distribution = "";
    named.recording.summary->findings.notes.warnings = {{0, "no script"}, {1, "another"}};
    EXPECT_EQ(line_of(named, "DISTRIBUTION").remarks,
              (Remarks{"the host did not name it", "no script"}));
    named.recording.summary->findings.hostname = "a$b";
    EXPECT_EQ(line_of(named, "HOSTNAME").remarks,
              Remarks{"a shell that reads the configuration acts on this text"});
}

TEST(Explanation, NumbersThatDidNotFit) {
    NamedRecording named = recording_of({2000000000});
    SampleCounts& counts = named.recording.passes[0].counts;
    // 72000 buffers of 64 KiB are over 2^32: a small positive number.
    counts[&PhysParams::numtcpsock] = 60000;
    counts[&PhysParams::diskinodes] = 1400000000;
    const std::string clamped = "the number was clamped to the largest of 32 bits";
    const std::string wrapped = "the number did not fit into 32 bits and wrapped around";
    EXPECT_EQ(line_of(named, "NUMPROC").remarks, Remarks{clamped});
    EXPECT_EQ(line_of(named, "DISKINODES").remarks, Remarks{clamped}) << "its limit";
    EXPECT_EQ(line_of(named, "TCPRCVBUF").remarks, Remarks{wrapped});
    EXPECT_EQ(line_of(named, "SLMMEMORYLIMIT").remarks.back(),
              "it is made from TCPRCVBUF: there " + wrapped);
    EXPECT_EQ(line_of(named, "OTHERSOCKBUF").remarks, Remarks{});
    EXPECT_EQ(line_of(named, "VMGUARPAGES").remarks, Remarks{});
    named.recording.passes[0].counts[&PhysParams::privvmpages] = 2000000000;
    named.recording.passes[0].counts[&PhysParams::lockedpages] = 2000000000;
    const Remarks remarks = line_of(named, "SLMMEMORYLIMIT").remarks;
    ASSERT_GE(remarks.size(), 2U);
    EXPECT_EQ(Remarks(remarks.end() - 2, remarks.end()),
              (Remarks{"it is made from PRIVVMPAGES: there " + clamped,
                       "it is made from LOCKEDPAGES: there " + clamped}));
}

TEST(Explanation, ThePeaksOfThePasses) {
    const Remarks late = {"the peak came in the last tenth of the time: watch longer"};
    const Remarks rising = {"it was still rising at the end: watch longer"};
    const Remarks steady = {"it varies little"};
    const Remarks jumps = {"it jumps: half of the time at most 300 processes"};
    const std::tuple<std::vector<std::int32_t>, Remarks, Remarks> cases[] = {
        {{300, 300, 300, 300, 300, 300, 300, 300, 300, 300}, {}, steady},
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
        EXPECT_EQ(line.remarks, remarks);
        EXPECT_EQ(line.notes, notes);
    }
    const Explanation floored = explained({recording_of(std::vector<std::int32_t>(10, 9))});
    EXPECT_TRUE(floored.lines[0].notes.empty()) << "no matter where the floor decides";
    EXPECT_EQ(floored.counts[0].notes, steady);
}

TEST(Explanation, CountsThatCannotBe) {
    NamedRecording named = recording_of({0});
    named.recording.passes[0].counts[&PhysParams::diskspace] = -5;
    EXPECT_EQ(line_of(named, "NUMPROC").remarks,
              Remarks{"no pass saw any, which cannot be: see what its command prints"});
    EXPECT_EQ(line_of(named, "DISKSPACE").remarks.front(),
              "a pass counted less than 0: more than fits into 32 bits");
}

}  // namespace
