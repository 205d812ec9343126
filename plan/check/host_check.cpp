#include "plan/check/host_check.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "calc/sample.h"
#include "kiln/strings.h"
#include "plan/check/affected_lines.h"
#include "plan/check/host_warnings.h"
#include "plan/check/output_shapes.h"
#include "plan/record/bounded_task.h"
#include "plan/record/one_shot_steps.h"
#include "plan/recording/json_text.h"

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

// Of the report that a child hands back.
constexpr const char* failure_name = "failure";
constexpr const char* found_name = "found";
constexpr const char* objection_name = "objection";

// What a step of a pass found, by the names of the profile.
std::string counts_text(const SampleStep& step, const SampleCounts& counts) {
    std::vector<std::string> texts;
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        if (step.counts().test(place)) {
            texts.push_back(std::string(sampled_counts[place].name) + " " +
                            std::to_string(counts[place]));
        }
    }
    return Kiln::join(", ", texts);
}

// In the child: takes the step and says what came of it.
std::string take_watched_step(const Host& host, const SampleStep& step) {
    std::string out;
    std::string err;
    Host watched = host;
    watched.run = [&](const std::string& command, std::string& to_out, std::string& to_err) {
        const int status = host.run(command, to_out, to_err);
        out = to_out;
        err = to_err;
        return status;
    };
    SampleCounts counts;
    const std::optional<SampleFailure> failure = take_step(watched, step, counts);
    const bool is_command = step.command != nullptr;
    ordered_json report;
    report[failure_name] = text_to_json(failure ? failure->text : "");
    report[found_name] = counts_text(step, counts);
    report[objection_name] =
        text_to_json(failure || !is_command ? "" : shape_objection(step, out, err));
    return report.dump();
}

// What a step that is taken once found.
std::string findings_text(OneShotStep step, const Findings& findings) {
    const auto joined = [](const std::vector<std::string>& words) {
        return Kiln::join(", ", words);
    };
    switch (step) {
        case OneShotStep::quotas:
            return std::to_string(findings.quotaugidlimit) + " users and groups with quotas";
        case OneShotStep::interfaces: {
            std::vector<std::string> names;
            for (const NetIface& iface : findings.ifaces) {
                names.push_back(iface.ifname);
            }
            return joined(names);
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

class Checker {
public:
    Checker(const Host& host, int limit_seconds, int wake_fd)
        : host_(host), limit_seconds_(limit_seconds), wake_fd_(wake_fd) {}

    HostCheck check();

private:
    void check_sample_step(const SampleStep& step);
    void judge_sample_step(const json& report, bool forgiven, bool is_complete,
                           CheckedStep& checked);
    void check_one_shot_step(OneShotStep step);
    void check_descriptors();
    void check_mounts();

    const Host& host_;
    const int limit_seconds_;
    const int wake_fd_;
    HostCheck check_;
};

void Checker::check_sample_step(const SampleStep& step) {
    const bool is_command = step.command != nullptr;
    const BoundedTask task =
        run_bounded([&] { return take_watched_step(host_, step); }, limit_seconds_, wake_fd_);
    CheckedStep checked;
    checked.what = step.label;
    checked.command = is_command ? step.command : host_.paths.proc + "/*/status";
    checked.took_ms = task.took_ms;
    checked.lines = lines_on(step.counts());
    CheckFindings missing;
    if (is_command) {
        missing = missing_programs(step.command, search_path(), checked.lines);
    }
    if (task.end == BoundedTask::End::finished) {
        judge_sample_step(json::parse(task.text), step.forgiven, missing.empty(), checked);
    } else {
        checked.result = why_not_finished(task, limit_seconds_);
    }
    append(check_.findings, missing);
    check_.steps.push_back(checked);
}

void Checker::judge_sample_step(const json& report, bool forgiven, bool is_complete,
                                CheckedStep& checked) {
    const std::string failure = text_from_json(report.at(failure_name));
    const std::string objection = text_from_json(report.at(objection_name));
    checked.succeeded = failure.empty();
    checked.forgiven = forgiven;
    checked.result = checked.succeeded ? text_from_json(report.at(found_name)) : failure;
    if (!objection.empty() && is_complete) {
        check_.findings.push_back(
            {checked.command + ": " + objection, "see what it prints by hand"});
    }
    if (!checked.succeeded && forgiven) {
        const std::vector<std::string> lines = Kiln::split("\n", failure, 0);
        check_.findings.push_back(
            {Kiln::join(" ", lines), "a run goes on without it; see why it fails"});
    }
}

void Checker::check_one_shot_step(OneShotStep step) {
    const StepOutcome outcome = take_one_shot_step(host_, step, limit_seconds_, wake_fd_);
    CheckedStep checked;
    checked.what = name_of(step);
    checked.command = sources_of(step, host_.paths);
    checked.took_ms = outcome.took_ms;
    checked.lines = lines_on(step);
    checked.succeeded = outcome.findings.failures.empty();
    checked.result = checked.succeeded ? findings_text(step, outcome.findings)
                                       : outcome.findings.failures.front().text;
    for (const std::string& message : Kiln::split("\n", outcome.findings.messages, 0)) {
        check_.findings.push_back(
            {checked.what + ": " + message, step == OneShotStep::quotas
                                                ? "see why, or switch the quotas of the mount off"
                                                : "see why"});
    }
    check_.steps.push_back(checked);
}

void Checker::check_descriptors() {
    const auto list = [&] {
        const DescriptorArguments arguments = list_descriptors(host_);
        return ordered_json{arguments.bytes, arguments.count, arguments.directories,
                            arguments.listed_lines}
            .dump();
    };
    const BoundedTask task = run_bounded(list, limit_seconds_, wake_fd_);
    if (task.end != BoundedTask::End::finished) {
        check_.findings.push_back(
            {"the open descriptors cannot be looked at: one is of a file "
             "system that does not answer",
             "find it among the mounts, and umount -l it"});
        return;
    }
    const json numbers = json::parse(task.text);
    append(check_.findings,
           descriptor_warnings({numbers[0], numbers[1], numbers[2], numbers[3]}, argument_limit()));
}

// Where df fails, one of the mounts is why.
void Checker::check_mounts() {
    const bool df_fails = std::any_of(
        check_.steps.begin(), check_.steps.end(),
        [](const auto& step) { return !step.succeeded && step.command.rfind("df ", 0) == 0; });
    if (df_fails) {
        append(check_.findings, mount_warnings(host_, limit_seconds_, wake_fd_));
    }
}

HostCheck Checker::check() {
    for (const SampleStep& step : sample_steps) {
        check_sample_step(step);
    }
    for (const OneShotStepRow& row : one_shot_steps) {
        check_one_shot_step(row.step);
    }
    append(check_.findings, user_warnings(geteuid() == 0));
    append(check_.findings, search_path_warnings(search_path()));
    append(check_.findings, script_warnings(host_.paths.detect_script));
    append(check_.findings, socket_warnings(host_));
    check_descriptors();
    check_mounts();
    return check_;
}

}  // namespace

bool HostCheck::run_succeeds() const {
    return std::all_of(steps.begin(), steps.end(),
                       [](const CheckedStep& step) { return step.succeeded || step.forgiven; });
}

HostCheck check_host(const Host& host, int limit_seconds, int wake_fd) {
    return Checker(host, limit_seconds, wake_fd).check();
}
