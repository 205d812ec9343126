#include "plan/explain/coverage.h"

#include <algorithm>
#include <iterator>

#include "plan/text/printable.h"

namespace {

struct Grade {
    const char* name;
    double least_share;  // of the planned passes
    double largest_gap;  // of the time
};

// From 5 down to 1. The manual lists the same.
constexpr Grade grades[] = {
    {"complete", 0.99, 0.02}, {"good", 0.95, 0.05}, {"fair", 0.80, 0.20},
    {"poor", 0.50, 0.50},     {"scant", 0.0, 1.0},
};
constexpr int complete = std::size(grades);

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

// A part of a recording's time in which the same spans were in force.
struct Part {
    ScanSpans spans;
    std::int64_t from_ms;
    std::int64_t to_ms;
};

// From the beginning of one pass to that of the next.
std::int64_t interval_ms(ScanSpans spans, std::int64_t took_ms) {
    return std::int64_t{std::min(spans.time, spans.period)} * 1000 + took_ms;
}

// The last one ends with the scan time, each other where a recorder went on with other spans.
std::vector<Part> parts_of(const Recording& recording) {
    const std::int64_t end_ms = std::int64_t{recording.spans().time} * 1000;
    std::vector<Part> parts = {{recording.header.spans, 0, end_ms}};
    for (const Continuation& continuation : recording.continuations) {
        const std::int64_t at_ms = std::clamp(continuation.at_ms, parts.back().from_ms, end_ms);
        const ScanSpans before = parts.back().spans;
        if (continuation.spans.time == before.time && continuation.spans.period == before.period) {
            continue;
        }
        parts.back().to_ms = at_ms;
        parts.push_back({continuation.spans, at_ms, end_ms});
    }
    return parts;
}

// One at the start, one after each interval, and at the very end one where that is a while after. A
// scan counts whole seconds, so within a second of the end there may be none.
std::int64_t planned_passes(const Part& part, std::int64_t took_ms, bool is_last) {
    const std::int64_t time_ms = part.to_ms - part.from_ms;
    const std::int64_t interval = interval_ms(part.spans, took_ms);
    if (time_ms == 0 || interval == 0) {
        return is_last || part.from_ms == 0 ? 1 : 0;
    }
    return time_ms / interval + (time_ms % interval >= 1000 ? 1 : 0) + (is_last ? 1 : 0);
}

std::int64_t planned_passes(const Recording& recording) {
    const std::int64_t took_ms = mean_took_ms(recording);
    const std::vector<Part> parts = parts_of(recording);
    std::int64_t planned = 0;
    for (const Part& part : parts) {
        planned += planned_passes(part, took_ms, &part == &parts.back());
    }
    // What was taken was planned: passes may become quicker.
    return std::max(planned, static_cast<std::int64_t>(recording.passes.size()));
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
    std::vector<Part> parts_;  // of the recording that is being added
    std::int64_t took_ms_ = 0;
};

// A stretch of one interval is none of the gaps.
void Measurement::add_stretch(std::size_t index, std::int64_t from_ms, std::int64_t to_ms) {
    const std::int64_t stretch = to_ms - from_ms;
    coverage_.longest_gap_ms = std::max(coverage_.longest_gap_ms, stretch);
    std::int64_t interval = 0;  // the longest of those in force
    for (const Part& part : parts_) {
        if (part.from_ms <= to_ms && from_ms <= part.to_ms) {
            interval = std::max(interval, interval_ms(part.spans, took_ms_));
        }
    }
    if (stretch > interval + interval / 2 + 1000) {
        coverage_.gaps.push_back({index, from_ms, to_ms});
    }
}

void Measurement::add(const Recording& recording, std::size_t index) {
    const std::int64_t end_ms = std::int64_t{recording.spans().time} * 1000;
    parts_ = parts_of(recording);
    took_ms_ = mean_took_ms(recording);
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
    const auto met = std::find_if(std::begin(grades), std::end(grades), [&](const Grade& grade) {
        return share >= grade.least_share && gap <= grade.largest_gap;
    });
    coverage_.grade = std::max(1, complete - static_cast<int>(met - std::begin(grades)));
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
    return grades[complete - grade].name;
}

std::string coverage_in_words(const Coverage& coverage) {
    std::string text = "coverage: " + std::to_string(coverage.grade) + " of 5, " +
                       grade_name(coverage.grade) + ": " + grouped(coverage.taken) + " of " +
                       grouped(coverage.planned) + " passes, longest gap " +
                       duration_text(coverage.longest_gap_ms);
    if (coverage.failed > 0) {
        text += ", failed " + grouped(coverage.failed);
    }
    return text;
}
