#include "plan/count_story.h"

#include <algorithm>
#include <array>

namespace {

// The least number of passes that says something about the way a count goes.
constexpr std::size_t telling_passes = 10;

constexpr double steady_ratio = 1.1;  // of the peak to the median
constexpr double jumping_ratio = 2.0;
constexpr std::int32_t jumping_least = 10;  // smaller jumps are none
constexpr double rising_ratio = 1.05;       // of the last third's largest to the first third's
constexpr double late_share = 0.9;          // of the time watched

constexpr std::int64_t bytes_per_kib = 1024;
constexpr std::int64_t of_page = -1;

struct CountFacts {
    const char* label;
    std::int64_t unit_bytes;
    const char* line;
};

// In the order of sample_fields.
constexpr std::array<CountFacts, sample_field_count> count_facts = {{
    {"processes", 0, "NUMPROC"},
    {"TCP sockets", 0, "NUMTCPSOCK"},
    {"other sockets", 0, "NUMOTHERSOCK"},
    {"open files", 0, "NUMFILE"},
    {"private memory", 4 * bytes_per_kib, "PRIVVMPAGES"},
    {"locked memory", 4 * bytes_per_kib, "LOCKEDPAGES"},
    {"shared memory", of_page, "SHMPAGES"},
    {"file locks", 0, "NUMFLOCK"},
    {"packet filter rules and routes", 0, "NUMIPTENT"},
    {"disk space in use", bytes_per_kib, "DISKSPACE"},
    {"inodes in use", 0, "DISKINODES"},
}};

struct Sighting {
    std::int64_t time_ms;  // since the epoch
    std::int64_t at_ms;
    std::int32_t pass;
    std::int32_t value;
    std::size_t recording;
};

// In the order of time.
std::vector<Sighting> sightings_of(const std::vector<NamedRecording>& recordings,
                                   std::size_t field) {
    std::vector<Sighting> sightings;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const Recording& recording = recordings[i].recording;
        for (const RecordedPass& pass : recording.passes) {
            if (pass.taken.test(field)) {
                sightings.push_back({recording.header.start * 1000 + pass.at_ms, pass.at_ms,
                                     pass.number, pass.counts.*sample_fields[field].count, i});
            }
        }
    }
    std::stable_sort(sightings.begin(), sightings.end(),
                     [](const Sighting& a, const Sighting& b) { return a.time_ms < b.time_ms; });
    return sightings;
}

bool is_less(const Sighting& a, const Sighting& b) {
    return a.value < b.value;
}

std::int32_t median_of(std::vector<Sighting> sightings) {
    const auto middle = sightings.begin() + static_cast<std::ptrdiff_t>(sightings.size() / 2);
    std::nth_element(sightings.begin(), middle, sightings.end(), is_less);
    return middle->value;
}

// The largest value of one third of the passes.
std::int32_t largest_of_third(const std::vector<Sighting>& sightings, std::size_t third) {
    const auto at = [&](std::size_t part) {
        return sightings.begin() + static_cast<std::ptrdiff_t>(sightings.size() * part / 3);
    };
    return std::max_element(at(third), at(third + 1), is_less)->value;
}

bool is_rising(const std::vector<Sighting>& sightings) {
    const std::int32_t first = largest_of_third(sightings, 0);
    const std::int32_t second = largest_of_third(sightings, 1);
    const std::int32_t third = largest_of_third(sightings, 2);
    return first < second && second < third && third >= first * rising_ratio;
}

bool is_late(const std::vector<Sighting>& sightings, std::int64_t peak_ms) {
    const std::int64_t begin = sightings.front().time_ms;
    const auto watched = static_cast<double>(sightings.back().time_ms - begin);
    return static_cast<double>(peak_ms - begin) >= late_share * watched;
}

void add_remarks(const std::vector<Sighting>& sightings, CountStory& story) {
    if (sightings.size() < telling_passes) {
        return;
    }
    const std::int32_t most = story.peak->value;
    if (is_rising(sightings)) {
        story.remarks.emplace_back("it was still rising at the end: watch longer");
    } else if (story.least < most && is_late(sightings, story.peak->time_ms)) {
        story.remarks.emplace_back("the peak came in the last tenth of the time: watch longer");
    }
    story.may_grow = !story.remarks.empty();
    if (most <= story.median * steady_ratio) {
        story.remarks.emplace_back("it varies little");
    } else if (most >= story.median * jumping_ratio &&
               std::int64_t{most} - story.median >= jumping_least) {
        story.remarks.push_back("it jumps: half of the time at most " +
                                std::to_string(story.median));
    }
}

CountStory tell(const std::vector<NamedRecording>& recordings, std::size_t field,
                std::int32_t page_size) {
    const CountFacts& facts = count_facts[field];
    CountStory story;
    story.name = sample_fields[field].name;
    story.label = facts.label;
    story.unit_bytes = facts.unit_bytes == of_page ? page_size : facts.unit_bytes;
    story.line = facts.line;
    const std::vector<Sighting> sightings = sightings_of(recordings, field);
    if (sightings.empty()) {
        return story;
    }
    const Sighting& most = *std::max_element(sightings.begin(), sightings.end(), is_less);
    story.peak = Peak{most.value, most.time_ms, most.at_ms, most.pass, most.recording};
    story.least = std::min_element(sightings.begin(), sightings.end(), is_less)->value;
    story.median = median_of(sightings);
    add_remarks(sightings, story);
    return story;
}

}  // namespace

std::vector<CountStory> tell_counts(const std::vector<NamedRecording>& recordings,
                                    std::int32_t page_size) {
    std::vector<CountStory> stories;
    for (std::size_t field = 0; field < sample_field_count; ++field) {
        stories.push_back(tell(recordings, field, page_size));
    }
    return stories;
}
