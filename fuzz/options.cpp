// Whole command lines, with the factors and the spans among them.
#include "driver/options.h"

#include <cmath>
#include <tuple>

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

// With as many digits as tell any two factors apart.
std::string written(float factor) {
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(factor));
    return text;
}

auto all_of(const Settings& settings) {
    const TarnHWCalc& calc = settings.calc;
    return std::tuple(settings.out_path, calc.scan_time, calc.scan_period, written(calc.mem_scale),
                      written(calc.disk_scale));
}

// What was read can be said in one way, and is read again as what it is.
void check_accepted(const Settings& first) {
    const TarnHWCalc& calc = first.calc;
    require(calc.scan_time >= 0 && calc.scan_period >= 0, "no span is negative");
    require(calc.scan_time == 0 || calc.scan_period > 0, "a scan time has its period");
    require(std::isnan(calc.mem_scale) || calc.mem_scale > 0, "a factor makes no count 0");
    require(std::isnan(calc.disk_scale) || calc.disk_scale > 0, "nor any size");
    require(calc.dist_detect_scripts.empty(), "no detection script is taken");

    Settings again;
    const int result = read_options(
        {"--out", first.out_path, "-t", std::to_string(calc.scan_time) + "s",
         "-p" + std::to_string(calc.scan_period) + "s", "--mem-scale=" + written(calc.mem_scale),
         "--disk-s", written(calc.disk_scale)},
        again);
    require(result == 0 && all_of(again) == all_of(first),
            "the same settings said otherwise are the same");
}

}  // namespace

// Input: the arguments, one a line.
void try_input(fuzz::Input input) {
    Settings settings;
    const int result = read_options(Kiln::split("\n", input.text(), 0), settings);
    require(result >= -1 && result <= 1, "go on, nothing to do or a usage error");
    if (result == 0) {
        require(settings.out_path.find('\n') == std::string::npos, "the path is an argument");
        check_accepted(settings);
    }
}
