#include "plan/record/recorder.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>

#include "calc/scan_clock.h"
#include "kiln/strings.h"
#include "plan/record/bounded_task.h"
#include "plan/record/one_shot_steps.h"
#include "plan/record/recorded_pass.h"
#include "plan/recording/format.h"
#include "plan/recording/members.h"
#include "plan/text/printable.h"
#include "plan/text/say.h"
#include "plan/text/utc.h"

namespace {

// A step that takes longer does not come back at all.
constexpr int step_limit_seconds = 600;
// When somebody wants us to end. All steps together stay below the 90 s that a service manager
// waits.
constexpr int interrupted_limit_seconds = 10;

// The wall clock and ours never agree to the millisecond; more than this and it has been set.
constexpr std::int64_t same_clock_ms = 2000;

// A clock before the year 0 or behind 9999 makes no time that can be read again.
constexpr std::int64_t first_second = -62167219200;
constexpr std::int64_t last_second = 253402300799;

// How large the host is. A broken disk can make that last: then only the boot is known.
Hardware look_at_hardware(const UsageSources& sources, int wake_fd) {
    Hardware unknown;
    unknown.boot_id = read_boot_id(sources.paths);
    const BoundedTask task = run_bounded([&] { return part_text(read_hardware(sources)); },
                                         interrupted_limit_seconds, wake_fd);
    const Kiln::Result<Hardware> hardware = parse_part<Hardware>(task.text);
    return hardware ? *hardware : unknown;
}

RecordingHeader describe(const RecorderSources& sources, ScanSpans spans, int wake_fd) {
    utsname system = {};
    uname(&system);
    RecordingHeader header;
    header.version = TARN_VERSION;
    header.host = sources.host.host_name().value_or("");
    header.machine = system.machine;
    header.kernel = system.release;
    header.page_size = getpagesize();
    header.spans = spans;
    header.root = sources.is_root;
    header.hardware = look_at_hardware(sources.usage, wake_fd);
    return header;
}

}  // namespace

Recorder::Recorder(RecordFile& file, const RecorderSources& sources, const StopSignals& stop)
    : file_(file),
      sources_(sources),
      stop_(stop),
      clock_(sources.time),
      progress_line_(STDERR_FILENO) {}

// What there is no room for now is held back, and comes before the next line.
void Recorder::append(const std::string& lines) {
    if (const Kiln::Done untouched = file_.check_untouched(); !untouched) {
        hide_progress();
        throw RecordTrouble(untouched.reason());
    }
    const bool was_full = !held_lines_.empty();
    held_lines_ += lines;
    if (const Kiln::Done written = write_held_lines(); !written) {
        if (!was_full) {
            complain(written.reason() + "; going on, what cannot be written is kept in memory");
        }
        return;
    }
    if (was_full) {
        complain("what was kept in memory is written");
    }
}

// One after another: a machine that loses power tears one line at most.
Kiln::Done Recorder::write_held_lines() {
    while (!held_lines_.empty()) {
        const std::size_t size = held_lines_.find('\n') + 1;
        if (const Kiln::Done written = file_.append({held_lines_.data(), size}); !written) {
            return Kiln::Reason{written.reason()};
        }
        held_lines_.erase(0, size);
    }
    return {};
}

void Recorder::write_the_rest() {
    if (const Kiln::Done written = write_held_lines(); !written) {
        const auto lines = std::count(held_lines_.begin(), held_lines_.end(), '\n');
        throw RecordTrouble(written.reason() + "; lines that are lost: " + grouped(lines));
    }
}

void Recorder::cut(std::uint64_t size) {
    if (const Kiln::Done cut = file_.cut(size); !cut) {
        throw RecordTrouble(cut.reason());
    }
}

void Recorder::hide_progress() {
    if (shows_progress_) {
        progress_line_.finished();
    }
}

void Recorder::say_lines(const std::string& text) {
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        hide_progress();
        say(line);
    }
}

void Recorder::complain(const std::string& text) {
    hide_progress();
    say(text);
    flawed_ = true;
}

std::int64_t Recorder::now_ms() const {
    return std::min(clock_.now_ms(), milliseconds.most);
}

// Nothing as long as it goes with ours.
std::optional<std::int64_t> Recorder::clock_that_was_set() const {
    const std::int64_t wall_ms = clock_.wall_ms();
    const std::int64_t expected_ms = header_.start * 1000 + now_ms();
    const bool is_same =
        wall_ms > expected_ms - same_clock_ms && wall_ms < expected_ms + same_clock_ms;
    return is_same ? std::nullopt : std::optional(wall_ms);
}

void Recorder::record(ScanSpans spans) {
    spans_ = spans;
    shows_progress_ = spans.time > 0 && isatty(STDERR_FILENO) == 1;
    begin(spans);
    if (wants_passes_) {
        keep_check();
        take_passes();
    }
    hide_progress();
    if (wants_summary_) {
        take_steps();
    }
    write_the_rest();
}

void Recorder::begin(ScanSpans spans) {
    header_ = describe(sources_, spans, stop_.wake_fd());
    const Kiln::Result<std::string> text = file_.read();
    if (!text) {
        throw RecordTrouble(text.reason());
    }
    if (is_torn_header(*text)) {  // or nothing at all
        begin_anew();
        return;
    }
    const Kiln::Result<Recording> parsed = parse_recording(*text);
    if (!parsed) {
        throw RecordTrouble("cannot go on with it: " + parsed.reason());
    }
    go_on(*parsed);
}

