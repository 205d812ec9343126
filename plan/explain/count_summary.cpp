#include "plan/explain/count_summary.h"

#include <algorithm>

namespace {

// The least number of passes that says something about the way a count goes.
constexpr std::size_t telling_passes = 10;

constexpr double steady_ratio = 1.1;  // of the peak to the median
constexpr double jumping_ratio = 2.0;
constexpr std::int32_t jumping_least = 10;  // smaller jumps are none
constexpr double rising_ratio = 1.05;       // of the last third's largest to the first third's
constexpr double late_share = 0.9;          // of the time watched

struct Observation {
    std::int64_t time_ms;  // since the epoch
    std::int64_t at_ms;
    std::int32_t pass;
    std::int32_t value;
    std::size_t recording;
};

// In the order of time.
std::vector<Observation> observations_of(const std::vector<NamedRecording>& recordings,
                                         std::size_t place) {
    std::vector<Observation> observations;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const Recording& recording = recordings[i].recording;
        for (const RecordedPass& pass : recording.passes) {
            if (pass.taken.test(place)) {
                observations.push_back({recording.header.start * 1000 + pass.at_ms, pass.at_ms,
                                        pass.number, pass.counts[place], i});
            }
        }
    }
    std::stable_sort(
        observations.begin(), observations.end(),
        [](const Observation& a, const Observation& b) { return a.time_ms < b.time_ms; });
    return observations;
}

bool is_less(const Observation& a, const Observation& b) {
    return a.value < b.value;
}

std::int32_t median_of(std::vector<Observation> observations) {
    const auto middle = observations.begin() + static_cast<std::ptrdiff_t>(observations.size() / 2);
    std::nth_element(observations.begin(), middle, observations.end(), is_less);
    return middle->value;
}

// The largest value of one third of the passes.
std::int32_t largest_of_third(const std::vector<Observation>& observations, std::size_t third) {
    const auto at = [&](std::size_t part) {
        return observations.begin() + static_cast<std::ptrdiff_t>(observations.size() * part / 3);
    };
    return std::max_element(at(third), at(third + 1), is_less)->value;
}

bool is_rising(const std::vector<Observation>& observations) {
    const std::int32_t first = largest_of_third(observations, 0);
    const std::int32_t second = largest_of_third(observations, 1);
    const std::int32_t third = largest_of_third(observations, 2);
    return first < second && second < third && third >= first * rising_ratio;
}

bool is_late(const std::vector<Observation>& observations, std::int64_t peak_ms) {
    const std::int64_t begin = observations.front().time_ms;
    const auto watched = static_cast<double>(observations.back().time_ms - begin);
    return static_cast<double>(peak_ms - begin) >= late_share * watched;
}

void add_remarks(const std::vector<Observation>& observations, CountSummary& summary) {
    if (observations.size() < telling_passes) {
        return;
    }
    const std::int32_t most = summary.peak->value;
    if (is_rising(observations)) {
        summary.remarks.emplace_back("it was still rising at the end: watch longer");
    } else if (summary.least < most && is_late(observations, summary.peak->time_ms)) {
        summary.remarks.emplace_back("the peak came in the last tenth of the time: watch longer");
    }
    summary.may_grow = !summary.remarks.empty();
    if (most <= summary.median * steady_ratio) {
        summary.remarks.emplace_back("it varies little");
    } else if (most >= summary.median * jumping_ratio &&
               std::int64_t{most} - summary.median >= jumping_least) {
        summary.remarks.push_back("it jumps: half of the time at most " +
                                  std::to_string(summary.median));
    }
}

CountSummary summarize(const std::vector<NamedRecording>& recordings, std::size_t place,
                       std::int32_t page_size) {
    const Count& count = sampled_counts[place];
    CountSummary summary;
    summary.count = &count;
    summary.unit_bytes = bytes_of(count.unit, page_size);
    const std::vector<Observation> observations = observations_of(recordings, place);
    if (observations.empty()) {
        return summary;
    }
    const Observation& most = *std::max_element(observations.begin(), observations.end(), is_less);
    summary.peak = Peak{most.value, most.time_ms, most.at_ms, most.pass, most.recording};
    summary.least = std::min_element(observations.begin(), observations.end(), is_less)->value;
    summary.median = median_of(observations);
    add_remarks(observations, summary);
    return summary;
}

}  // namespace

std::vector<CountSummary> summarize_counts(const std::vector<NamedRecording>& recordings,
                                           std::int32_t page_size) {
    std::vector<CountSummary> summaries;
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        summaries.push_back(summarize(recordings, place, page_size));
    }
    return summaries;
}
