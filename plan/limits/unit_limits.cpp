#include "plan/limits/unit_limits.h"

#include <algorithm>

std::int64_t hard_descriptor_limit(std::int64_t soft) {
    return std::max(soft, hard_descriptors);
}

std::int64_t cpu_weight(std::int64_t hundredths_of_core) {
    constexpr std::int64_t most_weight = 10000;
    return std::clamp<std::int64_t>(hundredths_of_core, 1, most_weight);
}

void add_unit_limits(CommentedText& text) {
    text.limit(LimitKind::memory,
               [](std::int64_t mib) { return "MemoryMax=" + std::to_string(mib) + "M"; });
    text.limit(LimitKind::swap, [](std::int64_t mib) {
        return "MemorySwapMax=" + std::to_string(mib) + (mib == 0 ? "" : "M");
    });
    text.limit(LimitKind::tasks,
               [](std::int64_t tasks) { return "TasksMax=" + std::to_string(tasks); });
    text.limit(
        LimitKind::cpu_share,
        [](std::int64_t hundredths) {
            return "CPUWeight=" + std::to_string(cpu_weight(hundredths));
        },
        ", 100 for each core");
    text.limit(LimitKind::cpu,
               [](std::int64_t tenths) { return "CPUQuota=" + std::to_string(tenths * 10) + "%"; });
}

void add_process_limits(CommentedText& text) {
    text.limit(LimitKind::descriptors, [](std::int64_t soft) {
        return "LimitNOFILE=" + std::to_string(soft) + ":" +
               std::to_string(hard_descriptor_limit(soft));
    });
    text.limit(LimitKind::locked,
               [](std::int64_t mib) { return "LimitMEMLOCK=" + std::to_string(mib) + "M"; });
}
