// What a recorded pass costs beside a pass of the calculator, and what a long recording costs to
// compute. The disk takes a pass's line during the pause behind it, so it stands in a row of its
// own.
//
//     plan_bench [--quick]      as root
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "bench/bench_support.h"
#include "bench/idle_processes.h"
#include "calc/sample.h"
#include "kiln/runscript.h"
#include "plan/record/record_file.h"
#include "plan/record/recorded_pass.h"
#include "plan/record/stop_signals.h"
#include "plan/record/usage.h"
#include "plan/recording/combined_scan.h"
#include "plan/recording/format.h"

namespace {

constexpr double pass_ratio_limit = 1.05;
constexpr double crowded_ratio_limit = 1.1;
constexpr std::size_t crowd = 5000;  // processes, with four descriptors each
constexpr double compute_limit_seconds = 1.0;
constexpr std::int32_t long_recording_passes = 100000;

// A folder that goes away with what was recorded.
class Folder {
public:
    explicit Folder(const char* parent) : name_(std::string(parent) + "/plan_bench.XXXXXX") {
        if (mkdtemp(name_.data()) == nullptr)
            Bench::give_up("mkdtemp");
    }
    ~Folder() {
        unlink(recording().c_str());
        rmdir(name_.c_str());
    }
    std::string recording() const { return name_ + "/recording"; }

private:
    std::string name_;
};

RecordedPass pass_of(std::int32_t number, const SampleCounts& counts) {
    RecordedPass pass;
    pass.number = number;
    pass.at_ms = std::int64_t{number} * 300000;
    pass.took_ms = 100;
    pass.counts = counts;
    pass.taken.set();
    return pass;
}

RecordFile open_in(const Folder& folder) {
    Kiln::Result<RecordFile> opened =
        RecordFile::open(folder.recording(), RecordFile::Existing::refuse);
    if (!opened)
        Bench::give_up("open");
    return std::move(*opened);
}

// With what the host really uses measured beside it. In memory, which has a line at once.
Bench::Medians cost_of_pass(int rounds) {
    const Folder folder("/dev/shm");
    RecordFile file = open_in(folder);
    const StopSignals stop;
    const Host host;
    const UsageSources sources;
    const auto recorded = [&] {
        const std::optional<TakenPass> taken =
            take_bounded_pass(host, sources, 600, stop.wake_fd());
        if (!taken || !taken->pass.usage || !taken->pass.usage->tasks)
            Bench::give_up("usage");
        if (!file.append(pass_line(taken->pass)))
            Bench::give_up("append");
    };
    return Bench::by_turns(rounds, Bench::Timing::wall, recorded, [&] { take_sample(host); });
}

void measure_pass(const Bench::Options& options, Bench::Table& table) {
    table.compare("recorded pass", cost_of_pass(options.rounds(100, 20)), pass_ratio_limit);
}

// The first three of them are inherited by every process.
int measure_crowd(const Bench::Options& options) {
    Bench::Table table;
    Bench::IdleProcesses processes(1);
    processes.grow_to(crowd);
    table.compare("recorded pass, 5000 processes", cost_of_pass(options.rounds(40, 10)),
                  crowded_ratio_limit);
    return table.exit_status();
}

void measure_disk(const Bench::Options& options, Bench::Table& table) {
    const Folder folder("/var/tmp");
    RecordFile file = open_in(folder);
    std::vector<double> seconds;
    for (int i = 0; i < options.rounds(100, 20); ++i) {
        seconds.push_back(Bench::seconds(
            [&] {
                if (!file.append(pass_line(pass_of(1, {}))))
                    Bench::give_up("append");
            },
            Bench::Timing::wall));
    }
    table.bound("  until the disk has it", Bench::median(seconds) * 1000, Bench::no_limit, " ms");
}

std::string long_recording() {
    RecordingHeader header;
    header.page_size = 4096;
    header.spans = {long_recording_passes * 300, 300};
    std::string text = header_line(header);
    SampleCounts counts;
    std::size_t place = 0;
    for (const std::int32_t count :
         {120, 40, 300, 2500, 150000, 100, 500, 20, 30, 5000000, 200000}) {
        counts[place++] = count;
    }
    for (std::int32_t number = 1; number <= long_recording_passes; ++number) {
        counts[&PhysParams::numproc] = 120 + number % 7;
        text += pass_line(pass_of(number, counts));
    }
    return text;
}

void measure_computing(const Bench::Options& options, Bench::Table& table) {
    const std::string text = long_recording();
    std::vector<double> seconds;
    for (int i = 0; i < options.rounds(10, 3); ++i) {
        seconds.push_back(Bench::seconds(
            [&] {
                Kiln::Result<Recording> parsed = parse_recording(text);
                const std::vector<NamedRecording> recordings = {{"long", std::move(*parsed)}};
                const Kiln::Result<CombinedScan> scan = combine(recordings);
                compute_known_lines(*scan, ConfigScales());
            },
            Bench::Timing::cold_cpu));
    }
    table.bound("computing 100,000 passes", Bench::median(seconds), compute_limit_seconds, " s");
}

}  // namespace

int main(int argc, char** argv) {
    const Bench::Options options(argc, argv);
    setenv("LC_ALL", "C", 1);
    Bench::Table table;
    measure_pass(options, table);
    measure_disk(options, table);
    measure_computing(options, table);
    if (geteuid() != 0) {
        table.skip("recorded pass, 5000 processes", "skipped: needs root");
        return table.exit_status();
    }
    return std::max(table.exit_status(), Bench::in_private([&] { return measure_crowd(options); }));
}