void Recorder::begin_anew() {
    cut(0);
    clock_ = RecordingClock(sources_.time);
    header_.start = std::clamp(clock_.wall_ms() / 1000, first_second, last_second);
    header_.boot_ms = clock_.boot_ms();
    append(header_line(header_));
}

void Recorder::go_on(const Recording& recording) {
    check_same_host(recording.header);
    if (recording.torn) {
        cut(recording.whole_size);
    }
    clock_ = RecordingClock(sources_.time, recording, header_.hardware->boot_id);
    if (clock_.doubts()) {
        complain(*clock_.doubts());
    }
    header_.start = recording.header.start;
    for (const RecordedPass& pass : recording.passes) {
        passes_done_ = std::max(passes_done_, pass.number);
    }
    wants_passes_ = passes_done_ == 0 || !is_over();
    wants_summary_ = wants_passes_ || !recording.summary_is_last;
    if (wants_passes_ && passes_done_ == from_one.most) {
        throw RecordTrouble("cannot go on with it: there is no number for another pass");
    }
    if (wants_summary_) {
        append(continuation_line({now_ms(), header_.version, header_.kernel, spans_, header_.root,
                                  clock_.boot_ms(), header_.hardware, clock_that_was_set()}));
    }
}

void Recorder::check_same_host(const RecordingHeader& header) const {
    if (header.host != header_.host || header.machine != header_.machine) {
        throw RecordTrouble("it is a recording of another host: " + header.host + ", " +
                            header.machine);
    }
    if (header.page_size != header_.page_size) {
        throw RecordTrouble("its host had pages of " + std::to_string(header.page_size) +
                            " bytes, this one has others");
    }
}

// What would make the numbers wrong is said now, not when they are read.
void Recorder::keep_check() {
    if (sources_.check == nullptr) {
        return;
    }
    const CheckResult check = {now_ms(), sources_.check()};
    if (stop_.requested()) {
        return;  // it was not done to its end
    }
    for (const CheckFinding& finding : check.findings) {
        say(finding.text);
    }
    append(check_line(check));
}

// A pause begins where the pass ended: the disk that takes the line does not put the next one off.
void Recorder::take_passes() {
    ScanSchedule schedule = make_schedule(0, spans_.time, spans_.period);
    while (passes_done_ < from_one.most && take_pass()) {
        const std::int32_t pause = next_sleep(schedule, pass_end_ms_ / 1000);
        if (pause < 0) {
            return;
        }
        wait_until(pass_end_ + std::chrono::seconds(pause));
        if (stop_.requested()) {
            return;
        }
    }
}

// False when somebody wanted us to end meanwhile; the pass is left out then.
bool Recorder::take_pass() {
    tell(0);
    const std::int64_t at_ms = now_ms();
    const auto begin = SteadyClock::now();
    std::optional<TakenPass> taken =
        take_bounded_pass(sources_.host, sources_.usage, step_limit_seconds, stop_.wake_fd());
    if (!taken || stop_.requested()) {
        return false;
    }
    RecordedPass& pass = taken->pass;
    pass.number = passes_done_ + 1;
    pass.at_ms = at_ms;
    pass_end_ = SteadyClock::now();
    pass_end_ms_ = now_ms();
    pass.took_ms = std::chrono::duration_cast<std::chrono::milliseconds>(pass_end_ - begin).count();
    pass.clock_ms = clock_that_was_set();
    say_lines(taken->messages);
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
    for (auto now = SteadyClock::now(); now < end && !stop_.requested(); now = SteadyClock::now()) {
        tell(ceil<std::chrono::seconds>(end - now).count());
        const auto left = ceil<std::chrono::milliseconds>(end - now);
        const std::chrono::milliseconds slice = std::chrono::seconds(1);
        stop_.sleep(shows_progress_ ? std::min(left, slice) : left);
    }
}

void Recorder::tell(std::int64_t next_pass_seconds) {
    if (shows_progress_) {
        ScanProgress progress;
        progress.elapsed_seconds = now_ms() / 1000;
        progress.total_seconds = spans_.time;
        progress.next_pass_seconds = next_pass_seconds;
        progress.passes_done = passes_done_;
        progress_line_.progress(progress);
    }
}

// A step during which a signal comes is taken again, and not waited for as long.
void Recorder::take_steps() {
    Summary summary;
    for (const OneShotStepRow& row : one_shot_steps) {
        StepOutcome outcome;
        outcome.stopped = true;
        if (!stop_.requested()) {
            outcome = take_one_shot_step(sources_.host, row.step, step_limit_seconds,
                                         stop_.wake_fd(), summary.findings);
        }
        if (outcome.stopped) {
            outcome = take_one_shot_step(sources_.host, row.step, interrupted_limit_seconds, -1,
                                         summary.findings);
        }
        for (const StepFailure& failure : outcome.findings.failures) {
            if (failure.step == row.step) {
                complain(std::string(row.name) + ": " + failure.text);
            }
        }
        say_lines(outcome.findings.messages.substr(summary.findings.messages.size()));
        summary.findings = std::move(outcome.findings);
    }
    summary.interrupted = stop_.requested();
    summary.at_ms = now_ms();
    summary.clock_ms = clock_that_was_set();
    append(summary_line(summary));
}
