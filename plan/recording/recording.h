// A recording: every sample of one host, as `tarnhwplan record` writes them and the other commands
// read them. Plain values; format.h turns them into lines and back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calc/one_shot_steps.h"
#include "calc/sample.h"
#include "calc/scan.h"
#include "inspect/records.h"
#include "plan/recording/finding.h"
#include "plan/recording/usage.h"

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
    // Older programs wrote none of these.
    std::optional<bool> root;             // whether root recorded it
    std::optional<std::int64_t> boot_ms;  // since the machine was started
    std::optional<Hardware> hardware;
};

// Written when a recorder goes on with a recording.
struct Continuation {
    std::int64_t at_ms = 0;  // since the recording's start
    std::string version;
    std::string kernel;
    ScanSpans spans;  // in force from here on, still counted from the start
    std::optional<bool> root;
    std::optional<std::int64_t> boot_ms;
    std::optional<Hardware> hardware;
    std::optional<std::int64_t> clock_ms;  // as in a pass
};

struct RecordedPass {
    std::int32_t number = 0;  // from 1
    std::int64_t at_ms = 0;   // when it began, since the recording's start
    std::int64_t took_ms = 0;
    SampleCounts counts;
    TakenCounts taken;                   // a failed pass lacks those behind the failure
    std::optional<std::string> failure;  // why it ended early
    std::optional<Usage> usage;          // older programs wrote none
    // The wall clock behind it, since the epoch; only where it is not what the start and the time
    // since then make it: it has been set.
    std::optional<std::int64_t> clock_ms;
};

// What the check of the host found when a recorder began or went on.
struct CheckResult {
    std::int64_t at_ms = 0;
    CheckFindings findings;
};

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
    std::optional<std::int64_t> clock_ms;  // as in a pass
};

struct Recording {
    RecordingHeader header;
    std::vector<Continuation> continuations;
    std::vector<RecordedPass> passes;  // in the order of the lines
    std::vector<CheckResult> checks;
    std::optional<Summary> summary;             // the newest
    bool summary_is_last = false;               // nothing was recorded after it
    std::size_t whole_size = 0;                 // bytes of the lines that were written whole
    bool torn = false;                          // more bytes follow: a line that was not
    std::optional<std::int64_t> last_clock_ms;  // of the last line that has one, if none is newer

    // Those in force last.
    ScanSpans spans() const;
    // A moment since the start as one since the epoch.
    std::int64_t time_ms(std::int64_t at_ms) const { return header.start * 1000 + at_ms; }
    // When the last line was written, as far as it says so; since the start.
    std::int64_t last_ms() const;
};
