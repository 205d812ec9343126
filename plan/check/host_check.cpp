#include "plan/check/host_check.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "calc/sample.h"
#include "kiln/strings.h"
#include "plan/check/affected_lines.h"
#include "plan/check/host_warnings.h"
#include "plan/check/output_shapes.h"
#include "plan/record/bounded_task.h"
#include "plan/record/command_run.h"
#include "plan/record/one_shot_steps.h"
#include "plan/recording/format.h"
#include "plan/recording/json_text.h"
#include "plan/text/printable.h"

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

void append(CheckFindings& findings, const CheckFindings& more) {
    findings.insert(findings.end(), more.begin(), more.end());
}

std::string search_path() {
    const char* path = std::getenv("PATH");
    return path == nullptr ? "" : path;
}

// What Linux gives a command's arguments, whatever the limit of the stack promises.
std::uint64_t argument_limit() {
    constexpr std::uint64_t most_bytes = 6 * 1024 * 1024;
    return std::min(static_cast<std::uint64_t>(sysconf(_SC_ARG_MAX)), most_bytes);
}

// A mount that answers at all does so at once.
constexpr int mount_limit_seconds = 3;

constexpr const char* left_out_text = "left out: the check has taken too long";

struct CheckLimits {
    int step_seconds;
    int total_seconds;
};

// What a step of a pass found, by the names of the profile.
std::string counts_text(const SampleStep& step, const SampleCounts& counts) {
    std::vector<std::string> texts;
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        if (step.counts().test(place)) {
            texts.push_back(std::string(sampled_counts[place].name) + " " + grouped(counts[place]));
        }
    }
    return Kiln::join(", ", texts);
}

// In the child: takes the step. What came of it: the failure, what was found, the objection to the
// command's output, and whether the command was run.
std::string take_watched_step(const Host& host, const SampleStep& step) {
    std::string out;
    std::string err;
    bool was_run = true;
    Host watched = host;
    watched.run = [&](const std::string& command, std::string& to_out, std::string& to_err) {
        const int status = host.run(command, to_out, to_err);
        out = to_out;
        err = to_err;
        was_run = had_processes(status, err);
        return status;
    };
    SampleCounts counts;
    const std::optional<SampleFailure> failure = take_step(watched, step, counts);
    const bool is_shaped = failure || step.command == nullptr;
    const std::string objection = is_shaped ? "" : check_shape(step, out, err).reason();
    return ordered_json{text_to_json(failure ? failure->text : ""), counts_text(step, counts),
                        text_to_json(objection), was_run}
        .dump();
}

// What a step that is taken once found.
std::string findings_text(OneShotStep step, const Findings& findings) {
    switch (step) {
        case OneShotStep::quotas:
            return grouped(findings.quotaugidlimit) + " users and groups with quotas";
        case OneShotStep::interfaces: {
            std::vector<std::string> names;
            for (const NetIface& iface : findings.ifaces) {
                names.push_back(iface.ifname);
            }
            return Kiln::join(", ", names);
        }
        case OneShotStep::distribution:
            return findings.distribution.empty() ? findings.notes.warnings.at(0).message
                                                 : findings.distribution;
        case OneShotStep::host_name:
            return findings.hostname;
        case OneShotStep::resolver:
            return std::to_string(findings.ns_attrs.nameservers.size()) + " name servers, " +
                   std::to_string(findings.ns_attrs.search_domains.size()) + " search domains";
        case OneShotStep::mounts:
            break;
    }
    return std::to_string(findings.notes.excludes.size()) + " paths to exclude";
}

std::string sources_of(OneShotStep step, const HostPaths& paths) {
    switch (step) {
        case OneShotStep::quotas:
            return paths.mtab + "; repquota and edquota for its quota mounts";
        case OneShotStep::interfaces:
            return "routing netlink, /sys/class/net, /proc/net/vlan";
        case OneShotStep::distribution:
            return "sh " + paths.detect_script;
        case OneShotStep::host_name:
            return "gethostname";
        case OneShotStep::resolver:
            return paths.resolv_conf;
        case OneShotStep::mounts:
            break;
    }
    return paths.filesystems + ", " + paths.fstab + ", " + paths.mtab + ", " + paths.login_record;
}

bool is_df(const SampleStep& step) {
    return step.command != nullptr && programs_of(step.command).front() == "df";
}

