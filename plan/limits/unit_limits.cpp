#include "plan/limits/unit_limits.h"

#include <algorithm>

std::string descriptor_range(std::int64_t soft) {
    return std::to_string(soft) + ":" + std::to_string(std::max(soft, hard_descriptors));
}

std::string bytes_of_mib(std::int64_t mib) {
    constexpr std::int64_t bytes = 1048576;
    return std::to_string(mib * bytes);
}

std::string cpu_weight(std::int64_t hundredths_of_core) {
    constexpr std::int64_t most_weight = 10000;
    return std::to_string(std::clamp<std::int64_t>(hundredths_of_core, 1, most_weight));
}

void add_unit_limits(CommentedText& text) {
    // 0 switches swap off, and has no unit.
    const auto swap_text = [](std::int64_t mib) {
        return decimal_text(mib) + (mib == 0 ? "" : "M");
    };
    // Of one processor: two of them are 200 %.
    const auto percent = [](std::int64_t tenths) { return decimal_text(tenths * 10) + "%"; };
    text.limit(LimitKind::memory, "MemoryMax=@M");
    text.limit(LimitKind::swap, "MemorySwapMax=@", swap_text);
    text.limit(LimitKind::tasks, "TasksMax=@");
    text.limit(LimitKind::cpu_share, "CPUWeight=@", cpu_weight, ", 100 for each core");
    text.limit(LimitKind::cpu, "CPUQuota=@", percent);
}

void add_process_limits(CommentedText& text) {
    text.limit(LimitKind::descriptors, "LimitNOFILE=@", descriptor_range);
    text.limit(LimitKind::locked, "LimitMEMLOCK=@M");
}
