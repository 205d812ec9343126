// The lines of a recording: what is read is written again, and damage is noticed.
#include "plan/recording/recording.h"

#include <gtest/gtest.h>

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
        {"fedc", "fedg", "line 1: \"host\": a text in hex has something else than digits"},
        {"{\"at_ms\":4", "{}}\n{\"at_ms\":4", "line 2: this is not JSON"},
        {":120", ":2147483648", "line 3: \"counts\": \"numproc\"" + no_number},
        {"\"numproc\":120,", "", "line 3: a count is missing from a pass that did not fail"},
        {"\"at_ms\":0", "\"at_ms\":18446744073709551615", "line 3: \"at_ms\"" + no_number},
        {"\"at_ms\":0", "\"at\":0", "line 3: \"at_ms\" is missing"},
        {":true,\"findings\"", ":0,\"findings\"",
         "line 5: \"interrupted\": type must be boolean, but is number"},
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

}  // namespace