// In the child: what is missing, and in a second line what is to be said of it and of PATH.
std::string look_at_search_path(const HostPaths& paths) {
    const std::vector<MissingProgram> missing = missing_programs(search_path());
    std::vector<std::string> names;
    for (const MissingProgram& program : missing) {
        names.push_back(program.name);
    }
    CheckResult check;
    check.findings = missing_warnings(missing, search_path(), paths.program_folders);
    append(check.findings, search_path_warnings(search_path(), paths));
    return Kiln::join(" ", names) + "\n" + check_line(check);
}

std::string why_not(const BoundedTask& task, int limit) {
    return why_not_finished(task, limit) + (task.messages.empty() ? "" : ": " + task.messages);
}

class Checker {
public:
    Checker(const Host& host, const CheckLimits& limits, int wake_fd)
        : host_(host),
          limits_(limits),
          wake_fd_(wake_fd),
          end_(SteadyClock::now() + std::chrono::seconds(limits.total_seconds)) {}

    // PATH first: a program that is missing explains what its step prints. The mounts behind the
    // steps, for they are looked at only where df has failed.
    HostCheck check() {
        check_.findings = shortage_warnings();
        const bool has_descriptors = check_.findings.empty();
        if (has_descriptors) {
            check_search_path();
        }
        append(check_.findings, user_warnings(geteuid() == 0));
        for (const SampleStep& step : sample_steps) {
            check_sample_step(step);
        }
        check_mounts();
        for (const OneShotStepRow& row : one_shot_steps) {
            check_one_shot_step(row.step);
        }
        append(check_.findings, socket_warnings(host_));
        if (has_descriptors) {
            check_descriptors();
        }
        tell_of_what_was_left_out();
        return check_;
    }

private:
    using SteadyClock = std::chrono::steady_clock;

    // What is left of the time for all, where that is less.
    int limit_seconds() const {
        const auto left =
            std::chrono::ceil<std::chrono::seconds>(end_ - SteadyClock::now()).count();
        return static_cast<int>(std::min<std::int64_t>(limits_.step_seconds, left));
    }

    // Whether there is no time for it any more; then it is left out.
    bool is_over(const std::string& what) {
        const bool over = limit_seconds() <= 0;
        if (over) {
            left_out_.push_back(what);
        }
        return over;
    }

    void check_search_path() {
        const int limit = limit_seconds();
        const BoundedTask task =
            run_bounded([&] { return look_at_search_path(host_.paths); }, limit, wake_fd_);
        if (task.end != BoundedTask::End::finished) {
            check_.findings.push_back(
                {"the folders of PATH cannot be looked at: " + why_not(task, limit),
                 "leave out of PATH what does not answer"});
            return;
        }
        const std::size_t end = task.text.find('\n');
        missing_programs_ = Kiln::split(" ", task.text.substr(0, end), 0);
        append(check_.findings, parse_part<CheckResult>(task.text.substr(end + 1))->findings);
    }

    bool has_programs(const SampleStep& step) const {
        const std::vector<std::string> programs = programs_of(step.command);
        return std::none_of(programs.begin(), programs.end(), [&](const std::string& program) {
            return std::find(missing_programs_.begin(), missing_programs_.end(), program) !=
                   missing_programs_.end();
        });
    }

    void check_sample_step(const SampleStep& step) {
        CheckedStep checked;
        checked.what = step.label;
        checked.command = step.command != nullptr ? step.command : host_.paths.proc + "/*/status";
        checked.lines = lines_on(step.counts());
        checked.result = left_out_text;
        if (!is_over(checked.what)) {
            const int limit = limit_seconds();
            const BoundedTask task =
                run_bounded([&] { return take_watched_step(host_, step); }, limit, wake_fd_);
            checked.took_ms = task.took_ms;
            if (task.end == BoundedTask::End::finished) {
                judge_sample_step(json::parse(task.text), step, checked);
            } else {
                checked.result = why_not(task, limit);
                df_fails_ = df_fails_ || (is_df(step) && task.end == BoundedTask::End::too_long);
            }
        }
        check_.steps.push_back(checked);
    }

