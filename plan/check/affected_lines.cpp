#include "plan/check/affected_lines.h"

#include <algorithm>
#include <string_view>

#include "calc/container_config.h"

namespace {

// The average is made of the processes that each pass counts.
bool is_among(const Count& source, const TakenCounts& counts) {
    const CountField field = &source == &average_count ? &PhysParams::numproc : source.field;
    const std::size_t place = place_of(field);
    return place < sampled_count_number && counts.test(place);
}

bool has_any(const LineFacts& line, const TakenCounts& counts) {
    return std::any_of(line.sources.begin(), line.sources.end(),
                       [&](const Count* source) { return is_among(*source, counts); });
}

bool is_made_from(const LineFacts& line, std::string_view other) {
    return std::any_of(line.sources.begin(), line.sources.end(),
                       [&](const Count* source) { return source->line == other; });
}

template <class Lives>
std::vector<std::string> lines_that(Lives lives) {
    std::vector<std::string> lines;
    for (const LineFacts& line : config_line_facts()) {
        if (lives(line)) {
            lines.emplace_back(line.name);
        }
    }
    return lines;
}

}  // namespace

// What makes the open files too few makes what is computed from them too small.
std::vector<std::string> lines_on(const TakenCounts& counts) {
    const std::vector<LineFacts> lines = config_line_facts();
    return lines_that([&](const LineFacts& line) {
        return has_any(line, counts) ||
               std::any_of(lines.begin(), lines.end(), [&](const LineFacts& other) {
                   return is_made_from(line, other.name) && has_any(other, counts);
               });
    });
}

std::vector<std::string> lines_on(std::initializer_list<CountField> counts) {
    TakenCounts taken;
    for (const CountField count : counts) {
        taken.set(place_of(count));
    }
    return lines_on(taken);
}

std::vector<std::string> lines_on(OneShotStep step) {
    return lines_that([&](const LineFacts& line) { return line.step == step; });
}
