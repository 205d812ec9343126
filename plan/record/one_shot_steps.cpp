#include "plan/record/one_shot_steps.h"

#include <unistd.h>

#include <utility>

#include "inspect/distribution.h"
#include "inspect/excludes.h"
#include "inspect/net_ifaces.h"
#include "inspect/quota_count.h"
#include "inspect/resolver.h"
#include "plan/record/bounded_task.h"
#include "plan/record/trusted_path.h"
#include "plan/recording/format.h"

namespace {

// The value; without one the step has failed.
template <class Value>
Value value_of(Kiln::Result<Value> result, OneShotStep step, Findings& findings) {
    if (!result) {
        findings.failures.push_back({step, result.reason()});
        return {};
    }
    return std::move(*result);
}

// A script below /tmp may be anybody's. It is judged before it is run, and what was judged is run.
void ask_distribution(const Host& host, Findings& findings) {
    const std::string& path = host.paths.detect_script;
    Kiln::Result<Kiln::Descriptor> script = Kiln::Descriptor();
    if (access(path.c_str(), F_OK) == 0) {  // a stranger's folder that has none is his affair
        script = open_trusted(path, host.paths);
    }
    if (!script) {
        findings.failures.push_back(
            {OneShotStep::distribution, "the detection script is not run: " + script.reason()});
        return;
    }
    DistributionFinding finding = detect_distribution(host, script->get());
    findings.distribution = std::move(finding.name);
    findings.notes.warnings = std::move(finding.warnings);
}

void read_mounts(const Host& host, Findings& findings) {
    ExcludeFindings found = find_excludes(host);
    std::vector<TarnACalculateHWNodeWarning>& warnings = findings.notes.warnings;
    findings.notes.excludes = std::move(found.excludes);
    warnings.insert(warnings.end(), found.warnings.begin(), found.warnings.end());
    findings.nfs_found = found.nfs_found;
    findings.reiserfs_found = found.reiserfs_found;
}

void take(const Host& host, OneShotStep step, Findings& findings) {
    switch (step) {
        case OneShotStep::quotas:
            findings.quotaugidlimit =
                static_cast<std::int32_t>(value_of(count_quota_ids(host), step, findings));
            break;
        case OneShotStep::interfaces:
            findings.ifaces = value_of(list_net_ifaces(), step, findings);
            break;
        case OneShotStep::distribution:
            ask_distribution(host, findings);
            break;
        case OneShotStep::host_name:
            findings.hostname = host.host_name().value_or("");
            break;
        case OneShotStep::resolver:
            findings.ns_attrs = read_resolver(host);
            break;
        case OneShotStep::mounts:
            read_mounts(host, findings);
            break;
    }
}

}  // namespace

StepOutcome take_one_shot_step(const Host& host, OneShotStep step, int limit_seconds, int wake_fd,
                               Findings findings) {
    const auto take_here = [&] {  // on the child's copy
        take(host, step, findings);
        return part_text(findings);
    };
    const BoundedTask task = run_bounded(take_here, limit_seconds, wake_fd);
    StepOutcome outcome;
    outcome.findings = std::move(findings);
    if (task.end == BoundedTask::End::not_begun) {
        outcome.findings.failures.push_back({step, task.messages});
        return outcome;
    }
    outcome.took_ms = task.took_ms;
    outcome.stopped = task.end == BoundedTask::End::stopped;
    outcome.ended = task.end == BoundedTask::End::finished;
    Kiln::Result<Findings> found = outcome.ended
                                       ? parse_part<Findings>(task.text)
                                       : Kiln::Reason{why_not_finished(task, limit_seconds)};
    if (found) {
        outcome.findings = std::move(*found);
    } else {
        outcome.findings.failures.push_back({step, found.reason()});
    }
    outcome.findings.messages += task.messages;
    return outcome;
}