    void judge_sample_step(const json& report, const SampleStep& step, CheckedStep& checked) {
        const std::string failure = text_from_json(report[0]);
        const std::string objection = text_from_json(report[2]);
        checked.succeeded = failure.empty();
        // What could not be run at all says nothing of how the command does.
        const bool was_run = report[3];
        checked.forgiven = step.forgiven && was_run;
        df_fails_ = df_fails_ || (is_df(step) && !checked.succeeded && was_run);
        checked.result = checked.succeeded ? text_from_json(report[1]) : failure;
        if (!objection.empty() && has_programs(step)) {
            check_.findings.push_back(
                {checked.command + ": " + objection, "see what it prints by hand", checked.lines});
        }
        if (!checked.succeeded && checked.forgiven) {
            const std::vector<std::string> lines = Kiln::split("\n", failure, 0);
            check_.findings.push_back({Kiln::join(" ", lines),
                                       "a run goes on without it; see why it fails",
                                       checked.lines});
        }
    }

    void check_one_shot_step(OneShotStep step) {
        CheckedStep checked;
        checked.what = name_of(step);
        checked.command = sources_of(step, host_.paths);
        checked.lines = lines_on(step);
        checked.result = left_out_text;
        if (!is_over(checked.what)) {
            judge_one_shot_step(step, take_one_shot_step(host_, step, limit_seconds(), wake_fd_),
                                checked);
        }
        check_.steps.push_back(checked);
    }

    void judge_one_shot_step(OneShotStep step, const StepOutcome& outcome, CheckedStep& checked) {
        checked.took_ms = outcome.took_ms;
        checked.succeeded = outcome.findings.failures.empty();
        checked.result = checked.succeeded ? findings_text(step, outcome.findings)
                                           : outcome.findings.failures.front().text;
        // The only step that fails by itself and ends no run.
        if (step == OneShotStep::distribution && !checked.succeeded && outcome.ended) {
            checked.forgiven = true;
            check_.findings.push_back(script_warning(checked.result));
        }
        for (const std::string& message : Kiln::split("\n", outcome.findings.messages, 0)) {
            check_.findings.push_back({checked.what + ": " + message,
                                       step == OneShotStep::quotas
                                           ? "see why, or switch the quotas of the mount off"
                                           : "see why",
                                       checked.lines});
        }
    }

    void check_descriptors() {
        if (is_over("what the open descriptors are of")) {
            return;
        }
        const auto list = [&] {
            const DescriptorArguments arguments = list_descriptors(host_);
            return ordered_json{arguments.bytes, arguments.count, arguments.directories,
                                arguments.listed_lines}
                .dump();
        };
        const int limit = limit_seconds();
        const BoundedTask task = run_bounded(list, limit, wake_fd_);
        if (task.end != BoundedTask::End::finished) {
            check_.findings.push_back(
                {"the open descriptors cannot be looked at: " + why_not(task, limit),
                 "one may be of a file system that does not answer: find it among the mounts",
                 lines_on({&PhysParams::numfile})});
            return;
        }
        const json numbers = json::parse(task.text);
        append(check_.findings,
               descriptor_warnings({numbers[0], numbers[1], numbers[2], numbers[3]},
                                   argument_limit()));
    }

    // Where df fails, one of the mounts is why.
    void check_mounts() {
        if (!df_fails_) {
            return;
        }
        for (const MountEntry& mount : mounts_of(host_)) {
            if (is_over("which mounts answer")) {
                return;
            }
            const int limit = std::min(limit_seconds(), mount_limit_seconds);
            const BoundedTask task = run_bounded(
                [&] { return check_mount(mount.mount_point).reason(); }, limit, wake_fd_);
            const std::string trouble =
                task.end == BoundedTask::End::too_long ? why_not(task, limit) : task.text;
            if (!trouble.empty()) {
                check_.findings.push_back(mount_warning(mount, trouble));
            }
        }
    }

    void tell_of_what_was_left_out() {
        if (!left_out_.empty()) {
            check_.findings.push_back({"the check ends after " +
                                           std::to_string(limits_.total_seconds) +
                                           " s, and left out: " + Kiln::join(", ", left_out_),
                                       "see by tarnhwplan check what takes so long"});
        }
    }

    const Host& host_;
    const CheckLimits limits_;
    const int wake_fd_;
    const SteadyClock::time_point end_;
    std::vector<std::string> missing_programs_;
    std::vector<std::string> left_out_;
    bool df_fails_ = false;  // though it was run
    HostCheck check_;
};

}  // namespace

bool HostCheck::run_succeeds() const {
    return std::all_of(steps.begin(), steps.end(),
                       [](const CheckedStep& step) { return step.succeeded || step.forgiven; });
}

HostCheck check_host(const Host& host, int limit_seconds, int wake_fd, int total_seconds) {
    return Checker(host, {limit_seconds, total_seconds}, wake_fd).check();
}
