// The recorder: takes passes as the calculator does and has each on the disk before the next
// begins.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "calc/progress_line.h"
#include "calc/scan.h"
#include "inspect/host.h"
#include "plan/record/forward_clock.h"
#include "plan/record/record_file.h"
#include "plan/record/stop_signals.h"
#include "plan/recording/recording.h"

// Nothing more can be recorded; the text says why.
struct RecordTrouble : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Recorder {
public:
    // All stay the caller's.
    Recorder(RecordFile& file, const Host& host, const StopSignals& stop);

    // Records for the spans, counted from the start of the recording that the file holds, if it
    // holds one. Ends early when a signal asks for it. Throws RecordTrouble; what was recorded
    // before is kept.
    void record(ScanSpans spans);

    // Whether a pass or a step failed; each has been said.
    bool flawed() const { return flawed_; }

private:
    using SteadyClock = std::chrono::steady_clock;

    void begin(ScanSpans spans);
    void go_on(const Recording& recording, ScanSpans spans);
    void check_same_host(const RecordingHeader& header) const;
    void take_passes();
    bool take_pass();
    void wait_until(SteadyClock::time_point end);
    void tell(std::int64_t next_pass_seconds);
    void hide_progress();
    void take_steps();
    void append(const std::string& lines);
    void cut(std::uint64_t size);
    void complain(const std::string& text);

    std::int64_t since_start_ms() { return clock_.now_ms() - start_ * 1000; }
    bool is_over() { return clock_.now_ms() / 1000 >= start_ + spans_.time; }

    RecordFile& file_;
    const Host& host_;
    const StopSignals& stop_;
    ForwardClock clock_;
    std::int64_t start_ = 0;  // seconds since the epoch
    ScanSpans spans_;
    std::int32_t passes_done_ = 0;
    SteadyClock::time_point pass_end_;
    std::int64_t pass_end_ms_ = 0;  // since the epoch
    bool wants_passes_ = true;
    bool wants_summary_ = true;
    bool flawed_ = false;
    bool shows_progress_ = false;
    ProgressLine progress_line_;
};
