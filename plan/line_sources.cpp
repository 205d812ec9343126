#include "plan/line_sources.h"

#include "calc/container_config.h"

namespace {

constexpr std::int32_t any_page_size = 4096;
constexpr const char* average_count = "avnumproc";
constexpr const char* averaged_count = "numproc";

struct StepLine {
    const char* line;
    OneShotStep step;
};

constexpr StepLine step_lines[] = {
    {"QUOTAUGIDLIMIT", OneShotStep::quotas}, {"DISTRIBUTION", OneShotStep::distribution},
    {"HOSTNAME", OneShotStep::host_name},    {"#IP_ADDRESS", OneShotStep::interfaces},
    {"SEARCHDOMAIN", OneShotStep::resolver}, {"NAMESERVER", OneShotStep::resolver},
    {"FEATURES", OneShotStep::mounts},
};

bool lives_on(const ConfigLine& line, const std::string& count) {
    for (const CountRule* rule : line.sources) {
        const std::string source = rule->count;
        if (source == count || (source == average_count && count == averaged_count)) {
            return true;
        }
    }
    return false;
}

}  // namespace

TakenCounts counts_of_step(std::size_t step) {
    const SampleStep& row = sample_steps[step];
    const bool is_memory_scan = row.command == nullptr;
    TakenCounts counts;
    for (std::size_t i = 0; i < sample_fields.size(); ++i) {
        const auto count = sample_fields[i].count;
        const bool of_memory_scan =
            count == &SampleCounts::privvmpages || count == &SampleCounts::lockedpages;
        counts.set(i, is_memory_scan ? of_memory_scan : count == row.count);
    }
    return counts;
}

std::optional<OneShotStep> step_behind(const std::string& line) {
    for (const StepLine& row : step_lines) {
        if (row.line == line) {
            return row.step;
        }
    }
    return {};
}

std::vector<std::string> lines_on_step(OneShotStep step) {
    std::vector<std::string> lines;
    for (const StepLine& row : step_lines) {
        if (row.step == step) {
            lines.emplace_back(row.line);
        }
    }
    return lines;
}

std::vector<std::string> lines_on_count(const std::string& count) {
    std::vector<std::string> lines;
    for (const ConfigLine& line : compute_config(PhysParams(), ConfigScales(), any_page_size)) {
        if (lives_on(line, count)) {
            lines.emplace_back(line.name);
        }
    }
    return lines;
}

std::optional<std::int32_t> floor_of_count(const std::string& count) {
    for (const ConfigLine& line : compute_config(PhysParams(), ConfigScales(), any_page_size)) {
        for (const CountRule* rule : line.sources) {
            if (rule->count == count && rule->floor != no_floor) {
                return rule->floor;
            }
        }
    }
    return {};
}
