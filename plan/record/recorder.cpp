#include "plan/record/recorder.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "calc/scan_clock.h"
#include "kiln/files.h"
#include "plan/record/one_shot_steps.h"
#include "plan/record/recorded_pass.h"
#include "plan/recording/format.h"
#include "plan/text/say.h"

namespace {

// A command that takes longer does not come back at all.
constexpr int step_limit_seconds = 600;
// When somebody wants us to end. All steps together stay below the 90 s that a service manager
// waits.
constexpr int interrupted_limit_seconds = 10;

RecordingHeader describe(const Host& host, ScanSpans spans, std::int64_t now_seconds) {
    utsname system = {};
    uname(&system);
    RecordingHeader header;
    header.version = TARN_VERSION;
    header.host = host.host_name().value_or("");
    header.machine = system.machine;
    header.kernel = system.release;
    header.page_size = getpagesize();
    header.start = now_seconds;
    header.spans = spans;
    return header;
}

}  // namespace

Recorder::Recorder(RecordFile& file, const Host& host, const StopSignals& stop)
    : file_(file), host_(host), stop_(stop), progress_line_(STDERR_FILENO) {}

void Recorder::append(const std::string& lines) {
    const std::string trouble = file_.append(lines);
    if (!trouble.empty()) {
        hide_progress();
        throw RecordTrouble(trouble);
    }
}

void Recorder::cut(std::uint64_t size) {
    const std::string trouble = file_.cut(size);
    if (!trouble.empty()) {
        throw RecordTrouble(trouble);
    }
}

void Recorder::hide_progress() {
    if (shows_progress_) {
        progress_line_.finished();
    }
}

void Recorder::complain(const std::string& text) {
    hide_progress();
    say(text);
    flawed_ = true;
}

void Recorder::record(ScanSpans spans) {
    spans_ = spans;
    shows_progress_ = spans.time > 0 && isatty(STDERR_FILENO) == 1;
    begin(spans);
    if (wants_passes_) {
        take_passes();
    }
    hide_progress();
    if (wants_summary_) {
        take_steps();
    }
}

void Recorder::begin(ScanSpans spans) {
    const Kiln::Result<std::string> read = file_.read();
    if (!read) {
        throw RecordTrouble(read.reason());
    }
    const auto& text = *read;
    if (is_torn_header(text)) {  // or nothing at all
        cut(0);
        start_ = clock_.now_ms() / 1000;
        append(header_line(describe(host_, spans, start_)));
        return;
    }
    const Kiln::Result<Recording> parsed = parse_recording(text);
    if (!parsed) {
        throw RecordTrouble("cannot go on with it: " + parsed.reason());
    }
    go_on(*parsed, spans);
}

void Recorder::go_on(const Recording& recording, ScanSpans spans) {
    check_same_host(recording.header);
    if (recording.torn) {
        cut(recording.whole_size);
    }
    start_ = recording.header.start;
    clock_ = ForwardClock(start_ * 1000 + recording.last_ms());
    for (const RecordedPass& pass : recording.passes) {
        passes_done_ = std::max(passes_done_, pass.number);
    }
    wants_passes_ = passes_done_ == 0 || !is_over();
    wants_summary_ = wants_passes_ || !recording.summary_is_last;
    if (wants_summary_) {
        const RecordingHeader here = describe(host_, spans, start_);
        append(continuation_line({since_start_ms(), here.version, here.kernel, spans, {}}));
    }
}

void Recorder::check_same_host(const RecordingHeader& header) const {
    const RecordingHeader here = describe(host_, spans_, start_);
    if (header.host != here.host || header.machine != here.machine) {
        throw RecordTrouble("it is a recording of another host: " + header.host + ", " +
                            header.machine);
    }
    if (header.page_size != here.page_size) {
        throw RecordTrouble("its host had pages of " + std::to_string(header.page_size) +
                            " bytes, this one has others");
    }
}

// A pause begins where the pass ended: the disk that takes the line does not put the next one off.
void Recorder::take_passes() {
    ScanSchedule schedule = make_schedule(start_, spans_.time, spans_.period);
    while (take_pass()) {
        const std::int32_t pause = next_sleep(schedule, pass_end_ms_ / 1000);
        if (pause < 0) {
            return;
        }
        wait_until(pass_end_ + std::chrono::seconds(pause));
        if (stop_.count() > 0) {
            return;
        }
    }
}

// False when somebody wanted us to end meanwhile; the pass is left out then.
bool Recorder::take_pass() {
    tell(0);
    const std::int64_t at_ms = since_start_ms();
    const auto begin = SteadyClock::now();
    std::optional<RecordedPass> taken =
        take_bounded_pass(host_, UsageSources(), step_limit_seconds, stop_.wake_fd());
    if (!taken || stop_.count() > 0) {
        return false;
    }
    RecordedPass& pass = *taken;
    pass.number = passes_done_ + 1;
    pass.at_ms = at_ms;
    pass_end_ = SteadyClock::now();
    pass_end_ms_ = clock_.now_ms();
    pass.took_ms = std::chrono::duration_cast<std::chrono::milliseconds>(pass_end_ - begin).count();
    if (pass.failure) {
        complain("pass " + std::to_string(pass.number) + " failed: " + *pass.failure);
    }
    append(pass_line(pass));
    passes_done_ = pass.number;
    return true;
}

// Or until a signal comes; awake once a second to show how far it is.
void Recorder::wait_until(SteadyClock::time_point end) {
    using std::chrono::ceil;
    for (auto now = SteadyClock::now(); now < end && stop_.count() == 0; now = SteadyClock::now()) {
        tell(ceil<std::chrono::seconds>(end - now).count());
        const auto left = ceil<std::chrono::milliseconds>(end - now);
        const std::chrono::milliseconds slice = std::chrono::seconds(1);
        stop_.sleep(shows_progress_ ? std::min(left, slice) : left);
    }
}

void Recorder::tell(std::int64_t next_pass_seconds) {
    if (shows_progress_) {
        ScanProgress progress;
        progress.elapsed_seconds = since_start_ms() / 1000;
        progress.total_seconds = spans_.time;
        progress.next_pass_seconds = next_pass_seconds;
        progress.passes_done = passes_done_;
        progress_line_.progress(progress);
    }
}

// The second signal ends it without the steps.
void Recorder::take_steps() {
    Summary summary;
    summary.interrupted = stop_.count() > 0;
    for (const OneShotStepRow& row : one_shot_steps) {
        if (stop_.count() > 1) {
            break;
        }
        const OneShotStep step = row.step;
        stop_.acknowledge();
        StepOutcome outcome = take_one_shot_step(
            host_, step, stop_.count() > 0 ? interrupted_limit_seconds : step_limit_seconds,
            stop_.wake_fd());
        if (outcome.stopped && stop_.count() == 1) {  // taken again, without patience
            summary.interrupted = true;
            stop_.acknowledge();
            outcome = take_one_shot_step(host_, step, interrupted_limit_seconds, stop_.wake_fd());
        }
        for (const StepFailure& failure : outcome.findings.failures) {
            complain(std::string(name_of(step)) + ": " + failure.text);
        }
        static_cast<void>(Kiln::write_all(STDERR_FILENO, outcome.findings.messages.data(),
                                          outcome.findings.messages.size()));
        add_findings(summary.findings, outcome.findings);
    }
    if (stop_.count() < 2) {
        summary.at_ms = since_start_ms();
        append(summary_line(summary));
    }
}
