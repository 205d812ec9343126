#include "plan/cli/recording_command.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

#include "calc/arguments.h"

namespace {

// A factor as the calculator reads it becomes the digits that are that float and no other.
const CLI::Validator positive_factor(
    [](std::string& text) -> std::string {
        float factor = 0;
        const ScaleError error = parse_scale(text.c_str(), &factor);
        if (text.empty() || error == ScaleError::not_a_number) {
            return "not a numeric value: " + text;
        }
        if (error == ScaleError::not_positive || !std::isfinite(factor)) {
            return "must be positive and finite: " + text;
        }
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.9g", static_cast<double>(factor));
        text = digits;
        return {};
    },
    "");

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

void add_reading_options(CLI::App& app, ReadingOptions& options) {
    app.add_option("--mem-scale", options.scales.memory, "Factor for counts and memory")
        ->transform(positive_factor)
        ->type_name("FACTOR")
        ->capture_default_str();
    app.add_option("--disk-scale", options.scales.disk, "Factor for the disk")
        ->transform(positive_factor)
        ->type_name("FACTOR")
        ->capture_default_str();
    app.add_option("--max-size", options.most_bytes, "Read no recording that is larger")
        ->transform(size_in_bytes)
        ->type_name("SIZE")
        ->default_str("256M");
}

CLI::Option* add_recording_options(CLI::App& app, RecordingOptions& options) {
    add_reading_options(app, options);
    app.add_option("-o,--out", options.out_path, "Write to this file")->type_name("FILE");
    return app.add_option("recording", options.paths, "Recordings of one host")->required();
}

Kiln::Result<RecordedHost> read_recorded_host(const RecordingOptions& options) {
    RecordedHost host;
    for (const std::string& path : options.paths) {
        Kiln::Result<NamedRecording> read = read_recording(path, options.most_bytes);
        if (!read) {
            return Kiln::Reason{read.reason()};
        }
        host.recordings.push_back(std::move(*read));
    }
    Kiln::Result<CombinedScan> combined = combine(host.recordings);
    if (!combined) {
        return Kiln::Reason{combined.reason()};
    }
    host.scan = std::move(*combined);
    return Kiln::Result<RecordedHost>(std::move(host));
}
