// The recorder: takes passes as the calculator does and has each on the disk before the next
// begins.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "calc/progress_line.h"
#include "calc/scan.h"
#include "inspect/host.h"
#include "plan/record/record_file.h"
#include "plan/record/recording_clock.h"
#include "plan/record/stop_signals.h"
#include "plan/record/usage.h"
#include "plan/recording/recording.h"

// Nothing more can be recorded; the text says why.
struct RecordTrouble : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The real host and clocks, unless somebody hands in others.
struct RecorderSources {
    Host host;
    UsageSources usage;
    TimeSources time;
    // Looks at the host before the first pass; null for nobody.
    std::function<CheckFindings()> check;
    bool is_root = true;
};

class Recorder {
public:
    // All stay the caller's.
    Recorder(RecordFile& file, const RecorderSources& sources, const StopSignals& stop);

    // Records for the spans, counted from the start of the recording that the file holds, if it
    // holds one. Ends early when a signal asks for it. Throws RecordTrouble; what was recorded
    // before is kept.
    void record(ScanSpans spans);

    // Whether a pass or a step failed; each has been said.
    bool flawed() const { return flawed_; }

    // The passes in the file, those of earlier recorders too.
    std::int32_t passes_done() const { return passes_done_; }
    bool interrupted() const { return stop_.requested(); }

private:
    using SteadyClock = std::chrono::steady_clock;

    void begin(ScanSpans spans);
    void begin_anew();
    void go_on(const Recording& recording);
    void check_same_host(const RecordingHeader& header) const;
    void keep_check();
    void take_passes();
    bool take_pass();
    void wait_until(SteadyClock::time_point end);
    void tell(std::int64_t next_pass_seconds);
    void hide_progress();
    void take_steps();
    void append(const std::string& lines);
    Kiln::Done write_held_lines();
    void write_the_rest();
    void cut(std::uint64_t size);
    void say_lines(const std::string& text);
    void complain(const std::string& text);

    std::int64_t now_ms() const;
    std::optional<std::int64_t> clock_that_was_set() const;
    bool is_over() const { return now_ms() / 1000 >= spans_.time; }

    RecordFile& file_;
    const RecorderSources& sources_;
    const StopSignals& stop_;
    RecordingClock clock_;
    RecordingHeader header_;
    ScanSpans spans_;
    std::int32_t passes_done_ = 0;
    SteadyClock::time_point pass_end_;
    std::int64_t pass_end_ms_ = 0;  // since the start
    std::string held_lines_;        // for which there was no room
    bool wants_passes_ = true;
    bool wants_summary_ = true;
    bool flawed_ = false;
    bool shows_progress_ = false;
    ProgressLine progress_line_;
};
