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
    std::int64_t interval_ms;  // from the beginning of one pass to that of the next
    std::int64_t from_ms;
    std::int64_t to_ms;
};

// The last one ends with the scan time, each other where a recorder went on with other spans.
std::vector<Part> parts_of(const Recording& recording) {
    const std::int64_t took_ms = mean_took_ms(recording);
    const std::int64_t end_ms = std::int64_t{recording.spans().time} * 1000;
    std::vector<Part> parts;
    const auto add_part = [&](ScanSpans spans, std::int64_t from_ms) {
        const std::int64_t pause_ms = std::int64_t{std::min(spans.time, spans.period)} * 1000;
        parts.push_back({spans, pause_ms + took_ms, from_ms, end_ms});
    };
    add_part(recording.header.spans, 0);
    for (const Continuation& continuation : recording.continuations) {
        Part& last = parts.back();
        if (continuation.spans.time != last.spans.time ||
            continuation.spans.period != last.spans.period) {
            last.to_ms = std::clamp(continuation.at_ms, last.from_ms, end_ms);
            add_part(continuation.spans, last.to_ms);
        }
    }
    return parts;
}

// One at the start, one after each interval, and at the very end one where that is a while after. A
// scan counts whole seconds, so within a second of the end there may be none.
std::int64_t planned_passes(const Part& part, bool is_last) {
    const std::int64_t time_ms = part.to_ms - part.from_ms;
    if (time_ms == 0 || part.interval_ms == 0) {
        return is_last || part.from_ms == 0 ? 1 : 0;
    }
    return time_ms / part.interval_ms + (time_ms % part.interval_ms >= 1000 ? 1 : 0) +
           (is_last ? 1 : 0);
}

std::int64_t planned_passes(const Recording& recording, const std::vector<Part>& parts) {
    std::int64_t planned = 0;
    for (const Part& part : parts) {
        planned += planned_passes(part, &part == &parts.back());
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

// A stretch of one interval is none of the gaps.
void add_stretch(const std::vector<Part>& parts, const Gap& stretch, Coverage& coverage) {
    const std::int64_t time_ms = stretch.to_ms - stretch.from_ms;
    coverage.longest_gap_ms = std::max(coverage.longest_gap_ms, time_ms);
    std::int64_t interval = 0;  // the longest of those in force
    for (const Part& part : parts) {
        if (part.from_ms <= stretch.to_ms && stretch.from_ms <= part.to_ms) {
            interval = std::max(interval, part.interval_ms);
        }
    }
    if (time_ms > interval + interval / 2 + 1000) {
        coverage.gaps.push_back(stretch);
    }
}

void add_recording(const Recording& recording, std::size_t index, Coverage& coverage) {
    const std::vector<Part> parts = parts_of(recording);
    coverage.planned += planned_passes(recording, parts);
    std::int64_t last_ms = 0;
    for (const RecordedPass& pass : recording.passes) {
        if (pass.failure) {
            ++coverage.failed;
        } else {
            ++coverage.taken;
            add_stretch(parts, {index, last_ms, pass.at_ms}, coverage);
            last_ms = pass.at_ms;
        }
    }
    add_stretch(parts, {index, last_ms, std::max(last_ms, parts.back().to_ms)}, coverage);
}

int grade_of(const Coverage& coverage, std::int64_t time_ms) {
    const auto planned = static_cast<double>(std::max<std::int64_t>(coverage.planned, 1));
    const double share = static_cast<double>(coverage.taken) / planned;
    std::int64_t longest_ms = 0;
    for (const Gap& gap : coverage.gaps) {
        longest_ms = std::max(longest_ms, gap.to_ms - gap.from_ms);
    }
    const double gap =
        time_ms > 0 ? static_cast<double>(longest_ms) / static_cast<double>(time_ms) : 0.0;
    const auto met = std::find_if(std::begin(grades), std::end(grades), [&](const Grade& grade) {
        return share >= grade.least_share && gap <= grade.largest_gap;
    });
    return std::max(1, complete - static_cast<int>(met - std::begin(grades)));
}

}  // namespace

Coverage measure_coverage(const std::vector<NamedRecording>& recordings) {
    Coverage coverage;
    std::int64_t time_ms = 0;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        add_recording(recordings[i].recording, i, coverage);
        time_ms += std::int64_t{recordings[i].recording.spans().time} * 1000;
    }
    coverage.grade = grade_of(coverage, time_ms);
    return coverage;
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
