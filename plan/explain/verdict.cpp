#include "plan/explain/verdict.h"

#include <algorithm>

#include "kiln/strings.h"
#include "plan/recording/finding_text.h"

namespace {

std::string lines_of(const CheckFinding& finding) {
    return names_its_lines(finding) ? "" : " (wrong: " + Kiln::join(", ", finding.lines) + ")";
}

class Judge {
public:
    explicit Judge(const std::vector<NamedRecording>& recordings) : recordings_(recordings) {}

    void look_at_ends();
    void look_at_users();
    void look_at_checks();
    void look_at(const Coverage& coverage);
    void look_at(const CombinedScan& scan, const ComputedConfig& computed);
    void look_at(const std::vector<CountSummary>& counts);

    Verdict verdict() const { return {reasons_.empty() ? State::done : State::partly, reasons_}; }

private:
    void add(const std::string& reason);
    void add(const NamedRecording& named, const std::string& reason);

    const std::vector<NamedRecording>& recordings_;
    std::vector<std::string> reasons_;
};

// A check that is taken again when a recording goes on says the same again.
void Judge::add(const std::string& reason) {
    if (std::find(reasons_.begin(), reasons_.end(), reason) == reasons_.end()) {
        reasons_.push_back(reason);
    }
}

void Judge::add(const NamedRecording& named, const std::string& reason) {
    add(recordings_.size() > 1 ? named.name + ": " + reason : reason);
}

void Judge::look_at_ends() {
    for (const NamedRecording& named : recordings_) {
        const Recording& recording = named.recording;
        if (!recording.summary || !recording.summary_is_last) {
            add(named, "the recording goes on, or was ended by force: it has no last line");
        } else if (recording.summary->interrupted) {
            add(named, "the recording was ended before its time");
        }
    }
}

void Judge::look_at_users() {
    for (const NamedRecording& named : recordings_) {
        const std::vector<Continuation>& more = named.recording.continuations;
        const bool is_roots = named.recording.header.root.value_or(true) &&
                              std::all_of(more.begin(), more.end(), [](const Continuation& line) {
                                  return line.root.value_or(true);
                              });
        if (!is_roots) {
            add(named, "it was not root who recorded: what belongs to others was not counted");
        }
    }
}

void Judge::look_at_checks() {
    for (const NamedRecording& named : recordings_) {
        for (const CheckResult& check : named.recording.checks) {
            for (const CheckFinding& finding : check.findings) {
                if (spoils(finding)) {
                    add(named, "the check found: " + finding.text + lines_of(finding));
                }
            }
        }
    }
}

void Judge::look_at(const Coverage& coverage) {
    if (coverage.grade < least_usable_grade) {
        add(coverage_in_words(coverage));
    }
}

void Judge::look_at(const CombinedScan& scan, const ComputedConfig& computed) {
    std::vector<MissingLine> missing = computed.missing;
    if (!scan.has_findings) {  // it has been said that there is no last line
        missing.erase(std::remove_if(missing.begin(), missing.end(),
                                     [](const MissingLine& line) { return line.of_last_line; }),
                      missing.end());
    }
    for (const std::string& text : missing_by_reason(missing)) {
        add(text);
    }
}

void Judge::look_at(const std::vector<CountSummary>& counts) {
    for (const CountSummary& summary : counts) {
        if (summary.impossible_zero) {
            add(std::string(summary.count->label) + ": no pass saw any, which cannot be");
        }
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
    switch (state) {
        case State::done:
            return "done";
        case State::partly:
            return "partly";
        case State::failed:
            break;
    }
    return "failed";
}

Verdict judge(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
              const ComputedConfig& computed, const Coverage& coverage,
              const std::vector<CountSummary>& counts) {
    Judge judge(recordings);
    judge.look_at_ends();
    judge.look_at(coverage);
    judge.look_at(scan, computed);
    judge.look_at_users();
    judge.look_at_checks();
    judge.look_at(counts);
    return judge.verdict();
}
