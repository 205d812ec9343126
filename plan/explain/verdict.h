// Whether recordings are fit for use: the one rule behind every "done". Pure.
#pragma once

#include <string>
#include <vector>

#include "plan/explain/count_summary.h"
#include "plan/explain/coverage.h"
#include "plan/recording/combined_scan.h"

enum class State { done, partly, failed };
const char* name_of(State state);

struct Verdict {
    State state = State::failed;
    std::vector<std::string> reasons;  // why it is not done, a sentence each
};

// Done when every recording came to its planned end, root made it, its coverage is at least fair,
// no line is left out, the check of its host found nothing that makes a number wrong, and nothing
// was counted as 0 that cannot be. Partly otherwise; where nothing was counted at all there is no
// scan, and that has failed.
Verdict judge(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
              const ComputedConfig& computed, const Coverage& coverage,
              const std::vector<CountSummary>& counts);

// Whether the finding makes a number wrong that counts. A host without a packet filter or without
// the routing tool is whole: what is forgiven is only remarked on.
bool spoils(const CheckFinding& finding);
