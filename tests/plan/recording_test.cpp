// The lines of a recording: what is read is written again, and damage is noticed.
#include "plan/recording/recording.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "plan/explain/explanation.h"
#include "tests/plan/recordings.h"

namespace {

// Every kind of line with every member, as the manual shows them, and texts of any bytes.
const std::string every_line = text_of(TARN_EVERY_LINE);

TEST(Recording, WhatIsReadIsWrittenAgain) {
    const Recording recording = parsed(every_line);
    EXPECT_EQ(recording.spans().time, 300) << "the newest";
    EXPECT_FALSE(recording.summary_is_last) << "a pass came after it";
    EXPECT_EQ(recording.last_ms(), 2147483647000) << "the longest scan";
    ASSERT_EQ(recording.passes.size(), 3U);
    ASSERT_EQ(recording.continuations.size(), 2U);
    EXPECT_EQ(header_line(recording.header) + check_line(recording.checks.at(0)) +
                  pass_line(recording.passes[0]) + pass_line(recording.passes[1]) +
                  summary_line(*recording.summary) + continuation_line(recording.continuations[0]) +
                  continuation_line(recording.continuations[1]) + pass_line(recording.passes[2]),
              every_line);
}

TEST(Recording, DamageIsNamedWithItsLine) {
    const std::string no_number = ": not a whole number that it can be";
    const std::tuple<const char*, const char*, std::string> cases[] = {
        {"recording_format", "format", "line 1: this is no recording"},
        {":1,", ":2,", "line 1: the format is another one than 1"},
        {"4096", "0", "line 1: \"page_size\"" + no_number},
        {"-03-", "-13-", "line 1: \"start\": not a time"},
        {"\"x86_64\"", "7", "line 1: \"machine\": a text is missing"},
        {"fedc", "fedg", "line 1: \"host\": a text in hex has something else than digits"},
        {"fedc", "fed", "line 1: \"host\": a text in hex has half a byte"},
        {"{\"at_ms\":4", "{}}\n{\"at_ms\":4", "line 2: this is not JSON"},
        {"{\"at_ms\":4", "7\n{\"at_ms\":4", "line 2: this is no JSON object"},
        {"\"pass\":1", "\"pass\":0", "line 3: \"pass\"" + no_number},
        {":120", ":2147483648", "line 3: \"counts\": \"numproc\"" + no_number},
        {"\"numproc\":120,", "", "line 3: a count is missing from a pass that did not fail"},
        {"\"at_ms\":0", "\"at_ms\":-1", "line 3: \"at_ms\"" + no_number},
        {"\"at_ms\":0", "\"at_ms\":true", "line 3: \"at_ms\"" + no_number},
        {"\"at_ms\":0", "\"at_ms\":18446744073709551615", "line 3: \"at_ms\"" + no_number},
        {"\"at_ms\":0", "\"at\":0", "line 3: \"at_ms\" is missing"},
        {"{\"numproc\":7,\"numtcpsock\":-1}", "[]", "line 4: \"counts\": not an object"},
        {":true,\"findings\"", ":0,\"findings\"",
         "line 5: \"interrupted\": type must be boolean, but is number"},
        {"\"nameservers\":[\"10.0.0.53\"]", "\"nameservers\":7",
         "line 5: \"findings\": \"nameservers\": not a list"},
        {"\"step\":\"mounts\"", "\"step\":\"x\"",
         "line 5: \"findings\": \"failures\": \"step\": a step that is not known"},
    };
    for (const auto& [old, now, reason] : cases) {
        EXPECT_EQ(parse_recording(changed(every_line, old, now)).reason(), reason);
    }
    const std::string later = changed(every_line, "\"pass\"", "\"later\":null,\"pass\"");
    EXPECT_EQ(parsed(changed(later, "{\"at_ms\"", "{\"later\":[]}\n{\"at_ms\"")).passes.size(), 3U)
        << "later programs may add lines and members";
}

// Cut or changed anywhere it is read or refused, and what is read can be explained.
TEST(Recording, CutOrChangedAnywhereItIsReadOrRefused) {
    const auto use = [](const Kiln::Result<Recording>& result) {
        const std::vector<NamedRecording> recordings = {{"a.rec", result ? *result : Recording()}};
        if (const Kiln::Result<CombinedScan> scan = combine(recordings); result && scan) {
            explain(recordings, *scan, ConfigScales());
        }
    };
    const std::size_t passes[] = {0, 0, 0, 1, 2, 2, 2, 2};  // by the lines that are whole
    for (std::size_t at = 0; at < every_line.size(); ++at) {
        const std::string part = every_line.substr(0, at);
        const auto lines = static_cast<std::size_t>(std::count(part.begin(), part.end(), '\n'));
        const Kiln::Result<Recording> result = parse_recording(part);
        ASSERT_EQ(static_cast<bool>(result), lines > 0) << at;
        use(result);
        if (lines > 0) {
            EXPECT_EQ(result->passes.size(), passes[lines]);
            EXPECT_EQ(result->torn, part.back() != '\n');
            EXPECT_EQ(result->whole_size, part.rfind('\n') + 1);
        }
        for (const char byte : {'\0', '\n', '"', '9'}) {
            std::string changed_text = every_line;
            changed_text[at] = byte;
            use(parse_recording(changed_text));
        }
    }
}

}  // namespace
