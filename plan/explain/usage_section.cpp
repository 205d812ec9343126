#include "plan/explain/usage_section.h"

#include "plan/text/printable.h"
#include "plan/text/utc.h"

namespace {

constexpr double bytes_per_kib = 1024.0;
constexpr std::size_t label_width = 16;
constexpr std::size_t median_width = 13;
constexpr std::size_t percentile_width = 17;

std::string row(UsageQuantity quantity, const UsageSummary& summary) {
    return padded(label_of(quantity), label_width) +
           padded(usage_text(quantity, summary.median), median_width) +
           padded(usage_text(quantity, summary.percentile), percentile_width) +
           usage_text(quantity, summary.peak->value) + ", " + minute_text(summary.peak->time_ms) +
           "\n";
}

std::string kib_text(std::int64_t kib) {
    return size_text(static_cast<double>(kib) * bytes_per_kib);
}

std::string machine_text(const Hardware& hardware) {
    std::string text = "machine: ";
    if (hardware.cpus) {
        text += std::to_string(*hardware.cpus) +
                (*hardware.cpus == 1 ? " processor, " : " processors, ");
    }
    if (hardware.memory_kib) {
        text += kib_text(*hardware.memory_kib) + " of memory, ";
    }
    const std::int64_t swap_kib = hardware.swap_kib.value_or(0);
    return text + (swap_kib > 0 ? kib_text(swap_kib) + " of swap\n" : "no swap\n");
}

// What the line may take at most, in bytes; nothing where it is no memory.
std::optional<double> memory_of(const ConfigLine& line, std::int32_t page_size) {
    const std::string name = line.name;
    const bool is_memory = name == "SLMMEMORYLIMIT" || name == "PRIVVMPAGES";
    constexpr std::uint64_t first_negative = std::uint64_t{1} << 63;
    if (!is_memory || line.limit >= first_negative) {
        return {};
    }
    return static_cast<double>(line.limit) * static_cast<double>(bytes_of(line.unit, page_size));
}

}  // namespace

std::optional<Hardware> newest_hardware(const std::vector<NamedRecording>& recordings) {
    std::optional<Hardware> newest;
    std::int64_t newest_ms = 0;
    // Of two of one moment the later line: who goes on may have found a larger machine.
    const auto take = [&](const std::optional<Hardware>& hardware, std::int64_t time_ms) {
        if (hardware && (!newest || time_ms >= newest_ms)) {
            newest = hardware;
            newest_ms = time_ms;
        }
    };
    for (const NamedRecording& named : recordings) {
        take(named.recording.header.hardware, named.recording.time_ms(0));
        for (const Continuation& continuation : named.recording.continuations) {
            take(continuation.hardware, named.recording.time_ms(continuation.at_ms));
        }
    }
    return newest;
}

std::string usage_section(const UsageSummaries& usage, const std::optional<Hardware>& hardware) {
    std::string rows;
    for (const UsageQuantity quantity : charted_quantities) {
        if (const UsageSummary& summary = usage[static_cast<std::size_t>(quantity)]; summary.peak) {
            rows += row(quantity, summary);
        }
    }
    if (rows.empty()) {
        return "usage: not recorded\n";
    }
    return (hardware ? machine_text(*hardware) : std::string()) + padded("usage", label_width) +
           padded("median", median_width) + padded("95th percentile", percentile_width) +
           "peak, UTC\n" + rows;
}

std::optional<std::string> larger_than_machine(const ConfigLine& line,
                                               const std::optional<Hardware>& hardware,
                                               std::int32_t page_size) {
    const std::optional<double> bytes = memory_of(line, page_size);
    if (!bytes || !hardware || !hardware->memory_kib) {
        return {};
    }
    const double machine =
        static_cast<double>(*hardware->memory_kib + hardware->swap_kib.value_or(0)) * bytes_per_kib;
    if (*bytes <= machine) {
        return {};
    }
    return size_text(*bytes) + " of " + size_text(machine) +
           " that the machine has: computed from virtual sizes";
}
