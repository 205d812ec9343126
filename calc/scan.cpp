#include "calc/scan.h"

#include <chrono>

namespace {

constexpr std::int32_t pty_count = 255;  // pseudo-terminals are never measured

class Scan {
public:
    Scan(const Host& host, const Clock& clock, ScanSpans spans, ScanObserver* observer)
        : host_(host),
          clock_(clock),
          observer_(observer),
          start_(clock.now()),
          schedule_(make_schedule(start_, spans.time, spans.period)) {}

    std::optional<SampleFailure> take_passes(PhysParams& profile) {
        for (std::int32_t pass_no = 1;; ++pass_no) {
            tell(pass_no - 1, 0);
            const Sample sample = take_sample(host_);
            keep_largest(profile, sample, pass_no);
            const std::int32_t pause = sample.failure ? -1 : next_sleep(schedule_, clock_.now());
            if (pause < 0) {
                return sample.failure;
            }
            wait(pause, pass_no);
        }
    }

private:
    void tell(std::int32_t passes_done, std::int64_t next_pass_seconds) {
        if (observer_ == nullptr) {
            return;
        }
        ScanProgress progress;
        progress.elapsed_seconds = clock_.now() - start_;
        progress.total_seconds = schedule_.end_time - start_;
        progress.next_pass_seconds = next_pass_seconds;
        progress.passes_done = passes_done;
        observer_->progress(progress);
    }

    // With an observer, awake once a second to tell how far the scan is. The end stands fixed: a
    // process that was stopped meanwhile does not sleep on for the time that it missed.
    void wait(std::int32_t seconds, std::int32_t passes_done) {
        if (observer_ == nullptr) {
            clock_.sleep(seconds);
            return;
        }
        const auto end = clock_.steady() + std::chrono::seconds(seconds);
        for (auto time = clock_.steady(); time < end; time = clock_.steady()) {
            tell(passes_done, std::chrono::ceil<std::chrono::seconds>(end - time).count());
            clock_.sleep(1);
        }
    }

    const Host& host_;
    const Clock& clock_;
    ScanObserver* const observer_;
    const std::int64_t start_;
    ScanSchedule schedule_;
};

// While another exception is on its way, which is the one to be heard.
void finish_quietly(ScanObserver& observer) noexcept {
    try {
        observer.finished();
    } catch (...) {
    }
}

}  // namespace

std::optional<SampleFailure> run_scan(const Host& host, const Clock& clock, ScanSpans spans,
                                      ScanObserver* observer, PhysParams& profile) {
    profile.avnumproc = 0.0F;
    profile.numpty = pty_count;
    Scan scan(host, clock, spans, observer);
    if (observer == nullptr) {
        return scan.take_passes(profile);
    }
    std::optional<SampleFailure> failure;
    try {
        failure = scan.take_passes(profile);
    } catch (...) {
        finish_quietly(*observer);
        throw;
    }
    observer->finished();
    return failure;
}
