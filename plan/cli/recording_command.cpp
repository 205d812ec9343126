#include "plan/cli/recording_command.h"

#include <charconv>
#include <string_view>
#include <utility>

namespace {

// "1G" becomes its bytes; never 0.
const CLI::Validator size_in_bytes(
    [](std::string& text) -> std::string {
        constexpr std::string_view units = "KMGT";
        constexpr std::uint64_t most = std::uint64_t{1} << 60;
        std::uint64_t number = 0;
        const char* const end = text.data() + text.size();
        const char* const unit = std::from_chars(text.data(), end, number).ptr;
        const std::size_t power = unit == end ? 0 : units.find(*unit) + 1;
        if (end - unit > 1 || (unit != end && power == 0) || number == 0 ||
            number > most >> (10 * power)) {
            return "\"" + text + "\" is no size: a number with K, M, G or T, such as 512M or 1G";
        }
        text = std::to_string(number << (10 * power));
        return {};
    },
    "");

}  // namespace

void add_scale_options(CLI::App& app, ScaleOptions& options) {
    app.add_option("--mem-scale", options.memory, "Factor for counts and memory")
        ->type_name("FACTOR")
        ->default_str("1.2");
    app.add_option("--disk-scale", options.disk, "Factor for the disk")
        ->type_name("FACTOR")
        ->default_str("1.5");
}

void add_size_option(CLI::App& app, std::uint64_t& most_bytes) {
    app.add_option("--max-size", most_bytes, "Read no recording that is larger")
        ->transform(size_in_bytes)
        ->type_name("SIZE")
        ->default_str("256M");
}

void add_recording_options(CLI::App& app, RecordingOptions& options) {
    add_scale_options(app, options.scales);
    add_size_option(app, options.most_bytes);
    app.add_option("-o,--out", options.out_path, "Write to this file");
}

ExitStatus read_recorded_host(const RecordingOptions& options, RecordedHost& host) {
    if (!read_scales(options.scales, host.scales)) {
        return status_usage;
    }
    for (const std::string& path : options.paths) {
        Kiln::Result<NamedRecording> read = read_recording(path, options.most_bytes);
        if (!read) {
            say(read.reason());
            return status_io;
        }
        host.recordings.push_back(std::move(*read));
    }
    Kiln::Result<CombinedScan> combined = combine(host.recordings);
    if (!combined) {
        say(combined.reason());
        return status_io;
    }
    host.scan = std::move(*combined);
    return status_done;
}

ExitStatus say_flaws(const RecordedHost& host, const ComputedConfig& computed) {
    const std::vector<std::string> flaws = find_flaws(host.recordings, host.scan, computed);
    for (const std::string& flaw : flaws) {
        say(flaw);
    }
    return flaws.empty() ? status_done : status_flawed;
}
