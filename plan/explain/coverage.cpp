#include "plan/explain/coverage.h"

#include <algorithm>

namespace {

constexpr int complete = 5;

struct Grade {
    int grade;
    const char* name;
    double least_share;  // of the planned passes
    double largest_gap;  // of the time
};

// The manual lists the same.
constexpr Grade grades[] = {
    {complete, "complete", 0.99, 0.02},
    {4, "good", 0.95, 0.05},
    {3, "fair", 0.80, 0.20},
    {2, "poor", 0.50, 0.50},
    {1, "scant", 0.0, 1.0},
};

// However long each took and however many there are: no sum of them all is made.
std::int64_t mean_took_ms(const Recording& recording) {
    const auto passes = static_cast<std::int64_t>(recording.passes.size());
    std::int64_t mean = 0;
    std::int64_t rest = 0;
    for (const RecordedPass& pass : recording.passes) {
        mean += pass.took_ms / passes;
        rest += pass.took_ms % passes;
    }
    return passes > 0 ? mean + rest / passes : 0;
}

// From the beginning of one pass to that of the next.
std::int64_t interval_ms(const Recording& recording) {
    const ScanSpans spans = recording.spans();
    return std::int64_t{std::min(spans.time, spans.period)} * 1000 + mean_took_ms(recording);
}

// One at the start, one after each interval, and one at the end where that is a while after. A scan
// counts whole seconds, so within a second of the end there may be none.
std::int64_t planned_passes(const Recording& recording) {
    const std::int64_t time_ms = std::int64_t{recording.spans().time} * 1000;
    const std::int64_t interval = interval_ms(recording);
    if (time_ms == 0 || interval == 0) {
        return 1;
    }
    return time_ms / interval + (time_ms % interval >= 1000 ? 2 : 1);
}

// "1:02:03"
std::string duration_text(std::int64_t milliseconds) {
    const std::int64_t seconds = milliseconds / 1000;
    const auto two = [](std::int64_t number) {
        return (number < 10 ? "0" : "") + std::to_string(number);
    };
    return std::to_string(seconds / 3600) + ":" + two(seconds / 60 % 60) + ":" + two(seconds % 60);
}

class Measurement {
public:
    void add(const Recording& recording, std::size_t index);
    Coverage finish();

private:
    void add_stretch(std::size_t index, std::int64_t from_ms, std::int64_t to_ms);

    Coverage coverage_;
    std::int64_t time_ms_ = 0;
    std::int64_t interval_ms_ = 0;  // of the recording that is being added
};

// A stretch of one interval is none of the gaps.
void Measurement::add_stretch(std::size_t index, std::int64_t from_ms, std::int64_t to_ms) {
    const std::int64_t stretch = to_ms - from_ms;
    coverage_.longest_gap_ms = std::max(coverage_.longest_gap_ms, stretch);
    if (stretch > interval_ms_ + interval_ms_ / 2 + 1000) {
        coverage_.gaps.push_back({index, from_ms, to_ms});
    }
}

void Measurement::add(const Recording& recording, std::size_t index) {
    const std::int64_t end_ms = std::int64_t{recording.spans().time} * 1000;
    interval_ms_ = interval_ms(recording);
    coverage_.planned += planned_passes(recording);
    time_ms_ += end_ms;
    std::int64_t last_ms = 0;
    for (const RecordedPass& pass : recording.passes) {
        if (pass.failure) {
            ++coverage_.failed;
        } else {
            ++coverage_.taken;
            add_stretch(index, last_ms, pass.at_ms);
            last_ms = pass.at_ms;
        }
    }
    add_stretch(index, last_ms, std::max(last_ms, end_ms));
}

Coverage Measurement::finish() {
    const auto planned = static_cast<double>(std::max<std::int64_t>(coverage_.planned, 1));
    const double share = static_cast<double>(coverage_.taken) / planned;
    std::int64_t longest_ms = 0;
    for (const Gap& gap : coverage_.gaps) {
        longest_ms = std::max(longest_ms, gap.to_ms - gap.from_ms);
    }
    const double gap =
        time_ms_ > 0 ? static_cast<double>(longest_ms) / static_cast<double>(time_ms_) : 0.0;
    for (const Grade& grade : grades) {
        if (share >= grade.least_share && gap <= grade.largest_gap) {
            coverage_.grade = grade.grade;
            break;
        }
    }
    return coverage_;
}

}  // namespace

Coverage measure_coverage(const std::vector<NamedRecording>& recordings) {
    Measurement measurement;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        measurement.add(recordings[i].recording, i);
    }
    return measurement.finish();
}

const char* grade_name(int grade) {
    for (const Grade& row : grades) {
        if (row.grade == grade) {
            return row.name;
        }
    }
    return "";
}

std::string coverage_in_words(const Coverage& coverage) {
    std::string text = "coverage: " + std::to_string(coverage.grade) + " of 5, " +
                       grade_name(coverage.grade) + ": " + std::to_string(coverage.taken) + " of " +
                       std::to_string(coverage.planned) + " passes, longest gap " +
                       duration_text(coverage.longest_gap_ms);
    if (coverage.failed > 0) {
        text += ", failed " + std::to_string(coverage.failed);
    }
    return text;
}
