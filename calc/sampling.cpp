// The sampling loop: watches the host for the scan time and keeps the largest value of each count.
#include <algorithm>
#include <chrono>
#include <ctime>

#include "calc/sample_parsers.h"
#include "calc/scan_observer.h"
#include "calc/tarn_hwcalc.h"
#include "kiln/numbers.h"
#include "kiln/runscript.h"
#include "kiln/sleep.h"

namespace {

constexpr std::int32_t pty_count = 255;  // pseudo-terminals are never measured

// One pass over the counting commands.
class SamplePass {
public:
    SamplePass(TarnHWCalc& calc, PhysParams& params) : calc_(calc), params_(params) {}

    // Returns 0, or the code of the first step that failed; what was counted before it is kept.
    int take(std::int32_t pass_no);

private:
    using Parser = std::int32_t (*)(const std::string&);

    int raise(std::int32_t& counter, const char* command, Parser parse);
    void add_rules(std::int32_t& rule_sum, const char* command);
    void update_average(std::int32_t pass_no);
    int count_processes(std::int32_t pass_no);
    int count_rules();

    TarnHWCalc& calc_;
    PhysParams& params_;
    std::string out_;  // of the last command
    std::string err_;
};

// Runs the command and raises the counter to what the parser finds in its output.
int SamplePass::raise(std::int32_t& counter, const char* command, Parser parse) {
    if (runscript(command, out_, err_) != 0) {
        return calc_.setError(TarnHWCalc::ERR_EXEC, "Error running '%s':\n%s", command,
                              err_.c_str());
    }
    TarnHWCalc::set_max(counter, parse(out_));
    return 0;
}

// A host without a packet filter or without the routing tool still gets a rule count, so a command
// that fails adds nothing and is not reported.
void SamplePass::add_rules(std::int32_t& rule_sum, const char* command) {
    if (runscript(command, out_, err_) == 0) {
        rule_sum = Kiln::wrap_add(rule_sum, parse_count(out_));
    }
}

// Averages the running maximum, not the sample of the pass, on purpose.
void SamplePass::update_average(std::int32_t pass_no) {
    const float difference = static_cast<float>(params_.numproc) - params_.avnumproc;
    params_.avnumproc = difference / static_cast<float>(pass_no) + params_.avnumproc;
}

int SamplePass::count_processes(std::int32_t pass_no) {
    const int code = raise(params_.numproc, "ps ax | wc -l", parse_count);
    if (code == 0) {
        update_average(pass_no);
    }
    return code;
}

int SamplePass::count_rules() {
    std::int32_t rule_sum = 0;
    add_rules(rule_sum, "iptables -n -L -t filter | wc -l");
    add_rules(rule_sum, "ip route list | wc -l");
    TarnHWCalc::set_max(params_.numiptent, rule_sum);
    return 0;
}

// The header lines that the sources print are counted too, on purpose.
int SamplePass::take(std::int32_t pass_no) {
    int code = count_processes(pass_no);
    if (code == 0) {
        code = raise(params_.numtcpsock, "wc -l < /proc/net/tcp", parse_count);
    }
    if (code == 0) {
        code = raise(params_.numothersock, "cat /proc/net/unix /proc/net/udp /proc/net/raw | wc -l",
                     parse_count);
    }
    if (code == 0) {
        code = raise(params_.numfile, "ls /proc/*/fd/* | wc -l", parse_count);
    }
    if (code == 0) {
        code = calc_.calcMemInfoByVmSize(&params_);
    }
    if (code == 0) {
        code = raise(params_.shmpages, "/usr/bin/ipcs -m -u", parse_shm_pages);
    }
    if (code == 0) {
        code = raise(params_.numflock, "wc -l < /proc/locks", parse_count);
    }
    if (code == 0) {
        code = count_rules();
    }
    if (code == 0) {
        code = raise(params_.diskspace, "df -k -l", sum_used_column);
    }
    if (code == 0) {
        code = raise(params_.diskinodes, "df -i -l", sum_used_column);
    }
    return code;
}

// The clock of one scan: when it ends, how long to sleep between passes, and who is told about it.
class ScanClock {
public:
    ScanClock(std::int32_t scan_time, std::int32_t scan_period, ScanObserver* observer)
        : start_(now()),
          end_time_(start_ + scan_time),
          interval_(scan_time < scan_period ? scan_time : scan_period),
          observer_(observer) {}

    ~ScanClock() {
        if (observer_ != nullptr) {
            observer_->finished();
        }
    }

    ScanClock(const ScanClock&) = delete;
    ScanClock& operator=(const ScanClock&) = delete;

    void pass_begins(std::int32_t passes_done) { tell(passes_done, 0); }

    // Sleeps until the next pass is due; false when the scan is over. The interval shrinks so that
    // the last pass falls on the end of the scan, and stays shrunk.
    bool wait_for_next_pass(std::int32_t passes_done);

private:
    static std::int64_t now() { return static_cast<std::int64_t>(std::time(nullptr)); }

    void tell(std::int32_t passes_done, std::int64_t next_pass_seconds);
    void sleep_telling(std::int32_t passes_done);

    const std::int64_t start_;
    const std::int64_t end_time_;
    std::int32_t interval_;
    ScanObserver* const observer_;
};

void ScanClock::tell(std::int32_t passes_done, std::int64_t next_pass_seconds) {
    if (observer_ == nullptr) {
        return;
    }
    ScanProgress progress;
    progress.elapsed_seconds = now() - start_;
    progress.total_seconds = end_time_ - start_;
    progress.next_pass_seconds = next_pass_seconds;
    progress.passes_done = passes_done;
    observer_->progress(progress);
}

// Sleeps the interval, awake once a second to tell how far the scan is. The end stands fixed: a
// process that was stopped meanwhile does not sleep on for the time that it missed.
void ScanClock::sleep_telling(std::int32_t passes_done) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(interval_);
    for (auto time = Clock::now(); time < end; time = Clock::now()) {
        tell(passes_done, std::chrono::ceil<std::chrono::seconds>(end - time).count());
        Kiln::sleep_full(1);
    }
}

bool ScanClock::wait_for_next_pass(std::int32_t passes_done) {
    const std::int64_t current = now();
    if (current >= end_time_) {
        return false;
    }
    if (interval_ + current > end_time_) {
        interval_ = static_cast<std::int32_t>(end_time_ - current);
    }
    if (observer_ == nullptr) {
        Kiln::sleep_full(interval_);
        return true;
    }
    sleep_telling(passes_done);
    return true;
}

}  // namespace

int TarnHWCalc::calcProcParams(PhysParams* params) {
    ScanClock clock(scan_time, scan_period, scan_observer);
    params->avnumproc = 0.0F;
    params->numpty = pty_count;

    SamplePass pass(*this, *params);
    std::int32_t pass_no = 0;
    do {
        clock.pass_begins(pass_no);
        ++pass_no;
        const int code = pass.take(pass_no);
        if (code != 0) {
            return code;
        }
    } while (clock.wait_for_next_pass(pass_no));
    return 0;
}
