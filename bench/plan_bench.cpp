// What a recorded pass costs beside a pass of the calculator, and what a long recording costs to
// compute.
//
//     plan_bench [--quick]
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <variant>

#include "bench/bench_support.h"
#include "calc/sample.h"
#include "kiln/runscript.h"
#include "plan/combined_scan.h"
#include "plan/record_file.h"
#include "plan/recorder.h"

namespace {

constexpr double pass_ratio_limit = 1.05;
constexpr double compute_limit_seconds = 1.0;
constexpr std::int32_t long_recording_passes = 100000;

// A folder that goes away with what was recorded.
class Folder {
public:
    Folder() {
        if (mkdtemp(name_) == nullptr)
            Bench::give_up("mkdtemp");
    }
    ~Folder() {
        unlink(recording().c_str());
        rmdir(name_);
    }
    std::string recording() const { return std::string(name_) + "/recording"; }

private:
    char name_[32] = "/var/tmp/plan_bench.XXXXXX";
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

// The pass, the line, and the disk that has it.
void measure_pass(const Bench::Options& options, Bench::Table& table) {
    const Folder folder;
    Kiln::Result<RecordFile> opened =
        RecordFile::open(folder.recording(), RecordFile::Existing::refuse);
    if (!std::holds_alternative<RecordFile>(opened))
        Bench::give_up("open");
    auto& file = std::get<RecordFile>(opened);
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

std::string long_recording() {
    RecordingHeader header;
    header.page_size = 4096;
    header.spans = {long_recording_passes * 300, 300};
    std::string text = header_line(header);
    SampleCounts counts = {120, 40, 300, 2500, 150000, 100, 500, 20, 30, 5000000, 200000};
    for (std::int32_t number = 1; number <= long_recording_passes; ++number) {
        counts.numproc = 120 + number % 7;
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
                const std::vector<NamedRecording> recordings = {
                    {"long", std::get<Recording>(std::move(parsed))}};
                const Kiln::Result<CombinedScan> scan = combine(recordings);
                compute_known_lines(std::get<CombinedScan>(scan), ConfigScales());
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
    measure_computing(options, table);
    return table.exit_status();
}
