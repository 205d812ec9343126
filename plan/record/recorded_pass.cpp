#include "plan/record/recorded_pass.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kiln/strings.h"
#include "plan/record/bounded_task.h"
#include "plan/record/command_run.h"
#include "plan/recording/format.h"

namespace {

// The counts that are whole after so many steps: two steps add to the same one.
TakenCounts taken_after(std::size_t steps) {
    TakenCounts taken;
    for (std::size_t i = 0; i < sample_step_number; ++i) {
        const TakenCounts counts = sample_steps[i].counts();
        taken = i < steps ? taken | counts : taken & ~counts;
    }
    return taken;
}

// The child hands over what it has before the first step and after every one, a line each: when a
// step hangs, the last line has what came before it.
void take_steps(const Host& host, const UsageSources& sources, const TakePiece& take_piece) {
    bool was_run = true;
    Host watched = host;
    watched.run = [&](const std::string& command, std::string& out, std::string& err) {
        const int status = host.run(command, out, err);
        was_run = had_processes(status, err);
        return status;
    };
    RecordedPass pass;
    ProcessUsage processes;
    pass.number = 1;
    pass.failure = "";
    take_piece(pass_line(pass));
    for (std::size_t i = 0; i < sample_step_number; ++i) {
        const SampleStep& step = sample_steps[i];
        const std::optional<SampleFailure> failure =
            take_step(watched, step, pass.counts, &processes);
        if (failure && !(step.forgiven && was_run)) {
            pass.failure = failure->text;
            take_piece(pass_line(pass));
            return;
        }
        pass.taken = taken_after(i + 1);
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
        if (const Kiln::Result<RecordedPass> pass = parse_part<RecordedPass>(*line)) {
            return *pass;
        }
    }
    RecordedPass none;
    none.failure = "";
    return none;
}

// What the calculator calls the step that did not come to its end: there is a line before each.
std::string name_of_last_step(const std::string& text) {
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    const std::size_t place = std::clamp<std::size_t>(lines, 1, sample_step_number) - 1;
    const char* const command = sample_steps[place].command;
    return command == nullptr ? "the memory scan" : command;
}

std::string why_not_whole(const BoundedTask& task, int limit_seconds) {
    if (task.end == BoundedTask::End::not_begun) {
        return task.messages;
    }
    const std::string why = task.end == BoundedTask::End::too_long
                                ? "it took longer than " + std::to_string(limit_seconds) + " s"
                                : why_not_finished(task, limit_seconds);
    return "Error running '" + name_of_last_step(task.text) + "':\n" + why + "\n" + task.messages;
}

}  // namespace

std::optional<TakenPass> take_bounded_pass(const Host& host, const UsageSources& sources,
                                           int limit_seconds, int wake_fd) {
    TakenPass taken;
    BoundedTask task =
        run_bounded([&](const TakePiece& take_piece) { take_steps(host, sources, take_piece); },
                    limit_seconds, wake_fd);
    if (task.end == BoundedTask::End::stopped) {
        return {};
    }
    taken.pass = last_pass(task.text);
    if (task.end != BoundedTask::End::finished && taken.pass.failure) {
        taken.pass.failure = why_not_whole(task, limit_seconds);
    } else {
        taken.messages = std::move(task.messages);
    }
    return taken;
}
