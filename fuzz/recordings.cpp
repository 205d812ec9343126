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
            require(clock.now_ms() >= recording.last_ms(), "time goes on");
        }
    }
}

std::string written(const Recording& recording) {
    std::string text = header_line(recording.header);
    for (const Continuation& continuation : recording.continuations) {
        text += continuation_line(continuation);
    }
    for (const CheckResult& check : recording.checks) {
        text += check_line(check);
    }
    for (const RecordedPass& pass : recording.passes) {
        text += pass_line(pass);
    }
    return recording.summary ? text + summary_line(*recording.summary) : text;
}

}  // namespace

void try_input(fuzz::Input input) {
    const std::string text = input.text();
    const Kiln::Result<Recording> result = parse_recording(text);
    if (!result) {
        require(!result.reason().empty(), "what is refused has a reason");
        return;
    }
    const auto& recording = *result;
    require(recording.whole_size <= text.size() && text[recording.whole_size - 1] == '\n',
            "only whole lines are taken");
    const Kiln::Result<Recording> again = parse_recording(written(recording));
    require(again && written(*again) == written(recording), "what was read is read again");

    go_on(recording);
    const std::vector<NamedRecording> recordings = {{"a", recording}, {"b", recording}};
    const Kiln::Result<CombinedScan> scan = combine(recordings);
    if (scan) {
        const Explanation explanation = explain(recordings, *scan, ConfigScales());
        require(explanation.counts.size() == sampled_count_number, "every count is told");
        require(explanation.coverage.grade >= 1 && explanation.coverage.grade <= 5,
                "coverage has a grade");
    }
}
