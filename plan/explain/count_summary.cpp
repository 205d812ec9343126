#include "plan/explain/count_summary.h"

#include <algorithm>

#include "plan/recording/never_none.h"
#include "plan/text/printable.h"

namespace {

// The least number of passes that says something about the way a count goes.
constexpr std::size_t telling_passes = 10;

constexpr double steady_ratio = 1.1;  // of the peak to the median
constexpr double jumping_ratio = 2.0;
constexpr std::int32_t jumping_least = 10;  // smaller jumps are none
constexpr double rising_ratio = 1.05;       // of the last third's median to the first third's
constexpr double late_share = 0.9;          // of the time watched
constexpr double late_ratio = 1.05;         // of a late peak to what was seen before it

std::vector<Observation> observations_of(const std::vector<TimedPass>& passes, std::size_t place) {
    std::vector<Observation> observations;
    for (const TimedPass& timed : passes) {
        if (timed.pass->taken.test(place)) {
            observations.push_back({timed.moment, timed.pass->counts[place]});
        }
    }
    return observations;
}

bool is_less(const Observation& a, const Observation& b) {
    return a.value < b.value;
}

using Iterator = std::vector<Observation>::const_iterator;

// The value that so many quarters of them are below.
std::int32_t quarter_of(Iterator first, Iterator last, std::ptrdiff_t quarters) {
    std::vector<Observation> observations(first, last);
    const auto size = static_cast<std::ptrdiff_t>(observations.size());
    const auto at = observations.begin() + std::min(size * quarters / 4, size - 1);
    std::nth_element(observations.begin(), at, observations.end(), is_less);
    return at->value;
}

std::int32_t median_of(Iterator first, Iterator last) {
    return quarter_of(first, last, 2);
}

// Each third is mostly above the one before it, by more than the values within a third differ, and
// the last third rises in itself: neither noise nor a step that was made long ago does that.
bool is_rising(const std::vector<Observation>& observations) {
    const auto edge = [&](std::size_t sixth) {
        return observations.begin() + static_cast<std::ptrdiff_t>(observations.size() * sixth / 6);
    };
    const std::int32_t first = median_of(edge(0), edge(2));
    const std::int32_t second = median_of(edge(2), edge(4));
    const std::int32_t third = median_of(edge(4), edge(6));
    return first < second && second < third && third >= first * rising_ratio &&
           quarter_of(edge(0), edge(2), 3) < quarter_of(edge(4), edge(6), 1) &&
           median_of(edge(4), edge(5)) < median_of(edge(5), edge(6));
}

// Whether the last tenth of the time saw clearly more than all before it.
bool is_late(const std::vector<Observation>& observations, const Observation& peak) {
    const std::int64_t begin = observations.front().time_ms;
    const auto watched = static_cast<double>(observations.back().time_ms - begin);
    const auto late =
        std::find_if(observations.begin(), observations.end(), [&](const Observation& observation) {
            return static_cast<double>(observation.time_ms - begin) >= late_share * watched;
        });
    return late != observations.begin() && peak.time_ms >= late->time_ms &&
           peak.value >= std::max_element(observations.begin(), late, is_less)->value * late_ratio;
}

void add_remarks(const std::vector<Observation>& observations, CountSummary& summary) {
    if (observations.size() < telling_passes) {
        return;
    }
    const std::int32_t most = summary.peak->value;
    if (is_rising(observations)) {
        summary.remarks.emplace_back("it was still rising at the end: watch longer");
    } else if (summary.least < most && is_late(observations, *summary.peak)) {
        summary.remarks.emplace_back("the peak came in the last tenth of the time: watch longer");
    }
    if (most <= summary.median * steady_ratio) {
        summary.notes.emplace_back("it varies little");
    } else if (most >= summary.median * jumping_ratio &&
               std::int64_t{most} - summary.median >= jumping_least) {
        summary.notes.push_back("it jumps: half of the time at most " +
                                amount_text(summary, summary.median));
    }
}

void add_flaws(CountSummary& summary) {
    summary.impossible_zero = summary.peak->value == 0 && is_never_none(summary.count->field);
    if (summary.impossible_zero) {
        summary.flaws.emplace_back("no pass saw any, which cannot be: see what its command prints");
    }
    if (summary.least < 0) {
        summary.flaws.emplace_back("a pass counted less than 0: more than fits into 32 bits");
    }
}

CountSummary summarize(const std::vector<TimedPass>& passes, std::size_t place,
                       std::int32_t page_size) {
    const Count& count = sampled_counts[place];
    CountSummary summary;
    summary.count = &count;
    summary.unit_bytes = bytes_of(count.unit, page_size);
    const std::vector<Observation> observations = observations_of(passes, place);
    if (observations.empty()) {
        return summary;
    }
    summary.peak = *std::max_element(observations.begin(), observations.end(), is_less);
    summary.least = std::min_element(observations.begin(), observations.end(), is_less)->value;
    summary.median = median_of(observations.begin(), observations.end());
    for (const Observation& observation : observations) {
        summary.mean += observation.value / static_cast<double>(observations.size());
    }
    add_flaws(summary);
    add_remarks(observations, summary);
    return summary;
}

}  // namespace

std::string amount_text(const CountSummary& summary, std::int32_t value) {
    if (summary.unit_bytes == 0 || value < 0) {
        return grouped(value) + " " + summary.count->label;
    }
    return size_text(static_cast<double>(summary.unit_bytes) * value) + " (" + grouped(value) + ")";
}

std::vector<CountSummary> summarize_counts(const std::vector<NamedRecording>& recordings,
                                           std::int32_t page_size) {
    const std::vector<TimedPass> passes = passes_by_time(recordings);
    std::vector<CountSummary> summaries;
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        summaries.push_back(summarize(passes, place, page_size));
    }
    return summaries;
}
