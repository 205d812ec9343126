// A recording: every sample of one host, a line of JSON each, as `tarnhwplan record` writes them
// and the other commands read them. Pure: from values to lines and from text to values.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "calc/sample.h"
#include "calc/scan.h"
#include "inspect/records.h"
#include "kiln/result.h"

constexpr std::int32_t recording_format = 1;

// Texts that a host says may hold any bytes; they come back as they were.

// The first line.
struct RecordingHeader {
    std::string version;         // of the program that made it
    std::string host;            // what the host calls itself
    std::string machine;         // kind of processor
    std::string kernel;          // release
    std::int32_t page_size = 0;  // bytes
    std::int64_t start = 0;      // seconds since the epoch
    ScanSpans spans;
};

// Written when a recorder goes on with a recording.
struct Continuation {
    std::int64_t at_ms = 0;  // since the recording's start
    std::string version;
    std::string kernel;
    ScanSpans spans;  // in force from here on, still counted from the start
};

using TakenCounts = std::bitset<sample_field_count>;  // by the place in sample_fields

struct RecordedPass {
    std::int32_t number = 0;  // from 1
    std::int64_t at_ms = 0;   // when it began, since the recording's start
    std::int64_t took_ms = 0;
    SampleCounts counts;
    TakenCounts taken;                   // a failed pass lacks those behind the failure
    std::optional<std::string> failure;  // why it ended early
};

// The steps that are taken once, after the last pass.
enum class OneShotStep { quotas, interfaces, distribution, host_name, resolver, mounts };
constexpr std::size_t one_shot_step_count = 6;
const char* name_of(OneShotStep step);

struct StepFailure {
    OneShotStep step = OneShotStep::quotas;
    std::string text;
};

// What the one-shot steps found; a step that failed left nothing.
struct Findings {
    std::int32_t quotaugidlimit = 0;  // ids that have quota records
    NetIfaceList ifaces;
    std::string distribution;
    std::string hostname;
    NSAttrs ns_attrs;
    TarnACalculateHWNodeNotes notes;
    bool nfs_found = false;
    bool reiserfs_found = false;
    std::vector<StepFailure> failures;
    std::string messages;  // what the steps said on standard error
};

// The last line.
struct Summary {
    std::int64_t at_ms = 0;    // since the recording's start
    bool interrupted = false;  // a signal ended the recording before its time
    Findings findings;
};

struct Recording {
    RecordingHeader header;
    std::vector<Continuation> continuations;
    std::vector<RecordedPass> passes;  // in the order of the lines
    std::optional<Summary> summary;    // the newest
    bool summary_is_last = false;      // nothing was recorded after it
    std::size_t whole_size = 0;        // bytes of the lines that were written whole
    bool torn = false;                 // more bytes follow: a line that was not

    // Those in force last.
    ScanSpans spans() const;
    // When the last line was written, as far as it says so; since the start.
    std::int64_t last_ms() const;
};

// Reads a recording. A last line without its end is left out; any other damage is the reason, which
// names the line. Lines and members that a later program may add are passed over.
Kiln::Result<Recording> parse_recording(std::string_view text);

// Whether the text can be the beginning of a first line that was not written to its end.
bool is_torn_header(std::string_view text);

// Each line with its newline at the end.
std::string header_line(const RecordingHeader& header);
std::string continuation_line(const Continuation& continuation);
std::string pass_line(const RecordedPass& pass);
std::string summary_line(const Summary& summary);

// "2026-01-31T23:59:59Z"
std::string utc_text(std::int64_t seconds_since_epoch);
