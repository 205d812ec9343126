#include "plan/check/affected_lines.h"

#include <algorithm>

#include "calc/container_config.h"

namespace {

// The average is made of the processes that each pass counts.
bool is_among(const Count& source, const TakenCounts& counts) {
    const CountField field = &source == &average_count ? &PhysParams::numproc : source.field;
    const std::size_t place = place_of(field);
    return place < sampled_count_number && counts.test(place);
}

}  // namespace

std::vector<std::string> lines_on(const TakenCounts& counts) {
    std::vector<std::string> lines;
    for (const LineFacts& line : config_line_facts()) {
        const Sources& sources = line.sources;
        if (std::any_of(sources.begin(), sources.end(),
                        [&](const Count* source) { return is_among(*source, counts); })) {
            lines.emplace_back(line.name);
        }
    }
    return lines;
}

std::vector<std::string> lines_on(OneShotStep step) {
    std::vector<std::string> lines;
    for (const LineFacts& line : config_line_facts()) {
        if (line.step == step) {
            lines.emplace_back(line.name);
        }
    }
    return lines;
}
