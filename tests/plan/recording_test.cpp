// The lines of a recording: what is written comes back, and damage is noticed.
#include "plan/recording/recording.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "plan/explain/explanation.h"
#include "tests/plan/recordings.h"

namespace {

const std::string hostile("\"><script>\n\0\x1b[2J\xff\xc3", 18);

constexpr std::int64_t longest_scan = 2147483647;  // seconds

RecordedPass failed_pass() {
    RecordedPass pass = pass_of(2, 10, 7);
    pass.taken = 3;  // the first two counts
    pass.counts[&PhysParams::numtcpsock] = -1;
    pass.failure = "Error running 'ls':\n" + hostile;
    return pass;
}

Summary full_summary() {
    Summary summary = summary_of(20);
    Findings& findings = summary.findings;
    summary.interrupted = true;
    findings.quotaugidlimit = -5;
    findings.ifaces.push_back({2, "eth0" + hostile, {"10.0.0.1", "fe80::1"}, true});
    findings.distribution = hostile;
    findings.hostname = hostile;
    findings.ns_attrs = {{"10.0.0.53"}, {"a.example", hostile}};
    findings.notes = {{{4, "reiserfs"}}, {{false, "/proc/*"}, {true, hostile}}};
    findings.nfs_found = true;
    findings.reiserfs_found = true;
    findings.failures = {{OneShotStep::mounts, hostile}};
    findings.messages = "Error: " + hostile;
    return summary;
}

std::string small_recording() {
    return header_line(header_of(hostile)) + pass_line(pass_of(1, 0, 120)) +
           pass_line(failed_pass()) + summary_line(full_summary()) +
           continuation_line({15000, "1.1", "6.2.0", {200, 20}, {}, {}, {}, {}}) +
           continuation_line({16000, "1.2", "6.3.0", {300, 20}, true, 7, {}, {}}) +
           pass_line(pass_of(3, longest_scan, 121));
}

TEST(Recording, WhatIsWrittenComesBack) {
    const std::string text = small_recording();
    const Recording recording = parsed(text);
    EXPECT_EQ(recording.spans().time, 300) << "the newest";
    EXPECT_FALSE(recording.summary_is_last) << "a pass came after it";
    EXPECT_EQ(recording.last_ms(), longest_scan * 1000);
    // As everything is in the lines, equal lines are equal values.
    ASSERT_EQ(recording.passes.size(), 3U);
    ASSERT_TRUE(recording.summary);
    std::string again = header_line(recording.header) + pass_line(recording.passes[0]) +
                        pass_line(recording.passes[1]) + summary_line(*recording.summary) +
                        continuation_line(recording.continuations.at(0)) +
                        continuation_line(recording.continuations.at(1)) +
                        pass_line(recording.passes[2]);
    EXPECT_EQ(again, text);
    const Findings& findings = recording.summary->findings;
    EXPECT_EQ(findings.ifaces.at(0).ip_addresses.at(1), "fe80::1");
    EXPECT_EQ(findings.notes.excludes.at(1).path, hostile);
    EXPECT_EQ(findings.failures.at(0).step, OneShotStep::mounts);
}

// The text as the manual shows it, so that the format does not change unnoticed.
TEST(Recording, TheFormatOfItsLines) {
    EXPECT_EQ(
        header_line(header_of("web1")),
        "{\"recording_format\":1,\"version\":\"1.0\",\"host\":\"web1\",\"machine\":\"x86_64\","
        "\"kernel\":\"6.1.0\",\"page_size\":4096,\"start\":\"2026-03-12T14:05:00Z\","
        "\"scan_time\":100,\"scan_period\":10}\n");
    RecordedPass pass = failed_pass();
    pass.failure = "\xff";
    EXPECT_EQ(pass_line(pass),
              "{\"pass\":2,\"at_ms\":10000,\"took_ms\":0,\"counts\":{\"numproc\":7,"
              "\"numtcpsock\":-1},\"failed\":{\"hex\":\"ff\"}}\n");
}

TEST(Recording, LaterProgramsMayAddLinesAndMembers) {
    std::string text = small_recording();
    text.insert(text.find("{\"pass\""), "{\"later\":[1,2]}\n");
    text.insert(text.find("\"pass\""), "\"later\":null,");
    EXPECT_EQ(parsed(text).passes.size(), 3U);
}

TEST(Recording, DamageIsNamedWithItsLine) {
    const std::string header = header_line(header_of("box"));
    const auto with = [](std::string line, const std::string& old, const std::string& now) {
        line.replace(line.find(old), old.size(), now);
        return line;
    };
    const std::string pass = pass_line(pass_of(1, 0, 1));
    const std::pair<std::string, const char*> cases[] = {
        {"", "its first line was never written"},
        {"{\"recording_for", "its first line was never written"},
        {"no recording", "line 1: this is no recording"},
        {"root:x:0:0::/root:/bin/sh\n", "line 1: this is not JSON"},
        {std::string(200, '\0') + "\n", "its first line was never written"},
        {with(header, ":1,", ":2,"), "line 1: the format is another one than 1"},
        {with(header, "4096", "0"), "line 1: \"page_size\": not a whole number that it can be"},
        {with(header, "-03-", "-13-"), "line 1: \"start\": not a time"},
        {header + "{}}\n" + pass, "line 2: this is not JSON"},
        {header + "7\n", "line 2: this is no JSON object"},
        {header + pass + with(pass, "\"pass\":1", "\"pass\":0"), "line 3: \"pass\": not"},
        {header + with(pass, "\"numproc\":1", "\"numproc\":2147483648"),
         "\"counts\": \"numproc\": not a whole"},
        {header + with(pass, "\"numproc\":1,", ""), "a count is missing"},
        {header + with(pass, "\"at_ms\":0", "\"at_ms\":-1"), "\"at_ms\": not"},
        {header + with(pass, "\"at_ms\":0", "\"at_ms\":true"), "\"at_ms\": not"},
        {header + with(pass, "\"at_ms\":0", "\"at_ms\":18446744073709551615"), "\"at_ms\": not"},
        {with(header, "\"box\"", "7"), "\"host\": a text is missing"},
        {header + "{\"at_ms\":1,\"interrupted\":0,\"findings\":{}}\n",
         "\"interrupted\": type must be boolean, but is number"},
        {header + "{\"pass\":1,\"at_ms\":0,\"took_ms\":0,\"counts\":[]}\n",
         "\"counts\": not an object"},
        {header + "{\"at_ms\":1,\"interrupted\":true,\"findings\":{\"quotaugidlimit\":0,"
                  "\"interfaces\":7}}\n",
         "\"findings\": \"interfaces\": not a list"},
        {header + with(pass, "at_ms", "at"), "\"at_ms\" is missing"},
        {header + "{\"findings\":{},\"at_ms\":1,\"interrupted\":false}\n", "is missing"},
        {with(header, "\"box\"", "{\"hex\":\"fg\"}"), "something else than digits"},
    };
    for (const auto& [text, reason] : cases) {
        const std::string given = parse_recording(text).reason();
        EXPECT_NE(given.find(reason), std::string::npos) << given << " for " << text;
    }
}

// Everything that the commands make of a recording.
void use(const Kiln::Result<Recording>& result) {
    if (result) {
        const std::vector<NamedRecording> recordings = {{"a.rec", *result}};
        const Kiln::Result<CombinedScan> scan = combine(recordings);
        if (scan) {
            explain(recordings, *scan, ConfigScales());
        }
    }
}

TEST(Recording, CutOrChangedAnywhereItIsReadOrRefused) {
    const std::string text = small_recording();
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string part = text.substr(0, at);
        const auto lines = static_cast<std::size_t>(std::count(part.begin(), part.end(), '\n'));
        const Kiln::Result<Recording> result = parse_recording(part);
        ASSERT_EQ(static_cast<bool>(result), lines > 0) << at;
        use(result);
        if (lines > 0) {
            const auto& recording = *result;
            EXPECT_EQ(recording.passes.size(), lines < 3 ? lines - 1 : lines < 7 ? 2U : 3U);
            EXPECT_EQ(recording.torn, part.back() != '\n');
            EXPECT_EQ(recording.whole_size, part.rfind('\n') + 1);
        }
        for (const char byte : {'\0', '\n', '"', '9'}) {
            std::string changed = text;
            changed[at] = byte;
            use(parse_recording(changed));
        }
    }
}

}  // namespace
