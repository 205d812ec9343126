// What a recorded pass costs beside a pass of the calculator, and what a long recording costs to
// compute. The disk takes a pass's line during the pause behind it, so it stands in a row of its
// own.
//
//     plan_bench [--quick]
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <variant>

#include "bench/bench_support.h"
#include "calc/sample.h"
#include "kiln/runscript.h"
#include "plan/record/record_file.h"
#include "plan/record/recorder.h"
#include "plan/recording/combined_scan.h"

namespace {

constexpr double pass_ratio_limit = 1.05;
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

// In memory, which has a line at once.
void measure_pass(const Bench::Options& options, Bench::Table& table) {
    const Folder folder("/dev/shm");
    RecordFile file = open_in(folder);
    const StopSignals stop;
    const Host plain;
    const Host within_limits = host_until(stop);
    const auto recorded = [&] {
        const Sample sample = take_sample(within_limits);
        if (!file.append(pass_line(pass_of(1, sample.counts))).empty())
            Bench::give_up("append");
    };
    table.compare("recorded pass",
                  Bench::by_turns(options.rounds(100, 20), Bench::Timing::wall, recorded,
                                  [&] { take_sample(plain); }),
                  pass_ratio_limit);
}

void measure_disk(const Bench::Options& options, Bench::Table& table) {
    const Folder folder("/var/tmp");
    RecordFile file = open_in(folder);
    std::vector<double> seconds;
    for (int i = 0; i < options.rounds(100, 20); ++i) {
        seconds.push_back(
            Bench::seconds([&] { file.append(pass_line(pass_of(1, {}))); }, Bench::Timing::wall));
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
    return table.exit_status();
}
