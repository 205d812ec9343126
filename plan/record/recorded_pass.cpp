#include "plan/record/recorded_pass.h"

#include <string>
#include <system_error>
#include <vector>

#include "kiln/strings.h"
#include "plan/record/bounded_task.h"
#include "plan/recording/format.h"

namespace {

// The child hands over what it has after every step, a line each: when a step hangs, the last line
// has what came before it.
void take_steps(const Host& host, const UsageSources& sources, const TakePiece& take_piece) {
    RecordedPass pass;
    ProcessUsage processes;
    pass.number = 1;
    pass.failure = "";
    take_piece(pass_line(pass));
    for (const SampleStep& step : sample_steps) {
        const std::optional<SampleFailure> failure = take_step(host, step, pass.counts, &processes);
        if (failure && !step.forgiven) {
            pass.failure = failure->text;
            take_piece(pass_line(pass));
            return;
        }
        pass.taken |= step.counts();
        take_piece(pass_line(pass));
    }
    pass.failure.reset();
    take_piece(pass_line(pass));  // whole already: the usage may be missing
    pass.usage = read_usage(sources, processes);
    take_piece(pass_line(pass));
}

// The pass in the last line that can be read. One that was cut cannot, nor one with a usage beyond
// all belief: that costs no count.
RecordedPass last_pass(const std::string& text) {
    const std::vector<std::string> lines = Kiln::split("\n", text, 0);
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (const Kiln::Result<RecordedPass> pass = parse_pass(*line)) {
            return *pass;
        }
    }
    RecordedPass none;
    none.failure = "";
    return none;
}

// What the calculator calls the step that did not come to its end.
std::string name_of_step_behind(const TakenCounts& taken) {
    for (const SampleStep& step : sample_steps) {
        if ((step.counts() & ~taken).any()) {
            return step.command == nullptr ? "the memory scan" : step.command;
        }
    }
    return sample_steps[sample_step_number - 1].command;
}

}  // namespace

std::optional<RecordedPass> take_bounded_pass(const Host& host, const UsageSources& sources,
                                              int limit_seconds, int wake_fd) {
    BoundedTask task;
    try {
        task =
            run_bounded([&](const TakePiece& take_piece) { take_steps(host, sources, take_piece); },
                        limit_seconds, wake_fd);
    } catch (const std::system_error& error) {
        RecordedPass pass;
        pass.failure = error.what();
        return pass;
    }
    if (task.end == BoundedTask::End::stopped) {
        return {};
    }
    RecordedPass pass = last_pass(task.text);
    if (task.end != BoundedTask::End::finished && pass.failure) {
        pass.failure = "Error running '" + name_of_step_behind(pass.taken) + "':\n" +
                       (task.end == BoundedTask::End::too_long
                            ? "it took longer than " + std::to_string(limit_seconds) + " s\n"
                            : why_not_finished(task, limit_seconds) + "\n");
    }
    return pass;
}
