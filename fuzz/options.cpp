// Whole command lines, with the factors and the spans among them.
#include "driver/options.h"

#include <cerrno>
#include <cmath>

#include "fuzz/support.h"
#include "kiln/strings.h"

namespace {

struct Settings {
    TarnHWCalc calc;
    std::string out_path;
};

int read_options(std::vector<std::string> arguments, Settings& settings) {
    std::vector<char*> argv;
    arguments.insert(arguments.begin(), "tarnhwcalc");
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    const fuzz::ClosedConsole console;
    errno = 0;
    return parse_args(static_cast<int>(arguments.size()), argv.data(), &settings.calc,
                      settings.out_path);
}

std::string written(float factor) {
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(factor));
    return text;
}

bool same(float a, float b) {
    return std::isnan(a) ? std::isnan(b) : a == b;
}

// What was read can be said in one way, and is read again as what it is.
void check_accepted(const Settings& first) {
    const TarnHWCalc& calc = first.calc;
    fuzz::require(calc.scan_time >= 0 && calc.scan_period >= 0, "no span is negative");
    fuzz::require(calc.scan_time == 0 || calc.scan_period > 0, "a scan time has its period");
    fuzz::require(std::isnan(calc.mem_scale) || calc.mem_scale > 0, "a factor makes no count 0");
    fuzz::require(std::isnan(calc.disk_scale) || calc.disk_scale > 0, "nor any size");
    fuzz::require(calc.dist_detect_scripts.empty(), "no detection script is taken");

    Settings again;
    const int result = read_options(
        {"--out", first.out_path, "-t", std::to_string(calc.scan_time) + "s",
         "-p" + std::to_string(calc.scan_period) + "s", "--mem-scale=" + written(calc.mem_scale),
         "--disk-s", written(calc.disk_scale)},
        again);
    fuzz::require(result == 0 && again.out_path == first.out_path &&
                      again.calc.scan_time == calc.scan_time &&
                      again.calc.scan_period == calc.scan_period &&
                      same(again.calc.mem_scale, calc.mem_scale) &&
                      same(again.calc.disk_scale, calc.disk_scale),
                  "the same settings said otherwise are the same");
}

}  // namespace

// Input: the arguments, one a line.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Settings settings;
    const auto arguments = Kiln::split("\n", fuzz::text_of(data, size), 0);
    const int result = read_options(arguments, settings);
    fuzz::require(result >= -1 && result <= 1, "go on, nothing to do or a usage error");
    fuzz::require(result != 0 || settings.out_path.find('\n') == std::string::npos,
                  "the path is one of the arguments");
    if (result == 0) {
        check_accepted(settings);
    }
    return 0;
}
