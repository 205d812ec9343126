#include "plan/explain/verdict.h"

#include <algorithm>
#include <array>

#include "kiln/strings.h"

namespace {

std::string lines_of(const CheckFinding& finding) {
    return names_its_lines(finding) ? "" : " (wrong: " + Kiln::join(", ", finding.lines) + ")";
}

using Recordings = std::vector<NamedRecording>;

// Each reason once: a check that is taken again when a recording goes on says the same again.
using Reasons = std::vector<std::string>;

void add(const std::string& reason, Reasons& reasons) {
    if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
        reasons.push_back(reason);
    }
}

// Of one of several recordings with its name.
template <class ReasonsOf>
void add_of_each(const Recordings& recordings, Reasons& reasons, ReasonsOf reasons_of) {
    for (const NamedRecording& named : recordings) {
        for (const std::string& reason : reasons_of(named.recording)) {
            add(recordings.size() > 1 ? named.name + ": " + reason : reason, reasons);
        }
    }
}

Reasons reasons_of_end(const Recording& recording) {
    if (!recording.summary || !recording.summary_is_last) {
        return {"the recording goes on, or was ended by force: it has no last line"};
    }
    return recording.summary->interrupted ? Reasons{"the recording was ended before its time"}
                                          : Reasons();
}

Reasons reasons_of_user(const Recording& recording) {
    const std::vector<Continuation>& more = recording.continuations;
    const bool is_roots = recording.header.root.value_or(true) &&
                          std::all_of(more.begin(), more.end(), [](const Continuation& line) {
                              return line.root.value_or(true);
                          });
    return is_roots
               ? Reasons()
               : Reasons{"it was not root who recorded: what belongs to others was not counted"};
}

Reasons reasons_of_checks(const Recording& recording) {
    const bool user_is_said = !reasons_of_user(recording).empty();
    Reasons reasons;
    for (const CheckResult& check : recording.checks) {
        for (const CheckFinding& finding : check.findings) {
            if (spoils(finding) && !(user_is_said && finding.text == not_root_text)) {
                reasons.push_back("the check found: " + finding.text + lines_of(finding));
            }
        }
    }
    return reasons;
}

// Where there is no last line that has been said, and no line is missed for it.
void add_missing(const CombinedScan& scan, std::vector<MissingLine> missing, Reasons& reasons) {
    if (!scan.has_findings) {
        missing.erase(std::remove_if(missing.begin(), missing.end(),
                                     [](const MissingLine& line) { return line.of_last_line; }),
                      missing.end());
    }
    for (const std::string& text : missing_by_reason(missing)) {
        add(text, reasons);
    }
}

}  // namespace

bool spoils(const CheckFinding& finding) {
    return std::any_of(finding.lines.begin(), finding.lines.end(), [](const std::string& line) {
        return std::none_of(std::begin(sample_steps), std::end(sample_steps),
                            [&](const SampleStep& step) {
                                return step.forgiven && line == count_of(step.count).line;
                            });
    });
}

const char* name_of(State state) {
    constexpr std::array<const char*, 3> names = {"done", "partly", "failed"};
    return names[static_cast<std::size_t>(state)];
}

Verdict judge(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
              const ComputedConfig& computed, const Coverage& coverage,
              const std::vector<CountSummary>& counts) {
    Reasons reasons;
    add_of_each(recordings, reasons, reasons_of_end);
    if (coverage.grade < least_usable_grade) {
        add(coverage_in_words(coverage), reasons);
    }
    add_missing(scan, computed.missing, reasons);
    add_of_each(recordings, reasons, reasons_of_user);
    add_of_each(recordings, reasons, reasons_of_checks);
    for (const CountSummary& summary : counts) {
        if (summary.impossible_zero) {
            add(std::string(summary.count->label) + ": no pass saw any, which cannot be", reasons);
        }
    }
    return {reasons.empty() ? State::done : State::partly, reasons};
}
