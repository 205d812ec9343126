// The lines of a recording, one JSON object each. Pure: from values to lines and from text to
// values. Which members a line has stands in members.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kiln/result.h"
#include "plan/recording/recording.h"

constexpr std::int32_t recording_format = 1;

// Reads a recording line by line. A last line that was not written whole is left out: one without
// its end, or one that is no JSON, as a machine that loses power leaves them. Any other damage is
// the reason, which names the line; so is JSON that is nested deeper than any of ours. Lines and
// members that a later program may add are passed over.
class RecordingParser {
public:
    // Takes the whole lines off the text, and at the end also a last one without its newline. After
    // a reason nothing is taken any more.
    Kiln::Done take_lines(std::string_view& text, bool is_end);

    // When there are no more lines.
    Kiln::Result<Recording> finish();

private:
    void take(std::string_view line);

    Recording recording_;
    std::size_t number_ = 0;         // of the last line
    bool is_torn_ = false;           // it was not written whole
    bool is_blank_ = true;           // there was nothing but zeros and newlines yet
    bool is_header_missing_ = true;  // as if its first line had never been written
};

// The same of a text that is there already.
Kiln::Result<Recording> parse_recording(std::string_view text);

// Whether the text can be a first line that was not written to its end: nothing at all, the
// beginning of one, or the zeros that a machine without power leaves.
bool is_torn_header(std::string_view text);

// Whether a text begins like a recording, though it may be damaged or of another format.
bool begins_like_recording(std::string_view text);

// Each line with its newline at the end.
std::string header_line(const RecordingHeader& header);
std::string continuation_line(const Continuation& continuation);
std::string check_line(const CheckResult& check);
std::string pass_line(const RecordedPass& pass);
std::string summary_line(const Summary& summary);

// The same of one part, for what a child process hands to its parent: CheckResult, RecordedPass,
// Findings and Hardware.
template <class Part>
std::string part_text(const Part& part);
template <class Part>
Kiln::Result<Part> parse_part(std::string_view text);
