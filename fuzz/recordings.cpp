// Recordings, and everything that is made of them.
#include "fuzz/support.h"
#include "plan/explain/explanation.h"
#include "plan/record/recording_clock.h"
#include "plan/recording/format.h"

namespace {

// Whoever goes on with it is never before its last line, whatever the clocks say.
void go_on(const Recording& recording) {
    for (const std::int64_t wall_ms : {std::int64_t{0}, std::int64_t{1773324300000}}) {
        const TimeSources time = {[] { return 5000; }, [=] { return wall_ms; }};
        for (const char* const boot_id : {"", "9b0b7d13-c910-4f72-848b-fb91ccdfaad1"}) {
            const RecordingClock clock(time, recording, boot_id);
            fuzz::require(clock.now_ms() >= recording.last_ms(), "time goes on");
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = fuzz::text_of(data, size);
    const Kiln::Result<Recording> result = parse_recording(text);
    if (!result) {
        fuzz::require(!result.reason().empty(), "what is refused has a reason");
        return 0;
    }
    const auto& recording = *result;
    fuzz::require(recording.whole_size <= size && text[recording.whole_size - 1] == '\n',
                  "only whole lines are taken");
    std::string again = header_line(recording.header);
    for (const Continuation& continuation : recording.continuations) {
        again += continuation_line(continuation);
    }
    for (const CheckResult& check : recording.checks) {
        again += check_line(check);
    }
    for (const RecordedPass& pass : recording.passes) {
        again += pass_line(pass);
    }
    if (recording.summary) {
        again += summary_line(*recording.summary);
    }
    const Kiln::Result<Recording> reread = parse_recording(again);
    fuzz::require(static_cast<bool>(reread), "what was read can be written");
    fuzz::require(reread->passes.size() == recording.passes.size(), "no pass is lost");
    fuzz::require(reread->continuations.size() == recording.continuations.size() &&
                      reread->checks.size() == recording.checks.size(),
                  "nor what it went on with, nor what was found before");

    go_on(recording);
    const std::vector<NamedRecording> recordings = {{"a", recording}, {"b", recording}};
    const Kiln::Result<CombinedScan> scan = combine(recordings);
    if (scan) {
        const Explanation explanation = explain(recordings, *scan, ConfigScales());
        fuzz::require(explanation.counts.size() == sampled_count_number, "every count is told");
        fuzz::require(explanation.coverage.grade >= 1 && explanation.coverage.grade <= 5,
                      "coverage has a grade");
    }
    return 0;
}
